#include "toolkit/KcdsaLeaf.hpp"

#include <ctime>

#include <openssl/x509v3.h>

#include "toolkit/Certificates.hpp"

namespace {

// The first of candidates that issued leaf (names, key identifiers, key usage).
X509* issuerIn(STACK_OF(X509) * candidates, X509* leaf) {
    for (int i = 0; i < sk_X509_num(candidates); ++i) {
        X509* candidate = sk_X509_value(candidates, i);
        if (X509_check_issued(candidate, leaf) == X509_V_OK)
            return candidate;
    }
    return nullptr;
}

void checkValidity(X509* leaf, const int64_t* atTime) {
    time_t when = atTime != nullptr ? static_cast<time_t>(*atTime) : std::time(nullptr);
    const int notBefore = X509_cmp_time(X509_get0_notBefore(leaf), &when);
    const int notAfter = X509_cmp_time(X509_get0_notAfter(leaf), &when);
    if (notBefore == 0 || notAfter == 0)
        vqtk::refuse(leaf, 0, "its validity dates are malformed");
    if (notBefore > 0)
        vqtk::refuse(leaf, 0, vqtk::refusalReason(X509_V_ERR_CERT_NOT_YET_VALID));
    if (notAfter < 0)
        vqtk::refuse(leaf, 0, vqtk::refusalReason(X509_V_ERR_CERT_HAS_EXPIRED));
}

}  // namespace

namespace vqtk {

void verifyKcdsaLeaf(const PathRequest& request, X509* leaf) {
    const VQTK_Toolkit& tk = *request.toolkit;
    X509* issuer = issuerIn(tk.anchors, leaf);
    const bool issuerIsAnchor = issuer != nullptr;
    if (issuer == nullptr)
        issuer = issuerIn(request.untrusted, leaf);
    if (issuer == nullptr) {
        refuseKcdsaIssuer(request, leaf);
        refuse(leaf, 0, refusalReason(X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY));
    }
    EVP_PKEY* issuerKey = X509_get0_pubkey(issuer);
    if (issuerKey == nullptr)
        refuse(issuer, 1, refusalReason(X509_V_ERR_UNABLE_TO_DECODE_ISSUER_PUBLIC_KEY));
    if (X509_check_ca(issuer) == 0)
        refuse(issuer, 1, refusalReason(X509_V_ERR_INVALID_CA));
    if (X509_verify(leaf, issuerKey) != 1)
        refuse(leaf, 0, refusalReason(X509_V_ERR_CERT_SIGNATURE_FAILURE));
    if (tk.timeMode != 0)
        checkValidity(leaf, request.atTime);
    if (!issuerIsAnchor)
        verifyPath(request, issuer, 1);
}

}  // namespace vqtk
