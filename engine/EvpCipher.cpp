#include "engine/EvpCipher.hpp"

#include <climits>

#include <openssl/rand.h>
#include <xsec/enc/XSECCryptoException.hpp>

namespace vqxml {

void cipherFailure(const char* why) {
    throw XSECCryptoException(XSECCryptoException::SymmetricError, why);
}

const EVP_CIPHER* aesCipher(std::size_t keyBytes, AesMode mode) {
    switch (keyBytes) {
    case 16:
        return mode == AesMode::Cbc ? EVP_aes_128_cbc() : mode == AesMode::Gcm ? EVP_aes_128_gcm() : EVP_aes_128_wrap();
    case 24:
        return mode == AesMode::Cbc ? EVP_aes_192_cbc() : mode == AesMode::Gcm ? EVP_aes_192_gcm() : EVP_aes_192_wrap();
    case 32:
        return mode == AesMode::Cbc ? EVP_aes_256_cbc() : mode == AesMode::Gcm ? EVP_aes_256_gcm() : EVP_aes_256_wrap();
    default:
        cipherFailure("AES: the key is not 16, 24 or 32 bytes");
    }
}

CipherContext startCipher(const EVP_CIPHER* cipher, bool encrypt, const korean::SecureBytes& key,
                          const std::uint8_t* iv) {
    CipherContext ctx(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
    if (!ctx)
        cipherFailure("AES: no cipher context");
    EVP_CIPHER_CTX_set_flags(ctx.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
    if (EVP_CipherInit_ex(ctx.get(), cipher, nullptr, key.data(), iv, encrypt ? 1 : 0) != 1 ||
        EVP_CIPHER_CTX_set_padding(ctx.get(), 0) != 1)
        cipherFailure("AES: OpenSSL refuses the key");
    return ctx;
}

korean::SecureBytes runCipher(const EVP_CIPHER* cipher, bool encrypt, const korean::SecureBytes& key,
                              const std::uint8_t* iv, const std::uint8_t* in, std::size_t len) {
    if (len > INT_MAX - 64)
        cipherFailure("AES: the data is too long");
    CipherContext ctx = startCipher(cipher, encrypt, key, iv);
    korean::SecureBytes out(len + 2 * EVP_MAX_BLOCK_LENGTH);
    int n = 0, last = 0;
    if (EVP_CipherUpdate(ctx.get(), out.data(), &n, in, static_cast<int>(len)) != 1 ||
        EVP_CipherFinal_ex(ctx.get(), out.data() + n, &last) != 1)
        cipherFailure("AES: the data does not decrypt");
    out.resize(static_cast<std::size_t>(n + last));
    return out;
}

korean::SecureBytes randomBytes(std::size_t n) {
    korean::SecureBytes out(n);
    if (RAND_bytes(out.data(), static_cast<int>(n)) != 1)
        cipherFailure("AES: no random bytes");
    return out;
}

}  // namespace vqxml
