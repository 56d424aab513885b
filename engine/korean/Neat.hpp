// NEAT, the 128-bit block cipher of the Korean government PKI. No official
// specification is public; this follows the structure published by the
// researchers who reverse engineered it: twelve rounds in which the left 64-bit
// half goes through an IDEA-like function F and the right half through its
// inverse, each with data-dependent rotations, followed by a key-selected XOR
// mix of the halves; a thirteenth half round without the mix; a final swap of
// the halves. The round keys come from encrypting the master key under a fixed
// key with the same rounds.
//
// 16-bit multiplication is modulo 2^16+1 with 0 standing for 2^16 (as in IDEA),
// so 0 x 0 = 1; this keeps every round invertible.
#ifndef VQXML_ENGINE_KOREAN_NEAT_HPP
#define VQXML_ENGINE_KOREAN_NEAT_HPP

#include <cstddef>
#include <cstdint>

namespace vqxml::korean {

class Neat {
public:
    static constexpr std::size_t kBlockSize = 16;
    static constexpr std::size_t kKeySize = 16;

    explicit Neat(const std::uint8_t key[kKeySize]);
    ~Neat();
    Neat(const Neat&) = default;
    Neat& operator=(const Neat&) = default;

    // in and out may be the same buffer.
    void encryptBlock(const std::uint8_t in[kBlockSize], std::uint8_t out[kBlockSize]) const;
    void decryptBlock(const std::uint8_t in[kBlockSize], std::uint8_t out[kBlockSize]) const;

    static constexpr int kRounds = 12;  // full rounds; one half round follows

    // Per round: four 16-bit subkeys (two for F, two for its inverse) and the
    // four XORs of the mix as (target word, source word) pairs.
    struct Schedule {
        std::uint16_t subkeys[kRounds + 1][4];
        std::uint8_t mix[kRounds][4][2];
    };

private:
    Schedule m_encrypt;
    Schedule m_decrypt;
};

}  // namespace vqxml::korean

#endif
