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

TEST(WssSamples, TamperedBodyIsRefused) {
    ScopedHandle h;
    EXPECT_EQ(process(h, "soap11-sign-rsa-sha1-tampered", false), 11213);
}

TEST(WssSamples, EncryptedMessageWithoutSessionKeyIsRefused) {
    ScopedHandle h;
    std::string xml = interop::file("wss/soap11-encrypt-3des-rsa15.xml");
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &xml[0], size(xml)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 10511);
}

}  // namespace
