// Opening and closing toolkit handles, and the failure text each keeps.
#include <cstring>

#include <openssl/err.h>

#include "engine/korean/OpenSSLProviders.hpp"
#include "toolkit/ToolkitInternal.hpp"

namespace {

const char kNotOpen[] = "The toolkit handle is not open";

// The length of the longest prefix of text, at most limit bytes, that does not
// end inside a two-byte EUC-KR character.
std::size_t eucKrPrefix(const char* text, std::size_t limit) {
    std::size_t used = 0;
    while (text[used] != '\0') {
        const std::size_t width = static_cast<unsigned char>(text[used]) < 0x80 ? 1 : 2;
        if (used + width > limit || (width == 2 && text[used + 1] == '\0'))
            break;
        used += width;
    }
    return used;
}

void copyText(const char* text, std::size_t size, char* out) {
    const std::size_t n = eucKrPrefix(text, size - 1);
    std::memcpy(out, text, n);
    out[n] = '\0';
}

bool acceptedConfig(const char* config) {
    return config == nullptr || std::strcmp(config, "") == 0 || std::strcmp(config, ".") == 0;
}

}  // namespace

namespace vqtk {

int fail(VQTK_Toolkit* tk, int status, const std::string& text) {
    if (tk != nullptr)
        copyText(text.c_str(), sizeof tk->error, tk->error);
    return status;
}

std::string opensslReason() {
    const unsigned long code = ERR_peek_last_error();
    std::string reason;
    if (code != 0) {
        const char* text = ERR_reason_error_string(code);
        reason = text != nullptr ? text : "OpenSSL error " + std::to_string(ERR_GET_REASON(code));
    }
    ERR_clear_error();
    return reason;
}

void require(const void* pointer, const char* what) {
    if (pointer == nullptr)
        raise(VQTK_ERR_ARGUMENT, std::string(what) + " is missing (null pointer)");
}

ASN1ObjectPtr objectId(const char* dotted) {
    ASN1ObjectPtr id(OBJ_txt2obj(dotted, 1));
    if (!id)
        raise(VQTK_ERR_CRYPTO, std::string("OpenSSL cannot make the object identifier ") + dotted);
    return id;
}

}  // namespace vqtk

extern "C" {

int VQTK_API_Init(VQTK_Toolkit** handle, const char* config) {
    if (handle == nullptr)
        return VQTK_ERR_ARGUMENT;
    *handle = nullptr;
    if (!acceptedConfig(config))
        return VQTK_ERR_ARGUMENT;
    try {
        vqxml::loadOpenSSLProviders();
        auto tk = std::make_unique<VQTK_Toolkit>();
        tk->anchors = sk_X509_new_null();
        tk->crls = sk_X509_CRL_new_null();
        if (tk->anchors == nullptr || tk->crls == nullptr) {
            sk_X509_free(tk->anchors);
            sk_X509_CRL_free(tk->crls);
            return VQTK_ERR_MEMORY;
        }
        *handle = tk.release();
        return VQTK_OK;
    } catch (const std::bad_alloc&) {
        return VQTK_ERR_MEMORY;
    }
}

int VQTK_API_Finish(VQTK_Toolkit** handle) {
    if (handle == nullptr)
        return VQTK_ERR_ARGUMENT;
    if (*handle != nullptr) {
        sk_X509_pop_free((*handle)->anchors, X509_free);
        sk_X509_CRL_pop_free((*handle)->crls, X509_CRL_free);
        delete *handle;
        *handle = nullptr;
    }
    return VQTK_OK;
}

int VQTK_API_GetErrInfo(VQTK_Toolkit* handle, int size, char* buffer) {
    if (buffer == nullptr || size <= 0)
        return VQTK_ERR_ARGUMENT;
    if (handle == nullptr) {
        copyText(kNotOpen, static_cast<std::size_t>(size), buffer);
        return VQTK_ERR_ARGUMENT;
    }
    copyText(handle->error, static_cast<std::size_t>(size), buffer);
    return VQTK_OK;
}

}  // extern "C"
