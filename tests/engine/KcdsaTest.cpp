// KCDSA: the TTAK R4 and KISA CAVP records, sign/verify round trips, tampering,
// and keys whose parameters do not hold together.
#include <gtest/gtest.h>

#include "TestSupport.hpp"
#include "engine/korean/CryptoError.hpp"
#include "engine/korean/Kcdsa.hpp"

using namespace vqxml::korean;
using namespace vqxml::test;

namespace {

HashAlgorithm hashNamed(const std::string& name) {
    if (name == "sha224")
        return HashAlgorithm::Sha224;
    if (name == "sha256")
        return HashAlgorithm::Sha256;
    if (name == "has160")
        return HashAlgorithm::Has160;
    return HashAlgorithm::Sha1;
}

Bignum number(const VectorRecord& r, const std::string& field) {
    Bytes b = r.bytes(field);
    return bignumFromBytes(b.data(), b.size());
}

KcdsaKey privateKeyOf(const VectorRecord& r) {
    return KcdsaKey::fromPrivate(number(r, "p").get(), number(r, "q").get(), number(r, "g").get(),
                                 number(r, "x").get());
}

Bytes bytesOf(const BIGNUM* bn, std::size_t len) {
    Bytes out(len);
    BN_bn2binpad(bn, out.data(), int(len));
    return out;
}

const std::vector<VectorRecord>& records() {
    static const std::vector<VectorRecord> all = readVectors("kcdsa.txt");
    return all;
}

// The record of the R4 appendix example with the given parameter sizes and hash.
const VectorRecord& r4Example(const std::string& hash, int qBits) {
    for (const VectorRecord& r : records())
        if (r.has("k") && r.text("hash") == hash && int(r.text("q").size()) * 4 == qBits)
            return r;
    throw std::runtime_error("no such KCDSA example");
}

Bytes flipBit(Bytes b, std::size_t bit) {
    b.at(bit / 8) ^= std::uint8_t(0x80 >> (bit % 8));
    return b;
}

}  // namespace

TEST(KcdsaVectors, EveryRecordSignsAsPublishedAndFreshSignaturesVerify) {
    ASSERT_EQ(records().size(), 15u);
    for (const VectorRecord& r : records()) {
        HashAlgorithm alg = hashNamed(r.text("hash"));
        KcdsaKey key = privateKeyOf(r);
        std::size_t pLen = r.text("p").size() / 2;
        EXPECT_EQ(toHex(bytesOf(key.y(), pLen)), r.text("y")) << r.label;
        if (r.has("z")) {
            EXPECT_EQ(toHex(key.hashPrefix()), r.text("z")) << r.label;
        }

        Bytes m = r.bytes("message");
        std::vector<std::uint8_t> digest = key.messageDigest(alg, m.data(), m.size());
        Bignum k = number(r, r.has("k") ? "k" : "k_derived");
        std::vector<std::uint8_t> sig = key.signDigestWithNonce(alg, digest.data(), digest.size(), k.get());
        EXPECT_EQ(toHex(sig), r.text("r") + r.text("s")) << r.label;

        Bytes published = r.bytes("r");
        Bytes s = r.bytes("s");
        published.insert(published.end(), s.begin(), s.end());
        EXPECT_TRUE(key.verify(alg, m.data(), m.size(), published.data(), published.size())) << r.label;
        KcdsaKey pub = KcdsaKey::fromPublic(key.p(), key.q(), key.g(), number(r, "y").get());
        EXPECT_TRUE(pub.verify(alg, m.data(), m.size(), published.data(), published.size())) << r.label;

        // Fresh signatures, each with a nonce of its own, verify too.
        std::vector<std::uint8_t> fresh = key.sign(alg, m.data(), m.size());
        EXPECT_EQ(fresh.size(), key.signatureSize());
        EXPECT_NE(fresh, key.sign(alg, m.data(), m.size())) << "a fresh nonce per signature";
        EXPECT_TRUE(pub.verify(alg, m.data(), m.size(), fresh.data(), fresh.size())) << r.label;
    }
}

TEST(KcdsaTampering, FlippedBitsInSignatureMessageOrKeyFail) {
    const VectorRecord& r = r4Example("sha256", 224);
    KcdsaKey key = privateKeyOf(r);
    Bytes m = r.bytes("message");
    std::vector<std::uint8_t> sig = key.sign(HashAlgorithm::Sha256, m.data(), m.size());
    const std::size_t half = sig.size() / 2;
    for (std::size_t bit : {std::size_t(0), std::size_t(7), 8 * half - 1}) {
        Bytes badR = flipBit(sig, bit);
        EXPECT_FALSE(key.verify(HashAlgorithm::Sha256, m.data(), m.size(), badR.data(), badR.size()));
        Bytes badS = flipBit(sig, 8 * half + bit);
        EXPECT_FALSE(key.verify(HashAlgorithm::Sha256, m.data(), m.size(), badS.data(), badS.size()));
    }
    Bytes badM = flipBit(m, 5);
    EXPECT_FALSE(key.verify(HashAlgorithm::Sha256, badM.data(), badM.size(), sig.data(), sig.size()));

    // Another valid public key of the same group (y * g) does not verify it either.
    BN_CTX* ctx = BN_CTX_new();
    Bignum otherY(BN_new());
    BN_mod_mul(otherY.get(), key.y(), key.g(), key.p(), ctx);
    BN_CTX_free(ctx);
    KcdsaKey other = KcdsaKey::fromPublic(key.p(), key.q(), key.g(), otherY.get());
    EXPECT_FALSE(other.verify(HashAlgorithm::Sha256, m.data(), m.size(), sig.data(), sig.size()));

    // A public value with one bit flipped is not even accepted as a key.
    Bytes y = flipBit(bytesOf(key.y(), key.pBytes()), 100);
    Bignum flippedY = bignumFromBytes(y.data(), y.size());
    EXPECT_THROW(KcdsaKey::fromPublic(key.p(), key.q(), key.g(), flippedY.get()), CryptoError);
}

TEST(KcdsaTampering, MalformedSignaturesAreSimplyInvalid) {
    const VectorRecord& r = r4Example("sha224", 224);
    KcdsaKey key = privateKeyOf(r);
    Bytes m = r.bytes("message");
    std::vector<std::uint8_t> sig = key.sign(HashAlgorithm::Sha224, m.data(), m.size());
    Bytes shorter(sig.begin(), sig.end() - 1);
    Bytes longer = Bytes(sig.begin(), sig.end());
    longer.push_back(0);
    Bytes zeroS = Bytes(sig.begin(), sig.end());
    std::fill(zeroS.begin() + long(sig.size() / 2), zeroS.end(), 0);
    Bytes sEqualsQ(sig.begin(), sig.begin() + long(sig.size() / 2));
    Bytes q = bytesOf(key.q(), key.qBytes());
    sEqualsQ.insert(sEqualsQ.end(), q.begin(), q.end());
    for (const Bytes& bad : {shorter, longer, zeroS, sEqualsQ, Bytes()})
        EXPECT_FALSE(key.verify(HashAlgorithm::Sha224, m.data(), m.size(), bad.data(), bad.size()));
    EXPECT_FALSE(key.verify(HashAlgorithm::Sha224, m.data(), m.size(), nullptr, sig.size()));
}

TEST(KcdsaParameters, InconsistentDomainsAreRefused) {
    const VectorRecord& r = r4Example("sha224", 224);
    Bignum p = number(r, "p"), q = number(r, "q"), g = number(r, "g"), x = number(r, "x");
    BN_CTX* ctx = BN_CTX_new();

    // q not dividing p-1: the next prime after q.
    Bignum otherQ(BN_dup(q.get()));
    do
        BN_add_word(otherQ.get(), 2);
    while (BN_check_prime(otherQ.get(), ctx, nullptr) != 1);
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), otherQ.get(), g.get(), x.get()), CryptoError);

    // g of the wrong order: 2 generates far more than the subgroup of order q.
    Bignum two(BN_new());
    BN_set_word(two.get(), 2);
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), q.get(), two.get(), x.get()), CryptoError);
    // g = 1 and g = p - 1 are degenerate.
    Bignum pMinus1(BN_dup(p.get()));
    BN_sub_word(pMinus1.get(), 1);
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), q.get(), BN_value_one(), x.get()), CryptoError);
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), q.get(), pMinus1.get(), x.get()), CryptoError);

    // q composite (q * 3 divides nothing sensible either, but primality is checked first).
    Bignum composite(BN_dup(q.get()));
    BN_mul_word(composite.get(), 3);
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), composite.get(), g.get(), x.get()), CryptoError);

    // Even p, private value 0 or q, missing numbers.
    EXPECT_THROW(KcdsaKey::fromPrivate(pMinus1.get(), q.get(), g.get(), x.get()), CryptoError);
    Bignum zero(BN_new());
    BN_zero(zero.get());
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), q.get(), g.get(), zero.get()), CryptoError);
    EXPECT_THROW(KcdsaKey::fromPrivate(p.get(), q.get(), g.get(), q.get()), CryptoError);
    EXPECT_THROW(KcdsaKey::fromPrivate(nullptr, q.get(), g.get(), x.get()), CryptoError);
    EXPECT_THROW(KcdsaKey::fromPublic(p.get(), q.get(), g.get(), nullptr), CryptoError);
    BN_CTX_free(ctx);
}

TEST(KcdsaParameters, HashShorterThanQIsRefused) {
    const VectorRecord& r = r4Example("sha224", 224);
    KcdsaKey key = privateKeyOf(r);
    Bytes m = r.bytes("message");
    EXPECT_THROW(key.sign(HashAlgorithm::Sha1, m.data(), m.size()), CryptoError);
    EXPECT_THROW(key.sign(HashAlgorithm::Has160, m.data(), m.size()), CryptoError);
    std::vector<std::uint8_t> sig = key.sign(HashAlgorithm::Sha224, m.data(), m.size());
    EXPECT_THROW(key.verify(HashAlgorithm::Sha1, m.data(), m.size(), sig.data(), sig.size()), CryptoError);
    // A digest of the wrong length for its algorithm.
    std::vector<std::uint8_t> digest = key.messageDigest(HashAlgorithm::Sha224, m.data(), m.size());
    EXPECT_THROW(key.signDigest(HashAlgorithm::Sha256, digest.data(), digest.size()), CryptoError);
}

TEST(KcdsaKeys, PublicKeyCannotSignAndCopiesAreIndependent) {
    const VectorRecord& r = r4Example("has160", 160);
    KcdsaKey key = privateKeyOf(r);
    KcdsaKey copy = key;
    KcdsaKey pub = KcdsaKey::fromPublic(key.p(), key.q(), key.g(), key.y());
    EXPECT_TRUE(copy.hasPrivate());
    EXPECT_FALSE(pub.hasPrivate());
    EXPECT_TRUE(pub.samePublicKey(key));
    Bytes m = r.bytes("message");
    EXPECT_THROW(pub.sign(HashAlgorithm::Has160, m.data(), m.size()), CryptoError);
    std::vector<std::uint8_t> sig = copy.sign(HashAlgorithm::Has160, m.data(), m.size());
    EXPECT_TRUE(pub.verify(HashAlgorithm::Has160, m.data(), m.size(), sig.data(), sig.size()));
    // The 1024/160 domain serves SHA-1 as well.
    sig = key.sign(HashAlgorithm::Sha1, m.data(), m.size());
    EXPECT_TRUE(pub.verify(HashAlgorithm::Sha1, m.data(), m.size(), sig.data(), sig.size()));
    EXPECT_FALSE(pub.verify(HashAlgorithm::Has160, m.data(), m.size(), sig.data(), sig.size()));
}
