// VQXML_XMLSecurity::verifyCert: the caller's certificate against the built-in roots.
#include "core/ErrorFrame.hpp"
#include "pki/ToolkitSession.hpp"

namespace {

// Full path to an anchor, validity of every certificate, the anchor included, at
// the current time, no revocation; and the verification's optional arguments
// unused.
constexpr int kPathMode = 1;
constexpr int kTimeModeWithAnchor = 3;
constexpr int kNoRevocation = 0;

}  // namespace

int VQXML_XMLSecurity::verifyCert(unsigned char* cert, int certLen) {
    return vqxml::guarded(*this, "verifyCert > ", [&] {
        vqxml::ToolkitSession toolkit;
        toolkit.trust(vqxml::kTrustAnchors, vqxml::kTrustAnchorCount);
        VQTK_BINSTR* certificate = toolkit.newString();
        // Not checked: an empty certificate string is refused, with a text, below.
        VQTK_BINSTR_SetData(cert, certLen, certificate);
        toolkit.check(VQTK_CERT_SetVerifyEnv1(toolkit.handle(), kPathMode, kTimeModeWithAnchor, kNoRevocation, 0));
        toolkit.check(VQTK_CERT_Verify(toolkit.handle(), certificate, nullptr, nullptr, nullptr,
                                       nullptr, nullptr));
    });
}
