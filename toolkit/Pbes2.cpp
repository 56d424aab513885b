// PBES2 (RFC 8018) with PBKDF2 and a CBC cipher: SEED or AES.
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/x509.h>

#include "toolkit/PasswordBasedEncryption.hpp"

namespace {

const EVP_MD* prfDigest(const X509_ALGOR* prf) {
    if (prf == nullptr)
        return EVP_sha1();  // RFC 8018's default
    switch (OBJ_obj2nid(prf->algorithm)) {
    case NID_hmacWithSHA1: return EVP_sha1();
    case NID_hmacWithSHA224: return EVP_sha224();
    case NID_hmacWithSHA256: return EVP_sha256();
    case NID_hmacWithSHA384: return EVP_sha384();
    case NID_hmacWithSHA512: return EVP_sha512();
    default:
        vqtk::raise(VQTK_ERR_UNSUPPORTED,
                    "Unsupported PBKDF2 pseudo-random function " + vqtk::dottedOid(prf->algorithm));
    }
}

const char* cipherName(const X509_ALGOR* encryption) {
    switch (OBJ_obj2nid(encryption->algorithm)) {
    case NID_seed_cbc: return "SEED-CBC";
    case NID_aes_128_cbc: return "AES-128-CBC";
    case NID_aes_192_cbc: return "AES-192-CBC";
    case NID_aes_256_cbc: return "AES-256-CBC";
    default:
        vqtk::raise(VQTK_ERR_UNSUPPORTED, "Unsupported PBES2 cipher " +
                                              vqtk::dottedOid(encryption->algorithm) +
                                              " (SEED-CBC and AES-CBC are supported)");
    }
}

// The IV of a CBC cipher: its parameters are the IV as an OCTET STRING.
vqtk::SecretBytes cbcIv(const X509_ALGOR* encryption) {
    const ASN1_TYPE* parameter = encryption->parameter;
    if (parameter == nullptr || parameter->type != V_ASN1_OCTET_STRING)
        vqtk::raise(VQTK_ERR_FORMAT, "The PBES2 cipher's parameters are not an IV (OCTET STRING)");
    const ASN1_OCTET_STRING* iv = parameter->value.octet_string;
    const unsigned char* bytes = ASN1_STRING_get0_data(iv);
    return vqtk::SecretBytes(bytes, bytes + ASN1_STRING_length(iv));
}

}  // namespace

namespace vqtk {

CipherSetup pbes2SetupFromParameters(const ASN1_TYPE* parameters, Bytes password) {
    Owned<PBE2PARAM, PBE2PARAM_free> pbes2(static_cast<PBE2PARAM*>(
        ASN1_TYPE_unpack_sequence(ASN1_ITEM_rptr(PBE2PARAM), parameters)));
    if (!pbes2)
        raise(VQTK_ERR_FORMAT, "The PBES2 parameters are malformed");
    if (OBJ_obj2nid(pbes2->keyfunc->algorithm) != NID_id_pbkdf2)
        raise(VQTK_ERR_UNSUPPORTED, "Unsupported PBES2 key derivation " +
                                        dottedOid(pbes2->keyfunc->algorithm) + " (only PBKDF2)");
    Owned<PBKDF2PARAM, PBKDF2PARAM_free> kdf(static_cast<PBKDF2PARAM*>(
        ASN1_TYPE_unpack_sequence(ASN1_ITEM_rptr(PBKDF2PARAM), pbes2->keyfunc->parameter)));
    if (!kdf || kdf->salt == nullptr || kdf->salt->type != V_ASN1_OCTET_STRING)
        raise(VQTK_ERR_FORMAT, "The PBKDF2 parameters are malformed (or the salt is not an "
                               "OCTET STRING)");

    CipherSetup setup{cipherName(pbes2->encryption), {}, cbcIv(pbes2->encryption)};
    const Bytes salt = checkedSalt(kdf->salt->value.octet_string);
    const long iterations = checkedIterations(kdf->iter);
    const EVP_MD* digest = prfDigest(kdf->prf);
    const CipherPtr cipher = fetchCipher(setup.cipher);
    const int keyLength = EVP_CIPHER_get_key_length(cipher.get());
    int64_t declared = 0;
    if (kdf->keylength != nullptr &&
        (!ASN1_INTEGER_get_int64(&declared, kdf->keylength) || declared != keyLength))
        raise(VQTK_ERR_FORMAT, "The PBKDF2 key length does not fit " + setup.cipher);

    setup.key.resize(static_cast<std::size_t>(keyLength));
    if (!PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(password.data),
                           static_cast<int>(password.size), salt.data, static_cast<int>(salt.size),
                           static_cast<int>(iterations), digest, keyLength, setup.key.data()))
        raise(VQTK_ERR_CRYPTO, "PBKDF2 failed: " + opensslReason());
    return setup;
}

}  // namespace vqtk
