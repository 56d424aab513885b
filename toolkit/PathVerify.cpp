#include "toolkit/PathVerify.hpp"

#include <openssl/x509_vfy.h>

#include "toolkit/Certificates.hpp"

namespace {

// Which time errors the verification lets pass; hung on the store context.
struct TimePolicy {
    bool leafOnly;  // only the certificate under verification (depth 0) is timed
    int depthBase;  // depth of the verification's target on the whole path
};

bool isTimeError(int error) {
    return error == X509_V_ERR_CERT_HAS_EXPIRED || error == X509_V_ERR_CERT_NOT_YET_VALID;
}

// Anchors are used as they are, whatever their dates: a time error on the top
// of a built (hence trusted) path is let through, and so are those above the
// leaf when only the leaf is timed.
int applyTimePolicy(int ok, X509_STORE_CTX* ctx) {
    if (ok || !isTimeError(X509_STORE_CTX_get_error(ctx)))
        return ok;
    const auto* policy = static_cast<const TimePolicy*>(X509_STORE_CTX_get_app_data(ctx));
    const int depth = X509_STORE_CTX_get_error_depth(ctx);
    const bool top = depth == sk_X509_num(X509_STORE_CTX_get0_chain(ctx)) - 1;
    return top || (policy->leafOnly && policy->depthBase + depth > 0);
}

}  // namespace

namespace vqtk {

std::string refusalReason(int x509Error) {
    switch (x509Error) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return "expired";
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return "not yet valid";
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        return "unknown issuer: the path does not lead to a trusted anchor";
    case X509_V_ERR_CERT_SIGNATURE_FAILURE:
        return "bad signature";
    case X509_V_ERR_UNABLE_TO_DECRYPT_CERT_SIGNATURE:
        return "bad signature (the signature cannot be decrypted with the issuer's key)";
    case X509_V_ERR_INVALID_CA:
        return "not a CA, yet it issued the certificate below it";
    case X509_V_ERR_KEYUSAGE_NO_CERTSIGN:
        return "not a CA: its key usage does not allow signing certificates";
    case X509_V_ERR_PATH_LENGTH_EXCEEDED:
        return "path too long for a CA's path length constraint";
    case X509_V_ERR_UNABLE_TO_DECODE_ISSUER_PUBLIC_KEY:
        return "the issuer's public key cannot be decoded (KCDSA issuers are not supported)";
    default:
        return X509_verify_cert_error_string(x509Error);
    }
}

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

void refuse(const X509* cert, int depth, const std::string& reason) {
    raise(VQTK_ERR_REFUSED, "Certificate refused at depth " + std::to_string(depth) + " (" +
                                (cert != nullptr ? subjectOf(cert) : std::string("?")) +
                                "): " + reason);
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
    const bool timed = tk.timeMode == 2 || (tk.timeMode == 1 && depth == 0);
    if (!timed)
        flags |= X509_V_FLAG_NO_CHECK_TIME;
    X509_VERIFY_PARAM* param = X509_STORE_CTX_get0_param(ctx.get());
    X509_VERIFY_PARAM_set_flags(param, flags);
    if (request.atTime != nullptr)
        X509_VERIFY_PARAM_set_time(param, static_cast<time_t>(*request.atTime));
    TimePolicy policy{tk.timeMode == 1, depth};
    X509_STORE_CTX_set_app_data(ctx.get(), &policy);
    X509_STORE_CTX_set_verify_cb(ctx.get(), applyTimePolicy);

    const int result = X509_verify_cert(ctx.get());
    if (result == 1)
        return;
    const int error = X509_STORE_CTX_get_error(ctx.get());
    if (result < 0 || error == X509_V_OK)
        raise(VQTK_ERR_CRYPTO, "Verification failed inside OpenSSL: " + opensslReason());
    X509* failed = X509_STORE_CTX_get_current_cert(ctx.get());
    if (error == X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY && failed != nullptr)
        refuseKcdsaIssuer(request, failed);
    refuse(failed,
           depth + X509_STORE_CTX_get_error_depth(ctx.get()), refusalReason(error));
}

}  // namespace vqtk
