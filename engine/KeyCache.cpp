#include "engine/KeyCache.hpp"

#include <array>
#include <cstring>
#include <list>
#include <mutex>
#include <new>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

namespace vqxml {

namespace {

constexpr size_t kCapacity = 16;

using Digest = std::array<unsigned char, SHA256_DIGEST_LENGTH>;

struct Entry {
    Digest id;
    ParsedKeyPair pair;
};

std::mutex g_cacheMutex;
std::list<Entry> g_entries;  // most recently used first

void absorb(EVP_MD_CTX* ctx, const unsigned char* bytes, int len) {
    const int n = bytes != nullptr && len > 0 ? len : 0;
    EVP_DigestUpdate(ctx, &n, sizeof n);
    if (n > 0)
        EVP_DigestUpdate(ctx, bytes, static_cast<size_t>(n));
}

Digest identify(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen) {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    Digest id{};
    unsigned int len = 0;
    if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc();
    absorb(ctx.get(), cert, certLen);
    absorb(ctx.get(), key, keyLen);
    EVP_DigestFinal_ex(ctx.get(), id.data(), &len);
    return id;
}

}  // namespace

ParsedKeyPair cachedKeyPair(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen,
                            const std::function<ParsedKeyPair()>& parse) {
    const Digest id = identify(cert, certLen, key, keyLen);
    {
        std::lock_guard<std::mutex> lock(g_cacheMutex);
        for (auto it = g_entries.begin(); it != g_entries.end(); ++it) {
            if (CRYPTO_memcmp(it->id.data(), id.data(), id.size()) == 0) {
                g_entries.splice(g_entries.begin(), g_entries, it);
                return it->pair;
            }
        }
    }
    ParsedKeyPair pair = parse();
    std::lock_guard<std::mutex> lock(g_cacheMutex);
    g_entries.push_front(Entry{id, pair});
    if (g_entries.size() > kCapacity)
        g_entries.pop_back();
    return pair;
}

void clearKeyCache() {
    std::lock_guard<std::mutex> lock(g_cacheMutex);
    g_entries.clear();
}

}  // namespace vqxml
