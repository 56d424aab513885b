// A byte vector that wipes its memory when it lets go of it, for keys and
// plaintext.
#ifndef VQXML_ENGINE_KOREAN_SECUREBYTES_HPP
#define VQXML_ENGINE_KOREAN_SECUREBYTES_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <new>

#include <openssl/crypto.h>
#include <sys/mman.h>

namespace vqxml::korean {

// Blocks of 2 MB or more (the plaintext of a large element) come straight
// from the system and go straight back when wiped: through the C library they
// would raise its threshold for doing so, and the transient megabytes that
// follow would then stay in its heap after they are freed.
template <class T>
struct CleansingAllocator {
    using value_type = T;
    static constexpr std::size_t kFromTheSystem = 2 << 20;
    CleansingAllocator() = default;
    template <class U>
    CleansingAllocator(const CleansingAllocator<U>&) {}
    T* allocate(std::size_t n) {
        if (n * sizeof(T) < kFromTheSystem)
            return std::allocator<T>().allocate(n);
        void* p = mmap(nullptr, n * sizeof(T), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED)
            throw std::bad_alloc();
        return static_cast<T*>(p);
    }
    // Pages handed back to the system are no longer readable here, and the
    // system clears them before it hands them out again: only the C library's
    // blocks are wiped (which also leaves unwritten pages untouched).
    void deallocate(T* p, std::size_t n) {
        if (n * sizeof(T) >= kFromTheSystem) {
            munmap(p, n * sizeof(T));
            return;
        }
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
