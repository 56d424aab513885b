#include "engine/korean/Kcdsa.hpp"

#include <string>

#include <openssl/crypto.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/OpenSSLPtr.hpp"

namespace vqxml::korean {
namespace {

constexpr std::size_t kHashPrefixSize = 64;  // l = 512 bits for every supported hash
constexpr int kMinPBits = 1024;
constexpr int kMaxPBits = 4096;
constexpr int kMinQBits = 160;
constexpr int kMaxQBits = 256;
constexpr int kSigningAttempts = 64;

using BnCtx = OpenSSLPtr<BN_CTX, BN_CTX_free>;
using MontCtx = OpenSSLPtr<BN_MONT_CTX, BN_MONT_CTX_free>;

Bignum newBignum() {
    Bignum bn(BN_new());
    if (!bn)
        throwOpenSSLError("cannot allocate a big number");
    return bn;
}

Bignum copyBignum(const BIGNUM* from) {
    if (from == nullptr)
        return nullptr;
    Bignum bn(BN_dup(from));
    if (!bn)
        throwOpenSSLError("cannot copy a big number");
    return bn;
}

BnCtx newCtx() {
    BnCtx ctx(BN_CTX_secure_new());
    if (!ctx)
        throwOpenSSLError("cannot allocate a big-number context");
    return ctx;
}

void check(int ok, const char* what) {
    if (ok != 1)
        throwOpenSSLError(what);
}

MontCtx montgomery(const BIGNUM* modulus, BN_CTX* ctx) {
    MontCtx m(BN_MONT_CTX_new());
    if (!m || BN_MONT_CTX_set(m.get(), modulus, ctx) != 1)
        throwOpenSSLError("cannot prepare Montgomery arithmetic");
    return m;
}

std::vector<std::uint8_t> toFixed(const BIGNUM* bn, std::size_t len) {
    std::vector<std::uint8_t> out(len);
    if (BN_bn2binpad(bn, out.data(), int(len)) != int(len))
        throw CryptoError("number too large for its field");
    return out;
}

// 1 < v < p and v^q = 1 mod p.
bool inSubgroup(const BIGNUM* v, const BIGNUM* p, const BIGNUM* q, BN_MONT_CTX* mont, BN_CTX* ctx) {
    if (BN_cmp(v, BN_value_one()) <= 0 || BN_cmp(v, p) >= 0)
        return false;
    Bignum t = newBignum();
    check(BN_mod_exp_mont(t.get(), v, q, p, ctx, mont), "modular exponentiation failed");
    return BN_is_one(t.get());
}

void validateDomain(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g, BN_MONT_CTX* montP,
                    BN_CTX* ctx) {
    if (p == nullptr || q == nullptr || g == nullptr)
        throw CryptoError("KCDSA domain parameters are missing");
    int pBits = BN_num_bits(p), qBits = BN_num_bits(q);
    if (!BN_is_odd(p) || pBits < kMinPBits || pBits > kMaxPBits)
        throw CryptoError("KCDSA p must be odd and of 1024 to 4096 bits, not " + std::to_string(pBits));
    if (qBits < kMinQBits || qBits > kMaxQBits)
        throw CryptoError("KCDSA q must have 160 to 256 bits, not " + std::to_string(qBits));
    if (BN_check_prime(q, ctx, nullptr) != 1)
        throw CryptoError("KCDSA q is not prime");
    Bignum pMinus1 = copyBignum(p);
    Bignum rem = newBignum();
    check(BN_sub_word(pMinus1.get(), 1), "subtraction failed");
    check(BN_mod(rem.get(), pMinus1.get(), q, ctx), "division failed");
    if (!BN_is_zero(rem.get()))
        throw CryptoError("KCDSA q does not divide p-1");
    if (!inSubgroup(g, p, q, montP, ctx))
        throw CryptoError("KCDSA g is not of order q modulo p");
}

}  // namespace

Bignum bignumFromBytes(const std::uint8_t* bytes, std::size_t len) {
    Bignum bn(BN_bin2bn(bytes, int(len), nullptr));
    if (!bn)
        throwOpenSSLError("cannot read a big number");
    return bn;
}

struct KcdsaKey::State {
    Bignum p, q, g, y, x, xMont;  // x, xMont null for a public key
    MontCtx montP, montQ;

    std::unique_ptr<State> clone() const {
        auto s = std::make_unique<State>();
        s->p = copyBignum(p.get());
        s->q = copyBignum(q.get());
        s->g = copyBignum(g.get());
        s->y = copyBignum(y.get());
        s->x = copyBignum(x.get());
        s->xMont = copyBignum(xMont.get());
        BnCtx ctx = newCtx();
        s->montP = montgomery(p.get(), ctx.get());
        s->montQ = montgomery(q.get(), ctx.get());
        return s;
    }
};

KcdsaKey::KcdsaKey(std::unique_ptr<State> state) : m_state(std::move(state)) {}
KcdsaKey::KcdsaKey(const KcdsaKey& other) : m_state(other.m_state->clone()) {}
KcdsaKey& KcdsaKey::operator=(const KcdsaKey& other) {
    if (this != &other)
        m_state = other.m_state->clone();
    return *this;
}
KcdsaKey::KcdsaKey(KcdsaKey&&) noexcept = default;
KcdsaKey& KcdsaKey::operator=(KcdsaKey&&) noexcept = default;
KcdsaKey::~KcdsaKey() = default;

namespace {

// A state holding the checked domain parameters and their Montgomery contexts.
std::unique_ptr<KcdsaKey::State> domainState(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g,
                                             BN_CTX* ctx);

}  // namespace

KcdsaKey KcdsaKey::fromPublic(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g, const BIGNUM* y) {
    if (y == nullptr)
        throw CryptoError("KCDSA public value is missing");
    BnCtx ctx = newCtx();
    std::unique_ptr<State> s = domainState(p, q, g, ctx.get());
    if (!inSubgroup(y, p, q, s->montP.get(), ctx.get()))
        throw CryptoError("KCDSA public value y is not in the subgroup of order q");
    s->y = copyBignum(y);
    return KcdsaKey(std::move(s));
}

KcdsaKey KcdsaKey::fromPrivate(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g, const BIGNUM* x) {
    if (x == nullptr)
        throw CryptoError("KCDSA private value is missing");
    BnCtx ctx = newCtx();
    std::unique_ptr<State> s = domainState(p, q, g, ctx.get());

    s->x = newBignum();
    BN_set_flags(s->x.get(), BN_FLG_CONSTTIME);
    check(BN_nnmod(s->x.get(), x, q, ctx.get()), "reduction failed");
    if (BN_is_zero(s->x.get()))
        throw CryptoError("KCDSA private value is a multiple of q");
    s->xMont = newBignum();
    BN_set_flags(s->xMont.get(), BN_FLG_CONSTTIME);
    check(BN_to_montgomery(s->xMont.get(), s->x.get(), s->montQ.get(), ctx.get()),
          "Montgomery conversion failed");

    Bignum xInverse(BN_mod_inverse(nullptr, s->x.get(), q, ctx.get()));
    if (!xInverse)
        throwOpenSSLError("KCDSA private value has no inverse modulo q");
    BN_set_flags(xInverse.get(), BN_FLG_CONSTTIME);
    s->y = newBignum();
    check(BN_mod_exp_mont_consttime(s->y.get(), g, xInverse.get(), p, ctx.get(), s->montP.get()),
          "modular exponentiation failed");
    return KcdsaKey(std::move(s));
}

namespace {

std::unique_ptr<KcdsaKey::State> domainState(const BIGNUM* p, const BIGNUM* q, const BIGNUM* g,
                                             BN_CTX* ctx) {
    auto s = std::make_unique<KcdsaKey::State>();
    if (p != nullptr && BN_is_odd(p))
        s->montP = montgomery(p, ctx);
    validateDomain(p, q, g, s->montP.get(), ctx);
    s->p = copyBignum(p);
    s->q = copyBignum(q);
    s->g = copyBignum(g);
    s->montQ = montgomery(q, ctx);
    return s;
}

}  // namespace

bool KcdsaKey::hasPrivate() const {
    return m_state->x != nullptr;
}
const BIGNUM* KcdsaKey::p() const {
    return m_state->p.get();
}
const BIGNUM* KcdsaKey::q() const {
    return m_state->q.get();
}
const BIGNUM* KcdsaKey::g() const {
    return m_state->g.get();
}
const BIGNUM* KcdsaKey::y() const {
    return m_state->y.get();
}
const BIGNUM* KcdsaKey::x() const {
    return m_state->x.get();
}
int KcdsaKey::qBits() const {
    return BN_num_bits(q());
}
std::size_t KcdsaKey::qBytes() const {
    return std::size_t(BN_num_bytes(q()));
}
std::size_t KcdsaKey::pBytes() const {
    return std::size_t(BN_num_bytes(p()));
}

bool KcdsaKey::samePublicKey(const KcdsaKey& other) const {
    return BN_cmp(p(), other.p()) == 0 && BN_cmp(q(), other.q()) == 0 &&
           BN_cmp(g(), other.g()) == 0 && BN_cmp(y(), other.y()) == 0;
}

std::vector<std::uint8_t> KcdsaKey::hashPrefix() const {
    std::vector<std::uint8_t> y = toFixed(m_state->y.get(), pBytes());
    return std::vector<std::uint8_t>(y.end() - kHashPrefixSize, y.end());
}

std::vector<std::uint8_t> KcdsaKey::messageDigest(HashAlgorithm alg, const std::uint8_t* msg,
                                                  std::size_t len) const {
    std::vector<std::uint8_t> z = hashPrefix();
    return Digest::of(alg, z.data(), z.size(), msg, len);
}

namespace {

// The rightmost beta bits of a digest, as qBytes bytes.
std::vector<std::uint8_t> rightmostBits(const std::vector<std::uint8_t>& digest, int beta,
                                        std::size_t qBytes) {
    std::vector<std::uint8_t> out(digest.end() - std::ptrdiff_t(qBytes), digest.end());
    int excess = int(qBytes) * 8 - beta;
    out[0] &= std::uint8_t(0xff >> excess);
    return out;
}

void requireUsableHash(HashAlgorithm alg, std::size_t digestLen, int qBits) {
    if (digestLen != digestSize(alg))
        throw CryptoError("digest length does not match the hash algorithm");
    if (int(digestSize(alg) * 8) < qBits)
        throw CryptoError("hash output of " + std::to_string(digestSize(alg) * 8) +
                          " bits is shorter than KCDSA q of " + std::to_string(qBits) + " bits");
}

// E = (R xor H) mod q.
Bignum exponentE(const std::vector<std::uint8_t>& r, const std::vector<std::uint8_t>& h,
                 const BIGNUM* q, BN_CTX* ctx) {
    std::vector<std::uint8_t> x(r.size());
    for (std::size_t i = 0; i < r.size(); ++i)
        x[i] = r[i] ^ h[i];
    Bignum e = bignumFromBytes(x.data(), x.size());
    check(BN_nnmod(e.get(), e.get(), q, ctx), "reduction failed");
    return e;
}

}  // namespace

std::vector<std::uint8_t> KcdsaKey::signDigestWithNonce(HashAlgorithm alg, const std::uint8_t* digest,
                                                        std::size_t len, const BIGNUM* k) const {
    if (!hasPrivate())
        throw CryptoError("KCDSA key has no private part to sign with");
    requireUsableHash(alg, len, qBits());
    if (k == nullptr || BN_is_zero(k) || BN_is_negative(k) || BN_cmp(k, q()) >= 0)
        throw CryptoError("KCDSA nonce out of range");
    const State& s = *m_state;
    BnCtx ctx = newCtx();
    std::vector<std::uint8_t> h = rightmostBits(std::vector<std::uint8_t>(digest, digest + len),
                                                qBits(), qBytes());

    Bignum kc = copyBignum(k);
    BN_set_flags(kc.get(), BN_FLG_CONSTTIME);
    Bignum w = newBignum();
    check(BN_mod_exp_mont_consttime(w.get(), s.g.get(), kc.get(), s.p.get(), ctx.get(), s.montP.get()),
          "modular exponentiation failed");
    std::vector<std::uint8_t> wBytes = toFixed(w.get(), pBytes());
    std::vector<std::uint8_t> r =
        rightmostBits(Digest::of(alg, wBytes.data(), wBytes.size()), qBits(), qBytes());

    Bignum e = exponentE(r, h, s.q.get(), ctx.get());
    Bignum t = newBignum();
    BN_set_flags(t.get(), BN_FLG_CONSTTIME);
    check(BN_mod_sub(t.get(), kc.get(), e.get(), s.q.get(), ctx.get()), "subtraction failed");
    Bignum sig = newBignum();
    check(BN_mod_mul_montgomery(sig.get(), s.xMont.get(), t.get(), s.montQ.get(), ctx.get()),
          "multiplication failed");
    if (BN_is_zero(sig.get()))
        return {};
    std::vector<std::uint8_t> out = r;
    std::vector<std::uint8_t> sBytes = toFixed(sig.get(), qBytes());
    out.insert(out.end(), sBytes.begin(), sBytes.end());
    return out;
}

std::vector<std::uint8_t> KcdsaKey::signDigest(HashAlgorithm alg, const std::uint8_t* digest,
                                               std::size_t len) const {
    Bignum k = newBignum();
    for (int attempt = 0; attempt < kSigningAttempts; ++attempt) {
        do {
            check(BN_priv_rand_range_ex(k.get(), q(), 0, nullptr), "cannot draw a KCDSA nonce");
        } while (BN_is_zero(k.get()));
        std::vector<std::uint8_t> sig = signDigestWithNonce(alg, digest, len, k.get());
        if (!sig.empty())
            return sig;
    }
    throw CryptoError("KCDSA signing did not find a usable nonce");
}

bool KcdsaKey::verifyDigest(HashAlgorithm alg, const std::uint8_t* digest, std::size_t len,
                            const std::uint8_t* sig, std::size_t sigLen) const {
    requireUsableHash(alg, len, qBits());
    const std::size_t n = qBytes();
    if (sig == nullptr || sigLen != 2 * n)
        return false;
    std::vector<std::uint8_t> r(sig, sig + n);
    if (rightmostBits(r, qBits(), n) != r)
        return false;
    const State& st = *m_state;
    BnCtx ctx = newCtx();
    Bignum s = bignumFromBytes(sig + n, n);
    if (BN_is_zero(s.get()) || BN_cmp(s.get(), st.q.get()) >= 0)
        return false;
    std::vector<std::uint8_t> h = rightmostBits(std::vector<std::uint8_t>(digest, digest + len),
                                                qBits(), n);
    Bignum e = exponentE(r, h, st.q.get(), ctx.get());
    Bignum w = newBignum();
    check(BN_mod_exp2_mont(w.get(), st.y.get(), s.get(), st.g.get(), e.get(), st.p.get(), ctx.get(),
                           st.montP.get()),
          "modular exponentiation failed");
    std::vector<std::uint8_t> wBytes = toFixed(w.get(), pBytes());
    std::vector<std::uint8_t> rCheck =
        rightmostBits(Digest::of(alg, wBytes.data(), wBytes.size()), qBits(), n);
    return CRYPTO_memcmp(rCheck.data(), r.data(), n) == 0;
}

std::vector<std::uint8_t> KcdsaKey::sign(HashAlgorithm alg, const std::uint8_t* msg,
                                         std::size_t len) const {
    std::vector<std::uint8_t> d = messageDigest(alg, msg, len);
    return signDigest(alg, d.data(), d.size());
}

bool KcdsaKey::verify(HashAlgorithm alg, const std::uint8_t* msg, std::size_t len,
                      const std::uint8_t* sig, std::size_t sigLen) const {
    std::vector<std::uint8_t> d = messageDigest(alg, msg, len);
    return verifyDigest(alg, d.data(), d.size(), sig, sigLen);
}

}  // namespace vqxml::korean
