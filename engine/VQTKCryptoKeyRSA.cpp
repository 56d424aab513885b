#include "engine/VQTKCryptoKeyRSA.hpp"

#include <array>
#include <initializer_list>
#include <utility>
#include <cstring>

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <xsec/enc/XSECCryptoException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xsec/dsig/DSIGConstants.hpp>

#include "engine/Base64.hpp"
#include "engine/CertificateEncoding.hpp"
#include "engine/CertificateNames.hpp"
#include "engine/KeyCache.hpp"
#include "engine/VQTKCryptoHash.hpp"
#include "engine/OpenSSLInput.hpp"
#include "engine/Pkcs1ImplicitRejection.hpp"
#include "engine/korean/SecureBytes.hpp"

namespace {

[[noreturn]] void fail(const char* why) {
    throw XSECCryptoException(XSECCryptoException::RSAError, why);
}

std::vector<unsigned char> publicParameter(EVP_PKEY* key, const char* name) {
    BIGNUM* raw = nullptr;
    const int got = EVP_PKEY_get_bn_param(key, name, &raw);
    const std::unique_ptr<BIGNUM, void (*)(BIGNUM*)> n(raw, &BN_free);  // also when got failed
    if (got != 1)
        fail("The RSA key has no public part");
    std::vector<unsigned char> out(static_cast<size_t>(BN_num_bytes(n.get())));
    BN_bn2bin(n.get(), out.data());
    return out;
}

// Parses without the cache; throws for bytes it cannot use.
vqxml::ParsedKeyPair parse(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen) {
    return vqxml::readKeyPair(cert, certLen, key, keyLen, EVP_PKEY_RSA, "RSA", XSECCryptoException::RSAError);
}

// Copies of a key's eight numbers (n, e, d, p, q and the CRT values), cleared and
// freed unless released to a key.
class Bignums {
public:
    explicit Bignums(const std::array<BIGNUM*, 8>& numbers) : m_numbers(numbers) {}
    ~Bignums() {
        for (BIGNUM* bn : m_numbers)
            BN_clear_free(bn);
    }
    Bignums(const Bignums&) = delete;
    Bignums& operator=(const Bignums&) = delete;
    size_t size() const { return m_numbers.size(); }
    BIGNUM* operator[](size_t i) const { return m_numbers[i]; }
    void release(size_t from, size_t to) {
        for (size_t i = from; i < to; ++i)
            m_numbers[i] = nullptr;
    }

private:
    std::array<BIGNUM*, 8> m_numbers;
};

// The digest a DigestMethod or MGF URI names: one of the bases, then the name.
const EVP_MD* digestNamed(const XMLCh* uri, std::initializer_list<const XMLCh*> bases) {
    static const std::pair<const XMLCh*, XSECCryptoHash::HashType> kNames[] = {
        {u"sha1", XSECCryptoHash::HASH_SHA1},     {u"sha224", XSECCryptoHash::HASH_SHA224},
        {u"sha256", XSECCryptoHash::HASH_SHA256}, {u"sha384", XSECCryptoHash::HASH_SHA384},
        {u"sha512", XSECCryptoHash::HASH_SHA512}};
    for (const XMLCh* base : bases) {
        const XMLSize_t n = XMLString::stringLen(base);
        if (uri == nullptr || XMLString::compareNString(uri, base, n) != 0)
            continue;
        for (const auto& [name, type] : kNames)
            if (XMLString::equals(uri + n, name))
                return VQTKCryptoHash::digestFor(type);
    }
    fail("OpenSSL:RSA - OAEP digest algorithm not supported");
}

void setOaep(EVP_PKEY_CTX* ctx, const XMLCh* hashURI, const XMLCh* mgfURI, const unsigned char* label,
             unsigned int labelLen) {
    if (EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_OAEP_PADDING) != 1 ||
        EVP_PKEY_CTX_set_rsa_oaep_md(ctx, digestNamed(hashURI, {DSIGConstants::s_unicodeStrURISIGBASE,
                                                                DSIGConstants::s_unicodeStrURISIGBASEMORE,
                                                                DSIGConstants::s_unicodeStrURIXENC})) != 1 ||
        EVP_PKEY_CTX_set_rsa_mgf1_md(ctx, digestNamed(mgfURI, {DSIGConstants::s_unicodeStrURIMGF1_BASE})) != 1)
        fail("OpenSSL:RSA - cannot set up OAEP");
    if (label == nullptr || labelLen == 0)
        return;
    void* copy = OPENSSL_memdup(label, labelLen);
    if (copy == nullptr || EVP_PKEY_CTX_set0_rsa_oaep_label(ctx, copy, static_cast<int>(labelLen)) != 1) {
        OPENSSL_free(copy);
        fail("OpenSSL:RSA - cannot set the OAEP parameters");
    }
}

}  // namespace

VQTKCryptoKeyRSA* VQTKCryptoKeyRSA::load(const unsigned char* cert, int certLen, const unsigned char* key,
                                         int keyLen) {
    // A public key alone is the shared certificate's: nothing more to keep.
    if (key == nullptr || keyLen <= 0) {
        vqxml::ParsedKeyPair pair = parse(cert, certLen, key, keyLen);
        return new VQTKCryptoKeyRSA(std::move(pair.key), std::move(pair.cert), KEY_RSA_PUBLIC);
    }
    vqxml::ParsedKeyPair pair =
        vqxml::cachedKeyPair(cert, certLen, key, keyLen, [&] { return parse(cert, certLen, key, keyLen); });
    return new VQTKCryptoKeyRSA(std::move(pair.key), std::move(pair.cert), KEY_RSA_PAIR);
}

// Signs with the shared key pair itself rather than the engine's copy of it, so
// that the key's prepared state (blinding, Montgomery contexts) is reused.
unsigned int VQTKCryptoKeyRSA::signSHA1PKCS1Base64Signature(unsigned char* hashBuf, unsigned int hashLen,
                                                            char* base64SignatureBuf,
                                                            unsigned int base64SignatureBufLen,
                                                            XSECCryptoHash::HashType type) const {
    std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(EVP_PKEY_CTX_new(m_pkey.get(), nullptr),
                                                                   &EVP_PKEY_CTX_free);
    std::vector<unsigned char> signature(static_cast<size_t>(EVP_PKEY_get_size(m_pkey.get())));
    size_t len = signature.size();
    if (!ctx || EVP_PKEY_sign_init(ctx.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) != 1 ||
        EVP_PKEY_CTX_set_signature_md(ctx.get(), VQTKCryptoHash::digestFor(type)) != 1 ||
        EVP_PKEY_sign(ctx.get(), signature.data(), &len, hashBuf, hashLen) != 1)
        fail("The RSA signature could not be made");
    signature.resize(len);
    const std::string text = vqxml::base64Text(signature);
    if (text.size() + 1 > base64SignatureBufLen)
        fail("The signature does not fit its buffer");
    std::memcpy(base64SignatureBuf, text.c_str(), text.size() + 1);
    return static_cast<unsigned int>(text.size());
}

// Decrypts with the shared key pair, like signing, so that its prepared state
// is reused: the engine's copy of the key starts afresh on every decryption.
unsigned int VQTKCryptoKeyRSA::privateDecrypt(const unsigned char* inBuf, unsigned char* plainBuf,
                                              unsigned int inLength, unsigned int maxOutLength, PaddingType padding,
                                              const XMLCh* hashURI, const XMLCh* mgfURI, unsigned char* params,
                                              unsigned int paramsLen) const {
    if (getKeyType() != KEY_RSA_PAIR || (padding != PAD_PKCS_1_5 && padding != PAD_OAEP))
        return OpenSSLCryptoKeyRSA::privateDecrypt(inBuf, plainBuf, inLength, maxOutLength, padding, hashURI, mgfURI,
                                                   params, paramsLen);
    std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(EVP_PKEY_CTX_new(m_pkey.get(), nullptr),
                                                                   &EVP_PKEY_CTX_free);
    if (!ctx || EVP_PKEY_decrypt_init(ctx.get()) != 1)
        fail("OpenSSL:RSA - cannot start decrypting");
    if (padding == PAD_OAEP)
        setOaep(ctx.get(), hashURI, mgfURI, params, paramsLen);
    else if (EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) != 1)
        fail("OpenSSL:RSA - cannot set up PKCS #1 v1.5");
    vqxml::korean::SecureBytes plain(static_cast<size_t>(EVP_PKEY_get_size(m_pkey.get())));
    size_t len = plain.size();
    if (EVP_PKEY_decrypt(ctx.get(), plain.data(), &len, inBuf, inLength) != 1)
        fail(padding == PAD_OAEP ? "OpenSSL:RSA privateKeyDecrypt - Error removing OAEPadding"
                                 : "OpenSSL:RSA privateKeyDecrypt - Error Decrypting PKCS1_5 padded RSA encrypt");
    if (len > maxOutLength)
        fail("OpenSSL:RSA - the decrypted key does not fit its buffer");
    std::memcpy(plainBuf, plain.data(), len);
    return static_cast<unsigned int>(len);
}

void VQTKCryptoKeyRSA::unwrapKeyImplicitly(const unsigned char* in, size_t inLen, unsigned char* out,
                                           size_t keyLen) const {
    if (getKeyType() != KEY_RSA_PAIR)
        fail("OpenSSL:RSA - no private key to unwrap with");
    vqxml::unwrapPkcs1Implicitly(m_pkey.get(), in, inLen, out, keyLen);
}

bool VQTKCryptoKeyRSA::hasRsaKey(const X509* cert) {
    const EVP_PKEY* key = cert != nullptr ? X509_get0_pubkey(cert) : nullptr;
    return key != nullptr && EVP_PKEY_get_base_id(key) == EVP_PKEY_RSA;
}

VQTKCryptoKeyRSA* VQTKCryptoKeyRSA::publicKeyOf(const X509* cert) {
    if (X509_up_ref(const_cast<X509*>(cert)) != 1)
        fail("OpenSSL:RSA - cannot hold the certificate");
    std::shared_ptr<X509> x509(const_cast<X509*>(cert), &X509_free);
    std::shared_ptr<EVP_PKEY> key(X509_get_pubkey(x509.get()), &EVP_PKEY_free);
    if (!key || EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA)
        fail("The key is not an RSA key");
    return new VQTKCryptoKeyRSA(std::move(key), std::move(x509), KEY_RSA_PUBLIC);
}

// The engine's constructor from an EVP_PKEY goes on with a null RSA object or
// missing numbers when OpenSSL runs out of memory, so the base is made empty and
// the engine's copy of the key (which its verification and decryption use) is
// filled in here with every step checked. A certificate that could not be
// encoded is refused too, rather than found out in the middle of an operation.
VQTKCryptoKeyRSA::VQTKCryptoKeyRSA(std::shared_ptr<EVP_PKEY> key, std::shared_ptr<X509> cert, KeyType expected)
    : OpenSSLCryptoKeyRSA(nullptr), m_pkey(std::move(key)), m_cert(std::move(cert)) {
    copyIntoEngineKey();
    if (getKeyType() != expected)
        fail("OpenSSL:RSA - cannot copy the key");
    if (m_cert) {
        m_certDER = vqxml::encodeCertificate(m_cert.get());
        if (m_certDER.empty())
            throw XSECCryptoException(XSECCryptoException::RSAError, "OpenSSL:RSA - cannot encode the certificate");
    }
}

// The engine keeps its key as a legacy RSA object, which only the deprecated calls reach.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
void VQTKCryptoKeyRSA::copyIntoEngineKey() {
    RSA* own = getOpenSSLRSA();
    const RSA* from = EVP_PKEY_get0_RSA(m_pkey.get());
    if (own == nullptr || from == nullptr)
        fail("OpenSSL:RSA - cannot allocate the key");
    const BIGNUM *n = nullptr, *e = nullptr, *d = nullptr, *p = nullptr, *q = nullptr;
    const BIGNUM *dmp1 = nullptr, *dmq1 = nullptr, *iqmp = nullptr;
    RSA_get0_key(from, &n, &e, &d);
    RSA_get0_factors(from, &p, &q);
    RSA_get0_crt_params(from, &dmp1, &dmq1, &iqmp);
    Bignums copies({BN_dup(n), BN_dup(e), BN_dup(d), BN_dup(p), BN_dup(q), BN_dup(dmp1), BN_dup(dmq1),
                    BN_dup(iqmp)});
    const BIGNUM* const originals[] = {n, e, d, p, q, dmp1, dmq1, iqmp};
    for (size_t i = 0; i < copies.size(); ++i)
        if ((originals[i] != nullptr) != (copies[i] != nullptr))
            fail("OpenSSL:RSA - cannot copy the key");
    // Each set0 takes its numbers only when it succeeds.
    if (n == nullptr || e == nullptr || RSA_set0_key(own, copies[0], copies[1], copies[2]) != 1)
        fail("OpenSSL:RSA - cannot copy the key");
    copies.release(0, 3);
    if (p != nullptr && q != nullptr && RSA_set0_factors(own, copies[3], copies[4]) == 1)
        copies.release(3, 5);
    if (dmp1 != nullptr && dmq1 != nullptr && iqmp != nullptr &&
        RSA_set0_crt_params(own, copies[5], copies[6], copies[7]) == 1)
        copies.release(5, 8);
}
#pragma GCC diagnostic pop

XSECCryptoKey* VQTKCryptoKeyRSA::clone() const {
    return new VQTKCryptoKeyRSA(m_pkey, m_cert, getKeyType());
}

std::string VQTKCryptoKeyRSA::subjectName() const {
    return m_cert ? vqxml::certificateSubject(m_cert.get()) : std::string();
}

std::string VQTKCryptoKeyRSA::issuerName() const {
    return m_cert ? vqxml::certificateIssuer(m_cert.get()) : std::string();
}

std::string VQTKCryptoKeyRSA::serialNumber() const {
    return m_cert ? vqxml::certificateSerialDecimal(m_cert.get()) : std::string();
}

std::vector<unsigned char> VQTKCryptoKeyRSA::modulus() const {
    return publicParameter(m_pkey.get(), OSSL_PKEY_PARAM_RSA_N);
}

std::vector<unsigned char> VQTKCryptoKeyRSA::exponent() const {
    return publicParameter(m_pkey.get(), OSSL_PKEY_PARAM_RSA_E);
}
