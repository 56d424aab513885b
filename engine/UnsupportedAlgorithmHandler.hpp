// Base of the engine's algorithm handlers: every operation of the interface
// refuses with XSECException (AlgorithmMapperError) until a subclass offers it,
// so each handler states only what its algorithms do.
#ifndef VQXML_ENGINE_UNSUPPORTEDALGORITHMHANDLER_HPP
#define VQXML_ENGINE_UNSUPPORTEDALGORITHMHANDLER_HPP

#include <xsec/framework/XSECAlgorithmHandler.hpp>

class UnsupportedAlgorithmHandler : public XSECAlgorithmHandler {
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
    unsigned int signToSafeBuffer(TXFMChain* inputBytes, const XMLCh* uri, const XSECCryptoKey* key,
                                  unsigned int outputLength, safeBuffer& result) const override;
    bool verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                               unsigned int outputLength, const XSECCryptoKey* key) const override;
    bool appendSignatureHashTxfm(TXFMChain* inputBytes, const XMLCh* uri,
                                 const XSECCryptoKey* key) const override;
    bool appendHashTxfm(TXFMChain* inputBytes, const XMLCh* uri) const override;
    XSECCryptoKey* createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                   unsigned int keyLen) const override;

protected:
    // Names the handler in refusals.
    virtual const char* handlerName() const = 0;

private:
    [[noreturn]] void refuse(const char* operation) const;
};

#endif
