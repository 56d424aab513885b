// The Korean 128-bit block ciphers in CBC mode over whole blocks: SEED and
// ARIA-128 from OpenSSL (SEED needs the legacy provider loaded), NEAT of our own.
// Padding and IV framing are the caller's business (see XmlEncCbc.hpp).
#ifndef VQXML_ENGINE_KOREAN_CBCCIPHER_HPP
#define VQXML_ENGINE_KOREAN_CBCCIPHER_HPP

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vqxml::korean {

enum class BlockCipherId { Seed, Aria128, Neat };

constexpr std::size_t kCipherBlockSize = 16;  // all three
constexpr std::size_t kCipherKeySize = 16;    // SEED-128, ARIA-128, NEAT-128

const char* blockCipherName(BlockCipherId id);

// Raises CryptoError unless key holds kCipherKeySize bytes.
void requireCipherKey(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen);

class CbcCipher {
public:
    // Throws CryptoError for a key that is not 16 bytes or a cipher OpenSSL lacks.
    CbcCipher(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen, bool encrypt,
              const std::uint8_t iv[kCipherBlockSize]);
    ~CbcCipher();
    CbcCipher(const CbcCipher&) = delete;
    CbcCipher& operator=(const CbcCipher&) = delete;

    // len must be a multiple of the block size; out may equal in.
    void process(const std::uint8_t* in, std::size_t len, std::uint8_t* out);

    class Engine;  // defined in the source file

private:
    std::unique_ptr<Engine> m_engine;
};

}  // namespace vqxml::korean

#endif
