// sign and verify through the tool: round trips with each kind of key.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/CliRunner.hpp"

using clitest::contains;
using clitest::testpki;
using clitest::vqxml;

namespace {

class CliSignature : public ::testing::Test {
protected:
    const std::string signedFile = testfiles::scratch("signed.xml");
    void TearDown() override { unlink(signedFile.c_str()); }
};

TEST_F(CliSignature, RsaWithPemKeyThenVerify) {
    auto sign = vqxml({"sign", "--cert", testpki("ee-rsa.crt.pem"), "--key", testpki("ee-rsa.key.pem"), "-o",
                       signedFile, clitest::invoice()});
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    EXPECT_TRUE(contains(testfiles::read(signedFile), "xml-exc-c14n#"));
    EXPECT_TRUE(contains(testfiles::read(signedFile), "rsa-sha256"));
    auto verify = vqxml({"verify", signedFile});
    EXPECT_EQ(verify.exitCode, 0) << verify.err;
    EXPECT_EQ(verify.out, "valid signature\ncertificate: 922 bytes\n");
    // The signer's verdict beside the signature's: the test CA is no built-in root.
    auto trust = vqxml({"verify", "--trust", "--chain", testpki("ca-rsa.crt.pem"), signedFile});
    EXPECT_EQ(trust.exitCode, 220);
    EXPECT_EQ(trust.out, "valid signature\ncertificate: 922 bytes\nuntrusted signer (status 12020)\n");
    EXPECT_TRUE(contains(trust.err, "verifySignerCert > path check failed: Certificate refused at depth 1 "
                                    "(CN=VQXML Test Root CA"))
        << trust.err;
    EXPECT_EQ(vqxml({"verify", "--crl", testpki("ca-rsa.crt.pem"), signedFile}).exitCode, 64);
}

TEST_F(CliSignature, KcdsaWithEncryptedNpkiKeyThenVerifyGivesTheSignerAndContent) {
    const std::string password = testfiles::scratch("password"), cert = testfiles::scratch("signer.der"),
                      content = testfiles::scratch("content.xml");
    testfiles::write(password, "vqxml-test\n");
    auto sign = vqxml({"sign", "-a", "kcdsa-sha1", "-c", testpki("ee-kcdsa1024.crt.der"), "-k",
                       testpki("ee-kcdsa1024.signPri.key"), "--password-file", password, "-o", signedFile,
                       clitest::invoice()});
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    EXPECT_TRUE(contains(testfiles::read(signedFile), "kcdsa-sha1"));
    auto verify = vqxml({"verify", "--signer-cert", cert, "-o", content, signedFile});
    EXPECT_EQ(verify.exitCode, 0) << verify.err;
    EXPECT_EQ(testfiles::read(cert), testfiles::read(testpki("ee-kcdsa1024.crt.der")));
    EXPECT_FALSE(contains(testfiles::read(content), "Signature"));
    EXPECT_TRUE(contains(testfiles::read(content), "TaxInvoiceDocument"));
    for (const std::string& f : {password, cert, content})
        unlink(f.c_str());
}

// The XML Signature 1.1 names: EC and DSA keys in PEM, PKCS #8 DER, HMAC-SHA2
// keys. That these signatures verify is SignVerify's to check.
TEST_F(CliSignature, Xmldsig11AlgorithmsByName) {
    const auto dsig = [](const std::string& name) { return testfiles::dataPath("dsig/" + name); };
    const struct {
        std::vector<std::string> args;
        const char* uri;
    } kRuns[] = {
        {{"-a", "ecdsa-sha384", "--c14n", "c14n11", "-c", dsig("signer-ec384.crt.der"), "-k", dsig("signer-ec384.key.pem")},
         "xmldsig-more#ecdsa-sha384"},
        {{"-a", "dsa-sha256", "--digest", "sha512", "-c", dsig("signer-dsa2048.crt.der"), "-k",
          dsig("signer-dsa2048.key.pk8.der")},
         "xmldsig11#dsa-sha256"},
        {{"-a", "rsa-pss-sha512", "--ref-c14n", "c14n11-comments", "-c", testpki("ee-rsa.crt.pem"), "-k",
          testpki("ee-rsa.key.pem")},
         "xmldsig-more#sha512-rsa-MGF1"},
        {{"-a", "hmac-sha384", "--hmac-key", dsig("hmac.bin")}, "xmldsig-more#hmac-sha384"},
    };
    for (const auto& run : kRuns) {
        std::vector<std::string> args = {"sign", "-o", signedFile};
        args.insert(args.end(), run.args.begin(), run.args.end());
        args.push_back(clitest::invoice());
        auto sign = vqxml(args);
        ASSERT_EQ(sign.exitCode, 0) << run.uri << ": " << sign.err;
        EXPECT_TRUE(contains(testfiles::read(signedFile), run.uri)) << run.uri;
    }
}

TEST_F(CliSignature, HmacThroughStdinAndStdoutAndOnlyTheSameSecretVerifies) {
    const std::string key = testfiles::dataPath("dsig/hmac.bin"), other = testfiles::scratch("other.bin");
    testfiles::write(other, "another secret");
    auto sign = vqxml({"sign", "--hmac-key", key}, testfiles::read(clitest::invoice()));
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    EXPECT_TRUE(contains(sign.out, "hmac-sha1"));
    EXPECT_EQ(vqxml({"verify", "-q", "--hmac-key", key, "-"}, sign.out).exitCode, 0);
    auto wrong = vqxml({"verify", "--hmac-key", other}, sign.out);
    EXPECT_EQ(wrong.exitCode, 213);
    EXPECT_EQ(wrong.out, "");
    EXPECT_TRUE(contains(wrong.err, "vqxml verify: XMLDSIG_verify > ")) << wrong.err;
    EXPECT_TRUE(contains(wrong.err, "(status 11213)")) << wrong.err;
    unlink(other.c_str());
}

TEST_F(CliSignature, EnvelopingSignatureGivesItsObjectBack) {
    const std::string content = "<Note xmlns=\"urn:example\">hello</Note>";
    auto sign = vqxml({"sign", "--enveloping", "note", "--cert", testpki("ee-rsa.crt.der"), "--key",
                       testpki("ee-rsa.key.der"), "--key-name", "ee-rsa", "-o", signedFile},
                      content);
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    auto verify = vqxml({"verify", "-o", "-", signedFile});
    EXPECT_EQ(verify.exitCode, 0) << verify.err;
    EXPECT_TRUE(contains(verify.out, content)) << verify.out;
    EXPECT_TRUE(contains(verify.err, "key name: ee-rsa")) << verify.err;
}

}  // namespace
