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

time_t verificationTime(const int64_t* atTime) {
    return atTime != nullptr ? static_cast<time_t>(*atTime) : std::time(nullptr);
}

void checkValidity(X509* leaf, const int64_t* atTime) {
    time_t when = verificationTime(atTime);
    const int notBefore = X509_cmp_time(X509_get0_notBefore(leaf), &when);
    const int notAfter = X509_cmp_time(X509_get0_notAfter(leaf), &when);
    if (notBefore == 0)
        vqtk::refuse(leaf, 0, X509_V_ERR_ERROR_IN_CERT_NOT_BEFORE_FIELD);
    if (notAfter == 0)
        vqtk::refuse(leaf, 0, X509_V_ERR_ERROR_IN_CERT_NOT_AFTER_FIELD);
    if (notBefore > 0)
        vqtk::refuse(leaf, 0, X509_V_ERR_CERT_NOT_YET_VALID);
    if (notAfter < 0)
        vqtk::refuse(leaf, 0, X509_V_ERR_CERT_HAS_EXPIRED);
}

// X509_V_OK, or why crl cannot tell about the certificates of issuer now.
int crlUsability(X509_CRL* crl, X509* issuer, const vqtk::PathRequest& request) {
    if ((X509_get_key_usage(issuer) & KU_CRL_SIGN) == 0)
        return X509_V_ERR_KEYUSAGE_NO_CRL_SIGN;
    if (X509_CRL_verify(crl, X509_get0_pubkey(issuer)) != 1)
        return X509_V_ERR_CRL_SIGNATURE_FAILURE;
    if (request.toolkit->timeMode == 0)
        return X509_V_OK;
    time_t when = verificationTime(request.atTime);
    if (X509_cmp_time(X509_CRL_get0_lastUpdate(crl), &when) > 0)
        return X509_V_ERR_CRL_NOT_YET_VALID;
    const ASN1_TIME* nextUpdate = X509_CRL_get0_nextUpdate(crl);
    return nextUpdate != nullptr && X509_cmp_time(nextUpdate, &when) < 0 ? X509_V_ERR_CRL_HAS_EXPIRED
                                                                          : X509_V_OK;
}

// The leaf against its issuer's CRLs, by the rule OpenSSL applies to the rest of
// the path: a usable CRL of the issuer must be there and must not list the leaf.
void checkRevocation(const vqtk::PathRequest& request, X509* leaf, X509* issuer) {
    STACK_OF(X509_CRL)* crls = request.toolkit->crls;
    int why = X509_V_ERR_UNABLE_TO_GET_CRL;
    for (int i = 0; i < sk_X509_CRL_num(crls); ++i) {
        X509_CRL* crl = sk_X509_CRL_value(crls, i);
        if (X509_NAME_cmp(X509_CRL_get_issuer(crl), X509_get_subject_name(issuer)) != 0)
            continue;
        why = crlUsability(crl, issuer, request);
        if (why != X509_V_OK)
            continue;
        X509_REVOKED* entry = nullptr;
        if (X509_CRL_get0_by_cert(crl, &entry, leaf) == 1)
            vqtk::refuse(leaf, 0, X509_V_ERR_CERT_REVOKED);
        return;
    }
    vqtk::refuse(leaf, 0, why);
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
        refuse(leaf, 0, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
    }
    EVP_PKEY* issuerKey = X509_get0_pubkey(issuer);
    if (issuerKey == nullptr)
        refuse(issuer, 1, X509_V_ERR_UNABLE_TO_DECODE_ISSUER_PUBLIC_KEY);
    if (X509_check_ca(issuer) == 0)
        refuse(issuer, 1, X509_V_ERR_INVALID_CA);
    if (X509_verify(leaf, issuerKey) != 1)
        refuse(leaf, 0, X509_V_ERR_CERT_SIGNATURE_FAILURE);
    if (tk.timeMode != 0)
        checkValidity(leaf, request.atTime);
    if (tk.revocation == 1)
        checkRevocation(request, leaf, issuer);
    if (!issuerIsAnchor)
        verifyPath(request, issuer, 1);
}

}  // namespace vqtk
