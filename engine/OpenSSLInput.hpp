// Reading certificates and private keys that callers hand in as bytes.
#ifndef VQXML_ENGINE_OPENSSLINPUT_HPP
#define VQXML_ENGINE_OPENSSLINPUT_HPP

#include <memory>

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/KeyCache.hpp"

namespace vqxml {

struct PKeyDeleter {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using PKeyPtr = std::unique_ptr<EVP_PKEY, PKeyDeleter>;

// A DER or PEM X.509 certificate; null if the bytes are neither, or carry more
// than the certificate. A DER certificate is decoded once and shared, read-only,
// with every other reader of the same bytes (engine/VQTKCryptoX509.hpp).
std::shared_ptr<X509> readCertificate(const unsigned char* bytes, int len);

// An unencrypted private key: PKCS#8 PrivateKeyInfo or a traditional (PKCS#1,
// SEC1) key, DER or PEM; null otherwise. Never asks for a password.
PKeyPtr readPrivateKey(const unsigned char* bytes, int len);

// A signer's certificate and/or private key (either may be absent; a
// certificate alone gives its public key) of the OpenSSL key type baseId
// (EVP_PKEY_RSA, EVP_PKEY_EC, EVP_PKEY_DSA), named kind in messages. Throws
// XSECCryptoException of type error for bytes it cannot use, a key of another
// type, or a key that does not belong to the certificate.
ParsedKeyPair readKeyPair(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen, int baseId,
                          const char* kind, XSECCryptoException::XSECCryptoExceptionType error);

}  // namespace vqxml

#endif
