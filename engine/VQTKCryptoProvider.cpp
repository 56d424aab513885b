#include "engine/VQTKCryptoProvider.hpp"

#include <mutex>

#include <openssl/provider.h>
#include <xercesc/util/XMLUniDefs.hpp>

#include "engine/VQTKCryptoKeyKCDSA.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"
#include "engine/VQTKCryptoX509.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

const XMLCh kProviderName[] = {chLatin_V, chLatin_Q, chLatin_T, chLatin_K, chLatin_C, chLatin_r,
                               chLatin_y, chLatin_p, chLatin_t, chLatin_o, chNull};

}  // namespace

const XMLCh* VQTKCryptoProvider::getProviderName() const {
    return kProviderName;
}

const XMLCh* VQTKCryptoProvider::providerName() {
    return kProviderName;
}

XSECCryptoSymmetricKey* VQTKCryptoProvider::keySymmetric(int type) const {
    if (type >= XSECCryptoSymmetricKey::KEY_3DES_192 && type <= XSECCryptoSymmetricKey::KEY_AES_256)
        return keySymmetric(static_cast<XSECCryptoSymmetricKey::SymmetricKeyType>(type));
    return VQTKCryptoSymmetricKey::forTypeCode(type);
}

XSECCryptoX509* VQTKCryptoProvider::X509() const {
    return new VQTKCryptoX509();
}

VQTKCryptoKeyKCDSA* VQTKCryptoProvider::keyKCDSA() const {
    return new VQTKCryptoKeyKCDSA();
}

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
