// Bytes written a piece at a time into memory from malloc, in which they are
// handed over. Growing reallocates, which the C library does for large blocks
// by moving pages rather than copying them, and the room made ahead stays
// untouched until it is written: a result of megabytes costs its own size
// once, rather than a string's doubling, its zero fill and a copy for the caller.
#ifndef VQXML_CORE_GROWINGBUFFER_HPP
#define VQXML_CORE_GROWINGBUFFER_HPP

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace vqxml {

class GrowingBuffer {
public:
    using value_type = char;

    GrowingBuffer() = default;
    ~GrowingBuffer() { std::free(m_data); }
    GrowingBuffer(const GrowingBuffer&) = delete;
    GrowingBuffer& operator=(const GrowingBuffer&) = delete;

    std::size_t size() const { return m_size; }
    const char* data() const { return m_data; }
    char& operator[](std::size_t i) { return m_data[i]; }

    // Bytes added are not initialised.
    void resize(std::size_t n) {
        if (n > m_capacity)
            grow(n);
        m_size = n;
    }
    void append(const char* s, std::size_t n) {
        const std::size_t at = m_size;
        resize(at + n);
        std::memcpy(m_data + at, s, n);
    }
    GrowingBuffer& operator+=(const char* s) {
        append(s, std::strlen(s));
        return *this;
    }
    GrowingBuffer& operator+=(char c) {
        append(&c, 1);
        return *this;
    }

    // The bytes, a NUL after them, in memory the caller frees with std::free;
    // the buffer is empty afterwards.
    char* release() {
        resize(m_size + 1);
        m_data[m_size - 1] = '\0';
        if (void* fitted = std::realloc(m_data, m_size))
            m_data = static_cast<char*>(fitted);
        m_size = m_capacity = 0;
        return std::exchange(m_data, nullptr);
    }

private:
    void grow(std::size_t n) {
        std::size_t capacity = m_capacity + m_capacity / 2;
        if (capacity < n)
            capacity = n < 256 ? 256 : n;
        void* more = std::realloc(m_data, capacity);
        if (more == nullptr)
            throw std::bad_alloc();
        m_data = static_cast<char*>(more);
        m_capacity = capacity;
    }

    char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace vqxml

#endif
