#include "engine/KoreanCipherHandler.hpp"

#include <memory>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/adapter/Upstream.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/VQTKCryptoSymmetricKey.hpp"
#include "engine/korean/XmlEncCbc.hpp"

namespace {

// The key, if it is one of ours for the method's cipher.
const VQTKCryptoSymmetricKey& keyForMethod(const XENCEncryptionMethod* method, const XSECCryptoKey* key) {
    if (method == nullptr)
        throw XSECException(XSECException::CipherError, "no EncryptionMethod for a Korean block cipher");
    auto* ours = dynamic_cast<const VQTKCryptoSymmetricKey*>(key);
    if (ours == nullptr ||
        !XERCES_CPP_NAMESPACE::XMLString::equals(ours->getAlgorithmURI(), method->getAlgorithm()))
        throw XSECException(XSECException::CipherError, "key inappropriate for the encryption algorithm");
    if (ours->getKeyBytes().empty())
        throw XSECException(XSECException::CipherError, "symmetric key has no key bytes");
    return *ours;
}

}  // namespace

std::vector<std::uint8_t> KoreanCipherHandler::encryptOctets(const XENCEncryptionMethod* method,
                                                             const XSECCryptoKey* key,
                                                             const std::uint8_t* plain, std::size_t size) const {
    const VQTKCryptoSymmetricKey& k = keyForMethod(method, key);
    return vqxml::asCryptoException(XSECCryptoException::SymmetricError, [&] {
        return vqxml::korean::xmlEncEncrypt(k.getCipher(), k.getKeyBytes().data(), k.getKeyBytes().size(),
                                            plain, size);
    });
}

vqxml::korean::SecureBytes KoreanCipherHandler::decryptOctets(const XENCEncryptionMethod* method,
                                                              const XSECCryptoKey* key,
                                                              const vqxml::korean::SecureBytes& framed) const {
    const VQTKCryptoSymmetricKey& k = keyForMethod(method, key);
    return vqxml::asCryptoException(XSECCryptoException::SymmetricError, [&] {
        return vqxml::korean::xmlEncDecrypt(k.getCipher(), k.getKeyBytes().data(), k.getKeyBytes().size(),
                                            framed.data(), framed.size());
    });
}

XSECCryptoKey* KoreanCipherHandler::createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                                    unsigned int keyLen) const {
    vqxml::korean::BlockCipherId cipher;
    if (!VQTKCryptoSymmetricKey::cipherForURI(uri, cipher))
        throw XSECException(XSECException::CipherError, "no Korean block cipher for this URI");
    std::unique_ptr<VQTKCryptoSymmetricKey> key(new VQTKCryptoSymmetricKey(cipher));
    key->setKey(keyBuffer, keyLen);
    return key.release();
}

XSECAlgorithmHandler* KoreanCipherHandler::clone() const {
    return new KoreanCipherHandler();
}
