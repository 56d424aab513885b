// A zeroed buffer for a session key: one byte more than the key, as the
// context's m_symmKey keeps it, wiped and freed unless handed on.
#ifndef VQXML_XENC_KEYBUFFER_HPP
#define VQXML_XENC_KEYBUFFER_HPP

#include <cstdlib>
#include <cstring>
#include <new>

#include <openssl/crypto.h>
#include <xsec/enc/XSECCryptoProvider.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

namespace vqxml {

class KeyBuffer {
public:
    explicit KeyBuffer(int len)
        : m_len(len), m_bytes(static_cast<unsigned char*>(std::calloc(static_cast<size_t>(len) + 1, 1))) {
        if (m_bytes == nullptr)
            throw std::bad_alloc();
    }
    ~KeyBuffer() {
        if (m_bytes != nullptr)
            OPENSSL_cleanse(m_bytes, static_cast<size_t>(m_len));
        std::free(m_bytes);
    }
    KeyBuffer(const KeyBuffer&) = delete;
    KeyBuffer& operator=(const KeyBuffer&) = delete;

    // The key's bytes, or fresh random ones when key is null.
    void fill(const unsigned char* key) {
        if (key == nullptr)
            XSECPlatformUtils::g_cryptoProvider->getRandom(m_bytes, static_cast<unsigned int>(m_len));
        else
            std::memcpy(m_bytes, key, static_cast<size_t>(m_len));
    }

    unsigned char* get() const { return m_bytes; }
    int size() const { return m_len; }
    // The caller owns the bytes from now on.
    unsigned char* release() {
        unsigned char* bytes = m_bytes;
        m_bytes = nullptr;
        return bytes;
    }

private:
    int m_len;
    unsigned char* m_bytes;
};

}  // namespace vqxml

#endif
