// XML Encryption with AES on OpenSSL EVP, keys of the class KeyWithBytes.
//
//  - CBC (xmlenc#aes128-cbc, -192, -256): the CipherValue is the 16-byte IV and
//    the ciphertext; padding as XML Encryption has it (engine/korean/XmlEncCbc.hpp:
//    on decryption only the last byte counts, as other writers fill the rest
//    with random bytes).
//  - GCM (xmlenc11#aes128-gcm, -192, -256): the 12-byte IV, the ciphertext and
//    the 16-byte tag. Decryption checks the tag before it hands out any byte of
//    plaintext.
// A ciphertext that does not decrypt raises XSECCryptoException; the cipher
// turns every such failure into one text (VQXMLXENCCipher.hpp).
#ifndef VQXML_ENGINE_AESCIPHERHANDLERS_HPP
#define VQXML_ENGINE_AESCIPHERHANDLERS_HPP

#include "engine/WholeBufferCipherHandler.hpp"

class AesCipherHandler : public WholeBufferCipherHandler {
public:
    // A KeyWithBytes of the URI's key length; XSECCryptoException for another length.
    XSECCryptoKey* createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                   unsigned int keyLen) const override;
};

class AesCbcCipherHandler : public AesCipherHandler {
public:
    XSECAlgorithmHandler* clone() const override { return new AesCbcCipherHandler(); }

protected:
    const char* handlerName() const override { return "AES-CBC handler"; }
    std::vector<std::uint8_t> encryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                            const std::uint8_t* plain, std::size_t size) const override;
    vqxml::korean::SecureBytes decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                             const vqxml::korean::SecureBytes& framed) const override;
};

class AesGcmCipherHandler : public AesCipherHandler {
public:
    XSECAlgorithmHandler* clone() const override { return new AesGcmCipherHandler(); }

protected:
    const char* handlerName() const override { return "AES-GCM handler"; }
    std::vector<std::uint8_t> encryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                            const std::uint8_t* plain, std::size_t size) const override;
    vqxml::korean::SecureBytes decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                             const vqxml::korean::SecureBytes& framed) const override;
};

#endif
