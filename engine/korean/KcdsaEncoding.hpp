// KCDSA keys in X.509 and PKCS #8: algorithm 1.2.410.200004.1.1 (kcdsa; the ISO
// arc 1.0.14888.3.0.2 is read as well) with parameters SEQUENCE { p, q, g, ... }
// (issuers may append J, Seed and Count, which are ignored); the public key's BIT
// STRING wraps INTEGER y; the PKCS #8 private key's OCTET STRING wraps INTEGER x.
#ifndef VQXML_ENGINE_KOREAN_KCDSAENCODING_HPP
#define VQXML_ENGINE_KOREAN_KCDSAENCODING_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include <openssl/x509.h>

#include "engine/korean/Kcdsa.hpp"
#include "engine/korean/SecureBytes.hpp"

namespace vqxml::korean {

// "1.2.410.200004.1.1"
extern const char kKcdsaOid[];

// Whether the public key is a KCDSA key (by its algorithm OID).
bool isKcdsaPublicKey(const X509_PUBKEY* key);

// The key of a certificate's SubjectPublicKeyInfo; raises CryptoError if it is
// not KCDSA or is malformed or inconsistent.
KcdsaKey kcdsaKeyFromPublicKeyInfo(const X509_PUBKEY* key);

// The key pair of a DER PKCS #8 PrivateKeyInfo (unencrypted); raises CryptoError.
KcdsaKey kcdsaKeyFromPrivateKeyInfo(const std::uint8_t* der, std::size_t len);

// Writes the key's public part into an X509_PUBKEY (for certificates).
void setKcdsaPublicKeyInfo(X509_PUBKEY* target, const KcdsaKey& key);

// The DER PKCS #8 PrivateKeyInfo of a key pair.
SecureBytes encodeKcdsaPrivateKeyInfo(const KcdsaKey& key);

}  // namespace vqxml::korean

#endif
