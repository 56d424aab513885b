// The bitsliced EDE3 decryption of one batch, written once for a word type W:
// std::uint64_t holds one bit of 64 blocks, a vector of four of them one bit of
// 256. Word b of the state holds bit b of every block of the batch, so a
// permutation of bits (IP, E, P, FP) costs nothing but the choice of words, and
// an S-box is its gate network (DesSboxCircuits.inc) run on six words.
//
// Included by TripleDesCbc.cpp and by TripleDesCbcAvx2.cpp, which compiles it
// for AVX2: everything here has internal linkage, so code built for AVX2 is never
// shared with the form that runs on any x86-64 processor.
#ifndef VQXML_ENGINE_KOREAN_TRIPLEDESBITSLICED_HPP
#define VQXML_ENGINE_KOREAN_TRIPLEDESBITSLICED_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <openssl/crypto.h>

#include "engine/korean/DesTables.hpp"
#include "engine/korean/TripleDesRoundKeys.hpp"

namespace vqxml::korean {
namespace {
namespace bitsliced {

#include "engine/korean/DesSboxCircuits.inc"

// Where S-box output bit m (0-based) lands in the round's left half.
constexpr std::array<int, 32> sboxOutputTargets() {
    std::array<int, 32> to{};
    for (int j = 0; j < 32; ++j)
        to[des::kP[j] - 1] = j;
    return to;
}
constexpr std::array<int, 32> kToLeft = sboxOutputTargets();

// The transposed word that holds DES bit n (1-based, bit 1 the most significant
// of the block's first byte): blocks are read as big-endian integers, whose bit
// k becomes word k.
constexpr int wordOfBit(int n) { return 64 - n; }

template <class W>
inline W broadcast(std::uint64_t v) {
    return W{} + v;
}

// One round: l ^= P(S(E(r) ^ k)).
template <class W>
inline __attribute__((always_inline)) void feistel(W* __restrict l, const W* __restrict r,
                                                   const std::uint64_t* k) {
    auto x = [&](int j) { return r[des::kE[j] - 1] ^ broadcast<W>(k[j]); };
    auto y = [&](int m) -> W& { return l[kToLeft[m]]; };
    s1(x(0), x(1), x(2), x(3), x(4), x(5), y(0), y(1), y(2), y(3));
    s2(x(6), x(7), x(8), x(9), x(10), x(11), y(4), y(5), y(6), y(7));
    s3(x(12), x(13), x(14), x(15), x(16), x(17), y(8), y(9), y(10), y(11));
    s4(x(18), x(19), x(20), x(21), x(22), x(23), y(12), y(13), y(14), y(15));
    s5(x(24), x(25), x(26), x(27), x(28), x(29), y(16), y(17), y(18), y(19));
    s6(x(30), x(31), x(32), x(33), x(34), x(35), y(20), y(21), y(22), y(23));
    s7(x(36), x(37), x(38), x(39), x(40), x(41), y(24), y(25), y(26), y(27));
    s8(x(42), x(43), x(44), x(45), x(46), x(47), y(28), y(29), y(30), y(31));
}

// Sixteen rounds on the halves (l, r); they end as (L16, R16), unswapped.
template <class W>
__attribute__((noinline)) void sixteenRounds(W* l, W* r, const std::uint64_t (*keys)[TripleDesRoundKeys::kSubkeyBits]) {
    for (int round = 0; round < 16; round += 2) {
        feistel(l, r, keys[round]);
        feistel(r, l, keys[round + 1]);
    }
}

// Transposes 64 x 64 bit matrices in place, one in each 64-bit part of W: bit
// c of row r trades places with bit r of row c. Each step swaps one bit of the
// row number with the same bit of the column number, on all elements where the
// two differ.
template <class W>
inline void transpose(W rows[64]) {
    constexpr std::uint64_t kLowHalves[6] = {0x00000000FFFFFFFFull, 0x0000FFFF0000FFFFull, 0x00FF00FF00FF00FFull,
                                             0x0F0F0F0F0F0F0F0Full, 0x3333333333333333ull, 0x5555555555555555ull};
    for (int step = 0; step < 6; ++step) {
        const int s = 32 >> step;
        const W low = broadcast<W>(kLowHalves[step]);
        for (int lo = 0; lo < 64; ++lo) {
            if (lo & s)
                continue;
            const W t = ((rows[lo] >> s) ^ rows[lo + s]) & low;
            rows[lo + s] ^= t;
            rows[lo] ^= t << s;
        }
    }
}

// Blocks are big-endian integers: each 64-bit part of W turned around.
inline std::uint64_t bigEndianParts(std::uint64_t w) {
    return __builtin_bswap64(w);
}

template <class W>
inline W bigEndianParts(W w) {
    static_assert(sizeof(W) == 32, "a vector of four 64-bit parts");
    for (int part = 0; part < 4; ++part)
        w[part] = __builtin_bswap64(w[part]);
    return w;
}

// Row i holds blocks kParts * i to kParts * i + kParts - 1, one in each part;
// transposed, row b holds bit b of every block, which is the state's word for
// it. out has room for a whole batch.
template <class W>
void decryptBatch(const TripleDesRoundKeys& keys, const std::uint8_t* in, std::size_t blocks, std::uint8_t* out) {
    constexpr std::size_t kBatchBytes = 64 * sizeof(W);
    std::uint8_t padded[kBatchBytes];  // ciphertext, nothing to wipe
    if (blocks * 8 < kBatchBytes) {
        std::memcpy(padded, in, blocks * 8);
        std::memset(padded + blocks * 8, 0, kBatchBytes - blocks * 8);
        in = padded;
    }
    W rows[64];
    for (std::size_t i = 0; i < 64; ++i) {
        std::memcpy(&rows[i], in + i * sizeof(W), sizeof(W));
        rows[i] = bigEndianParts(rows[i]);
    }
    transpose(rows);

    // After IP, state[0..31] is L0 and state[32..63] R0.
    W state[64];
    for (int i = 0; i < 64; ++i)
        state[i] = rows[wordOfBit(des::kIP[i])];
    W* a = state;
    W* b = state + 32;
    sixteenRounds(a, b, keys.mask);       // D_K3
    sixteenRounds(b, a, keys.mask + 16);  // E_K2 on R16 || L16 of the previous
    sixteenRounds(a, b, keys.mask + 32);  // D_K1
    // The output R16 || L16 = b || a goes through FP, the inverse of IP.
    for (int i = 0; i < 64; ++i)
        rows[wordOfBit(des::kIP[i])] = state[(i + 32) % 64];

    transpose(rows);
    for (std::size_t i = 0; i < 64; ++i) {
        const W plain = bigEndianParts(rows[i]);
        std::memcpy(out + i * sizeof(W), &plain, sizeof(W));
    }
    OPENSSL_cleanse(rows, sizeof rows);
    OPENSSL_cleanse(state, sizeof state);
}

}  // namespace bitsliced
}  // namespace
}  // namespace vqxml::korean

#endif
