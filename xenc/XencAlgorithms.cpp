#include "xenc/XencAlgorithms.hpp"

#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include <memory>
#include <string>

#include "core/VQXMLException.hpp"
#include "vqxml/vqxml.h"
#include "engine/KeyTransportHandlers.hpp"
#include "engine/KeyWithBytes.hpp"
#include "engine/VQTKCryptoProvider.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

XSECCryptoSymmetricKey* newSymmetricKey(int keyType) {
    if (const auto* ours = dynamic_cast<const VQTKCryptoProvider*>(XSECPlatformUtils::g_cryptoProvider))
        return ours->keySymmetric(keyType);
    // A provider the host installed before us knows only the engine's own keys,
    // of which Triple DES is the one its handler takes (KeyWithBytes.hpp).
    if (keyType == kKeyTripleDes)
        return new KeyWithBytes(XSECCryptoSymmetricKey::KEY_3DES_192);
    return nullptr;
}

const XMLCh* writtenMgf(const KeyTransport& transport) {
    return transport.hash != 0 ? RsaOaepHandler::mgfFor(transport.hash) : nullptr;
}

XSECCryptoSymmetricKey* newKeyEncryptionKey(const KeyTransport& transport, const unsigned char* key, int len,
                                            int wrongLengthCode) {
    if (key == nullptr || len != transport.keyBytes)
        throw VQXML_XSECException(wrongLengthCode, ("The key-encryption key must be " +
                                                    std::to_string(transport.keyBytes) + " bytes for " +
                                                    transport.description)
                                                       .c_str());
    std::unique_ptr<XSECCryptoSymmetricKey> kek(newSymmetricKey(transport.keyType));
    if (!kek)
        throw VQXML_XSECException(VQXML_ERR_PROVIDER_KEY_TYPE);
    kek->setKey(key, static_cast<unsigned int>(len));
    return kek.release();
}

}  // namespace vqxml
