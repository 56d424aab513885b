// Verification of a certificate's path to the handle's anchors.
#ifndef VQXML_TOOLKIT_PATHVERIFY_HPP
#define VQXML_TOOLKIT_PATHVERIFY_HPP

#include <cstdint>

#include "toolkit/Refusal.hpp"

namespace vqtk {

struct PathRequest {
    const VQTK_Toolkit* toolkit;
    STACK_OF(X509) * untrusted;  // offered intermediates, may be empty
    const int64_t* atTime;       // null for now
};

// Verifies target with OpenSSL under the handle's settings. depth is target's
// depth on the whole path (1 when target issued the certificate being checked),
// used for the time mode, revocation and the texts. Raises VQTK_ERR_REFUSED with
// the reason.
void verifyPath(const PathRequest& request, X509* target, int depth);

// Raises VQTK_ERR_UNSUPPORTED if cert's issuer, by name, is among the anchors or
// the offered intermediates with a KCDSA key: OpenSSL cannot match such an issuer,
// and the refusal should say why rather than blame an unknown issuer.
void refuseKcdsaIssuer(const PathRequest& request, const X509* cert);

}  // namespace vqtk

#endif
