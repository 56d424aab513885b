// SEED, ARIA and NEAT through xml-security-c's own XENCCipher: what the handlers
// refuse (keys of another cipher or length, a wrong key) and their registration.
// Round trips of every cipher and transport run through the C interface (xenc).
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyRSA.hpp>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/framework/XSECAlgorithmMapper.hpp>
#include <xsec/framework/XSECProvider.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/xenc/XENCCipher.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>

#include "XmlTestSupport.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/AlgorithmURIs.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE
using namespace vqxml::test;

namespace {

const char kDocument[] =
    "<Invoice><Id>2024-0001</Id>"
    "<Amount currency=\"KRW\">1,000,000</Amount><Note>세금계산서 &amp; 비고</Note></Invoice>";

struct CipherDeleter {
    void operator()(XENCCipher* c) const { g_provider->releaseCipher(c); }
};
using Cipher = std::unique_ptr<XENCCipher, CipherDeleter>;

const unsigned char kKey[16] = {0x10, 0x21, 0x32, 0x43, 0x54, 0x65, 0x76, 0x87,
                                0x98, 0xa9, 0xba, 0xcb, 0xdc, 0xed, 0xfe, 0x0f};

EVP_PKEY* readPem(const std::string& file, bool privateKey) {
    BIO* bio = BIO_new_file(testPkiPath(file).c_str(), "r");
    EVP_PKEY* key = nullptr;
    if (privateKey) {
        key = PEM_read_bio_PrivateKey(bio, nullptr, nullptr, nullptr);
    } else {
        X509* cert = PEM_read_bio_X509(bio, nullptr, nullptr, nullptr);
        key = X509_get_pubkey(cert);
        X509_free(cert);
    }
    BIO_free(bio);
    if (key == nullptr)
        throw std::runtime_error("cannot read " + file);
    return key;
}

XSECCryptoKey* rsaKey(const std::string& file, bool privateKey) {
    EVP_PKEY* pkey = readPem(file, privateKey);
    auto* key = new OpenSSLCryptoKeyRSA(pkey);  // copies the key
    EVP_PKEY_free(pkey);
    return key;
}

class XmlEncryptionHandlers : public EngineTest {
protected:
    XSECCryptoSymmetricKey* sessionKey(int type, const unsigned char* bytes = kKey) {
        XSECCryptoSymmetricKey* key = provider().keySymmetric(type);
        key->setKey(bytes, 16);
        return key;
    }
    Cipher cipherFor(DOMDocument* doc) { return Cipher(g_provider->newCipher(doc)); }
};

}  // namespace

TEST_F(XmlEncryptionHandlers, WrongKeysAreRefusedCleanly) {
    Document doc = parse(kDocument);
    Cipher enc = cipherFor(doc.get());
    enc->setKey(sessionKey(vqxml::kKeySeed));
    // A SEED key for the ARIA algorithm, and a Triple DES key for SEED.
    EXPECT_THROW(enc->encryptElement(find(doc.get(), "Id"), vqxml::uri::kAria128Cbc), XSECException);
    Cipher des = cipherFor(doc.get());
    XSECCryptoSymmetricKey* desKey = provider().keySymmetric(vqxml::kKeyTripleDes);
    unsigned char bytes24[24] = {1, 2, 3};
    desKey->setKey(bytes24, 24);
    des->setKey(desKey);
    EXPECT_THROW(des->encryptElement(find(doc.get(), "Id"), vqxml::uri::kSeedCbc), XSECException);

    // Decryption under the wrong key of the right cipher: a padding error or
    // garbage that does not parse, never a crash.
    enc->encryptElement(find(doc.get(), "Id"), vqxml::uri::kSeedCbc);
    const unsigned char other[16] = {0xff};
    for (int attempt = 0; attempt < 4; ++attempt) {
        Document copy = parse(serialise(doc.get()));
        Cipher dec = cipherFor(copy.get());
        dec->setKey(sessionKey(vqxml::kKeySeed, other));
        try {
            dec->decryptElement(find(copy.get(), "EncryptedData"));
            ADD_FAILURE() << "decryption under the wrong key succeeded";
        } catch (const XSECException&) {
        } catch (const XSECCryptoException&) {
        }
    }
}

TEST_F(XmlEncryptionHandlers, UnwrappedKeysOfTheWrongLengthAreRefused) {
    Document doc = parse(kDocument);
    Cipher enc = cipherFor(doc.get());
    enc->setKey(sessionKey(vqxml::kKeyAria));
    enc->encryptElement(find(doc.get(), "Note"), vqxml::uri::kAria128Cbc);
    enc->setKEK(rsaKey("ee-rsa.crt.pem", false));
    const unsigned char longKey[24] = {7};
    enc->getEncryptedData()->appendEncryptedKey(
        enc->encryptKey(longKey, 24, DSIGConstants::s_unicodeStrURIRSA_OAEP_MGFP1));

    Document received = parse(serialise(doc.get()));
    Cipher dec = cipherFor(received.get());
    dec->setKEK(rsaKey("ee-rsa.key.pem", true));
    EXPECT_THROW(dec->decryptElement(find(received.get(), "EncryptedData")), XSECException);
}

TEST(EngineStartUp, HandlersAreRegisteredAfterEveryStart) {
    for (int round = 0; round < 3; ++round) {
        VQXML_XMLSecurity context;  // the only live context: starts the engines afresh
        for (const XMLCh* uri : {vqxml::uri::kSeedCbc, vqxml::uri::kAria128Cbc, vqxml::uri::kNeatCbc,
                                 vqxml::uri::kHas160, vqxml::uri::kKcdsaSha1, vqxml::uri::kKcdsaSha256,
                                 vqxml::uri::kKcdsaHas160})
            EXPECT_NE(XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(uri), nullptr) << round;
    }
}
