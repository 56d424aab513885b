// RSA PKCS #1 v1.5 key transport without a padding oracle.
//
// A receiver that answers a ciphertext with bad padding differently from one
// with good padding (a status, a text, or the time it takes) lets a stranger
// decrypt any key wrapped for it (Bleichenbacher; the timing variant is the
// Marvin attack). So the unwrapping never fails: when the padding is wrong, or
// the message is not exactly the expected key length, the result is a
// pseudo-random key of that length, derived from the private key and the
// ciphertext (the same ciphertext always gives the same key). The data it was
// meant for then fails to decrypt like data under any other wrong key.
//
// The padding is checked on the raw RSA result without branches on its bytes,
// and the derived key is computed every time. OpenSSL 3.0 offers no implicit
// rejection of its own.
#ifndef VQXML_ENGINE_PKCS1IMPLICITREJECTION_HPP
#define VQXML_ENGINE_PKCS1IMPLICITREJECTION_HPP

#include <cstddef>

#include <openssl/evp.h>

namespace vqxml {

constexpr std::size_t kMaxImplicitKeyBytes = 32;

// Writes keyLen (1 to kMaxImplicitKeyBytes) bytes to out: the wrapped key, or
// the derived one. Throws XSECCryptoException only when key has no private part
// or OpenSSL cannot compute at all (memory), never for the ciphertext.
void unwrapPkcs1Implicitly(EVP_PKEY* key, const unsigned char* in, std::size_t inLen, unsigned char* out,
                           std::size_t keyLen);

}  // namespace vqxml

#endif
