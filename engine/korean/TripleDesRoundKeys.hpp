// What the two forms of the bitsliced Triple DES decryption (TripleDesCbc.cpp
// and TripleDesCbcAvx2.cpp) share: the expanded key and the batch functions.
#ifndef VQXML_ENGINE_KOREAN_TRIPLEDESROUNDKEYS_HPP
#define VQXML_ENGINE_KOREAN_TRIPLEDESROUNDKEYS_HPP

#include <cstddef>
#include <cstdint>

namespace vqxml::korean {

// The 48 rounds of an EDE3 decryption in the order they run (K3's subkeys
// backwards, K2's forwards, K1's backwards), each subkey bit as a mask of all
// ones or all zeros, ready to be XORed into every block of a batch. Wiped on
// destruction.
struct TripleDesRoundKeys {
    static constexpr int kRounds = 48;
    static constexpr int kSubkeyBits = 48;
    std::uint64_t mask[kRounds][kSubkeyBits];

    explicit TripleDesRoundKeys(const std::uint8_t key[24]);
    ~TripleDesRoundKeys();
    TripleDesRoundKeys(const TripleDesRoundKeys&) = delete;
    TripleDesRoundKeys& operator=(const TripleDesRoundKeys&) = delete;
};

// EDE3 decryption without chaining of blocks (1 to the batch's size) blocks of
// in into out, which has room for a whole batch: the missing blocks of a batch
// are zeros, whose results land after the others.
constexpr std::size_t kPortableBatch = 64;
constexpr std::size_t kAvx2Batch = 256;
void decryptBatchPortable(const TripleDesRoundKeys& keys, const std::uint8_t* in, std::size_t blocks,
                          std::uint8_t* out);
void decryptBatchAvx2(const TripleDesRoundKeys& keys, const std::uint8_t* in, std::size_t blocks,
                      std::uint8_t* out);

}  // namespace vqxml::korean

#endif
