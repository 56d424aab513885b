// KCDSA-2048 (q of 224 bits, SHA-256) signing and verification beside OpenSSL's
// DSA on the very same domain parameters, both on a 32-byte digest; and what
// making a KCDSA key pair from (p, q, g, x) costs (the parameter checks and y).
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/dsa.h>
#include <openssl/evp.h>

#include "engine/korean/Kcdsa.hpp"

using vqxml::korean::Bignum;
using vqxml::korean::HashAlgorithm;
using vqxml::korean::KcdsaKey;

namespace {

struct Keys {
    EVP_PKEY* dsa = nullptr;
    std::unique_ptr<KcdsaKey> kcdsa;
};

Bignum param(const EVP_PKEY* key, const char* name) {
    BIGNUM* bn = nullptr;
    EVP_PKEY_get_bn_param(key, name, &bn);
    return Bignum(bn);
}

// A DSA key pair on fresh 2048/224 parameters, and a KCDSA key on the same.
const Keys& keys() {
    static Keys k = [] {
        Keys made;
        EVP_PKEY_CTX* pctx = EVP_PKEY_CTX_new_from_name(nullptr, "DSA", nullptr);
        EVP_PKEY* params = nullptr;
        EVP_PKEY_paramgen_init(pctx);
        EVP_PKEY_CTX_set_dsa_paramgen_bits(pctx, 2048);
        EVP_PKEY_CTX_set_dsa_paramgen_q_bits(pctx, 224);
        EVP_PKEY_paramgen(pctx, &params);
        EVP_PKEY_CTX_free(pctx);
        EVP_PKEY_CTX* kctx = EVP_PKEY_CTX_new_from_pkey(nullptr, params, nullptr);
        EVP_PKEY_keygen_init(kctx);
        EVP_PKEY_keygen(kctx, &made.dsa);
        EVP_PKEY_CTX_free(kctx);
        Bignum p = param(params, OSSL_PKEY_PARAM_FFC_P), q = param(params, OSSL_PKEY_PARAM_FFC_Q),
               g = param(params, OSSL_PKEY_PARAM_FFC_G);
        Bignum x(BN_new());
        BN_priv_rand_range(x.get(), q.get());
        made.kcdsa = std::make_unique<KcdsaKey>(KcdsaKey::fromPrivate(p.get(), q.get(), g.get(), x.get()));
        EVP_PKEY_free(params);
        return made;
    }();
    return k;
}

const std::uint8_t kMessage[] = "<ds:SignedInfo>...</ds:SignedInfo>";

void KCDSA2048_sign(benchmark::State& state) {
    const KcdsaKey& key = *keys().kcdsa;
    auto digest = key.messageDigest(HashAlgorithm::Sha256, kMessage, sizeof kMessage);
    for (auto _ : state)
        benchmark::DoNotOptimize(key.signDigest(HashAlgorithm::Sha256, digest.data(), digest.size()));
}

void KCDSA2048_verify(benchmark::State& state) {
    const KcdsaKey& key = *keys().kcdsa;
    auto digest = key.messageDigest(HashAlgorithm::Sha256, kMessage, sizeof kMessage);
    auto sig = key.signDigest(HashAlgorithm::Sha256, digest.data(), digest.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(key.verifyDigest(HashAlgorithm::Sha256, digest.data(), digest.size(),
                                                  sig.data(), sig.size()));
}

void KCDSA2048_keyFromPrivate(benchmark::State& state) {
    const KcdsaKey& key = *keys().kcdsa;
    for (auto _ : state)
        benchmark::DoNotOptimize(KcdsaKey::fromPrivate(key.p(), key.q(), key.g(), key.x()));
}

std::vector<unsigned char> dsaDigest() {
    std::vector<unsigned char> d(32);
    EVP_Digest(kMessage, sizeof kMessage, d.data(), nullptr, EVP_sha256(), nullptr);
    return d;
}

void DSA2048_sign(benchmark::State& state) {
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(keys().dsa, nullptr);
    EVP_PKEY_sign_init(ctx);
    auto digest = dsaDigest();
    std::vector<unsigned char> sig(EVP_PKEY_get_size(keys().dsa));
    for (auto _ : state) {
        std::size_t len = sig.size();
        benchmark::DoNotOptimize(EVP_PKEY_sign(ctx, sig.data(), &len, digest.data(), digest.size()));
    }
    EVP_PKEY_CTX_free(ctx);
}

void DSA2048_verify(benchmark::State& state) {
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(keys().dsa, nullptr);
    EVP_PKEY_sign_init(ctx);
    auto digest = dsaDigest();
    std::vector<unsigned char> sig(EVP_PKEY_get_size(keys().dsa));
    std::size_t len = sig.size();
    EVP_PKEY_sign(ctx, sig.data(), &len, digest.data(), digest.size());
    EVP_PKEY_verify_init(ctx);
    for (auto _ : state)
        benchmark::DoNotOptimize(EVP_PKEY_verify(ctx, sig.data(), len, digest.data(), digest.size()));
    EVP_PKEY_CTX_free(ctx);
}

}  // namespace

BENCHMARK(KCDSA2048_sign)->Unit(benchmark::kMicrosecond);
BENCHMARK(KCDSA2048_verify)->Unit(benchmark::kMicrosecond);
BENCHMARK(KCDSA2048_keyFromPrivate)->Unit(benchmark::kMicrosecond);
BENCHMARK(DSA2048_sign)->Unit(benchmark::kMicrosecond);
BENCHMARK(DSA2048_verify)->Unit(benchmark::kMicrosecond);
