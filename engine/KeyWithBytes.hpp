// A Triple DES or AES key of the engine (its own streaming operations stay as
// they are) that also keeps its bytes, for the handlers that do the block work
// themselves: AES in CBC and GCM mode on OpenSSL EVP (AesCipherHandlers.hpp),
// AES key wrap (KeyTransportHandlers.hpp) and Triple DES decryption
// (TripleDesCipherHandler.hpp). The library makes every key of these types
// this way, whatever crypto provider the engine has.
#ifndef VQXML_ENGINE_KEYWITHBYTES_HPP
#define VQXML_ENGINE_KEYWITHBYTES_HPP

#include <xsec/enc/OpenSSL/OpenSSLCryptoSymmetricKey.hpp>

#include "engine/korean/SecureBytes.hpp"

class XENCEncryptionMethod;

class KeyWithBytes : public OpenSSLCryptoSymmetricKey {
public:
    // KEY_3DES_192, KEY_AES_128, KEY_AES_192 or KEY_AES_256.
    explicit KeyWithBytes(SymmetricKeyType type) : OpenSSLCryptoSymmetricKey(type) {}

    XSECCryptoKey* clone() const override;
    // AES: exactly the type's length, 16, 24 or 32 bytes (XSECCryptoException
    // otherwise). Triple DES: any length, as the engine's own key takes it; the
    // cipher uses the first 24 bytes.
    void setKey(const unsigned char* key, unsigned int keyLen) override;
    const vqxml::korean::SecureBytes& bytes() const { return m_bytes; }

    // The key, when it is of the type and length the method's algorithm (a row
    // of Algorithms.def) needs; XSECException otherwise.
    static const KeyWithBytes& forMethod(const XENCEncryptionMethod* method, const XSECCryptoKey* key);

private:
    vqxml::korean::SecureBytes m_bytes;
};

#endif
