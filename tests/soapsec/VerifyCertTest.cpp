// A signer named only by issuer and serial: the receiver supplies its certificate.
#include "soapsec/SoapSender.hpp"

using namespace soaptest;

namespace {

// Loads message, reads the signer's data, gives cert to verify with; the status
// of ProcessSOAP (or of the first failing step).
int verifyWith(std::string message, std::string cert) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], len(message)), 0);
    int isSigned = 0;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    EXPECT_EQ(isSigned, 1);
    const int status = VQTK_SOAPSEC_SetVerifyCert(h, bytes(cert), len(cert));
    if (status != 0)
        return status;
    return VQTK_SOAPSEC_ProcessSOAP(h);
}

TEST(SoapVerifyCert, IssuerSerialSignatureVerifiesWithTheSignersCertificate) {
    Pki pki;
    const std::string message = sign(kEnvelope, 2, true, pki.cert, pki.key);
    ASSERT_EQ(message.find("BinarySecurityToken"), std::string::npos);
    ASSERT_NE(message.find("X509IssuerSerial"), std::string::npos);
    EXPECT_EQ(verifyWith(message, pki.cert), 0);
}

TEST(SoapVerifyCert, IssuerSerialSignatureWithoutACertificateIsRefused) {
    Pki pki;
    std::string message = sign(kEnvelope, 2, true, pki.cert, pki.key);
    ScopedHandle h;
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], len(message)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 11213);
}

TEST(SoapVerifyCert, AnotherCertificateFailsVerification) {
    Pki pki;
    EXPECT_EQ(verifyWith(sign(kEnvelope, 5, true, pki.cert, pki.key), pki.otherCert), 11213);
}

// The caller's certificate comes before the message's own token.
TEST(SoapVerifyCert, OverridesTheMessagesToken) {
    Pki pki;
    const std::string message = sign(kEnvelope, 2, false, pki.cert, pki.key);
    EXPECT_EQ(verifyWith(message, pki.otherCert), 11213);
    EXPECT_EQ(verifyWith(message, pki.cert), 0);
}

TEST(SoapVerifyCert, KcdsaSignerNamedByIssuerSerial) {
    Pki pki;
    EXPECT_EQ(verifyWith(sign(kEnvelope, 3, true, pki.kcdsaCert, pki.kcdsaKey), pki.kcdsaCert), 0);
}

TEST(SoapVerifyCert, BadArgumentsAndUnsignedMessages) {
    Pki pki;
    ScopedHandle h;
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(nullptr, bytes(pki.cert), len(pki.cert)), 10100);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.cert), len(pki.cert)), 10400);
    std::string encrypted = encrypt(kEnvelope, 1, 3, pki.cert, "");
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &encrypted[0], len(encrypted)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, nullptr, 10), 10405);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.cert), 0), 10405);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.cert), len(pki.cert)), 10406);
    std::string garbage = "not a certificate";
    std::string message = sign(kEnvelope, 2, true, pki.cert, pki.key);
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], len(message)), 0);
    EXPECT_NE(VQTK_SOAPSEC_SetVerifyCert(h, bytes(garbage), len(garbage)), 0);
    std::string truncated = pki.cert.substr(0, pki.cert.size() / 2);
    EXPECT_NE(VQTK_SOAPSEC_SetVerifyCert(h, bytes(truncated), len(truncated)), 0);
}

}  // namespace
