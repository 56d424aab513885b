#include "engine/korean/TripleDesCbc.hpp"

#include <algorithm>
#include <cstring>

#include <openssl/crypto.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/DesKeySchedule.hpp"
#include "engine/korean/TripleDesBitsliced.hpp"
#include "engine/korean/TripleDesRoundKeys.hpp"

namespace vqxml::korean {

namespace {

// One DES key's 16 subkeys as masks, into rounds[0..15], forwards or
// backwards.
void expandDesKey(const std::uint8_t key[8], bool backwards, std::uint64_t (*rounds)[TripleDesRoundKeys::kSubkeyBits]) {
    std::uint64_t subkeys[kDesRounds];
    desSubkeys(key, subkeys);
    for (int round = 0; round < kDesRounds; ++round)
        for (int j = 0; j < kDesSubkeyBits; ++j)
            rounds[backwards ? 15 - round : round][j] = 0 - ((subkeys[round] >> (kDesSubkeyBits - 1 - j)) & 1);
    OPENSSL_cleanse(subkeys, sizeof subkeys);
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
