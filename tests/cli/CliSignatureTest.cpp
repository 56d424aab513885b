// sign and verify through the tool: round trips with each kind of key.
#include <gtest/gtest.h>

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

TEST_F(CliSignature, HmacThroughStdinAndStdoutAndOnlyTheSameSecretVerifies) {
    const std::string key = testfiles::dataPath("dsig/hmac.bin"), other = testfiles::scratch("other.bin");
    testfiles::write(other, "another secret");
    auto sign = vqxml({"sign", "--hmac-key", key}, testfiles::read(clitest::invoice()));
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    EXPECT_TRUE(contains(sign.out, "hmac-sha1"));
    EXPECT_EQ(vqxml({"verify", "-q", "--hmac-key", key, "-"}, sign.out).exitCode, 0);
    auto wrong = vqxml({"verify", "--hmac-key", other}, sign.out);
    EXPECT_EQ(wrong.exitCode, 213);
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

TEST_F(CliSignature, AChangedAmountFailsWithTheLibrarysReason) {
    ASSERT_EQ(vqxml({"sign", "-c", testpki("ee-rsa.crt.der"), "-k", testpki("ee-rsa.key.der"), "-o", signedFile,
                     clitest::invoice()})
                  .exitCode,
              0);
    std::string forged = testfiles::read(signedFile);
    forged.replace(forged.find("<GrandTotalAmount>1100000"), 25, "<GrandTotalAmount>1900000");
    auto verify = vqxml({"verify", "-"}, forged);
    EXPECT_EQ(verify.exitCode, 213);
    EXPECT_EQ(verify.out, "");
    EXPECT_TRUE(contains(verify.err, "vqxml verify: XMLDSIG_verify > ")) << verify.err;
}

}  // namespace
