// HAS-160, the Korean hash function of TTAS.KO-12.0011: 512-bit blocks,
// 160-bit digest, little-endian words (MD5-style padding and length).
#ifndef VQXML_ENGINE_KOREAN_HAS160_HPP
#define VQXML_ENGINE_KOREAN_HAS160_HPP

#include <cstddef>
#include <cstdint>

namespace vqxml::korean {

class Has160 {
public:
    static constexpr std::size_t kDigestSize = 20;
    static constexpr std::size_t kBlockSize = 64;

    Has160();
    ~Has160();
    Has160(const Has160&) = default;
    Has160& operator=(const Has160&) = default;

    void reset();
    void update(const std::uint8_t* data, std::size_t len);
    // Writes the 20-byte digest and leaves the object reset.
    void finish(std::uint8_t digest[kDigestSize]);

private:
    void compress(const std::uint8_t block[kBlockSize]);

    std::uint32_t m_state[5];
    std::uint64_t m_length;  // bytes hashed so far
    std::uint8_t m_buffer[kBlockSize];
    std::size_t m_buffered;
};

}  // namespace vqxml::korean

#endif
