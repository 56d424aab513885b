// Verification of a certificate whose own key is KCDSA, which OpenSSL cannot load.
#ifndef VQXML_TOOLKIT_KCDSALEAF_HPP
#define VQXML_TOOLKIT_KCDSALEAF_HPP

#include "toolkit/PathVerify.hpp"

namespace vqtk {

// Finds the leaf's issuer among the anchors and the offered intermediates, checks
// the leaf's signature with the issuer's key, the leaf's validity and (with
// revocation) its issuer's CRLs, then the issuer's own path. KCDSA issuers are refused with VQTK_ERR_UNSUPPORTED.
void verifyKcdsaLeaf(const PathRequest& request, X509* leaf);

}  // namespace vqtk

#endif
