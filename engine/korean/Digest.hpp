// The hash functions KCDSA is used with, behind one streaming interface:
// SHA-1, SHA-224 and SHA-256 from OpenSSL, HAS-160 of our own.
#ifndef VQXML_ENGINE_KOREAN_DIGEST_HPP
#define VQXML_ENGINE_KOREAN_DIGEST_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vqxml::korean {

enum class HashAlgorithm { Sha1, Has160, Sha224, Sha256 };

// Output size in bytes.
std::size_t digestSize(HashAlgorithm alg);
// Input block size in bytes (64 for all four).
std::size_t digestBlockSize(HashAlgorithm alg);

class Digest {
public:
    explicit Digest(HashAlgorithm alg);
    ~Digest();
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;

    HashAlgorithm algorithm() const { return m_alg; }
    std::size_t size() const { return digestSize(m_alg); }

    void update(const std::uint8_t* data, std::size_t len);
    // Returns the digest and starts over.
    std::vector<std::uint8_t> finish();

    // One-shot digest of the concatenation of up to two pieces.
    static std::vector<std::uint8_t> of(HashAlgorithm alg, const std::uint8_t* data, std::size_t len,
                                        const std::uint8_t* more = nullptr, std::size_t moreLen = 0);

    // The hashing behind the interface (defined in the source file).
    class Engine;

private:
    HashAlgorithm m_alg;
    std::unique_ptr<Engine> m_engine;
};

}  // namespace vqxml::korean

#endif
