// XML Encryption with Triple DES in CBC mode, in place of the engine's own
// handler for that URI, which reads ciphertext and plaintext into a buffer that
// grows by 1 KB at a time: copying everything on every step made a megabyte-sized
// element cost seconds of CPU. This one works on whole buffers.
//
// Keys are KeyWithBytes of type KEY_3DES_192: the engine's own Triple DES key
// does the block work, the IV and the padding when encrypting (CBC encryption is
// serial). Decryption runs on our bitsliced Triple DES (engine/korean/
// TripleDesCbc.hpp), which decrypts many blocks at once and is several times
// faster than OpenSSL's table-driven DES, which the engine's key uses; it also
// has no key- or data-dependent table lookups. The padding follows XML
// Encryption's rule as for every CBC cipher (engine/korean/XmlEncCbc.hpp).
#ifndef VQXML_ENGINE_TRIPLEDESCIPHERHANDLER_HPP
#define VQXML_ENGINE_TRIPLEDESCIPHERHANDLER_HPP

#include "engine/WholeBufferCipherHandler.hpp"

class TripleDesCipherHandler : public WholeBufferCipherHandler {
public:
    // A KeyWithBytes; XSECException for a key shorter than 24 bytes.
    XSECCryptoKey* createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                   unsigned int keyLen) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "Triple DES handler"; }
    std::vector<std::uint8_t> encryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                            const std::uint8_t* plain, std::size_t size) const override;
    vqxml::korean::SecureBytes decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                             const vqxml::korean::SecureBytes& framed) const override;
};

#endif
