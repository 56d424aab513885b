// KCDSA signatures (SignatureMethod uri::kKcdsaSha1, kKcdsaSha256, kKcdsaHas160)
// with VQTKCryptoKeyKCDSA keys. The signed value is h(Z || canonical
// SignedInfo); the SignatureValue is base64 of R || S (each as long as q).
#ifndef VQXML_ENGINE_KCDSASIGNATUREHANDLER_HPP
#define VQXML_ENGINE_KCDSASIGNATUREHANDLER_HPP

#include "engine/UnsupportedAlgorithmHandler.hpp"

class KCDSASignatureHandler : public UnsupportedAlgorithmHandler {
public:
    unsigned int signToSafeBuffer(TXFMChain* inputBytes, const XMLCh* uri, const XSECCryptoKey* key,
                                  unsigned int outputLength, safeBuffer& result) const override;
    // False for a signature that does not verify or is not valid base64.
    bool verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                               unsigned int outputLength, const XSECCryptoKey* key) const override;
    bool appendSignatureHashTxfm(TXFMChain* inputBytes, const XMLCh* uri,
                                 const XSECCryptoKey* key) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "KCDSA signature handler"; }
};

#endif
