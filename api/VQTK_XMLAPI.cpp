// C fronts of the handle family: handles, version, errors, result document.
#include <cstdlib>
#include <cstring>

#include "api/Front.hpp"
#include "engine/EngineLifecycle.hpp"
#include "core/VQXMLException.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

using vqxml::context;

namespace {

// If len is at most the text's length, exactly len bytes and no NUL; else the
// text and its NUL.
void copyOut(const char* text, int len, char* out) {
    const size_t n = std::strlen(text);
    if (len <= 0)
        return;
    if (static_cast<size_t>(len) <= n)
        std::memcpy(out, text, static_cast<size_t>(len));
    else
        std::memcpy(out, text, n + 1);
}

int makeHandle(void** handle, char* locale) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    if (*handle != nullptr)
        return VQXML_ERR_HANDLE_IN_USE;
    try {
        *handle = new VQXML_XMLSecurity(locale);
        return VQXML_OK;
    } catch (...) {
        return VQXML_ERR_NULL_ARGUMENT;
    }
}

}  // namespace

extern "C" {

int VQTK_XMLAPI_init(void** handle) {
    return makeHandle(handle, nullptr);
}

int VQTK_XMLAPI_initSetlocale(void** handle, char* locale) {
    return makeHandle(handle, locale);
}

// The context is gone either way; a failed teardown of the shared engines is the
// only thing left to report.
int VQTK_XMLAPI_Finish(void** handle) {
    if (handle == nullptr || *handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    delete context(*handle);
    return vqxml::lastTeardownFailed() ? VQXML_ERR_RELEASE : VQXML_OK;
}

int VQTK_XMLAPI_GetVersion(void* handle, int len, char* out) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    if (out == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    copyOut(context(handle)->getVersion(), len, out);
    return VQXML_OK;
}

int VQTK_XMLAPI_GetErrInfo(void* handle, int len, char* out) {
    if (handle == nullptr) {
        if (out != nullptr)
            std::memcpy(out, vqxml::kInitFailedText, std::strlen(vqxml::kInitFailedText) + 1);
        return VQXML_ERR_NULL_HANDLE;
    }
    if (out == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    copyOut(context(handle)->getLastErrorMsg(), len, out);
    return VQXML_OK;
}

int VQTK_XMLAPI_GetXMLDocument(void* handle, char** doc, int* len) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    if (doc == nullptr || len == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    VQXML_XMLSecurity* ctx = context(handle);
    if (ctx->getXMLDocument() != nullptr) {
        *doc = ctx->getXMLDocument();
        *len = ctx->getXMLDocumentLength();
    }
    return VQXML_OK;
}

void VQTK_XMLAPI_Free(void** buffer) {
    if (buffer == nullptr || *buffer == nullptr)
        return;
    std::free(*buffer);
    *buffer = nullptr;
}

int VQTK_XMLAPI_VerifyCert(void* handle, unsigned char* cert, int certLen) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    if (cert == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    return context(handle)->verifyCert(cert, certLen);
}

int VQTK_XMLAPI_DecryptPriKey(void* handle, char* password, unsigned char* key, int keyLen,
                              unsigned char** keyOut, int* keyOutLen) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    if (keyOut == nullptr || keyOutLen == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    const int status = context(handle)->decryptPriKey(password, key, keyLen, keyOutLen);
    *keyOut = context(handle)->getPriKeyInfo();
    return status;
}

int VQTK_XMLAPI_GetRandomFromPriKey(void* handle, char* password, unsigned char* key, int keyLen,
                                    unsigned char* recipientKey, int recipientKeyLen,
                                    unsigned char** randomOut) {
    if (handle == nullptr)
        return VQXML_ERR_NULL_HANDLE;
    if (randomOut == nullptr)
        return VQXML_ERR_NULL_ARGUMENT;
    const int status =
        context(handle)->getRandomFromPriKey(password, key, keyLen, recipientKey, recipientKeyLen);
    *randomOut = context(handle)->getPriKeyEncRandom();
    return status;
}

}  // extern "C"
