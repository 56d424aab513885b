#include "engine/KoreanCipherHandler.hpp"

#include <memory>

#include <xercesc/util/XMLString.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMSB.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"
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

vqxml::korean::SecureBytes decrypt(TXFMChain* cipherText, const XENCEncryptionMethod* method,
                                   const XSECCryptoKey* key) {
    const VQTKCryptoSymmetricKey& k = keyForMethod(method, key);
    vqxml::korean::SecureBytes data = vqxml::readAllBytes(cipherText);
    return vqxml::asCryptoException(XSECCryptoException::SymmetricError, [&] {
        return vqxml::korean::xmlEncDecrypt(k.getCipher(), k.getKeyBytes().data(), k.getKeyBytes().size(),
                                            data.data(), data.size());
    });
}

}  // namespace

bool KoreanCipherHandler::encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* encryptionMethod,
                                              const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument*,
                                              safeBuffer& result) const {
    const VQTKCryptoSymmetricKey& k = keyForMethod(encryptionMethod, key);
    vqxml::korean::SecureBytes plain = vqxml::readAllBytes(plainText);
    std::vector<std::uint8_t> cipher = vqxml::asCryptoException(XSECCryptoException::SymmetricError, [&] {
        return vqxml::korean::xmlEncEncrypt(k.getCipher(), k.getKeyBytes().data(), k.getKeyBytes().size(),
                                            plain.data(), plain.size());
    });
    result.sbStrcpyIn(vqxml::base64Text(cipher).c_str());
    return true;
}

unsigned int KoreanCipherHandler::decryptToSafeBuffer(TXFMChain* cipherText,
                                                      XENCEncryptionMethod* encryptionMethod,
                                                      const XSECCryptoKey* key,
                                                      XERCES_CPP_NAMESPACE::DOMDocument*,
                                                      safeBuffer& result) const {
    vqxml::korean::SecureBytes plain = decrypt(cipherText, encryptionMethod, key);
    result.isSensitive();
    result.sbMemcpyIn(plain.data(), plain.size());
    return unsigned(plain.size());
}

bool KoreanCipherHandler::appendDecryptCipherTXFM(TXFMChain* cipherText,
                                                  XENCEncryptionMethod* encryptionMethod,
                                                  const XSECCryptoKey* key,
                                                  XERCES_CPP_NAMESPACE::DOMDocument* doc) const {
    vqxml::korean::SecureBytes plain = decrypt(cipherText, encryptionMethod, key);
    safeBuffer sb;
    sb.isSensitive();
    sb.sbMemcpyIn(plain.data(), plain.size());
    // The plaintext replaces the chain's output from here on.
    std::unique_ptr<TXFMSB> source(new TXFMSB(doc));
    source->setInput(sb, unsigned(plain.size()));
    cipherText->appendTxfm(source.release());
    return true;
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
