// Recently used signing keys, parsed once.
//
// Decoding a private key and preparing it for its first signature (Montgomery
// contexts, RSA blinding) costs more than a signature itself; applications sign
// thousands of documents with the same key. The cache holds the last few parsed
// (certificate, key) pairs, keyed by a SHA-256 of their bytes; it is emptied when
// the last handle stops the engines (engine/RecentlyUsed.hpp: shared between
// handles, under a mutex of its own).
#ifndef VQXML_ENGINE_KEYCACHE_HPP
#define VQXML_ENGINE_KEYCACHE_HPP

#include <functional>
#include <memory>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace vqxml {

struct ParsedKeyPair {
    std::shared_ptr<EVP_PKEY> key;
    std::shared_ptr<X509> cert;  // null when only a key was given
};

// The cached pair for these bytes, or parse() run and its result kept. A failing
// parse() throws and keeps nothing.
ParsedKeyPair cachedKeyPair(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen,
                            const std::function<ParsedKeyPair()>& parse);

void clearKeyCache();

}  // namespace vqxml

#endif
