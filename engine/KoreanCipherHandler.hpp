// XML Encryption with SEED, ARIA-128 and NEAT in CBC mode (the URIs of
// AlgorithmURIs.hpp), with keys of the class VQTKCryptoSymmetricKey. The
// CipherValue is the IV followed by the CBC ciphertext (XmlEncCbc.hpp).
#ifndef VQXML_ENGINE_KOREANCIPHERHANDLER_HPP
#define VQXML_ENGINE_KOREANCIPHERHANDLER_HPP

#include "engine/UnsupportedAlgorithmHandler.hpp"

class KoreanCipherHandler : public UnsupportedAlgorithmHandler {
public:
    bool encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* encryptionMethod,
                             const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument* doc,
                             safeBuffer& result) const override;
    unsigned int decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod* encryptionMethod,
                                     const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument* doc,
                                     safeBuffer& result) const override;
    bool appendDecryptCipherTXFM(TXFMChain* cipherText, XENCEncryptionMethod* encryptionMethod,
                                 const XSECCryptoKey* key,
                                 XERCES_CPP_NAMESPACE::DOMDocument* doc) const override;
    // A key of the URI's cipher; XSECCryptoException for a wrong key length.
    XSECCryptoKey* createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                   unsigned int keyLen) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "Korean block cipher handler"; }
};

#endif
