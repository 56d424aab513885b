// The password-based encryption schemes of private-key files.
#ifndef VQXML_TOOLKIT_PASSWORDBASEDENCRYPTION_HPP
#define VQXML_TOOLKIT_PASSWORDBASEDENCRYPTION_HPP

#include <string>

#include <openssl/asn1.h>
#include <openssl/evp.h>

#include "toolkit/ToolkitInternal.hpp"

namespace vqtk {

// A CBC cipher (OpenSSL's name for it) with the key and IV a scheme derived.
struct CipherSetup {
    std::string cipher;
    SecretBytes key;
    SecretBytes iv;
};

// PBKDF1 with SHA-1: T1 = SHA1(password || salt), Ti = SHA1(Ti-1), result T(iterations).
SecretBytes pbkdf1Sha1(Bytes password, Bytes salt, long iterations);

// pbeWithSHA1AndSEED-CBC: key = DK[0..15], IV = SHA1(DK[16..19])[0..15].
CipherSetup seedSha1Setup(Bytes password, Bytes salt, long iterations);

// The same from the scheme's DER parameters SEQUENCE { salt, iterations }.
CipherSetup seedSha1SetupFromParameters(const ASN1_TYPE* parameters, Bytes password);

// PBES2 from its DER parameters: PBKDF2 with the named PRF, then the named cipher.
CipherSetup pbes2SetupFromParameters(const ASN1_TYPE* parameters, Bytes password);

// Iteration count within 1..VQTK_MAX_PBE_ITERATIONS, else VQTK_ERR_LIMIT.
long checkedIterations(const ASN1_INTEGER* iterations);

// Salt of 1..VQTK_MAX_SALT bytes, else VQTK_ERR_LIMIT.
Bytes checkedSalt(const ASN1_OCTET_STRING* salt);

using CipherPtr = Owned<EVP_CIPHER, EVP_CIPHER_free>;

// The cipher by OpenSSL's name; VQTK_ERR_UNSUPPORTED if no provider has it.
CipherPtr fetchCipher(const std::string& name);

// Decrypts whole blocks and removes PKCS #7 padding; bad padding is VQTK_ERR_DECRYPT.
SecretBytes decryptCbc(const CipherSetup& setup, Bytes ciphertext);

// The dotted text of an object identifier, for messages.
std::string dottedOid(const ASN1_OBJECT* id);

}  // namespace vqtk

#endif
