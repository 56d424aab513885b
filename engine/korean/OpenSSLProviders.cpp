#include "engine/korean/OpenSSLProviders.hpp"

#include <mutex>

#include <openssl/provider.h>

namespace vqxml {

// Kept for the life of the process. External linkage, so that no optimiser drops
// the stores that keep them reachable for leak checkers.
OSSL_PROVIDER* defaultProvider = nullptr;
OSSL_PROVIDER* legacyProvider = nullptr;

void loadOpenSSLProviders() {
    static std::once_flag once;
    std::call_once(once, [] {
        // Loading "legacy" alone would hide the default algorithms.
        defaultProvider = OSSL_PROVIDER_load(nullptr, "default");
        legacyProvider = OSSL_PROVIDER_load(nullptr, "legacy");
    });
}

}  // namespace vqxml
