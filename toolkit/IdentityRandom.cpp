// VQTK_VID_GetRandomFromPriKey: the identity-verification random kept with a key.
#include <openssl/x509.h>

#include "toolkit/PrivateKeyInfo.hpp"

namespace {

// randomNum, KISA's attribute for the subscriber's identification random.
const char kRandomNum[] = "1.2.410.200004.10.1.1.3";

// Whether der reads as an EncryptedPrivateKeyInfo, to explain a refusal.
bool looksEncrypted(vqtk::Bytes der) {
    const unsigned char* cursor = der.data;
    vqtk::Owned<X509_SIG, X509_SIG_free> sig(
        der.size > 0 ? d2i_X509_SIG(nullptr, &cursor, static_cast<long>(der.size)) : nullptr);
    return sig != nullptr;
}

}  // namespace

extern "C" {

int VQTK_VID_GetRandomFromPriKey(VQTK_Toolkit* handle, const VQTK_BINSTR* plainKey,
                                 VQTK_BINSTR* random) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        vqtk::require(plainKey, "The plain key string");
        vqtk::require(random, "The random string");
        const vqtk::Bytes der = vqtk::bytesOf(plainKey);
        if (der.size > VQTK_MAX_ENCRYPTED_KEY)
            vqtk::raise(VQTK_ERR_LIMIT, "The private key is larger than " +
                                            std::to_string(VQTK_MAX_ENCRYPTED_KEY) + " bytes");
        vqtk::requireDerLooking(der, "The private key");
        const vqtk::PrivateKeyInfoPtr info = vqtk::parsePrivateKeyInfo(der);
        if (!info)
            vqtk::raise(VQTK_ERR_FORMAT,
                        looksEncrypted(der)
                            ? "The private key is still encrypted: give its password"
                            : "The private key is not a DER PKCS #8 PrivateKeyInfo");

        const STACK_OF(X509_ATTRIBUTE)* attributes = PKCS8_pkey_get0_attrs(info.get());
        const int index = X509at_get_attr_by_OBJ(attributes, vqtk::objectId(kRandomNum).get(), -1);
        if (index < 0)
            vqtk::raise(VQTK_ERR_NOT_FOUND, "The private key carries no identity-verification "
                                            "random (attribute randomNum)");
        X509_ATTRIBUTE* attribute = X509at_get_attr(attributes, index);
        const ASN1_TYPE* value = X509_ATTRIBUTE_get0_type(attribute, 0);
        if (X509_ATTRIBUTE_count(attribute) != 1 || value == nullptr ||
            value->type != V_ASN1_BIT_STRING || ASN1_STRING_length(value->value.bit_string) <= 0)
            vqtk::raise(VQTK_ERR_FORMAT, "The key's randomNum attribute is not one non-empty "
                                         "BIT STRING");
        const ASN1_BIT_STRING* bits = value->value.bit_string;
        vqtk::store(random, ASN1_STRING_get0_data(bits),
                    static_cast<std::size_t>(ASN1_STRING_length(bits)));
        return VQTK_OK;
    });
}

}  // extern "C"
