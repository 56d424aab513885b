// A signer named only by issuer and serial: the receiver supplies its certificate.
#include "soapsec/SoapSender.hpp"

using namespace soaptest;

namespace {

// Loads message, reads the signer's data, gives cert to verify with; the status
// of ProcessSOAP (or of the first failing step).
int verifyWith(std::string message, std::string cert) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
    int isSigned = 0;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    EXPECT_EQ(isSigned, 1);
    const int status = VQTK_SOAPSEC_SetVerifyCert(h, bytes(cert), size(cert));
    if (status != 0)
        return status;
    return VQTK_SOAPSEC_ProcessSOAP(h);
}

// The caller's certificate decides, also over the message's own token; an
// issuer-serial signature without one does not verify.
TEST(SoapVerifyCert, TheCallersCertificateDecides) {
    Pki pki;
    const std::string issuerSerial = sign(kEnvelope, 2, true, pki.cert, pki.key);
    ASSERT_EQ(issuerSerial.find("BinarySecurityToken"), std::string::npos);
    ASSERT_NE(issuerSerial.find("X509IssuerSerial"), std::string::npos);
    const std::string token = sign(kEnvelope, 2, false, pki.cert, pki.key);
    const struct {
        std::string message, cert;
        int status;
    } cases[] = {
        {issuerSerial, pki.cert, 0},
        {issuerSerial, testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.pem")), 0},
        {sign(kEnvelope, 5, true, pki.cert, pki.key), pki.otherCert, 11213},
        {sign(kEnvelope, 3, true, pki.kcdsaCert, pki.kcdsaKey), pki.kcdsaCert, 0},
        {token, pki.otherCert, 11213},
        {token, pki.cert, 0},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i)
        EXPECT_EQ(verifyWith(cases[i].message, cases[i].cert), cases[i].status) << i;

    std::string message = issuerSerial;
    ScopedHandle h;
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 11213) << "no certificate given";
    // Given before the token's key is read, it still comes first.
    message = token;
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
    int isSigned = 0;
    ASSERT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    ASSERT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.otherCert), size(pki.otherCert)), 0);
    ASSERT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 11213);
}

// The Body signed by Apache WSS4J's sender with signature and digest URIs (none:
// its defaults), the signer named by issuer and serial.
std::string signedByWss4j(const std::string& uris, const std::string& cert, const std::string& key) {
#ifdef VQXML_WSS4J_JAVA
    const testfiles::ScratchDir dir;
    const std::string in = dir("envelope.xml"), out = dir("signed.xml");
    testfiles::write(in, kEnvelope);
    const std::string command = std::string(VQXML_WSS4J_JAVA) + " Wss4jProducer " + in + " " + out + " " +
                                testfiles::dataPath(cert) + " " + testfiles::dataPath(key) + " " + uris;
    EXPECT_EQ(testfiles::run(command), 0) << command;
    return testfiles::read(out);
#else
    (void)uris, (void)cert, (void)key;
    return std::string();
#endif
}

TEST(SoapVerifyCert, Wss4jIssuerSerialSignature) {
#ifndef VQXML_WSS4J_JAVA
    GTEST_SKIP() << kWss4jMissing;
#endif
    const std::string more = "http://www.w3.org/2001/04/xmldsig-more#", xmlenc = "http://www.w3.org/2001/04/xmlenc#";
    const std::string rsa = "testpki/ee-rsa", ec = "dsig/signer-ec256", dsa = "dsig/signer-dsa2048";
    const struct {
        std::string uris, signer, keyEnding, serial, issuer;
    } kSigners[] = {
        {"", rsa, ".key.der", "4097", "VQXML Test Root CA"},
        {more + "rsa-sha256 " + xmlenc + "sha256", rsa, ".key.der", "4097", "VQXML Test Root CA"},
        {more + "rsa-sha512 " + xmlenc + "sha512", rsa, ".key.der", "4097", "VQXML Test Root CA"},
        {"http://www.w3.org/2007/05/xmldsig-more#sha256-rsa-MGF1 " + xmlenc + "sha256", rsa, ".key.der", "4097",
         "VQXML Test Root CA"},
        {more + "ecdsa-sha256 " + xmlenc + "sha256", ec, ".key.pk8.der", "4916", "vqxml Test Root CA"},
        {"http://www.w3.org/2009/xmldsig11#dsa-sha256 " + xmlenc + "sha256", dsa, ".key.pk8.der", "6708",
         "vqxml Test Root CA"},
    };
    const std::string other = Pki().otherCert;
    for (const auto& s : kSigners) {
        SCOPED_TRACE(s.uris.empty() ? "rsa-sha1" : s.uris);
        std::string message = signedByWss4j(s.uris, s.signer + ".crt.der", s.signer + s.keyEnding);
        ASSERT_NE(message.find("X509IssuerSerial"), std::string::npos) << message;
        ScopedHandle h;
        ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
        int isSigned = 0;
        ASSERT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
        const auto named = issuerAndSerial(h);
        EXPECT_EQ(named.second, s.serial);
        EXPECT_NE(named.first.find(s.issuer), std::string::npos) << named.first;
        const std::string cert = testfiles::read(testfiles::dataPath(s.signer + ".crt.der"));
        EXPECT_NE(verifyWith(message, other), 0);
        EXPECT_EQ(verifyWith(tampered(message), cert), 11213);
        EXPECT_EQ(verifyWith(message, cert), 0);
    }
}

TEST(SoapVerifyCert, BadArgumentsAndUnsignedMessages) {
    Pki pki;
    ScopedHandle h;
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.cert), size(pki.cert)), 10400);
    std::string encrypted = encrypt(kEnvelope, 1, 3, pki.cert, "");
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &encrypted[0], size(encrypted)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, nullptr, 10), 10405);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.cert), 0), 10405);
    EXPECT_EQ(VQTK_SOAPSEC_SetVerifyCert(h, bytes(pki.cert), size(pki.cert)), 10406);
    std::string garbage = "not a certificate";
    std::string message = sign(kEnvelope, 2, true, pki.cert, pki.key);
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
    EXPECT_NE(VQTK_SOAPSEC_SetVerifyCert(h, bytes(garbage), size(garbage)), 0);
    std::string truncated = pki.cert.substr(0, pki.cert.size() / 2);
    EXPECT_NE(VQTK_SOAPSEC_SetVerifyCert(h, bytes(truncated), size(truncated)), 0);
}

}  // namespace
