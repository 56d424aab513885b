#include "toolkit/Refusal.hpp"

#include <openssl/x509_vfy.h>

#include "toolkit/Certificates.hpp"

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
    case X509_V_ERR_CERT_REVOKED:
        return "revoked";
    case X509_V_ERR_UNABLE_TO_GET_CRL:
        return "revocation status unknown: no CRL of its issuer was given";
    case X509_V_ERR_CRL_HAS_EXPIRED:
        return "revocation status unknown: its issuer's CRL is out of date";
    case X509_V_ERR_CRL_NOT_YET_VALID:
        return "revocation status unknown: its issuer's CRL is not yet valid";
    case X509_V_ERR_CRL_SIGNATURE_FAILURE:
        return "revocation status unknown: its issuer's CRL has a bad signature";
    default:
        return X509_verify_cert_error_string(x509Error);
    }
}

int refusalCheck(int x509Error) {
    switch (x509Error) {
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_CERT_CHAIN_TOO_LONG:
        return VQTK_CHECK_PATH;
    case X509_V_ERR_CERT_SIGNATURE_FAILURE:
    case X509_V_ERR_UNABLE_TO_DECRYPT_CERT_SIGNATURE:
    case X509_V_ERR_UNABLE_TO_DECODE_ISSUER_PUBLIC_KEY:
    case X509_V_ERR_CA_KEY_TOO_SMALL:
    case X509_V_ERR_EE_KEY_TOO_SMALL:
    case X509_V_ERR_CA_MD_TOO_WEAK:
        return VQTK_CHECK_SIGNATURE;
    case X509_V_ERR_CERT_HAS_EXPIRED:
    case X509_V_ERR_CERT_NOT_YET_VALID:
    case X509_V_ERR_ERROR_IN_CERT_NOT_BEFORE_FIELD:
    case X509_V_ERR_ERROR_IN_CERT_NOT_AFTER_FIELD:
        return VQTK_CHECK_VALIDITY;
    case X509_V_ERR_CERT_REVOKED:
    case X509_V_ERR_UNABLE_TO_GET_CRL:
    case X509_V_ERR_UNABLE_TO_GET_CRL_ISSUER:
    case X509_V_ERR_CRL_HAS_EXPIRED:
    case X509_V_ERR_CRL_NOT_YET_VALID:
    case X509_V_ERR_CRL_SIGNATURE_FAILURE:
    case X509_V_ERR_UNABLE_TO_DECRYPT_CRL_SIGNATURE:
    case X509_V_ERR_ERROR_IN_CRL_LAST_UPDATE_FIELD:
    case X509_V_ERR_ERROR_IN_CRL_NEXT_UPDATE_FIELD:
    case X509_V_ERR_KEYUSAGE_NO_CRL_SIGN:
    case X509_V_ERR_DIFFERENT_CRL_SCOPE:
    case X509_V_ERR_UNHANDLED_CRITICAL_CRL_EXTENSION:
    case X509_V_ERR_CRL_PATH_VALIDATION_ERROR:
        return VQTK_CHECK_REVOCATION;
    default:  // basic constraints, key usage, purposes, critical extensions, names
        return VQTK_CHECK_CONSTRAINTS;
    }
}

void refuse(const X509* cert, int depth, int x509Error) {
    raise(VQTK_ERR_REFUSED,
          "Certificate refused at depth " + std::to_string(depth) + " (" +
              (cert != nullptr ? subjectOf(cert) : std::string("?")) + "): " + refusalReason(x509Error),
          refusalCheck(x509Error));
}

}  // namespace vqtk
