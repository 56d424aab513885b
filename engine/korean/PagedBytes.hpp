// Bytes written a piece at a time into pages of their own from the system, for
// the plaintext of an element being serialised. Growing moves the pages
// (mremap) instead of copying them, nothing is zero-filled first, and nothing
// is left behind in the C library's heap: the pages go back to the system when
// the buffer goes, and the system clears them before it hands them out again.
// A plaintext of a megabyte written into a wiping std::vector cost a tenth of
// encrypting it: every doubling was fresh memory, faulted in, copied into and
// then wiped.
#ifndef VQXML_ENGINE_KOREAN_PAGEDBYTES_HPP
#define VQXML_ENGINE_KOREAN_PAGEDBYTES_HPP

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include <sys/mman.h>

namespace vqxml::korean {

class PagedBytes {
public:
    using value_type = std::uint8_t;

    PagedBytes() = default;
    ~PagedBytes() {
        if (m_data != nullptr)
            munmap(m_data, m_capacity);
    }
    PagedBytes(const PagedBytes&) = delete;
    PagedBytes& operator=(const PagedBytes&) = delete;

    std::size_t size() const { return m_size; }
    const std::uint8_t* data() const { return m_data; }
    std::uint8_t& operator[](std::size_t i) { return m_data[i]; }

    // Bytes added are not initialised.
    void resize(std::size_t n) {
        if (n > m_capacity)
            grow(n);
        m_size = n;
    }

private:
    static constexpr std::size_t kFirst = 64 << 10;  // address space only until written

    void grow(std::size_t n) {
        std::size_t capacity = m_capacity < kFirst ? kFirst : m_capacity * 2;
        while (capacity < n)
            capacity *= 2;
        void* more = m_data == nullptr
                         ? mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                         : mremap(m_data, m_capacity, capacity, MREMAP_MAYMOVE);
        if (more == MAP_FAILED)
            throw std::bad_alloc();
        m_data = static_cast<std::uint8_t*>(more);
        m_capacity = capacity;
    }

    std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace vqxml::korean

#endif
