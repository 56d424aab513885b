// Messages the library secures, processed back by the library; bad input.
#include <memory>

#include <openssl/x509.h>

#include "soapsec/SoapSender.hpp"

using namespace soaptest;

namespace {

// The certificate's serial number in decimal, as the key information reports it.
std::string serialOf(const std::string& certDer) {
    const auto* p = reinterpret_cast<const unsigned char*>(certDer.data());
    std::unique_ptr<X509, void (*)(X509*)> cert(d2i_X509(nullptr, &p, long(certDer.size())), X509_free);
    return std::to_string(ASN1_INTEGER_get(X509_get0_serialNumber(cert.get())));
}

// Walks the encrypted keys as a receiver does, until one names cert's serial number.
bool findKeyFor(void* h, const std::string& cert) {
    const std::string serial = serialOf(cert);
    for (int walked = 0; walked < 8; ++walked) {
        int flag = 0;
        EXPECT_EQ(VQTK_SOAPSEC_GetEncKeyInfo(h, &flag), 0);
        if (flag == 1 && issuerAndSerial(h).second == serial)
            return true;
    }
    return false;
}

// 0 and the plain envelope, or the failing status. When no encrypted key names
// cert, the last one read is unwrapped, so that the name check must refuse it.
int process(std::string message, std::string cert, std::string key, std::string& plain) {
    ScopedHandle h;
    int status = VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message));
    if (status != 0)
        return status;
    int isSigned = 0;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    if (!key.empty()) {
        findKeyFor(h, cert);
        status = VQTK_SOAPSEC_DecryptKeyWrapKey(h, bytes(cert), size(cert), bytes(key), size(key));
        if (status != 0)
            return status;
    }
    status = VQTK_SOAPSEC_ProcessSOAP(h);
    if (status == 0)
        plain = resultDocument(h);
    return status;
}

void expectPlain(const std::string& plain) {
    EXPECT_NE(plain.find("<m:item>tea</m:item><m:count>3</m:count>"), std::string::npos) << plain;
    EXPECT_EQ(plain.find("Security"), std::string::npos) << plain;
    EXPECT_EQ(plain.find("wsu:Id"), std::string::npos) << plain;
}

// Every asymmetric signature family, each with its token, processed and, changed, refused.
TEST(SoapRoundTrip, SignedWithBinarySecurityToken) {
    const Pki pki;
    const struct {
        int alg;
        int c14n;  // SOAP SignedInfo canonicalization selector
        const std::string &cert, &key;
        const char* method;
    } kSigners[] = {
        {2, 0, pki.cert, pki.key, "xmldsig#rsa-sha1"},
        {4, 0, pki.kcdsaCert, pki.kcdsaKey, "kcdsa-has160"},
        {8, 3, pki.cert, pki.key, "xmldsig-more#rsa-sha512"},
        {9, 1, pki.cert, pki.key, "xmldsig-more#sha256-rsa-MGF1"},
        {13, 4, pki.ecCert, pki.ecKey, "xmldsig-more#ecdsa-sha384"},
        {15, 0, pki.dsaCert, pki.dsaKey, "xmldsig11#dsa-sha256"},
    };
    for (const auto& s : kSigners) {
        SCOPED_TRACE(s.method);
        const std::string signed_ = sign(kEnvelope, s.alg, false, s.cert, s.key, s.c14n);
        EXPECT_NE(signed_.find("BinarySecurityToken"), std::string::npos);
        EXPECT_NE(signed_.find(s.method), std::string::npos);
        std::string plain;
        ASSERT_EQ(process(signed_, "", "", plain), 0);
        expectPlain(plain);
        EXPECT_EQ(process(tampered(signed_), "", "", plain), 11213);
    }
}

// Each of two recipients opens; another is refused by name.
TEST(SoapRoundTrip, EncryptedForTwoRecipientsEachOpensAndNoOneElse) {
    Pki pki;
    for (const auto& [symm, wrap] : {std::pair{1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 4}, {7, 2}, {8, 4}, {9, 3}, {10, 2}}) {
        const std::string message = encrypt(kEnvelope, symm, wrap, pki.cert, pki.otherCert);
        std::string plain;
        ASSERT_EQ(process(message, pki.cert, pki.key, plain), 0) << symm;
        expectPlain(plain);
        plain.clear();
        ASSERT_EQ(process(message, pki.otherCert, pki.otherKey, plain), 0) << symm;
        expectPlain(plain);
    }
    std::string plain;
    EXPECT_EQ(process(encrypt(kEnvelope, 1, 2, pki.cert, ""), pki.otherCert, pki.otherKey, plain), 10507);
}

// Received messages go through the decryption XML Encryption uses: a changed
// RSA-1_5 wrapped key unwraps (to a stand-in key) and the body then fails like
// a changed ciphertext (SEED, AES-CBC, AES-GCM), with one status and one text.
TEST(SoapRoundTrip, ChangedCiphertextsFailAlike) {
    Pki pki;
    std::string text;
    for (int symm : {2, 5, 8}) {
        const std::string message = encrypt(kEnvelope, symm, 2, pki.cert, "");
        const size_t wrapped = message.find("<xenc:CipherValue>") + 18;
        const size_t data = message.rfind("<xenc:CipherValue>") + 18;
        ASSERT_NE(wrapped, data);
        for (size_t at : {wrapped + 4, wrapped + 40, data + 30, data + 4}) {
            std::string changed = message;
            changed[at] = changed[at] == 'A' ? 'B' : 'A';
            ScopedHandle h;
            ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &changed[0], size(changed)), 0);
            ASSERT_TRUE(findKeyFor(h, pki.cert));
            ASSERT_EQ(
                VQTK_SOAPSEC_DecryptKeyWrapKey(h, bytes(pki.cert), size(pki.cert), bytes(pki.key), size(pki.key)), 0);
            ASSERT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 46) << symm << " " << at;
            text = text.empty() ? apitest::errorText(h) : text;
            EXPECT_EQ(apitest::errorText(h), text) << symm << " " << at;
        }
    }
    EXPECT_EQ(text, "SOAPSEC_processSOAP > The EncryptedData does not decrypt to well-formed content with the session key");
}

// Signed, encrypted, or both in either order, in SOAP 1.1 and 1.2 envelopes:
// each is processed into the plain envelope.
TEST(SoapRoundTrip, SignedEncryptedOrBothInEitherOrder) {
    Pki pki;
    const struct {
        std::string message;
        std::string cert, key;  // the recipient's; none when only signed
    } cases[] = {
        {encrypt(sign(kEnvelope, 2, false, pki.cert, pki.key), 1, 2, pki.otherCert, ""), pki.otherCert, pki.otherKey},
        {sign(encrypt(kEnvelope, 1, 2, pki.otherCert, ""), 2, false, pki.cert, pki.key), pki.otherCert, pki.otherKey},
        {sign(kEnvelope12, 5, false, pki.cert, pki.key), "", ""},
        {encrypt(kEnvelope12, 1, 3, pki.cert, ""), pki.cert, pki.key},
        {encrypt(sign(kEnvelope12, 2, false, pki.cert, pki.key), 3, 2, pki.otherCert, ""), pki.otherCert,
         pki.otherKey},
    };
    for (const auto& c : cases) {
        std::string plain;
        ASSERT_EQ(process(c.message, c.cert, c.key, plain), 0);
        expectPlain(plain);
        if (c.message.find("<env:Body") != std::string::npos) {
            EXPECT_NE(plain.find("<env:Body>" + kBodyContent + "</env:Body>"), std::string::npos) << plain;
        }
    }
}

// The receiver reads the signature's method first; that lets it set the secret.
int hmacVerified(std::string message, std::string key) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &message[0], size(message)), 0);
    int isSigned = 0;
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &isSigned), 0);
    if (!key.empty()) {
        EXPECT_EQ(VQTK_SOAPSEC_SetHMACKey(h, bytes(key), unsigned(key.size())), 0);
    }
    return VQTK_SOAPSEC_ProcessSOAP(h);
}

TEST(SoapRoundTrip, HmacSignature) {
    const std::string message = sign(kEnvelope, 1, false, "", "shared secret of the two ends");
    EXPECT_NE(message.find("xmldsig#hmac-sha1"), std::string::npos);
    EXPECT_EQ(message.find("BinarySecurityToken"), std::string::npos);
    EXPECT_EQ(hmacVerified(message, "shared secret of the two ends"), 0);
    EXPECT_EQ(hmacVerified(message, "shared secret of the two endz"), 11213);
    EXPECT_EQ(hmacVerified(message, ""), 11213);
    EXPECT_EQ(hmacVerified(tampered(message), "shared secret of the two ends"), 11213);
}

// Calls before a load, and a message neither signed nor encrypted.
TEST(SoapBadInput, NothingToProcessIsRefused) {
    ScopedHandle h;
    int flag = 0;
    EXPECT_EQ(VQTK_SOAPSEC_SignatureMethod(h, 2, 0), 10400);
    EXPECT_EQ(VQTK_SOAPSEC_Sign(h), 10400);
    EXPECT_EQ(VQTK_SOAPSEC_GetSignKeyInfo(h, &flag), 10400);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 10400);
    EXPECT_EQ(VQTK_SOAPSEC_Encrypt(h), 10400);
    std::string xml = kEnvelope;  // neither signed nor encrypted
    ASSERT_EQ(VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, &xml[0], size(xml)), 0);
    EXPECT_EQ(VQTK_SOAPSEC_ProcessSOAP(h), 10509);
}

// A second element with the signed Body's wsu:Id, and a token reference to no
// token, are refused.
TEST(SoapBadInput, ForgedIdsAndMissingTokensAreRefused) {
    Pki pki;
    const std::string good = sign(kEnvelope, 2, false, pki.cert, pki.key);
    const size_t at = good.find("wsu:Id=\"id-");
    const std::string id = good.substr(at + 8, good.find('"', at + 8) - at - 8);
    std::string duplicateId = good, missingToken = good;
    duplicateId.replace(duplicateId.find("<m:order"), 8,
                        "<m:evil xmlns:m=\"urn:test\" xmlns:wsu=\"http://docs.oasis-open.org/wss/2004/01/oasis-200401-"
                        "wss-wssecurity-utility-1.0.xsd\" wsu:Id=\"" + id + "\"/><m:order");
    missingToken.replace(missingToken.find("URI=\"#X509-"), 11, "URI=\"#gone-");
    for (const std::string& message : {duplicateId, missingToken}) {
        std::string plain;
        EXPECT_EQ(process(message, "", "", plain), 11213);
    }
}

}  // namespace
