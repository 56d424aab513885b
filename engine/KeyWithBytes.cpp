#include "engine/KeyWithBytes.hpp"

#include <memory>

#include <xercesc/dom/DOMElement.hpp>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "engine/Algorithms.hpp"

namespace {

unsigned int lengthOf(XSECCryptoSymmetricKey::SymmetricKeyType type) {
    switch (type) {
    case XSECCryptoSymmetricKey::KEY_AES_128: return 16;
    case XSECCryptoSymmetricKey::KEY_AES_192: return 24;
    case XSECCryptoSymmetricKey::KEY_AES_256: return 32;
    default: return 0;
    }
}

}  // namespace

XSECCryptoKey* KeyWithBytes::clone() const {
    std::unique_ptr<KeyWithBytes> copy(new KeyWithBytes(getSymmetricKeyType()));
    copy->setKey(m_bytes.data(), static_cast<unsigned int>(m_bytes.size()));
    return copy.release();
}

void KeyWithBytes::setKey(const unsigned char* key, unsigned int keyLen) {
    if (getSymmetricKeyType() != KEY_3DES_192 && keyLen != lengthOf(getSymmetricKeyType()))
        throw XSECCryptoException(XSECCryptoException::SymmetricError, "AES: the key is not of the cipher's length");
    OpenSSLCryptoSymmetricKey::setKey(key, keyLen);
    m_bytes.assign(key, key + keyLen);
}

const KeyWithBytes& KeyWithBytes::forMethod(const XENCEncryptionMethod* method, const XSECCryptoKey* key) {
    const XMLCh* uri = method != nullptr ? method->getAlgorithm() : nullptr;
    const vqxml::Algorithm* row = vqxml::algorithmByURI(vqxml::AlgorithmKind::CIPHER, uri);
    if (row == nullptr)
        row = vqxml::algorithmByURI(vqxml::AlgorithmKind::KEY_TRANSPORT, uri);
    const auto* ours = dynamic_cast<const KeyWithBytes*>(key);
    if (row == nullptr || ours == nullptr || ours->getSymmetricKeyType() != row->keyType ||
        ours->m_bytes.size() != static_cast<std::size_t>(row->keyBytes))
        throw XSECException(XSECException::CipherError, "key inappropriate for the encryption algorithm");
    return *ours;
}
