#include "pki/ChainVerification.hpp"

#include <string>

#include "pki/ToolkitSession.hpp"
#include "vqxml/vqxml.h"

namespace vqxml {

namespace {

constexpr int kPathMode = 1;
constexpr int kTimeModeWithAnchor = 3;
constexpr int kRevocationAgainstGivenCrls = 1;

struct CheckStatus {
    int status;
    const char* name;
};

// By VQTK_CHECK_*.
constexpr CheckStatus kRefusals[] = {
    {VQXML_ERR_UNKNOWN, "certificate"},         {VQXML_ERR_CERT_PATH, "path"},
    {VQXML_ERR_CERT_SIGNATURE, "signature"},    {VQXML_ERR_CERT_VALIDITY, "validity"},
    {VQXML_ERR_CERT_REVOKED, "revocation"},     {VQXML_ERR_CERT_CONSTRAINTS, "constraints"},
};

VQTK_BINSTR* stringOf(ToolkitSession& toolkit, const Der& der) {
    VQTK_BINSTR* str = toolkit.newString();
    VQTK_BINSTR_SetData(der.data(), static_cast<int>(der.size()), str);
    return str;
}

// The library's status for what the toolkit's verification returned.
[[noreturn]] void raiseFailure(const ToolkitSession& toolkit, int status) {
    switch (status) {
    case VQTK_ERR_FORMAT:
    case VQTK_ERR_LIMIT:
        toolkit.raise(VQXML_ERR_CERT_INPUT);
    case VQTK_ERR_UNSUPPORTED:  // an issuer's KCDSA signature
        toolkit.raise(VQXML_ERR_CERT_SIGNATURE, "signature check failed: ");
    case VQTK_ERR_MEMORY:
        throw std::bad_alloc();
    case VQTK_ERR_REFUSED: {
        int check = VQTK_CHECK_NONE;
        VQTK_CERT_GetRefusal(toolkit.handle(), &check);
        const CheckStatus& refusal = kRefusals[check >= 0 && check <= VQTK_CHECK_CONSTRAINTS ? check : 0];
        toolkit.raise(refusal.status, std::string(refusal.name) + " check failed: ");
    }
    default:
        toolkit.raise(VQXML_ERR_UNKNOWN);
    }
}

}  // namespace

void verifyChain(const ChainInput& input, const TrustAnchor* anchors, int anchorCount) {
    ToolkitSession toolkit;
    toolkit.trust(anchors, anchorCount);
    const bool revocation = !input.crls.empty();
    toolkit.check(VQTK_CERT_SetVerifyEnv1(toolkit.handle(), kPathMode, kTimeModeWithAnchor,
                                          revocation ? kRevocationAgainstGivenCrls : 0, 0));
    if (revocation) {
        const int status = VQTK_CERT_AddCRLs(toolkit.handle(), stringOf(toolkit, input.crls));
        if (status != VQTK_OK)
            raiseFailure(toolkit, status);
    }
    const int status = VQTK_CERT_Verify(toolkit.handle(), stringOf(toolkit, input.certificate),
                                        stringOf(toolkit, input.intermediates), nullptr, nullptr, nullptr,
                                        nullptr);
    if (status != VQTK_OK)
        raiseFailure(toolkit, status);
}

}  // namespace vqxml
