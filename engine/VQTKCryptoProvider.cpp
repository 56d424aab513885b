#include "engine/VQTKCryptoProvider.hpp"

#include "engine/KeyWithBytes.hpp"

#include <xercesc/util/XMLUniDefs.hpp>

#include "engine/VQTKCryptoHash.hpp"
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
        return new KeyWithBytes(static_cast<XSECCryptoSymmetricKey::SymmetricKeyType>(type));
    return VQTKCryptoSymmetricKey::forTypeCode(type);
}

XSECCryptoHash* VQTKCryptoProvider::hash(XSECCryptoHash::HashType type) const {
    return new VQTKCryptoHash(type);
}

XSECCryptoX509* VQTKCryptoProvider::X509() const {
    return new VQTKCryptoX509();
}

VQTKCryptoKeyKCDSA* VQTKCryptoProvider::keyKCDSA() const {
    return new VQTKCryptoKeyKCDSA();
}
