// XML Encryption with Triple DES in CBC mode, in place of the engine's own
// handler for that URI, which reads ciphertext and plaintext into a buffer that
// grows by 1 KB at a time: copying everything on every step made a megabyte-sized
// element cost seconds of CPU. This one reads each side in one piece and keeps
// the plaintext in memory that is wiped when freed.
//
// Keys are the engine's own Triple DES keys; the CipherValue is the IV followed by
// the CBC ciphertext, padded as XML Encryption says (the engine's key does the
// block work, padding and IV handling, so what this writes and reads is exactly
// what the engine's handler did).
#ifndef VQXML_ENGINE_TRIPLEDESCIPHERHANDLER_HPP
#define VQXML_ENGINE_TRIPLEDESCIPHERHANDLER_HPP

#include "engine/UnsupportedAlgorithmHandler.hpp"

class TripleDesCipherHandler : public UnsupportedAlgorithmHandler {
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
    // XSECException for a key shorter than 24 bytes.
    XSECCryptoKey* createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                   unsigned int keyLen) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "Triple DES handler"; }
};

#endif
