// XML Encryption with SEED, ARIA-128 and NEAT in CBC mode (the URIs of
// AlgorithmURIs.hpp), with keys of the class VQTKCryptoSymmetricKey. The
// CipherValue is the IV followed by the CBC ciphertext (XmlEncCbc.hpp).
#ifndef VQXML_ENGINE_KOREANCIPHERHANDLER_HPP
#define VQXML_ENGINE_KOREANCIPHERHANDLER_HPP

#include "engine/WholeBufferCipherHandler.hpp"

class KoreanCipherHandler : public WholeBufferCipherHandler {
public:
    // A key of the URI's cipher; XSECCryptoException for a wrong key length.
    XSECCryptoKey* createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                   unsigned int keyLen) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "Korean block cipher handler"; }
    std::vector<std::uint8_t> encryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                            const std::uint8_t* plain, std::size_t size) const override;
    vqxml::korean::SecureBytes decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                             const vqxml::korean::SecureBytes& framed) const override;
};

#endif
