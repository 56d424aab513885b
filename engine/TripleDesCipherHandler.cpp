#include "engine/TripleDesCipherHandler.hpp"

#include <algorithm>
#include <memory>

#include <openssl/crypto.h>

#include <xsec/enc/XSECCryptoException.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/adapter/Upstream.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/EvpCipher.hpp"
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

// A shorter key encrypts and decrypts nothing, and fails as a wrong one.
const vqxml::korean::SecureBytes& keyBytes(const XSECCryptoKey* key) {
    const vqxml::korean::SecureBytes& k = tripleDesKey(key).bytes();
    if (k.size() < kKeyBytes)
        throw XSECCryptoException(XSECCryptoException::SymmetricError, "Triple DES: the key is shorter than 24 bytes");
    return k;
}

}  // namespace

// The IV, the plaintext's whole blocks and the last block (the plaintext's rest
// and the padding) go straight into the framed output.
std::vector<std::uint8_t> TripleDesCipherHandler::encryptOctets(const XENCEncryptionMethod*,
                                                                const XSECCryptoKey* key,
                                                                const std::uint8_t* plain, std::size_t size) const {
    const vqxml::korean::SecureBytes& k = keyBytes(key);
    const std::size_t whole = size - size % kBlock;
    const std::vector<std::uint8_t> padding = vqxml::korean::xmlEncPadding(size, kBlock);
    const vqxml::korean::SecureBytes iv = vqxml::randomBytes(kBlock);
    std::vector<std::uint8_t> framed(kBlock + size + padding.size());
    std::copy(iv.begin(), iv.end(), framed.begin());
    vqxml::korean::tripleDesCbcEncrypt(k.data(), iv.data(), plain, whole, framed.data() + kBlock);
    std::uint8_t last[kBlock];
    std::copy(plain + whole, plain + size, last);
    std::copy(padding.begin(), padding.end(), last + (size - whole));
    // chained to the block before it: the IV or the last ciphertext block
    vqxml::korean::tripleDesCbcEncrypt(k.data(), framed.data() + whole, last, kBlock, framed.data() + kBlock + whole);
    OPENSSL_cleanse(last, sizeof last);
    return framed;
}

vqxml::korean::SecureBytes TripleDesCipherHandler::decryptOctets(const XENCEncryptionMethod*,
                                                                 const XSECCryptoKey* key,
                                                                 const vqxml::korean::SecureBytes& framed) const {
    const vqxml::korean::SecureBytes& k = keyBytes(key);
    if (framed.size() < 2 * kBlock || framed.size() % kBlock != 0)
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  "Triple DES: the CipherValue is not an IV and whole blocks");
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
