#include "engine/TripleDesCipherHandler.hpp"

#include <memory>

#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/adapter/Upstream.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/korean/XmlEncCbc.hpp"

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

}  // namespace

std::vector<std::uint8_t> TripleDesCipherHandler::encryptOctets(const XENCEncryptionMethod*,
                                                                const XSECCryptoKey* key,
                                                                const std::uint8_t* plain, std::size_t size) const {
    std::unique_ptr<XSECCryptoSymmetricKey> k = workingCopy(key);
    std::vector<std::uint8_t> framed(size + 3 * kBlock);
    k->encryptInit(true, XSECCryptoSymmetricKey::MODE_CBC, nullptr);
    unsigned int n = k->encrypt(plain, framed.data(), unsigned(size), unsigned(framed.size()));
    n += k->encryptFinish(framed.data() + n, unsigned(framed.size() - n));
    framed.resize(n);
    return framed;
}

vqxml::korean::SecureBytes TripleDesCipherHandler::decryptOctets(const XENCEncryptionMethod*,
                                                                 const XSECCryptoKey* key,
                                                                 const vqxml::korean::SecureBytes& framed) const {
    std::unique_ptr<XSECCryptoSymmetricKey> k = workingCopy(key);
    if (framed.size() < 2 * kBlock || framed.size() % kBlock != 0)
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  "Triple DES: the CipherValue is not an IV and whole blocks");
    vqxml::korean::SecureBytes plain(framed.size() + kBlock);
    // The padding is removed here: the engine's key takes a last byte of 0 for
    // no padding at all.
    k->decryptInit(false, XSECCryptoSymmetricKey::MODE_CBC, nullptr);
    unsigned int n = k->decrypt(framed.data(), plain.data(), unsigned(framed.size()), unsigned(plain.size()));
    n += k->decryptFinish(plain.data() + n, unsigned(plain.size() - n));
    n -= unsigned(vqxml::asCryptoException(XSECCryptoException::SymmetricError,
                                           [&] { return vqxml::korean::xmlEncPadCount(plain.data(), n, kBlock); }));
    plain.resize(n);
    return plain;
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
