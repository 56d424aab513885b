#include "engine/TripleDesCipherHandler.hpp"

#include <cstdint>
#include <memory>
#include <vector>

#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMSB.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "engine/Base64.hpp"
#include "engine/ChainBytes.hpp"

namespace {

constexpr unsigned int kBlock = 8;
constexpr unsigned int kKeyBytes = 24;

// A running copy of the caller's key, which stays untouched.
std::unique_ptr<XSECCryptoSymmetricKey> workingCopy(const XSECCryptoKey* key) {
    const auto* symmetric = dynamic_cast<const XSECCryptoSymmetricKey*>(key);
    if (symmetric == nullptr || symmetric->getSymmetricKeyType() != XSECCryptoSymmetricKey::KEY_3DES_192)
        throw XSECException(XSECException::CipherError, "key inappropriate for the encryption algorithm");
    return std::unique_ptr<XSECCryptoSymmetricKey>(static_cast<XSECCryptoSymmetricKey*>(symmetric->clone()));
}

vqxml::korean::SecureBytes decrypt(TXFMChain* cipherText, const XSECCryptoKey* key) {
    std::unique_ptr<XSECCryptoSymmetricKey> k = workingCopy(key);
    const vqxml::korean::SecureBytes framed = vqxml::readAllBytes(cipherText);
    if (framed.size() < 2 * kBlock || framed.size() % kBlock != 0)
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  "Triple DES: the CipherValue is not an IV and whole blocks");
    vqxml::korean::SecureBytes plain(framed.size() + kBlock);
    k->decryptInit(true, XSECCryptoSymmetricKey::MODE_CBC, nullptr);
    unsigned int n = k->decrypt(framed.data(), plain.data(), unsigned(framed.size()), unsigned(plain.size()));
    n += k->decryptFinish(plain.data() + n, unsigned(plain.size() - n));
    plain.resize(n);
    return plain;
}

}  // namespace

bool TripleDesCipherHandler::encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod*,
                                                 const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument*,
                                                 safeBuffer& result) const {
    std::unique_ptr<XSECCryptoSymmetricKey> k = workingCopy(key);
    const vqxml::korean::SecureBytes plain = vqxml::readAllBytes(plainText);
    std::vector<std::uint8_t> cipher(plain.size() + 3 * kBlock);
    k->encryptInit(true, XSECCryptoSymmetricKey::MODE_CBC, nullptr);
    unsigned int n = k->encrypt(plain.data(), cipher.data(), unsigned(plain.size()), unsigned(cipher.size()));
    n += k->encryptFinish(cipher.data() + n, unsigned(cipher.size() - n));
    cipher.resize(n);
    result.sbStrcpyIn(vqxml::base64Text(cipher).c_str());
    return true;
}

unsigned int TripleDesCipherHandler::decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod*,
                                                         const XSECCryptoKey* key,
                                                         XERCES_CPP_NAMESPACE::DOMDocument*,
                                                         safeBuffer& result) const {
    const vqxml::korean::SecureBytes plain = decrypt(cipherText, key);
    result.isSensitive();
    result.sbMemcpyIn(plain.data(), plain.size());
    return unsigned(plain.size());
}

bool TripleDesCipherHandler::appendDecryptCipherTXFM(TXFMChain* cipherText, XENCEncryptionMethod*,
                                                     const XSECCryptoKey* key,
                                                     XERCES_CPP_NAMESPACE::DOMDocument* doc) const {
    const vqxml::korean::SecureBytes plain = decrypt(cipherText, key);
    safeBuffer sb;
    sb.isSensitive();
    sb.sbMemcpyIn(plain.data(), plain.size());
    std::unique_ptr<TXFMSB> source(new TXFMSB(doc));
    source->setInput(sb, unsigned(plain.size()));
    cipherText->appendTxfm(source.release());
    return true;
}

XSECCryptoKey* TripleDesCipherHandler::createKeyForURI(const XMLCh*, const unsigned char* keyBuffer,
                                                       unsigned int keyLen) const {
    if (keyLen < kKeyBytes)
        throw XSECException(XSECException::CipherError, "Triple DES: the key is shorter than 24 bytes");
    std::unique_ptr<XSECCryptoSymmetricKey> key(
        XSECPlatformUtils::g_cryptoProvider->keySymmetric(XSECCryptoSymmetricKey::KEY_3DES_192));
    key->setKey(keyBuffer, keyLen);
    return key.release();
}

XSECAlgorithmHandler* TripleDesCipherHandler::clone() const {
    return new TripleDesCipherHandler();
}
