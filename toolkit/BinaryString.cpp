// The toolkit's byte strings: always its own copies, always wiped when released.
#include <cstdlib>
#include <cstring>
#include <limits>

#include "toolkit/ToolkitInternal.hpp"

namespace {

void release(VQTK_BINSTR* str) {
    if (str->data != nullptr && str->length > 0)
        OPENSSL_cleanse(str->data, static_cast<std::size_t>(str->length));
    std::free(str->data);
    str->data = nullptr;
    str->length = 0;
}

}  // namespace

namespace vqtk {

Bytes bytesOf(const VQTK_BINSTR* str) {
    if (str == nullptr || str->data == nullptr || str->length <= 0)
        return {nullptr, 0};
    return {str->data, static_cast<std::size_t>(str->length)};
}

void store(VQTK_BINSTR* str, const unsigned char* data, std::size_t n) {
    if (n > static_cast<std::size_t>(std::numeric_limits<int32_t>::max()))
        raise(VQTK_ERR_LIMIT, "The result is larger than a byte string can hold");
    // Copied first: data may be the string's own bytes.
    unsigned char* copy = nullptr;
    if (n > 0) {
        copy = static_cast<unsigned char*>(std::malloc(n));
        if (copy == nullptr)
            throw std::bad_alloc();
        std::memcpy(copy, data, n);
    }
    release(str);
    str->data = copy;
    str->length = static_cast<int32_t>(n);
}

}  // namespace vqtk

extern "C" {

int VQTK_BINSTR_Create(VQTK_BINSTR* str) {
    if (str == nullptr)
        return VQTK_ERR_ARGUMENT;
    str->data = nullptr;
    str->length = 0;
    return VQTK_OK;
}

int VQTK_BINSTR_SetData(const unsigned char* data, int length, VQTK_BINSTR* str) {
    if (str == nullptr)
        return VQTK_ERR_ARGUMENT;
    const std::size_t n = data != nullptr && length > 0 ? static_cast<std::size_t>(length) : 0;
    return vqtk::guarded(nullptr, [&] {
        vqtk::store(str, data, n);
        return VQTK_OK;
    });
}

int VQTK_BINSTR_Delete(VQTK_BINSTR* str) {
    if (str == nullptr)
        return VQTK_ERR_ARGUMENT;
    release(str);
    return VQTK_OK;
}

}  // extern "C"
