// encrypt, decrypt, soap-sign, soap-encrypt and soap-process through the tool.
#include <gtest/gtest.h>

#include "cli/CliRunner.hpp"

using clitest::contains;
using clitest::testpki;
using clitest::vqxml;

namespace {

// The document from its root element on, without trailing white space.
std::string body(const std::string& xml, const std::string& root) {
    std::string from = xml.substr(xml.find("<" + root));
    return from.erase(from.find_last_not_of("\r\n ") + 1);
}

std::vector<std::string> decryptAs(const std::string& ee, std::initializer_list<std::string> more) {
    std::vector<std::string> args{"decrypt", "-c", testpki(ee + ".crt.der"), "-k", testpki(ee + ".key.der")};
    args.insert(args.end(), more);
    return args;
}

TEST(CliEncryption, EveryRecipientOfTwoOpensAndNoOneElse) {
    const std::string invoice = testfiles::read(clitest::invoice());
    auto enc = vqxml({"encrypt", "-s", "aes128-gcm", "-t", "rsa-oaep11", "-r", testpki("ee-rsa.crt.pem"), "-r",
                      testpki("ee-rsa-b.crt.der"), "--issuer-serial", "-e", "TaxInvoiceDocument", "-e",
                      "ExchangedDocument"},
                     invoice);
    ASSERT_EQ(enc.exitCode, 0) << enc.err;
    EXPECT_TRUE(contains(enc.out, "xmlenc11#aes128-gcm"));
    EXPECT_TRUE(contains(enc.out, "xmlenc11#mgf1sha256"));
    EXPECT_FALSE(contains(enc.out, "<IssueID>"));
    for (const char* ee : {"ee-rsa", "ee-rsa-b"}) {
        auto dec = vqxml(decryptAs(ee, {}), enc.out);
        EXPECT_EQ(dec.exitCode, 0) << ee << dec.err;
        EXPECT_EQ(body(dec.out, "TaxInvoice"), body(invoice, "TaxInvoice")) << ee;
    }
    auto npki = vqxml({"decrypt", "-c", testpki("ee-rsa.crt.der"), "-k", testpki("ee-rsa.key.enc.der"), "--password",
                       "vqxml-test"},
                      enc.out);
    EXPECT_EQ(npki.exitCode, 0) << npki.err;
    auto stranger = vqxml(decryptAs("ee-kcdsa1024", {}), enc.out);
    EXPECT_NE(stranger.exitCode, 0);
    EXPECT_EQ(stranger.out, "");
}

TEST(CliEncryption, SharedKeysWrapOrOpenTheDataThemselves) {
    const std::string kek = testfiles::scratch("kek.bin"), session = testfiles::scratch("session.bin");
    testfiles::write(kek, "0123456789abcdefghijklmn");
    testfiles::write(session, "fedcba9876543210");
    auto wrapped = vqxml({"encrypt", "--kek", kek, "-s", "aria", "--content", clitest::invoice()});
    ASSERT_EQ(wrapped.exitCode, 0) << wrapped.err;
    EXPECT_TRUE(contains(wrapped.out, "kw-tripledes"));
    EXPECT_TRUE(contains(vqxml({"decrypt", "--kek", kek}, wrapped.out).out, "<IssueID>"));
    testfiles::write(kek, "0123456789abcdef");
    auto aes = vqxml({"encrypt", "--kek", kek, "-t", "kw-aes128", "-s", "aes256-cbc", clitest::invoice()});
    ASSERT_EQ(aes.exitCode, 0) << aes.err;
    EXPECT_TRUE(contains(aes.out, "xmlenc#kw-aes128"));
    EXPECT_TRUE(contains(vqxml({"decrypt", "--kek", kek}, aes.out).out, "<IssueID>"));
    auto direct = vqxml({"encrypt", "--session-key", session, "-s", "neat", "--key-name", "shared", clitest::invoice()});
    ASSERT_EQ(direct.exitCode, 0) << direct.err;
    EXPECT_TRUE(contains(direct.out, "<ds:KeyName>shared</ds:KeyName>"));
    EXPECT_TRUE(contains(vqxml({"decrypt", "--session-key", session, "-s", "neat"}, direct.out).out, "<IssueID>"));
    unlink(kek.c_str());
    unlink(session.c_str());
}

TEST(CliEncryption, EncryptionRefusals) {
    EXPECT_EQ(vqxml({"encrypt", clitest::invoice()}).exitCode, 64);
    EXPECT_EQ(vqxml({"encrypt", "-r", testpki("ee-rsa.crt.der"), "-s", "rc4", clitest::invoice()}).exitCode, 64);
    auto missing = vqxml({"encrypt", "-r", testpki("ee-rsa.crt.der"), "-e", "Nowhere", clitest::invoice()});
    EXPECT_EQ(missing.exitCode, 142);
    EXPECT_TRUE(contains(missing.err, "(status 10302)")) << missing.err;
    EXPECT_EQ(vqxml({"decrypt", "--kek", "a", "--session-key", "b"}, "<a/>").exitCode, 64);
    // A recipient the document does not name is told so, without an endless walk.
    auto enc = vqxml({"encrypt", "-r", testpki("ee-rsa-b.crt.der"), "--issuer-serial", clitest::invoice()});
    ASSERT_EQ(enc.exitCode, 0) << enc.err;
    auto other = vqxml(decryptAs("ee-rsa", {}), enc.out);
    EXPECT_EQ(other.exitCode, 150);
    EXPECT_TRUE(contains(other.err, "(status 10310)")) << other.err;
}

const std::string kRequest = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                             "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header/>"
                             "<soap:Body><m:order xmlns:m=\"urn:test\"><m:item>tea</m:item></m:order></soap:Body>"
                             "</soap:Envelope>";

TEST(CliSoap, SignedThenEncryptedForTwoIsProcessedByEach) {
    auto sign = vqxml({"soap-sign", "-a", "kcdsa-sha1", "-c", testpki("ee-kcdsa1024.crt.der"), "-k",
                       testpki("ee-kcdsa1024.signPri.key"), "--password", "vqxml-test"},
                      kRequest);
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    EXPECT_TRUE(contains(sign.out, "BinarySecurityToken"));
    auto enc = vqxml({"soap-encrypt", "-r", testpki("ee-rsa.crt.der"), "-r", testpki("ee-rsa-b.crt.der"),
                      "--issuer-serial"},
                     sign.out);
    ASSERT_EQ(enc.exitCode, 0) << enc.err;
    EXPECT_FALSE(contains(enc.out, "<m:item>"));
    for (const char* ee : {"ee-rsa", "ee-rsa-b"}) {
        auto plain = vqxml({"soap-process", "-c", testpki(std::string(ee) + ".crt.der"), "-k",
                            testpki(std::string(ee) + ".key.der")},
                           enc.out);
        EXPECT_EQ(plain.exitCode, 0) << ee << plain.err;
        EXPECT_TRUE(contains(plain.out, "<m:item>tea</m:item>")) << plain.out;
        EXPECT_FALSE(contains(plain.out, "Security")) << plain.out;
        EXPECT_TRUE(contains(plain.err, "decrypted, valid signature")) << plain.err;
        EXPECT_TRUE(contains(plain.err, "\nsigned: /{http://schemas.xmlsoap.org/soap/envelope/}Envelope/"
                                        "{http://schemas.xmlsoap.org/soap/envelope/}Body\n"))
            << plain.err;
    }
}

TEST(CliSoap, ProcessingRefusals) {
    auto sign = vqxml({"soap-sign", "-c", testpki("ee-rsa.crt.der"), "-k", testpki("ee-rsa.key.der")}, kRequest);
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    std::string forged = sign.out;
    forged.replace(forged.find(">tea<"), 5, ">tee<");
    EXPECT_EQ(vqxml({"soap-process"}, forged).exitCode, 213);
    auto enc = vqxml({"soap-encrypt", "-r", testpki("ee-rsa.crt.der")}, kRequest);
    auto noKey = vqxml({"soap-process"}, enc.out);
    EXPECT_EQ(noKey.exitCode, 191);
    EXPECT_TRUE(contains(noKey.err, "(status 10511)")) << noKey.err;
    EXPECT_EQ(vqxml({"soap-sign", "-c", testpki("ee-rsa.crt.der"), "-k", testpki("ee-rsa.key.der")}, "<a/>").exitCode,
              161);
}

TEST(CliSoap, SignerNamedByIssuerAndSerialIsVerifiedWithTheGivenCertificate) {
    auto sign = vqxml({"soap-sign", "--issuer-serial", "-c", testpki("ee-rsa.crt.der"), "-k", testpki("ee-rsa.key.der")},
                      kRequest);
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    ASSERT_FALSE(contains(sign.out, "BinarySecurityToken")) << sign.out;
    auto right = vqxml({"soap-process", "--verify-cert", testpki("ee-rsa.crt.pem")}, sign.out);
    EXPECT_EQ(right.exitCode, 0) << right.err;
    EXPECT_TRUE(contains(right.out, "<m:item>tea</m:item>")) << right.out;
    EXPECT_EQ(vqxml({"soap-process", "--verify-cert", testpki("ee-rsa-b.crt.der")}, sign.out).exitCode, 213);
    EXPECT_NE(vqxml({"soap-process"}, sign.out).exitCode, 0);
}

}  // namespace
