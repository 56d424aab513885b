// Triple DES (EDE3) CBC encryption, one block after the other (each block's
// input needs the ciphertext block before it), table-driven.
//
// Each half block is held in a spread form: its 48 expanded bits (DES's E), each
// S-box's six in a byte of their own at bits 2..7. E copies bits, so the spread
// form of an XOR is the XOR of the spread forms, and the tables give each S-box's
// output already permuted (P) and spread. A round is then eight byte lookups and
// XORs, and E is done once per block rather than once per round.
//
// The rounds are one chain of lookups, so its length sets the speed. Two things
// shorten it:
//  - The value a round looks up is its input half XOR its subkey. It is formed
//    directly: the other half is carried pre-XORed with the subkey of the round
//    that looks it up next, so no XOR follows the S-box sum. At the joins of
//    the three DES operations the half looked up stays the same and only its key
//    changes.
//  - The eight lookups are summed as a tree; the compilers would otherwise turn
//    the sum into one serial chain, which an empty asm statement per partial sum
//    prevents.
// IP and FP go through one 256-entry table each, once per block, apart from the
// chain.
//
// The lookups depend on the key and the data, as in OpenSSL's DES; decryption,
// which a peer's ciphertext reaches, is the bitsliced form without lookups.
#include <cstring>

#include <openssl/crypto.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/DesKeySchedule.hpp"
#include "engine/korean/DesTables.hpp"
#include "engine/korean/TripleDesCbc.hpp"

namespace vqxml::korean {

namespace {

constexpr std::uint32_t rotl(std::uint32_t x, int n) {
    return (x << n) | (x >> (32 - n));
}
constexpr std::uint32_t rotr(std::uint32_t x, int n) {
    return (x >> n) | (x << (32 - n));
}

// The spread form of a half (bit 1 of DES's numbering the highest): S-boxes 1,
// 3, 5, 7 take bytes 7..4, whose bits 7..2 are E's bits 32, 1..5, then 8..13,
// 16..21, 24..29; S-boxes 2, 4, 6, 8 bytes 3..0 (E's bits 4..9, 12..17, ...).
constexpr std::uint32_t kChunkBits = 0xfcfcfcfc;
constexpr int kSpreadByte[8] = {7, 3, 6, 2, 5, 1, 4, 0};

constexpr std::uint64_t spread(std::uint32_t half) {
    return std::uint64_t(rotr(half, 1) & kChunkBits) << 32 | (rotl(half, 3) & kChunkBits);
}
constexpr std::uint32_t gather(std::uint64_t spreadHalf) {
    return rotl(std::uint32_t(spreadHalf >> 32), 1) | rotr(std::uint32_t(spreadHalf), 3);
}

struct Tables {
    // S-box j's output for its six input bits v (E's order), through P, spread.
    std::uint64_t sp[8][64];
    // IP: input byte b (the highest first) gives bit c of its (c = 1..8, the
    // highest first) to output byte c/2 - 1 (c even) or 3 + (c + 1)/2 (c odd),
    // at that byte's lowest bit shifted left by b. ip[v] holds the lowest-bit
    // placement. FP undoes it: fp[v] puts bit k of an output byte's value (the
    // highest is 1) back into input byte 8 - k, at its lowest bit, to be
    // shifted to the bit c the output byte holds.
    std::uint64_t ip[256];
    std::uint64_t fp[256];
};

constexpr int ipTargetByte(int c) {
    return c % 2 == 0 ? c / 2 - 1 : 3 + (c + 1) / 2;
}

constexpr Tables makeTables() {
    Tables t{};
    for (int j = 0; j < 8; ++j)
        for (int v = 0; v < 64; ++v) {
            const int row = ((v >> 4) & 2) | (v & 1), column = (v >> 1) & 15;
            const std::uint32_t s = std::uint32_t(des::kSbox[j][row][column]) << (28 - 4 * j);
            std::uint32_t p = 0;
            for (int i = 0; i < 32; ++i)
                p |= ((s >> (32 - des::kP[i])) & 1) << (31 - i);
            t.sp[j][v] = spread(p);
        }
    for (int v = 0; v < 256; ++v)
        for (int c = 1; c <= 8; ++c)
            if ((v >> (8 - c)) & 1) {
                t.ip[v] |= std::uint64_t(1) << (56 - 8 * ipTargetByte(c));
                t.fp[v] |= std::uint64_t(1) << (8 * c - 8);
            }
    return t;
}

alignas(64) constexpr Tables kTables = makeTables();

// The shift that takes fp's placement of output byte k's bits to their bit c.
constexpr int kFpShift[8] = {6, 4, 2, 0, 7, 5, 3, 1};

std::uint64_t initialPermutation(std::uint64_t x) {
    std::uint64_t y = 0;
#pragma GCC unroll 8
    for (int b = 0; b < 8; ++b)
        y ^= kTables.ip[(x >> (56 - 8 * b)) & 0xff] << b;
    return y;
}

std::uint64_t finalPermutation(std::uint64_t y) {
    std::uint64_t x = 0;
#pragma GCC unroll 8
    for (int k = 0; k < 8; ++k)
        x ^= kTables.fp[(y >> (56 - 8 * k)) & 0xff] << kFpShift[k];
    return x;
}

// The 48 subkeys of EDE3 encryption (K1's forwards, K2's backwards, K3's
// forwards), spread, folded as the rounds use them. The first round looks up
// the right half XOR first and carries the left half XOR second. After round
// r, the value it looked up XOR next[r] is the next round's carried value; at
// a join, where the half looked up stays, it is the next value looked up and
// the round's output is carried instead. Wiped on destruction.
struct EncryptionKeys {
    std::uint64_t first = 0, second = 0;
    std::uint64_t next[48] = {};

    explicit EncryptionKeys(const std::uint8_t key[kTripleDesKeySize]) {
        std::uint64_t k[48];
        for (int d = 0; d < 3; ++d) {
            std::uint64_t subkeys[kDesRounds];
            desSubkeys(key + 8 * d, subkeys);
            for (int round = 0; round < kDesRounds; ++round)
                k[16 * d + (d == 1 ? 15 - round : round)] = spreadSubkey(subkeys[round]);
            OPENSSL_cleanse(subkeys, sizeof subkeys);
        }
        // carried[r]: what the half produced by round r is carried XORed with,
        // the subkey of the round that looks it up. At a join the produced
        // half is not looked up but carried on, XORed with the same key as
        // the next round's output.
        const auto carried = [&k](int r) { return r >= 47 ? 0 : k[isJoin(r) ? r + 2 : r + 1]; };
        first = k[0];
        second = carried(0);
        for (int r = 0; r < 48; ++r)
            next[r] = isJoin(r) ? k[r] ^ k[r + 1] : k[r] ^ carried(r + 1);
        OPENSSL_cleanse(k, sizeof k);
    }
    ~EncryptionKeys() { OPENSSL_cleanse(this, sizeof *this); }
    EncryptionKeys(const EncryptionKeys&) = delete;
    EncryptionKeys& operator=(const EncryptionKeys&) = delete;

    static constexpr bool isJoin(int r) { return r == 15 || r == 31; }

    static std::uint64_t spreadSubkey(std::uint64_t subkey) {
        std::uint64_t s = 0;
        for (int j = 0; j < 8; ++j)
            s |= ((subkey >> (42 - 6 * j)) & 63) << (8 * kSpreadByte[j] + 2);
        return s;
    }
};

inline std::uint64_t pinned(std::uint64_t x) {
    asm("" : "+r"(x));
    return x;
}

// S-box j's table entry for the byte of y that holds its input, read at the
// byte's value times 2 (its bits 0 and 1 are zero, the entries 8 bytes).
template <int j>
inline std::uint64_t lookup(const char* sp, std::uint64_t y) {
    std::uint64_t entry;
    std::memcpy(&entry, sp + 512 * j + ((y >> (8 * kSpreadByte[j])) & 0xff) * 2, sizeof entry);
    return entry;
}

// carried XOR the S-boxes' spread output for y. S-boxes 8, 6 and 1 sit in bytes
// 0, 1 and 7, which take one instruction less to reach, and are summed first.
inline std::uint64_t feistelRound(const char* sp, std::uint64_t y, std::uint64_t carried) {
    const std::uint64_t a = pinned(carried ^ lookup<7>(sp, y)), b = pinned(lookup<5>(sp, y) ^ lookup<0>(sp, y));
    const std::uint64_t c = pinned(a ^ lookup<6>(sp, y)), d = pinned(b ^ lookup<1>(sp, y));
    const std::uint64_t e = pinned(lookup<2>(sp, y) ^ lookup<3>(sp, y));
    return pinned(c ^ d) ^ pinned(e ^ lookup<4>(sp, y));
}

std::uint64_t loadBigEndian(const std::uint8_t* p) {
    std::uint64_t x;
    std::memcpy(&x, p, sizeof x);
    return __builtin_bswap64(x);
}

}  // namespace

void tripleDesCbcEncrypt(const std::uint8_t key[kTripleDesKeySize], const std::uint8_t iv[kDesBlockSize],
                         const std::uint8_t* in, std::size_t len, std::uint8_t* out) {
    if (len % kDesBlockSize != 0)
        throw CryptoError("Triple DES: the data is not whole blocks");
    const EncryptionKeys keys(key);
    const char* sp = reinterpret_cast<const char*>(kTables.sp);
    // The spread halves of IP of the ciphertext block before.
    const std::uint64_t chained = initialPermutation(loadBigEndian(iv));
    std::uint64_t left = spread(std::uint32_t(chained >> 32)), right = spread(std::uint32_t(chained));
    for (std::size_t at = 0; at < len; at += kDesBlockSize) {
        const std::uint64_t p = initialPermutation(loadBigEndian(in + at));
        std::uint64_t y = right ^ spread(std::uint32_t(p)) ^ keys.first;
        std::uint64_t carried = left ^ spread(std::uint32_t(p >> 32)) ^ keys.second;
        // Unrolled, so that the joins are known where the code is made.
#pragma GCC unroll 48
        for (int r = 0; r < 48; ++r) {
            const std::uint64_t produced = feistelRound(sp, y, carried);
            if (EncryptionKeys::isJoin(r)) {
                y ^= keys.next[r];
                carried = produced;
            } else {
                carried = y ^ keys.next[r];
                y = produced;
            }
        }
        left = y;
        right = carried;
        const std::uint64_t c =
            __builtin_bswap64(finalPermutation(std::uint64_t(gather(left)) << 32 | gather(right)));
        std::memcpy(out + at, &c, sizeof c);
    }
}

}  // namespace vqxml::korean
