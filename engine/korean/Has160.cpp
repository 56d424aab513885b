#include "engine/korean/Has160.hpp"

#include <cstring>

#include <openssl/crypto.h>

namespace vqxml::korean {
namespace {

constexpr std::uint32_t kInitialState[5] = {0x67452301u, 0xefcdab89u, 0x98badcfeu, 0x10325476u,
                                            0xc3d2e1f0u};

// Round constants and the rotation of B, one per round of 20 steps.
constexpr std::uint32_t kRoundConstant[4] = {0x00000000u, 0x5a827999u, 0x6ed9eba1u, 0x8f1bbcdcu};
constexpr int kRotateB[4] = {10, 17, 25, 30};

// Rotation of A in step j of every round.
constexpr int kRotateA[20] = {5, 11, 7, 15, 6, 13, 8, 14, 7, 12, 9, 11, 8, 15, 6, 12, 9, 14, 5, 13};

// The four extra words of each round are XORs of four message words each.
constexpr int kExtraWordSources[4][4][4] = {
    {{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11}, {12, 13, 14, 15}},
    {{3, 6, 9, 12}, {15, 2, 5, 8}, {11, 14, 1, 4}, {7, 10, 13, 0}},
    {{12, 5, 14, 7}, {0, 9, 2, 11}, {4, 13, 6, 15}, {8, 1, 10, 3}},
    {{7, 2, 13, 8}, {3, 14, 9, 4}, {15, 10, 5, 0}, {11, 6, 1, 12}},
};

// Which word (0-15 message, 16-19 extra) step j of each round reads.
constexpr int kWordOrder[4][20] = {
    {18, 0, 1, 2, 3, 19, 4, 5, 6, 7, 16, 8, 9, 10, 11, 17, 12, 13, 14, 15},
    {18, 3, 6, 9, 12, 19, 15, 2, 5, 8, 16, 11, 14, 1, 4, 17, 7, 10, 13, 0},
    {18, 12, 5, 14, 7, 19, 0, 9, 2, 11, 16, 4, 13, 6, 15, 17, 8, 1, 10, 3},
    {18, 7, 2, 13, 8, 19, 3, 14, 9, 4, 16, 15, 10, 5, 0, 17, 11, 6, 1, 12},
};

inline std::uint32_t rotl(std::uint32_t x, int n) {
    return (x << n) | (x >> (32 - n));
}

inline std::uint32_t roundFunction(int round, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    switch (round) {
    case 0:
        return (b & c) | (~b & d);
    case 2:
        return c ^ (b | ~d);
    default:
        return b ^ c ^ d;
    }
}

inline std::uint32_t loadLE32(const std::uint8_t* p) {
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}

inline void storeLE32(std::uint8_t* p, std::uint32_t v) {
    p[0] = std::uint8_t(v);
    p[1] = std::uint8_t(v >> 8);
    p[2] = std::uint8_t(v >> 16);
    p[3] = std::uint8_t(v >> 24);
}

}  // namespace

Has160::Has160() {
    reset();
}

Has160::~Has160() {
    OPENSSL_cleanse(this, sizeof *this);
}

void Has160::reset() {
    std::memcpy(m_state, kInitialState, sizeof m_state);
    m_length = 0;
    m_buffered = 0;
}

void Has160::update(const std::uint8_t* data, std::size_t len) {
    m_length += len;
    if (m_buffered > 0) {
        std::size_t take = kBlockSize - m_buffered < len ? kBlockSize - m_buffered : len;
        std::memcpy(m_buffer + m_buffered, data, take);
        m_buffered += take;
        data += take;
        len -= take;
        if (m_buffered < kBlockSize)
            return;
        compress(m_buffer);
        m_buffered = 0;
    }
    for (; len >= kBlockSize; data += kBlockSize, len -= kBlockSize)
        compress(data);
    std::memcpy(m_buffer, data, len);
    m_buffered = len;
}

void Has160::finish(std::uint8_t digest[kDigestSize]) {
    std::uint64_t bits = m_length * 8;
    std::uint8_t padding[kBlockSize + 8] = {0x80};
    std::size_t padLen = (m_buffered < 56 ? 56 : 120) - m_buffered;
    for (int i = 0; i < 8; ++i)
        padding[padLen + i] = std::uint8_t(bits >> (8 * i));
    update(padding, padLen + 8);
    for (int i = 0; i < 5; ++i)
        storeLE32(digest + 4 * i, m_state[i]);
    reset();
}

void Has160::compress(const std::uint8_t block[kBlockSize]) {
    std::uint32_t x[20];
    for (int i = 0; i < 16; ++i)
        x[i] = loadLE32(block + 4 * i);
    std::uint32_t a = m_state[0], b = m_state[1], c = m_state[2], d = m_state[3], e = m_state[4];
    for (int round = 0; round < 4; ++round) {
        for (int w = 0; w < 4; ++w) {
            const int* src = kExtraWordSources[round][w];
            x[16 + w] = x[src[0]] ^ x[src[1]] ^ x[src[2]] ^ x[src[3]];
        }
        for (int step = 0; step < 20; ++step) {
            std::uint32_t t = rotl(a, kRotateA[step]) + roundFunction(round, b, c, d) + e +
                              x[kWordOrder[round][step]] + kRoundConstant[round];
            e = d;
            d = c;
            c = rotl(b, kRotateB[round]);
            b = a;
            a = t;
        }
    }
    m_state[0] += a;
    m_state[1] += b;
    m_state[2] += c;
    m_state[3] += d;
    m_state[4] += e;
    OPENSSL_cleanse(x, sizeof x);
}

}  // namespace vqxml::korean
