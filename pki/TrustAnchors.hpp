// The root certificates every certificate check trusts, compiled in.
#ifndef VQXML_PKI_TRUSTANCHORS_HPP
#define VQXML_PKI_TRUSTANCHORS_HPP

namespace vqxml {

struct TrustAnchor {
    const char* name;    // the subject's common name
    const char* base64;  // DER in base64, one line
    int base64Length;    // passed to the toolkit explicitly
};

// In the order they are loaded.
extern const TrustAnchor kTrustAnchors[];
extern const int kTrustAnchorCount;

}  // namespace vqxml

#endif
