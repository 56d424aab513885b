#include "engine/Pkcs1ImplicitRejection.hpp"

#include <cstdint>
#include <memory>

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/korean/SecureBytes.hpp"

namespace vqxml {

namespace {

using Bytes = korean::SecureBytes;

[[noreturn]] void fail(const char* why) {
    throw XSECCryptoException(XSECCryptoException::RSAError, why);
}

// All ones when a equals b, else zero; no branch on the values.
std::uint32_t equalMask(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t diff = a ^ b;
    return static_cast<std::uint32_t>((static_cast<std::uint64_t>(diff) - 1) >> 32);
}

// All ones when a < b (both below 2^31), else zero.
std::uint32_t lessMask(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::uint32_t>(0) - ((a - b) >> 31);
}

// The key for ciphertexts that do not unwrap: HMAC-SHA-256 over the length and
// the ciphertext, keyed by a hash of the private exponent.
Bytes derivedKey(EVP_PKEY* key, std::size_t modulusBytes, const unsigned char* in, std::size_t inLen,
                 std::size_t keyLen) {
    BIGNUM* raw = nullptr;
    if (EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_RSA_D, &raw) != 1)
        fail("OpenSSL:RSA - no private key to unwrap with");
    const std::unique_ptr<BIGNUM, void (*)(BIGNUM*)> d(raw, &BN_clear_free);
    Bytes exponent(modulusBytes);
    Bytes secret(SHA256_DIGEST_LENGTH);
    if (BN_bn2binpad(d.get(), exponent.data(), static_cast<int>(exponent.size())) < 0 ||
        SHA256(exponent.data(), exponent.size(), secret.data()) == nullptr)
        fail("OpenSSL:RSA - cannot derive the rejection key");
    static const unsigned char kLabel[] = "vqxml PKCS #1 v1.5 implicit rejection";
    Bytes message(kLabel, kLabel + sizeof kLabel - 1);
    message.push_back(static_cast<unsigned char>(keyLen >> 8));
    message.push_back(static_cast<unsigned char>(keyLen));
    message.insert(message.end(), in, in + inLen);
    Bytes out(SHA256_DIGEST_LENGTH);
    unsigned int outLen = 0;
    if (HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()), message.data(), message.size(), out.data(),
             &outLen) == nullptr)
        fail("OpenSSL:RSA - cannot derive the rejection key");
    return out;
}

// m^d without padding removed; false for a ciphertext that is not one (its
// length or value is out of range), which the ciphertext itself shows.
bool rawDecrypt(EVP_PKEY* key, const unsigned char* in, std::size_t inLen, Bytes& em) {
    if (inLen != em.size())
        return false;
    std::unique_ptr<EVP_PKEY_CTX, void (*)(EVP_PKEY_CTX*)> ctx(EVP_PKEY_CTX_new(key, nullptr), &EVP_PKEY_CTX_free);
    std::size_t len = em.size();
    if (!ctx || EVP_PKEY_decrypt_init(ctx.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_NO_PADDING) != 1)
        fail("OpenSSL:RSA - cannot start decrypting");
    return EVP_PKEY_decrypt(ctx.get(), em.data(), &len, in, inLen) == 1 && len == em.size();
}

}  // namespace

void unwrapPkcs1Implicitly(EVP_PKEY* key, const unsigned char* in, std::size_t inLen, unsigned char* out,
                           std::size_t keyLen) {
    const int size = EVP_PKEY_get_size(key);
    if (keyLen == 0 || keyLen > kMaxImplicitKeyBytes || size < 11 + static_cast<int>(kMaxImplicitKeyBytes))
        fail("OpenSSL:RSA - the key cannot carry a key of that length");
    const std::size_t k = static_cast<std::size_t>(size);
    const Bytes fallback = derivedKey(key, k, in, inLen, keyLen);
    Bytes em(k);
    std::uint32_t good = rawDecrypt(key, in, inLen, em) ? ~0u : 0u;

    // 00 || 02 || at least eight nonzero bytes || 00 || the key.
    good &= equalMask(em[0], 0) & equalMask(em[1], 2);
    std::uint32_t found = 0, zeroAt = 0;
    for (std::size_t i = 2; i < k; ++i) {
        const std::uint32_t isZero = equalMask(em[i], 0) & ~found;
        zeroAt |= isZero & static_cast<std::uint32_t>(i);
        found |= isZero;
    }
    good &= found & ~lessMask(zeroAt, 10);
    good &= equalMask(static_cast<std::uint32_t>(k - 1) - zeroAt, static_cast<std::uint32_t>(keyLen));

    const std::size_t from = k - keyLen;
    for (std::size_t j = 0; j < keyLen; ++j)
        out[j] = static_cast<unsigned char>((em[from + j] & good) | (fallback[j] & ~good));
}

}  // namespace vqxml
