// XML Encryption with Triple DES in CBC mode, in place of the engine's own
// handler for that URI, which reads ciphertext and plaintext into a buffer that
// grows by 1 KB at a time: copying everything on every step made a megabyte-sized
// element cost seconds of CPU. This one works on whole buffers.
//
// Keys are the engine's own Triple DES keys, which do the block work, the IV and
// the padding when encrypting; on decryption the padding follows XML Encryption's
// rule as for every CBC cipher (engine/korean/XmlEncCbc.hpp).
#ifndef VQXML_ENGINE_TRIPLEDESCIPHERHANDLER_HPP
#define VQXML_ENGINE_TRIPLEDESCIPHERHANDLER_HPP

#include "engine/WholeBufferCipherHandler.hpp"

class TripleDesCipherHandler : public WholeBufferCipherHandler {
public:
    // XSECException for a key shorter than 24 bytes.
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
