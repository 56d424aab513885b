// Trust anchors and the choice of checks, kept per handle.
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

int VQTK_CERT_SetVerifyEnv1(VQTK_Toolkit* handle, int pathMode, int timeMode, int revocation,
                            int reserved) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        if (pathMode != 1 && pathMode != 2)
            vqtk::raise(VQTK_ERR_ARGUMENT, "Unknown path mode " + std::to_string(pathMode) +
                                               " (1 = full path, 2 = full path, strict profile)");
        if (timeMode < 0 || timeMode > 2)
            vqtk::raise(VQTK_ERR_ARGUMENT, "Unknown time mode " + std::to_string(timeMode) +
                                               " (0 = none, 1 = certificate only, 2 = whole path)");
        if (revocation != 0)
            vqtk::raise(VQTK_ERR_UNSUPPORTED,
                        "Revocation checking is not available (no online CRL or OCSP); use 0");
        if (reserved != 0)
            vqtk::raise(VQTK_ERR_ARGUMENT, "The fourth verification setting is reserved; use 0");
        handle->pathMode = pathMode;
        handle->timeMode = timeMode;
        return VQTK_OK;
    });
}

}  // extern "C"
