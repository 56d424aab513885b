// VQTK_CERT_Verify: strict reading of the inputs, then the path check that fits
// the certificate's key; and which check refused.
#include "toolkit/Certificates.hpp"
#include "toolkit/KcdsaLeaf.hpp"

extern "C" {

int VQTK_CERT_Verify(VQTK_Toolkit* handle, const VQTK_BINSTR* cert,
                     const VQTK_BINSTR* intermediates, const int64_t* atTime, void* reserved3,
                     void* reserved4, void* reserved5) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        handle->refusal = VQTK_CHECK_NONE;
        vqtk::require(cert, "The certificate string");
        if (reserved3 != nullptr || reserved4 != nullptr || reserved5 != nullptr)
            vqtk::raise(VQTK_ERR_ARGUMENT,
                        "The last three arguments of certificate verification are reserved: "
                        "pass null");
        vqtk::X509Ptr leaf = vqtk::parseCertificate(vqtk::bytesOf(cert), "The certificate");
        vqtk::X509StackPtr offered =
            vqtk::parseCertificateList(vqtk::bytesOf(intermediates), "The intermediates");
        if (sk_X509_num(handle->anchors) == 0)
            vqtk::raise(VQTK_ERR_REFUSED, "No trust anchor has been added");
        const vqtk::PathRequest request{handle, offered.get(), atTime};
        if (vqtk::hasKcdsaKey(leaf.get()))
            vqtk::verifyKcdsaLeaf(request, leaf.get());
        else
            vqtk::verifyPath(request, leaf.get(), 0);
        return VQTK_OK;
    });
}

int VQTK_CERT_GetRefusal(VQTK_Toolkit* handle, int* check) {
    if (handle == nullptr || check == nullptr)
        return VQTK_ERR_ARGUMENT;
    *check = handle->refusal;
    return VQTK_OK;
}

}  // extern "C"
