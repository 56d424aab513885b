#include "toolkit/PathVerify.hpp"

#include <openssl/x509_vfy.h>

#include "toolkit/Certificates.hpp"

namespace {

// What the settings excuse; hung on the store context.
struct Excuses {
    bool leafTimeOnly;  // only the certificate under verification (depth 0) is timed
    bool anchorTimed;   // the anchor's validity counts too
    int depthBase;      // depth of the verification's target on the whole path
};

bool isTimeError(int error) {
    return error == X509_V_ERR_CERT_HAS_EXPIRED || error == X509_V_ERR_CERT_NOT_YET_VALID;
}

// Time errors of certificates the settings do not time are let through: the
// anchor's (the top of a built, hence trusted, path) unless anchors are timed,
// and those above the leaf when only the leaf is. So is a missing CRL for any
// certificate but the leaf, and for the anchor, which no CRL can revoke.
int applyExcuses(int ok, X509_STORE_CTX* ctx) {
    if (ok)
        return ok;
    const auto* excuses = static_cast<const Excuses*>(X509_STORE_CTX_get_app_data(ctx));
    const int error = X509_STORE_CTX_get_error(ctx);
    const int depth = X509_STORE_CTX_get_error_depth(ctx);
    const bool top = depth == sk_X509_num(X509_STORE_CTX_get0_chain(ctx)) - 1;
    const bool aboveLeaf = excuses->depthBase + depth > 0;
    if (isTimeError(error))
        return (top && !excuses->anchorTimed) || (excuses->leafTimeOnly && aboveLeaf);
    return error == X509_V_ERR_UNABLE_TO_GET_CRL && (top || aboveLeaf);
}

}  // namespace

namespace vqtk {

void refuseKcdsaIssuer(const PathRequest& request, const X509* cert) {
    for (STACK_OF(X509)* candidates : {request.toolkit->anchors, request.untrusted}) {
        for (int i = 0; i < sk_X509_num(candidates); ++i) {
            const X509* candidate = sk_X509_value(candidates, i);
            if (hasKcdsaKey(candidate) &&
                X509_NAME_cmp(X509_get_subject_name(candidate), X509_get_issuer_name(cert)) == 0)
                raise(VQTK_ERR_UNSUPPORTED,
                      "The certificate (" + subjectOf(cert) + ") was issued by a CA with a KCDSA key (" +
                          subjectOf(candidate) + "); KCDSA signatures cannot be verified here");
        }
    }
}

void verifyPath(const PathRequest& request, X509* target, int depth) {
    const VQTK_Toolkit& tk = *request.toolkit;
    Owned<X509_STORE, X509_STORE_free> store(X509_STORE_new());
    Owned<X509_STORE_CTX, X509_STORE_CTX_free> ctx(X509_STORE_CTX_new());
    if (!store || !ctx)
        throw std::bad_alloc();
    for (int i = 0; i < sk_X509_num(tk.anchors); ++i)
        if (!X509_STORE_add_cert(store.get(), sk_X509_value(tk.anchors, i)))
            raise(VQTK_ERR_CRYPTO, "A trust anchor could not be used: " + opensslReason());
    if (!X509_STORE_CTX_init(ctx.get(), store.get(), target, request.untrusted))
        raise(VQTK_ERR_CRYPTO, "Verification could not start: " + opensslReason());

    // An added anchor ends a path whether or not it is self-signed.
    unsigned long flags = X509_V_FLAG_PARTIAL_CHAIN;
    if (tk.pathMode == 2)
        flags |= X509_V_FLAG_X509_STRICT;
    const bool timed = tk.timeMode >= 2 || (tk.timeMode == 1 && depth == 0);
    if (!timed)
        flags |= X509_V_FLAG_NO_CHECK_TIME;
    if (tk.revocation == 1) {
        flags |= X509_V_FLAG_CRL_CHECK | X509_V_FLAG_CRL_CHECK_ALL;
        X509_STORE_CTX_set0_crls(ctx.get(), tk.crls);
    }
    X509_VERIFY_PARAM* param = X509_STORE_CTX_get0_param(ctx.get());
    X509_VERIFY_PARAM_set_flags(param, flags);
    if (request.atTime != nullptr)
        X509_VERIFY_PARAM_set_time(param, static_cast<time_t>(*request.atTime));
    Excuses excuses{tk.timeMode == 1, tk.timeMode == 3, depth};
    X509_STORE_CTX_set_app_data(ctx.get(), &excuses);
    X509_STORE_CTX_set_verify_cb(ctx.get(), applyExcuses);

    const int result = X509_verify_cert(ctx.get());
    if (result == 1)
        return;
    const int error = X509_STORE_CTX_get_error(ctx.get());
    if (result < 0 || error == X509_V_OK)
        raise(VQTK_ERR_CRYPTO, "Verification failed inside OpenSSL: " + opensslReason());
    X509* failed = X509_STORE_CTX_get_current_cert(ctx.get());
    if (error == X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY && failed != nullptr)
        refuseKcdsaIssuer(request, failed);
    refuse(failed, depth + X509_STORE_CTX_get_error_depth(ctx.get()), error);
}

}  // namespace vqtk
