// VQTK_PRIKEY_Decrypt: opens a password-protected PKCS #8 key file.
#include <climits>
#include <cstring>

#include <openssl/objects.h>

#include "toolkit/PasswordBasedEncryption.hpp"
#include "toolkit/PrivateKeyInfo.hpp"

namespace {

const char kPbeSeedSha1[] = "1.2.410.200004.1.15";
const char kBareSeedCbc[] = "1.2.410.200004.1.4";

using EncryptedKeyPtr = vqtk::Owned<X509_SIG, X509_SIG_free>;

vqtk::Bytes checkedPassword(const char* password) {
    if (password == nullptr)
        vqtk::raise(VQTK_ERR_ARGUMENT, "No password was given");
    const std::size_t n = std::strlen(password);
    if (n == 0)
        vqtk::raise(VQTK_ERR_ARGUMENT, "The password is empty");
    if (n > VQTK_MAX_PASSWORD)
        vqtk::raise(VQTK_ERR_LIMIT, "The password is longer than " +
                                        std::to_string(VQTK_MAX_PASSWORD) + " bytes");
    return {reinterpret_cast<const unsigned char*>(password), n};
}

EncryptedKeyPtr parseEncryptedKey(vqtk::Bytes der) {
    if (der.size > VQTK_MAX_ENCRYPTED_KEY)
        vqtk::raise(VQTK_ERR_LIMIT, "The encrypted key is larger than " +
                                        std::to_string(VQTK_MAX_ENCRYPTED_KEY) + " bytes");
    vqtk::requireDerLooking(der, "The encrypted key");
    const unsigned char* cursor = der.data;
    EncryptedKeyPtr key(d2i_X509_SIG(nullptr, &cursor, static_cast<long>(der.size)));
    if (!key || cursor != der.data + der.size)
        vqtk::raise(VQTK_ERR_FORMAT,
                    "The encrypted key is not a DER PKCS #8 EncryptedPrivateKeyInfo");
    return key;
}

vqtk::CipherSetup schemeSetup(const X509_ALGOR* scheme, vqtk::Bytes password) {
    if (OBJ_obj2nid(scheme->algorithm) == NID_pbes2)
        return vqtk::pbes2SetupFromParameters(scheme->parameter, password);
    if (OBJ_cmp(scheme->algorithm, vqtk::objectId(kPbeSeedSha1).get()) == 0)
        return vqtk::seedSha1SetupFromParameters(scheme->parameter, password);
    if (OBJ_cmp(scheme->algorithm, vqtk::objectId(kBareSeedCbc).get()) == 0)
        vqtk::raise(VQTK_ERR_UNSUPPORTED, "SEED-CBC without a password-based scheme (the old "
                                          "fixed-IV key form) is not supported");
    vqtk::raise(VQTK_ERR_UNSUPPORTED, "Unknown password-based encryption scheme " +
                                          vqtk::dottedOid(scheme->algorithm));
}

}  // namespace

extern "C" {

int VQTK_PRIKEY_Decrypt(VQTK_Toolkit* handle, const char* password, const VQTK_BINSTR* encrypted,
                        VQTK_BINSTR* plain) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        vqtk::require(encrypted, "The encrypted key string");
        vqtk::require(plain, "The plain key string");
        const vqtk::Bytes secret = checkedPassword(password);
        const EncryptedKeyPtr key = parseEncryptedKey(vqtk::bytesOf(encrypted));
        const X509_ALGOR* scheme = nullptr;
        const ASN1_OCTET_STRING* data = nullptr;
        X509_SIG_get0(key.get(), &scheme, &data);

        const vqtk::CipherSetup setup = schemeSetup(scheme, secret);
        const vqtk::SecretBytes result = vqtk::decryptCbc(
            setup, {ASN1_STRING_get0_data(data), static_cast<std::size_t>(ASN1_STRING_length(data))});
        if (!vqtk::parsePrivateKeyInfo({result.data(), result.size()}))
            vqtk::raise(VQTK_ERR_DECRYPT, "Wrong password, or the encrypted key is damaged (the "
                                          "result is not a PrivateKeyInfo)");
        vqtk::store(plain, result.data(), result.size());
        return VQTK_OK;
    });
}

}  // extern "C"
