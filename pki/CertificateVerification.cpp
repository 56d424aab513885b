// VQXML_XMLSecurity::verifyCert: the caller's certificate against the built-in roots.
#include "core/ErrorFrame.hpp"
#include "pki/ToolkitSession.hpp"
#include "pki/TrustAnchors.hpp"

namespace {

// Full path to an anchor, validity of every certificate at the current time, no
// revocation; and the verification's optional arguments unused.
constexpr int kPathMode = 1;
constexpr int kTimeMode = 2;
constexpr int kNoRevocation = 0;

}  // namespace

int VQXML_XMLSecurity::verifyCert(unsigned char* cert, int certLen) {
    return vqxml::guarded(*this, "verifyCert > ", [&] {
        vqxml::ToolkitSession toolkit;
        VQTK_BINSTR* certificate = toolkit.newString();
        VQTK_BINSTR* anchor = toolkit.newString();
        // Not checked: an empty certificate string is refused, with a text, below.
        VQTK_BINSTR_SetData(cert, certLen, certificate);
        for (int i = 0; i < vqxml::kTrustAnchorCount; ++i) {
            const vqxml::TrustAnchor& root = vqxml::kTrustAnchors[i];
            VQTK_BINSTR_SetData(reinterpret_cast<const unsigned char*>(root.base64),
                                root.base64Length, anchor);
            toolkit.check(VQTK_BASE64_Decode(toolkit.handle(), anchor, anchor));
            toolkit.check(VQTK_CERT_AddTrustedCert(toolkit.handle(), anchor));
        }
        toolkit.check(VQTK_CERT_SetVerifyEnv1(toolkit.handle(), kPathMode, kTimeMode, kNoRevocation, 0));
        toolkit.check(VQTK_CERT_Verify(toolkit.handle(), certificate, nullptr, nullptr, nullptr,
                                       nullptr, nullptr));
    });
}
