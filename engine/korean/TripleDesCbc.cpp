#include "engine/korean/TripleDesCbc.hpp"

#include <algorithm>
#include <cstring>

#include <openssl/crypto.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/TripleDesBitsliced.hpp"
#include "engine/korean/TripleDesRoundKeys.hpp"

namespace vqxml::korean {

namespace {

// FIPS 46-3 key schedule: PC-1 picks 56 of the key's bits (its parity bits are
// left out), both 28-bit halves turn left before each round, PC-2 picks 48.
constexpr int kPC1[56] = {57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18, 10, 2,  59, 51, 43,
                          35, 27, 19, 11, 3,  60, 52, 44, 36, 63, 55, 47, 39, 31, 23, 15, 7,  62, 54,
                          46, 38, 30, 22, 14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr int kPC2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                          26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                          51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr int kShifts[16] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

// The 16 subkeys of one DES key into rounds[0..15], forwards or backwards. Only
// table positions index anything; the key's bits are moved by shifts and masks.
void expandDesKey(const std::uint8_t key[8], bool backwards, std::uint64_t (*rounds)[TripleDesRoundKeys::kSubkeyBits]) {
    std::uint64_t k = 0;
    for (int i = 0; i < 8; ++i)
        k = (k << 8) | key[i];
    std::uint8_t cd[56];  // C then D, one bit each
    for (int i = 0; i < 56; ++i)
        cd[i] = std::uint8_t((k >> (64 - kPC1[i])) & 1);
    int shift = 0;
    for (int round = 0; round < 16; ++round) {
        shift += kShifts[round];
        std::uint64_t* subkey = rounds[backwards ? 15 - round : round];
        for (int j = 0; j < 48; ++j) {
            const int bit = kPC2[j] - 1;  // of C || D after the turns
            const int half = bit < 28 ? 0 : 28;
            subkey[j] = 0 - std::uint64_t(cd[half + (bit - half + shift) % 28]);
        }
    }
    OPENSSL_cleanse(&k, sizeof k);
    OPENSSL_cleanse(cd, sizeof cd);
}

using BatchFunction = void (*)(const TripleDesRoundKeys&, const std::uint8_t*, std::size_t, std::uint8_t*);

// CBC over the batches: each batch is decrypted into a buffer, then XORed with
// the ciphertext blocks before, last block first, so that out may be in (the
// ciphertext block before the batch is kept aside). A last batch that 64 blocks
// hold takes the 64-block form, which costs less than a wider one.
void cbcDecrypt(BatchFunction batch, std::size_t batchBlocks, const std::uint8_t key[kTripleDesKeySize],
                const std::uint8_t iv[kDesBlockSize], const std::uint8_t* in, std::size_t len, std::uint8_t* out) {
    if (len % kDesBlockSize != 0)
        throw CryptoError("Triple DES: the data is not whole blocks");
    const TripleDesRoundKeys keys(key);
    std::uint8_t plain[kAvx2Batch * kDesBlockSize];
    std::uint8_t before[kDesBlockSize], next[kDesBlockSize];
    std::memcpy(before, iv, kDesBlockSize);
    for (std::size_t at = 0; at < len; at += batchBlocks * kDesBlockSize) {
        const std::size_t blocks = std::min(batchBlocks, (len - at) / kDesBlockSize);
        const std::uint8_t* c = in + at;
        (blocks <= kPortableBatch ? decryptBatchPortable : batch)(keys, c, blocks, plain);
        std::memcpy(next, c + (blocks - 1) * kDesBlockSize, kDesBlockSize);
        for (std::size_t i = blocks; i-- > 0;) {
            std::uint64_t p, chain;
            std::memcpy(&p, plain + i * kDesBlockSize, kDesBlockSize);
            std::memcpy(&chain, i > 0 ? c + (i - 1) * kDesBlockSize : before, kDesBlockSize);
            p ^= chain;
            std::memcpy(out + at + i * kDesBlockSize, &p, kDesBlockSize);
        }
        std::memcpy(before, next, kDesBlockSize);
    }
    OPENSSL_cleanse(plain, sizeof plain);
}

}  // namespace

TripleDesRoundKeys::TripleDesRoundKeys(const std::uint8_t key[24]) {
    expandDesKey(key + 16, true, mask);
    expandDesKey(key + 8, false, mask + 16);
    expandDesKey(key, true, mask + 32);
}

TripleDesRoundKeys::~TripleDesRoundKeys() {
    OPENSSL_cleanse(mask, sizeof mask);
}

void decryptBatchPortable(const TripleDesRoundKeys& keys, const std::uint8_t* in, std::size_t blocks,
                          std::uint8_t* out) {
    bitsliced::decryptBatch<std::uint64_t>(keys, in, blocks, out);
}

bool tripleDesUsesAvx2() {
    static const bool avx2 = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return avx2;
}

void tripleDesCbcDecrypt(const std::uint8_t key[kTripleDesKeySize], const std::uint8_t iv[kDesBlockSize],
                         const std::uint8_t* in, std::size_t len, std::uint8_t* out) {
    if (tripleDesUsesAvx2())
        cbcDecrypt(decryptBatchAvx2, kAvx2Batch, key, iv, in, len, out);
    else
        cbcDecrypt(decryptBatchPortable, kPortableBatch, key, iv, in, len, out);
}

void tripleDesCbcDecryptPortable(const std::uint8_t key[kTripleDesKeySize], const std::uint8_t iv[kDesBlockSize],
                                 const std::uint8_t* in, std::size_t len, std::uint8_t* out) {
    cbcDecrypt(decryptBatchPortable, kPortableBatch, key, iv, in, len, out);
}

}  // namespace vqxml::korean
