// KCDSA (TTAK.KO-12.0001/R4) on OpenSSL's BIGNUM, generic over the hash.
//
//   y = g^(x^-1 mod q) mod p         Z = y mod 2^l (the last 64 bytes of y written
//                                    as long as p; l = the hash's block size)
//   w = g^k mod p, written as long as p
//   R = the rightmost beta bits of h(w)        (beta = bit length of q)
//   H = the rightmost beta bits of h(Z || M)
//   E = (R xor H) mod q,  S = x(k - E) mod q
// Verification recomputes w' = y^S g^E mod p and compares the rightmost beta
// bits of h(w') with R.
//
// A signature is R || S, each as long as q in bytes, big-endian.
//
// Keys are checked when made: p odd of 1024 to 4096 bits, q a prime of 160 to
// 256 bits dividing p-1, 1 < g < p of order q, 1 < y < p with y^q = 1, and for a
// private key 0 < x mod q. p's primality is not tested (too slow for every key
// load; the issuer of the parameters vouches for it). A hash whose output is
// shorter than q is refused at signing and verification time.
//
// Secret exponentiations use BN_mod_exp_mont_consttime and the secret products
// Montgomery multiplication of fixed width.
#ifndef VQXML_ENGINE_KOREAN_KCDSA_HPP
#define VQXML_ENGINE_KOREAN_KCDSA_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <openssl/bn.h>

#include "engine/korean/Digest.hpp"
#include "engine/korean/OpenSSLPtr.hpp"

namespace vqxml::korean {

// Cleared when freed: it may hold a secret.
using Bignum = OpenSSLPtr<BIGNUM, BN_clear_free>;

// A big-endian magnitude as a Bignum; raises CryptoError on allocation failure.
Bignum bignumFromBytes(const std::uint8_t* bytes, std::size_t len);

class KcdsaKey {
public:
    // The public key (p, q, g, y); raises CryptoError if they are inconsistent.
    static KcdsaKey fromPublic(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g, const BIGNUM* y);
    // The key pair of x under (p, q, g); y is derived.
    static KcdsaKey fromPrivate(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g, const BIGNUM* x);

    KcdsaKey(const KcdsaKey& other);
    KcdsaKey& operator=(const KcdsaKey& other);
    KcdsaKey(KcdsaKey&&) noexcept;
    KcdsaKey& operator=(KcdsaKey&&) noexcept;
    ~KcdsaKey();

    bool hasPrivate() const;
    const BIGNUM* p() const;
    const BIGNUM* q() const;
    const BIGNUM* g() const;
    const BIGNUM* y() const;
    const BIGNUM* x() const;  // null for a public key; reduced mod q
    int qBits() const;
    std::size_t qBytes() const;
    std::size_t pBytes() const;
    std::size_t signatureSize() const { return 2 * qBytes(); }

    // Same p, q, g and y.
    bool samePublicKey(const KcdsaKey& other) const;

    // Z, the public-key prefix of the hashed message (64 bytes).
    std::vector<std::uint8_t> hashPrefix() const;
    // h(Z || message), the value signDigest and verifyDigest take.
    std::vector<std::uint8_t> messageDigest(HashAlgorithm alg, const std::uint8_t* msg,
                                            std::size_t len) const;

    // Signs h(Z || M) (digest from messageDigest or a stream fed with Z first).
    std::vector<std::uint8_t> signDigest(HashAlgorithm alg, const std::uint8_t* digest,
                                         std::size_t len) const;
    // The same with a given k, for known-answer tests only: a k used twice
    // reveals the private key.
    std::vector<std::uint8_t> signDigestWithNonce(HashAlgorithm alg, const std::uint8_t* digest,
                                                  std::size_t len, const BIGNUM* k) const;
    // False for a wrong or malformed signature; raises only for an unusable
    // hash or digest.
    bool verifyDigest(HashAlgorithm alg, const std::uint8_t* digest, std::size_t len,
                      const std::uint8_t* sig, std::size_t sigLen) const;

    std::vector<std::uint8_t> sign(HashAlgorithm alg, const std::uint8_t* msg, std::size_t len) const;
    bool verify(HashAlgorithm alg, const std::uint8_t* msg, std::size_t len, const std::uint8_t* sig,
                std::size_t sigLen) const;

    struct State;  // defined in the source file

private:
    explicit KcdsaKey(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

}  // namespace vqxml::korean

#endif
