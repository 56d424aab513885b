#include "engine/KeyCache.hpp"

#include <array>
#include <new>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

#include "engine/RecentlyUsed.hpp"

namespace vqxml {

namespace {

// Compared in constant time: the digest stands for private key bytes.
struct Digest {
    std::array<unsigned char, SHA256_DIGEST_LENGTH> bytes{};
    bool operator==(const Digest& other) const {
        return CRYPTO_memcmp(bytes.data(), other.bytes.data(), bytes.size()) == 0;
    }
};

RecentlyUsed<Digest, ParsedKeyPair, 16> g_keyPairs;

void absorb(EVP_MD_CTX* ctx, const unsigned char* bytes, int len) {
    const int n = bytes != nullptr && len > 0 ? len : 0;
    EVP_DigestUpdate(ctx, &n, sizeof n);
    if (n > 0)
        EVP_DigestUpdate(ctx, bytes, static_cast<size_t>(n));
}

Digest identify(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen) {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    Digest id;
    unsigned int len = 0;
    if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc();
    absorb(ctx.get(), cert, certLen);
    absorb(ctx.get(), key, keyLen);
    EVP_DigestFinal_ex(ctx.get(), id.bytes.data(), &len);
    return id;
}

}  // namespace

ParsedKeyPair cachedKeyPair(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen,
                            const std::function<ParsedKeyPair()>& parse) {
    return g_keyPairs.findOrMake(identify(cert, certLen, key, keyLen), parse);
}

void clearKeyCache() {
    g_keyPairs.clear();
}

}  // namespace vqxml
