// Messages made by Apache WSS4J, processed into their plain envelopes.
#include "InteropManifest.hpp"
#include "soapsec/SoapFixture.hpp"

using namespace soaptest;

namespace {

struct Keys {
    std::string recipientCert = interop::file("wss/keys/recipient-cert.der");
    std::string recipientKey = interop::file("wss/keys/recipient-key.pk8.der");
};

// The expected Body child, as WSS4J's consumer saw it.
std::string expected(const std::string& name) {
    std::string text = interop::file("wss/" + name + ".expected");
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

int process(void* h, const std::string& name, bool encrypted) {
    std::string xml = interop::file("wss/" + name + ".xml");
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &xml[0], size(xml)), 0);
    int isSigned = -1;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    if (encrypted) {
        int isEncrypted = -1;
        EXPECT_EQ(VQTK_SOAPSEC_GetEncKeyInfo(h, &isEncrypted), 0);
        EXPECT_EQ(isEncrypted, 1);
        Keys keys;
        EXPECT_EQ(VQTK_SOAPSEC_DecryptKeyWrapKey(h, bytes(keys.recipientCert), size(keys.recipientCert),
                                                 bytes(keys.recipientKey), size(keys.recipientKey)),
                  0);
    }
    return VQTK_SOAPSEC_ProcessSOAP(h);
}

class WssSample : public testing::TestWithParam<std::pair<const char*, bool>> {};

TEST_P(WssSample, ProcessesIntoThePlainEnvelope) {
    ScopedHandle h;
    ASSERT_EQ(process(h, GetParam().first, GetParam().second), 0);
    const std::string plain = resultDocument(h);
    EXPECT_NE(plain.find(expected(GetParam().first)), std::string::npos) << plain;
    EXPECT_EQ(plain.find("Security"), std::string::npos);
    EXPECT_EQ(plain.find("EncryptedData"), std::string::npos);
    EXPECT_EQ(plain.find("wsu:Id"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Wss4j, WssSample,
                         testing::Values(std::make_pair("soap11-sign-rsa-sha1", false),
                                         std::make_pair("soap11-sign-rsa-sha256", false),
                                         std::make_pair("soap12-sign-rsa-sha1", false),
                                         std::make_pair("soap11-encrypt-3des-rsa15", true),
                                         std::make_pair("soap11-sign-then-encrypt", true),
                                         std::make_pair("soap11-encrypt-then-sign", true)));

TEST(WssSamples, SignerCertificateAndRecipientNamesAreReported) {
    ScopedHandle h;
    std::string xml = interop::file("wss/soap11-sign-then-encrypt.xml");
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &xml[0], size(xml)), 0);
    int flag = 0;
    ASSERT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &flag), 0);
    EXPECT_EQ(flag, 1);
    unsigned char* cert = nullptr;
    int certLen = 0;
    ASSERT_EQ(VQTK_SOAPSEC_GetSignCert(h, &cert, &certLen), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(cert), static_cast<size_t>(certLen)),
              interop::file("wss/keys/sender-cert.der"));
    ASSERT_EQ(VQTK_SOAPSEC_GetEncKeyInfo(h, &flag), 0);
    EXPECT_EQ(issuerAndSerial(h).second, "8194");
}

// A changed signed Body, and an encrypted message processed without its session key.
TEST(WssSamples, TamperedOrUnopenedMessagesAreRefused) {
    ScopedHandle h;
    EXPECT_EQ(process(h, "soap11-sign-rsa-sha1-tampered", false), 11213);
    std::string xml = interop::file("wss/soap11-encrypt-3des-rsa15.xml");
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &xml[0], size(xml)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 10511);
}

}  // namespace

// Apache WSS4J's sender encrypts the Body's content with AES in CBC and GCM mode
// (RSA 1.5 and RSA-OAEP key transport, the recipient named by issuer and
// serial); the library processes it into the plain envelope.
TEST(Wss4jEncrypts, LibraryProcessesTheMessage) {
#ifndef VQXML_WSS4J_JAVA
    GTEST_SKIP() << kWss4jMissing;
#else
    const std::string xenc = "http://www.w3.org/2001/04/xmlenc#", xenc11 = "http://www.w3.org/2009/xmlenc11#";
    const std::pair<std::string, std::string> choices[] = {{xenc + "aes128-cbc", xenc + "rsa-oaep-mgf1p"},
                                                           {xenc + "aes256-cbc", xenc + "rsa-1_5"},
                                                           {xenc11 + "aes128-gcm", xenc + "rsa-oaep-mgf1p"},
                                                           {xenc11 + "aes256-gcm", xenc + "rsa-1_5"}};
    const std::string cert = testfiles::read(testfiles::dataPath("testpki/ee-rsa-b.crt.der"));
    const std::string key = testfiles::read(testfiles::dataPath("testpki/ee-rsa-b.key.der"));
    const testfiles::ScratchDir dir;
    testfiles::write(dir("envelope.xml"), kEnvelope);
    for (const auto& [cipher, transport] : choices) {
        SCOPED_TRACE(cipher + " " + transport);
        const std::string command = std::string(VQXML_WSS4J_JAVA) + " Wss4jProducer --encrypt " + dir("envelope.xml") +
                                    " " + dir("secured.xml") + " " + testfiles::dataPath("testpki/ee-rsa-b.crt.der") +
                                    " " + cipher + " " + transport;
        ASSERT_EQ(testfiles::run(command), 0) << command;
        std::string message = testfiles::read(dir("secured.xml"));
        ASSERT_NE(message.find(cipher), std::string::npos) << message;
        ScopedHandle h;
        ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
        int isEncrypted = -1;
        ASSERT_EQ(VQTK_SOAPSEC_GetEncKeyInfo(h, &isEncrypted), 0);
        ASSERT_EQ(isEncrypted, 1);
        ASSERT_EQ(VQTK_SOAPSEC_DecryptKeyWrapKey(h, bytes(cert), size(cert), bytes(key), size(key)), 0) << apitest::errorText(h);
        ASSERT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 0) << apitest::errorText(h);
        EXPECT_NE(resultDocument(h).find(kBodyContent), std::string::npos) << resultDocument(h);
    }
#endif
}
