// Key transports of XML Encryption that the engine's own handler does not do
// the way the library needs:
//
//  - AES key wrap (xmlenc#kw-aes128, -192, -256; RFC 3394) on OpenSSL's EVP wrap
//    ciphers, with a key-encryption key of the class KeyWithBytes. A wrapped key whose
//    integrity check fails raises XSECCryptoException.
//  - RSA-OAEP (xmlenc#rsa-oaep-mgf1p and xmlenc11#rsa-oaep): decryption reads
//    the ds:DigestMethod (SHA-1 when absent), the xenc11:MGF (xmlenc11 only;
//    MGF1 with SHA-1 when absent) and the xenc:OAEPparams label. Encryption
//    writes what the EncryptedKey's method names and states the digest always:
//    a method without DigestMethod gets the digest of its MGF (SHA-1 without
//    one), so that no reader has to guess.
#ifndef VQXML_ENGINE_KEYTRANSPORTHANDLERS_HPP
#define VQXML_ENGINE_KEYTRANSPORTHANDLERS_HPP

#include "engine/UnsupportedAlgorithmHandler.hpp"

#include "engine/korean/SecureBytes.hpp"

// Base of the two: the key's octets in and out in one piece, in memory that is
// wiped when freed; the wrapped key is base64 text when written.
class KeyTransportHandler : public UnsupportedAlgorithmHandler {
public:
    bool encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* encryptionMethod,
                             const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument* doc,
                             safeBuffer& result) const override;
    unsigned int decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod* encryptionMethod,
                                     const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument* doc,
                                     safeBuffer& result) const override;

protected:
    virtual vqxml::korean::SecureBytes wrap(XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                            const vqxml::korean::SecureBytes& plain) const = 0;
    virtual vqxml::korean::SecureBytes unwrap(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                              const vqxml::korean::SecureBytes& wrapped) const = 0;
};

class AesKeyWrapHandler : public KeyTransportHandler {
public:
    XSECAlgorithmHandler* clone() const override { return new AesKeyWrapHandler(); }

protected:
    const char* handlerName() const override { return "AES key wrap handler"; }
    vqxml::korean::SecureBytes wrap(XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                    const vqxml::korean::SecureBytes& plain) const override;
    vqxml::korean::SecureBytes unwrap(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                      const vqxml::korean::SecureBytes& wrapped) const override;
};

class RsaOaepHandler : public KeyTransportHandler {
public:
    XSECAlgorithmHandler* clone() const override { return new RsaOaepHandler(); }

    // The xenc11:MGF URI of MGF1 with a hash of the algorithm table (1 SHA-1,
    // 3 SHA-224, 4 SHA-256, 5 SHA-384, 6 SHA-512); null for any other.
    static const XMLCh* mgfFor(int hash);

protected:
    const char* handlerName() const override { return "RSA-OAEP handler"; }
    vqxml::korean::SecureBytes wrap(XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                    const vqxml::korean::SecureBytes& plain) const override;
    vqxml::korean::SecureBytes unwrap(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                      const vqxml::korean::SecureBytes& wrapped) const override;
};

#endif
