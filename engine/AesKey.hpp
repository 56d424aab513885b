// An AES key of the engine (its own streaming operations stay as they are) that
// also keeps its bytes, for the handlers that hand them to OpenSSL EVP directly:
// AES in CBC and GCM mode (AesCipherHandlers.hpp) and AES key wrap
// (KeyTransportHandlers.hpp).
#ifndef VQXML_ENGINE_AESKEY_HPP
#define VQXML_ENGINE_AESKEY_HPP

#include <xsec/enc/OpenSSL/OpenSSLCryptoSymmetricKey.hpp>

#include "engine/korean/SecureBytes.hpp"

class XENCEncryptionMethod;

class AesKey : public OpenSSLCryptoSymmetricKey {
public:
    // KEY_AES_128, KEY_AES_192 or KEY_AES_256.
    explicit AesKey(SymmetricKeyType type) : OpenSSLCryptoSymmetricKey(type) {}

    XSECCryptoKey* clone() const override;
    // Exactly the type's length: 16, 24 or 32 bytes (XSECCryptoException otherwise).
    void setKey(const unsigned char* key, unsigned int keyLen) override;
    const vqxml::korean::SecureBytes& bytes() const { return m_bytes; }

    // The key, when it is an AES key of the length the method's algorithm
    // (a row of Algorithms.def) needs; XSECException otherwise.
    static const AesKey& forMethod(const XENCEncryptionMethod* method, const XSECCryptoKey* key);

private:
    vqxml::korean::SecureBytes m_bytes;
};

#endif
