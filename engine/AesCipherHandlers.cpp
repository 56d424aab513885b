#include "engine/AesCipherHandlers.hpp"

#include <algorithm>
#include <climits>
#include <memory>

#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/KeyWithBytes.hpp"
#include "engine/Algorithms.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/EvpCipher.hpp"
#include "engine/korean/XmlEncCbc.hpp"

namespace {

using vqxml::korean::SecureBytes;

constexpr std::size_t kCbcIv = 16;
constexpr std::size_t kGcmIv = 12;
constexpr std::size_t kGcmTag = 16;

}  // namespace

XSECCryptoKey* AesCipherHandler::createKeyForURI(const XMLCh* uri, const unsigned char* keyBuffer,
                                                 unsigned int keyLen) const {
    const vqxml::Algorithm* row = vqxml::algorithmByURI(vqxml::AlgorithmKind::CIPHER, uri);
    if (row == nullptr)
        throw XSECCryptoException(XSECCryptoException::SymmetricError, "AES: no cipher for this URI");
    std::unique_ptr<KeyWithBytes> key(new KeyWithBytes(static_cast<XSECCryptoSymmetricKey::SymmetricKeyType>(row->keyType)));
    key->setKey(keyBuffer, keyLen);
    return key.release();
}

// The IV, the plaintext's blocks and the padding's go straight into the framed
// output: the plaintext of a large element is not copied to be padded.
std::vector<std::uint8_t> AesCbcCipherHandler::encryptOctets(const XENCEncryptionMethod* method,
                                                             const XSECCryptoKey* key, const std::uint8_t* plain,
                                                             std::size_t size) const {
    const SecureBytes& k = KeyWithBytes::forMethod(method, key).bytes();
    if (size > INT_MAX - 64)
        vqxml::cipherFailure("AES-CBC: the data is too long");
    const std::vector<std::uint8_t> padding = vqxml::korean::xmlEncPadding(size, kCbcIv);
    const SecureBytes iv = vqxml::randomBytes(kCbcIv);
    vqxml::CipherContext ctx = vqxml::startCipher(vqxml::aesCipher(k.size(), vqxml::AesMode::Cbc), true, k, iv.data());
    std::vector<std::uint8_t> framed(kCbcIv + size + padding.size());
    std::copy(iv.begin(), iv.end(), framed.begin());
    int n = 0, tail = 0, last = 0;
    if (EVP_EncryptUpdate(ctx.get(), framed.data() + kCbcIv, &n, plain, static_cast<int>(size)) != 1 ||
        EVP_EncryptUpdate(ctx.get(), framed.data() + kCbcIv + n, &tail, padding.data(),
                          static_cast<int>(padding.size())) != 1 ||
        EVP_EncryptFinal_ex(ctx.get(), framed.data() + kCbcIv + n + tail, &last) != 1 ||
        static_cast<std::size_t>(n + tail + last) != size + padding.size())
        vqxml::cipherFailure("AES-CBC: OpenSSL cannot encrypt");
    return framed;
}

SecureBytes AesCbcCipherHandler::decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                               const SecureBytes& framed) const {
    const SecureBytes& k = KeyWithBytes::forMethod(method, key).bytes();
    if (framed.size() < 2 * kCbcIv || framed.size() % kCbcIv != 0)
        vqxml::cipherFailure("AES-CBC: the CipherValue is not an IV and whole blocks");
    SecureBytes plain = vqxml::runCipher(vqxml::aesCipher(k.size(), vqxml::AesMode::Cbc), false, k, framed.data(),
                                         framed.data() + kCbcIv, framed.size() - kCbcIv);
    const std::size_t pad = vqxml::asCryptoException(XSECCryptoException::SymmetricError, [&] {
        return vqxml::korean::xmlEncPadCount(plain.data(), plain.size(), kCbcIv);
    });
    plain.resize(plain.size() - pad);
    return plain;
}

std::vector<std::uint8_t> AesGcmCipherHandler::encryptOctets(const XENCEncryptionMethod* method,
                                                             const XSECCryptoKey* key, const std::uint8_t* plain,
                                                             std::size_t size) const {
    const SecureBytes& k = KeyWithBytes::forMethod(method, key).bytes();
    if (size > INT_MAX - 64)
        vqxml::cipherFailure("AES-GCM: the data is too long");
    const SecureBytes iv = vqxml::randomBytes(kGcmIv);
    vqxml::CipherContext ctx = vqxml::startCipher(vqxml::aesCipher(k.size(), vqxml::AesMode::Gcm), true, k, iv.data());
    std::vector<std::uint8_t> framed(iv.begin(), iv.end());
    framed.resize(kGcmIv + size + kGcmTag);
    int n = 0, last = 0;
    if (EVP_EncryptUpdate(ctx.get(), framed.data() + kGcmIv, &n, plain, static_cast<int>(size)) != 1 ||
        EVP_EncryptFinal_ex(ctx.get(), framed.data() + kGcmIv + n, &last) != 1 ||
        static_cast<std::size_t>(n + last) != size ||
        EVP_CIPHER_CTX_ctrl(ctx.get(), EVP_CTRL_AEAD_GET_TAG, kGcmTag, framed.data() + kGcmIv + size) != 1)
        vqxml::cipherFailure("AES-GCM: OpenSSL cannot encrypt");
    return framed;
}

// The plaintext is written into memory that is wiped, and returned only once the
// tag matched.
SecureBytes AesGcmCipherHandler::decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                               const SecureBytes& framed) const {
    const SecureBytes& k = KeyWithBytes::forMethod(method, key).bytes();
    if (framed.size() < kGcmIv + kGcmTag || framed.size() > INT_MAX - 64)
        vqxml::cipherFailure("AES-GCM: the CipherValue is shorter than its IV and tag");
    const std::size_t len = framed.size() - kGcmIv - kGcmTag;
    vqxml::CipherContext ctx =
        vqxml::startCipher(vqxml::aesCipher(k.size(), vqxml::AesMode::Gcm), false, k, framed.data());
    SecureBytes plain(len + EVP_MAX_BLOCK_LENGTH);
    std::uint8_t tag[kGcmTag];
    std::copy(framed.end() - kGcmTag, framed.end(), tag);
    int n = 0, last = 0;
    if (EVP_DecryptUpdate(ctx.get(), plain.data(), &n, framed.data() + kGcmIv, static_cast<int>(len)) != 1 ||
        EVP_CIPHER_CTX_ctrl(ctx.get(), EVP_CTRL_AEAD_SET_TAG, kGcmTag, tag) != 1 ||
        EVP_DecryptFinal_ex(ctx.get(), plain.data() + n, &last) != 1)
        vqxml::cipherFailure("AES-GCM: the authentication tag does not match");
    plain.resize(static_cast<std::size_t>(n + last));
    return plain;
}
