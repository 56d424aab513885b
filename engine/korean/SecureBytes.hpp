// A byte vector that wipes its memory when it lets go of it, for keys and
// plaintext.
#ifndef VQXML_ENGINE_KOREAN_SECUREBYTES_HPP
#define VQXML_ENGINE_KOREAN_SECUREBYTES_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <openssl/crypto.h>

namespace vqxml::korean {

template <class T>
struct CleansingAllocator {
    using value_type = T;
    CleansingAllocator() = default;
    template <class U>
    CleansingAllocator(const CleansingAllocator<U>&) {}
    T* allocate(std::size_t n) { return std::allocator<T>().allocate(n); }
    void deallocate(T* p, std::size_t n) {
        OPENSSL_cleanse(p, n * sizeof(T));
        std::allocator<T>().deallocate(p, n);
    }
    template <class U>
    bool operator==(const CleansingAllocator<U>&) const { return true; }
    template <class U>
    bool operator!=(const CleansingAllocator<U>&) const { return false; }
};

using SecureBytes = std::vector<std::uint8_t, CleansingAllocator<std::uint8_t>>;

}  // namespace vqxml::korean

#endif
