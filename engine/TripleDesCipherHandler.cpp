#include "engine/TripleDesCipherHandler.hpp"

#include <memory>

#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/adapter/Upstream.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/KeyWithBytes.hpp"
#include "engine/korean/TripleDesCbc.hpp"
#include "engine/korean/XmlEncCbc.hpp"

namespace {

constexpr unsigned int kBlock = 8;
constexpr unsigned int kKeyBytes = 24;

const KeyWithBytes& tripleDesKey(const XSECCryptoKey* key) {
    const auto* ours = dynamic_cast<const KeyWithBytes*>(key);
    if (ours == nullptr || ours->getSymmetricKeyType() != XSECCryptoSymmetricKey::KEY_3DES_192)
        throw XSECException(XSECException::CipherError, "key inappropriate for the encryption algorithm");
    return *ours;
}

}  // namespace

std::vector<std::uint8_t> TripleDesCipherHandler::encryptOctets(const XENCEncryptionMethod*,
                                                                const XSECCryptoKey* key,
                                                                const std::uint8_t* plain, std::size_t size) const {
    // A running copy of the caller's key, which stays untouched.
    std::unique_ptr<XSECCryptoSymmetricKey> k(static_cast<XSECCryptoSymmetricKey*>(tripleDesKey(key).clone()));
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
    const vqxml::korean::SecureBytes& k = tripleDesKey(key).bytes();
    if (framed.size() < 2 * kBlock || framed.size() % kBlock != 0)
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  "Triple DES: the CipherValue is not an IV and whole blocks");
    // A shorter key decrypts nothing, as a wrong one.
    if (k.size() < kKeyBytes)
        throw XSECCryptoException(XSECCryptoException::SymmetricError, "Triple DES: the key is shorter than 24 bytes");
    vqxml::korean::SecureBytes plain(framed.size() - kBlock);
    vqxml::korean::tripleDesCbcDecrypt(k.data(), framed.data(), framed.data() + kBlock, plain.size(), plain.data());
    plain.resize(plain.size() - vqxml::asCryptoException(XSECCryptoException::SymmetricError, [&] {
                     return vqxml::korean::xmlEncPadCount(plain.data(), plain.size(), kBlock);
                 }));
    return plain;
}

XSECCryptoKey* TripleDesCipherHandler::createKeyForURI(const XMLCh*, const unsigned char* keyBuffer,
                                                       unsigned int keyLen) const {
    if (keyLen < kKeyBytes)
        throw XSECException(XSECException::CipherError, "Triple DES: the key is shorter than 24 bytes");
    std::unique_ptr<KeyWithBytes> key(new KeyWithBytes(XSECCryptoSymmetricKey::KEY_3DES_192));
    key->setKey(keyBuffer, keyLen);
    return key.release();
}

XSECAlgorithmHandler* TripleDesCipherHandler::clone() const {
    return new TripleDesCipherHandler();
}
