// OpenSSL EVP ciphers for the AES handlers (AesCipherHandlers.hpp, and AES key
// wrap in KeyTransportHandlers.hpp): the cipher for a key length and mode, and
// one whole-buffer run of it without padding.
#ifndef VQXML_ENGINE_EVPCIPHER_HPP
#define VQXML_ENGINE_EVPCIPHER_HPP

#include <cstddef>
#include <cstdint>
#include <memory>

#include <openssl/evp.h>

#include "engine/korean/SecureBytes.hpp"

namespace vqxml {

enum class AesMode { Cbc, Gcm, KeyWrap };

// XSECCryptoException for a key length other than 16, 24 or 32.
const EVP_CIPHER* aesCipher(std::size_t keyBytes, AesMode mode);

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;
// A context set up for cipher, key and iv (null: the cipher's default), without
// padding; XSECCryptoException when OpenSSL refuses.
CipherContext startCipher(const EVP_CIPHER* cipher, bool encrypt, const korean::SecureBytes& key,
                          const std::uint8_t* iv);

// in run through cipher in one piece; XSECCryptoException (SymmetricError) when
// OpenSSL refuses the data (a key wrap whose integrity check fails, say).
korean::SecureBytes runCipher(const EVP_CIPHER* cipher, bool encrypt, const korean::SecureBytes& key,
                              const std::uint8_t* iv, const std::uint8_t* in, std::size_t len);

// n random bytes.
korean::SecureBytes randomBytes(std::size_t n);

[[noreturn]] void cipherFailure(const char* why);

}  // namespace vqxml

#endif
