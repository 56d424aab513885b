#include "engine/korean/KcdsaEncoding.hpp"

#include <cstring>
#include <memory>

#include <openssl/asn1.h>
#include <openssl/objects.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/OpenSSLPtr.hpp"

namespace vqxml::korean {

const char kKcdsaOid[] = "1.2.410.200004.1.1";

namespace {

const char kIsoKcdsaOid[] = "1.0.14888.3.0.2";

void freeSequence(ASN1_SEQUENCE_ANY* s) {
    sk_ASN1_TYPE_pop_free(s, ASN1_TYPE_free);
}

using Object = OpenSSLPtr<ASN1_OBJECT, ASN1_OBJECT_free>;
using Integer = OpenSSLPtr<ASN1_INTEGER, ASN1_INTEGER_free>;
using Sequence = OpenSSLPtr<ASN1_SEQUENCE_ANY, freeSequence>;
using PrivateKeyInfo = OpenSSLPtr<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free>;

Object oid(const char* text) {
    Object o(OBJ_txt2obj(text, 1));
    if (!o)
        throwOpenSSLError("cannot make an object identifier");
    return o;
}

// Compares the dotted text, written into a buffer of our own: a test that
// allocates could fail for want of memory and turn a question into an error.
bool isKcdsaOid(const ASN1_OBJECT* o) {
    if (o == nullptr)
        return false;
    char text[80];
    const int len = OBJ_obj2txt(text, sizeof text, o, 1);
    return len > 0 && len < int(sizeof text) &&
           (std::strcmp(text, kKcdsaOid) == 0 || std::strcmp(text, kIsoKcdsaOid) == 0);
}

Bignum integerToBignum(const ASN1_INTEGER* i, const char* what) {
    Bignum bn(ASN1_INTEGER_to_BN(i, nullptr));
    if (!bn || BN_is_negative(bn.get()))
        throw CryptoError(std::string("KCDSA ") + what + " is not a positive integer");
    return bn;
}

// DER INTEGER, exactly filling len bytes.
Bignum decodeInteger(const std::uint8_t* der, std::size_t len, const char* what) {
    const unsigned char* p = der;
    Integer i(d2i_ASN1_INTEGER(nullptr, &p, long(len)));
    if (!i || p != der + len)
        throw CryptoError(std::string("KCDSA ") + what + " is not a DER INTEGER");
    return integerToBignum(i.get(), what);
}

struct Domain {
    Bignum p, q, g;
};

Domain decodeParameters(const X509_ALGOR* alg) {
    const ASN1_OBJECT* algOid = nullptr;
    int type = 0;
    const void* value = nullptr;
    X509_ALGOR_get0(&algOid, &type, &value, alg);
    if (!isKcdsaOid(algOid))
        throw CryptoError("key algorithm is not KCDSA");
    if (type != V_ASN1_SEQUENCE || value == nullptr)
        throw CryptoError("KCDSA key carries no domain parameters");
    const ASN1_STRING* seq = static_cast<const ASN1_STRING*>(value);
    const unsigned char* p = ASN1_STRING_get0_data(seq);
    const unsigned char* end = p + ASN1_STRING_length(seq);
    Sequence items(d2i_ASN1_SEQUENCE_ANY(nullptr, &p, ASN1_STRING_length(seq)));
    if (!items || p != end || sk_ASN1_TYPE_num(items.get()) < 3)
        throw CryptoError("KCDSA domain parameters are malformed");
    Bignum values[3];
    const char* names[3] = {"p", "q", "g"};
    for (int i = 0; i < 3; ++i) {
        const ASN1_TYPE* t = sk_ASN1_TYPE_value(items.get(), i);
        if (ASN1_TYPE_get(t) != V_ASN1_INTEGER)
            throw CryptoError(std::string("KCDSA ") + names[i] + " is not an INTEGER");
        values[i] = integerToBignum(t->value.integer, names[i]);
    }
    return {std::move(values[0]), std::move(values[1]), std::move(values[2])};
}

std::vector<std::uint8_t> der(int len, unsigned char* bytes) {
    if (len <= 0)
        throwOpenSSLError("DER encoding failed");
    std::vector<std::uint8_t> out(bytes, bytes + len);
    OPENSSL_free(bytes);
    return out;
}

std::vector<std::uint8_t> encodeInteger(const BIGNUM* bn) {
    Integer i(BN_to_ASN1_INTEGER(bn, nullptr));
    if (!i)
        throwOpenSSLError("cannot encode an INTEGER");
    unsigned char* out = nullptr;
    int len = i2d_ASN1_INTEGER(i.get(), &out);
    return der(len, out);
}

// SEQUENCE { p, q, g } as an ASN1_STRING for X509_ALGOR parameters.
ASN1_STRING* encodeParameters(const KcdsaKey& key) {
    Sequence seq(sk_ASN1_TYPE_new_null());
    if (!seq)
        throwOpenSSLError("cannot allocate a SEQUENCE");
    for (const BIGNUM* bn : {key.p(), key.q(), key.g()}) {
        ASN1_TYPE* t = ASN1_TYPE_new();
        ASN1_INTEGER* i = BN_to_ASN1_INTEGER(bn, nullptr);
        if (t == nullptr || i == nullptr) {
            ASN1_TYPE_free(t);
            ASN1_INTEGER_free(i);
            throwOpenSSLError("cannot encode KCDSA parameters");
        }
        ASN1_TYPE_set(t, V_ASN1_INTEGER, i);
        if (sk_ASN1_TYPE_push(seq.get(), t) <= 0) {
            ASN1_TYPE_free(t);
            throwOpenSSLError("cannot encode KCDSA parameters");
        }
    }
    unsigned char* out = nullptr;
    int len = i2d_ASN1_SEQUENCE_ANY(seq.get(), &out);
    std::vector<std::uint8_t> bytes = der(len, out);
    ASN1_STRING* str = ASN1_STRING_new();
    if (str == nullptr || ASN1_STRING_set(str, bytes.data(), int(bytes.size())) != 1) {
        ASN1_STRING_free(str);
        throwOpenSSLError("cannot encode KCDSA parameters");
    }
    return str;
}

// Hands a copy of bytes to OpenSSL, which frees it with OPENSSL_free.
unsigned char* openSSLCopy(const std::uint8_t* bytes, std::size_t len) {
    auto* copy = static_cast<unsigned char*>(OPENSSL_memdup(bytes, len));
    if (copy == nullptr)
        throwOpenSSLError("out of memory");
    return copy;
}

}  // namespace

bool isKcdsaPublicKey(const X509_PUBKEY* key) {
    ASN1_OBJECT* algOid = nullptr;
    return key != nullptr && X509_PUBKEY_get0_param(&algOid, nullptr, nullptr, nullptr, key) == 1 &&
           isKcdsaOid(algOid);
}

KcdsaKey kcdsaKeyFromPublicKeyInfo(const X509_PUBKEY* key) {
    const unsigned char* pk = nullptr;
    int pkLen = 0;
    X509_ALGOR* alg = nullptr;
    if (key == nullptr || X509_PUBKEY_get0_param(nullptr, &pk, &pkLen, &alg, key) != 1)
        throw CryptoError("certificate has no public key");
    Domain d = decodeParameters(alg);
    Bignum y = decodeInteger(pk, std::size_t(pkLen), "public value");
    return KcdsaKey::fromPublic(d.p.get(), d.q.get(), d.g.get(), y.get());
}

KcdsaKey kcdsaKeyFromPrivateKeyInfo(const std::uint8_t* der, std::size_t len) {
    const unsigned char* p = der;
    PrivateKeyInfo info(
        der == nullptr ? nullptr : d2i_PKCS8_PRIV_KEY_INFO(nullptr, &p, long(len)));
    if (!info || p != der + len)
        throw CryptoError("private key is not a DER PKCS #8 PrivateKeyInfo");
    const unsigned char* pk = nullptr;
    int pkLen = 0;
    const X509_ALGOR* alg = nullptr;
    if (PKCS8_pkey_get0(nullptr, &pk, &pkLen, &alg, info.get()) != 1)
        throw CryptoError("private key is malformed");
    Domain d = decodeParameters(alg);
    Bignum x = decodeInteger(pk, std::size_t(pkLen), "private value");
    return KcdsaKey::fromPrivate(d.p.get(), d.q.get(), d.g.get(), x.get());
}

void setKcdsaPublicKeyInfo(X509_PUBKEY* target, const KcdsaKey& key) {
    std::vector<std::uint8_t> y = encodeInteger(key.y());
    ASN1_STRING* params = encodeParameters(key);
    unsigned char* yCopy = openSSLCopy(y.data(), y.size());
    if (X509_PUBKEY_set0_param(target, oid(kKcdsaOid).release(), V_ASN1_SEQUENCE, params, yCopy,
                               int(y.size())) != 1) {
        ASN1_STRING_free(params);
        OPENSSL_free(yCopy);
        throwOpenSSLError("cannot set the KCDSA public key");
    }
}

SecureBytes encodeKcdsaPrivateKeyInfo(const KcdsaKey& key) {
    if (!key.hasPrivate())
        throw CryptoError("KCDSA key has no private part");
    PrivateKeyInfo info(PKCS8_PRIV_KEY_INFO_new());
    if (!info)
        throwOpenSSLError("out of memory");
    std::vector<std::uint8_t> x = encodeInteger(key.x());
    ASN1_STRING* params = encodeParameters(key);
    unsigned char* xCopy = openSSLCopy(x.data(), x.size());
    OPENSSL_cleanse(x.data(), x.size());
    if (PKCS8_pkey_set0(info.get(), oid(kKcdsaOid).release(), 0, V_ASN1_SEQUENCE, params, xCopy,
                        int(x.size())) != 1) {
        ASN1_STRING_free(params);
        OPENSSL_clear_free(xCopy, x.size());
        throwOpenSSLError("cannot build the PKCS #8 key");
    }
    unsigned char* out = nullptr;
    int len = i2d_PKCS8_PRIV_KEY_INFO(info.get(), &out);
    if (len <= 0)
        throwOpenSSLError("cannot encode the PKCS #8 key");
    SecureBytes result(out, out + len);
    OPENSSL_clear_free(out, std::size_t(len));
    return result;
}

}  // namespace vqxml::korean
