#include "xenc/XencAlgorithms.hpp"

#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "engine/VQTKCryptoProvider.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

XSECCryptoSymmetricKey* newSymmetricKey(int keyType) {
    if (const auto* ours = dynamic_cast<const VQTKCryptoProvider*>(XSECPlatformUtils::g_cryptoProvider))
        return ours->keySymmetric(keyType);
    // A provider the host installed before us knows only the engine's own keys.
    if (keyType == kKeyTripleDes)
        return XSECPlatformUtils::g_cryptoProvider->keySymmetric(XSECCryptoSymmetricKey::KEY_3DES_192);
    return nullptr;
}

}  // namespace vqxml
