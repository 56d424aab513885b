// HMAC signatures with the truncation rule of CVE-2009-0217 applied as meant.
//
// The engine's own check compares HMACOutputLength (bits) with the MAC's length in
// bytes and so refuses every truncated MAC. Here a truncated MAC is accepted when
// it keeps at least 80 bits and at least half of the hash; anything shorter, or
// longer than the hash, is refused. Everything but HMAC verification is left to
// the engine's default handler.
#ifndef VQXML_ENGINE_HMACSIGNATUREHANDLER_HPP
#define VQXML_ENGINE_HMACSIGNATUREHANDLER_HPP

#include <xsec/dsig/DSIGAlgorithmHandlerDefault.hpp>

class HMACSignatureHandler : public DSIGAlgorithmHandlerDefault {
public:
    XSECAlgorithmHandler* clone() const override;
    bool verifyBase64Signature(TXFMChain* inputBytes, const XMLCh* uri, const char* sig, unsigned int outputLength,
                               const XSECCryptoKey* key) const override;
};

namespace vqxml {

// Whether a MAC of macBits bits may be cut to outputBits (0: not cut).
bool acceptableHmacLength(unsigned int outputBits, unsigned int macBits);

// The URIs this handler serves.
void registerHmacHandler();

}  // namespace vqxml

#endif
