// Trust anchors, CRLs and the choice of checks, kept per handle.
#include <openssl/x509v3.h>

#include "toolkit/Certificates.hpp"

extern "C" {

int VQTK_CERT_AddTrustedCert(VQTK_Toolkit* handle, const VQTK_BINSTR* der) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        vqtk::require(der, "The anchor string");
        vqtk::X509Ptr anchor = vqtk::parseCertificate(vqtk::bytesOf(der), "The trust anchor");
        if (X509_check_ca(anchor.get()) == 0)
            vqtk::raise(VQTK_ERR_ARGUMENT, "The trust anchor is not a CA certificate (" +
                                               vqtk::subjectOf(anchor.get()) + ")");
        if (sk_X509_push(handle->anchors, anchor.get()) <= 0)
            throw std::bad_alloc();
        anchor.release();
        return VQTK_OK;
    });
}

int VQTK_CERT_AddCRLs(VQTK_Toolkit* handle, const VQTK_BINSTR* der) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        vqtk::require(der, "The CRL string");
        vqtk::X509CrlStackPtr added = vqtk::parseCrlList(vqtk::bytesOf(der), "The CRLs");
        while (sk_X509_CRL_num(added.get()) > 0) {
            X509_CRL* crl = sk_X509_CRL_shift(added.get());
            if (sk_X509_CRL_push(handle->crls, crl) <= 0) {
                X509_CRL_free(crl);
                throw std::bad_alloc();
            }
        }
        return VQTK_OK;
    });
}

int VQTK_CERT_SetVerifyEnv1(VQTK_Toolkit* handle, int pathMode, int timeMode, int revocation,
                            int reserved) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        if (pathMode != 1 && pathMode != 2)
            vqtk::raise(VQTK_ERR_ARGUMENT, "Unknown path mode " + std::to_string(pathMode) +
                                               " (1 = full path, 2 = full path, strict profile)");
        if (timeMode < 0 || timeMode > 3)
            vqtk::raise(VQTK_ERR_ARGUMENT,
                        "Unknown time mode " + std::to_string(timeMode) +
                            " (0 = none, 1 = certificate only, 2 = path but anchor, 3 = whole path)");
        if (revocation != 0 && revocation != 1)
            vqtk::raise(VQTK_ERR_UNSUPPORTED, "Online revocation checking (CRL distribution points, "
                                              "OCSP) is not available; use 0, or 1 with CRLs added");
        if (reserved != 0)
            vqtk::raise(VQTK_ERR_ARGUMENT, "The fourth verification setting is reserved; use 0");
        handle->pathMode = pathMode;
        handle->timeMode = timeMode;
        handle->revocation = revocation;
        return VQTK_OK;
    });
}

}  // extern "C"
