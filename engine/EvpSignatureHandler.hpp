// Signatures on OpenSSL's EVP interface for what the engine lacks or gets
// wrong: RSA-PSS (RFC 6931: MGF1 with the signature's hash, a salt as long as
// the hash, trailer 1), ECDSA on any named curve OpenSSL knows (the engine reads
// r||s only for some curves) and DSA with SHA-1 and SHA-256 (the engine expects a
// 160-bit q). The SignatureValue of ECDSA and DSA is r||s, each as long as the
// group order; verifying, any even length up to that is split in the middle (as
// libxmlsec1 does, for Santuario's shorter P-521 values), anything else is
// refused, and so is a PSS signature with another salt
// length, each with a reason. Keys are the engine's RSA, EC and DSA key objects.
#ifndef VQXML_ENGINE_EVPSIGNATUREHANDLER_HPP
#define VQXML_ENGINE_EVPSIGNATUREHANDLER_HPP

#include "engine/UnsupportedAlgorithmHandler.hpp"

class EvpSignatureHandler : public UnsupportedAlgorithmHandler {
public:
    unsigned int signToSafeBuffer(TXFMChain* inputBytes, const XMLCh* uri, const XSECCryptoKey* key,
                                  unsigned int outputLength, safeBuffer& result) const override;
    // False for a signature that does not verify or is not base64; throws
    // XSECException (SigVfyError) for an r||s of the wrong length or a PSS salt
    // of another length than the hash.
    bool verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig,
                               unsigned int outputLength, const XSECCryptoKey* key) const override;
    XSECAlgorithmHandler* clone() const override;

protected:
    const char* handlerName() const override { return "EVP signature handler"; }
};

namespace vqxml {

// Registers the handler for every RSA-PSS, ECDSA and DSA row of the algorithm
// table.
void registerEvpSignatureHandler();

}  // namespace vqxml

#endif
