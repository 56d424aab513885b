// Makes a KCDSA key pair on given domain parameters and a certificate for it
// signed by an RSA test CA, for the test PKI (see generate.sh).
//
//   vqxml_testpki_kcdsa PARAMS.pem CA.crt.pem CA.key.pem SUBJECT SERIAL DAYS PASSWORD OUT
//
// PARAMS.pem holds DSA-style domain parameters (p, q, g) as openssl genpkey
// -genparam writes them; SUBJECT is "/C=KR/O=.../CN=..." in UTF-8. Writes
// OUT.crt.der, OUT.crt.pem, OUT.key.der (PKCS #8 PrivateKeyInfo) and
// OUT.key.enc.der (PKCS #8 encrypted with PBES2, PBKDF2 and SEED-CBC under
// PASSWORD).
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/rand.h>
#include <openssl/sha.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include "engine/VQTKCryptoProvider.hpp"
#include "engine/korean/OpenSSLProviders.hpp"
#include "engine/korean/Kcdsa.hpp"
#include "engine/korean/KcdsaEncoding.hpp"
#include "engine/korean/OpenSSLPtr.hpp"

using vqxml::korean::Bignum;
using vqxml::korean::KcdsaKey;

namespace {

[[noreturn]] void fail(const std::string& what) {
    std::cerr << "vqxml_testpki_kcdsa: " << what << "\n";
    std::exit(1);
}

using vqxml::korean::OpenSSLPtr;
using Pkey = OpenSSLPtr<EVP_PKEY, EVP_PKEY_free>;
using Cert = OpenSSLPtr<X509, X509_free>;
using Bio = OpenSSLPtr<BIO, BIO_free_all>;

Bio openFile(const std::string& path) {
    Bio bio(BIO_new_file(path.c_str(), "r"));
    if (!bio)
        fail("cannot open " + path);
    return bio;
}

Bignum parameter(const EVP_PKEY* params, const char* name) {
    BIGNUM* bn = nullptr;
    if (EVP_PKEY_get_bn_param(params, name, &bn) != 1)
        fail(std::string("parameters lack ") + name);
    return Bignum(bn);
}

KcdsaKey makeKey(const std::string& paramsPath) {
    Pkey params(PEM_read_bio_Parameters(openFile(paramsPath).get(), nullptr));
    if (!params)
        fail("cannot read domain parameters from " + paramsPath);
    Bignum p = parameter(params.get(), OSSL_PKEY_PARAM_FFC_P);
    Bignum q = parameter(params.get(), OSSL_PKEY_PARAM_FFC_Q);
    Bignum g = parameter(params.get(), OSSL_PKEY_PARAM_FFC_G);
    Bignum x(BN_new());
    do {
        if (!x || BN_priv_rand_range(x.get(), q.get()) != 1)
            fail("cannot draw a private key");
    } while (BN_is_zero(x.get()));
    return KcdsaKey::fromPrivate(p.get(), q.get(), g.get(), x.get());
}

X509_NAME* parseSubject(const std::string& subject) {
    X509_NAME* name = X509_NAME_new();
    std::size_t pos = 0;
    while (pos < subject.size()) {
        if (subject[pos] != '/')
            fail("subject must look like /C=KR/O=.../CN=...");
        std::size_t end = subject.find('/', pos + 1);
        std::string part = subject.substr(pos + 1, end == std::string::npos ? std::string::npos : end - pos - 1);
        std::size_t eq = part.find('=');
        if (eq == std::string::npos ||
            X509_NAME_add_entry_by_txt(name, part.substr(0, eq).c_str(), MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(part.c_str() + eq + 1), -1,
                                       -1, 0) != 1)
            fail("bad subject part: " + part);
        pos = end == std::string::npos ? subject.size() : end;
    }
    return name;
}

void addExtension(X509* cert, X509V3_CTX* ctx, const char* name, const char* value) {
    X509_EXTENSION* ext = X509V3_EXT_conf(nullptr, ctx, name, value);
    if (ext == nullptr || X509_add_ext(cert, ext, -1) != 1)
        fail(std::string("cannot add extension ") + name);
    X509_EXTENSION_free(ext);
}

Cert makeCertificate(const KcdsaKey& key, X509* ca, EVP_PKEY* caKey, const std::string& subject,
                     const std::string& serial, long days) {
    Cert cert(X509_new());
    BIGNUM* serialBn = nullptr;
    if (!cert || X509_set_version(cert.get(), X509_VERSION_3) != 1 || BN_dec2bn(&serialBn, serial.c_str()) == 0)
        fail("cannot start the certificate");
    BN_to_ASN1_INTEGER(serialBn, X509_get_serialNumber(cert.get()));
    BN_free(serialBn);
    X509_NAME* name = parseSubject(subject);
    X509_set_subject_name(cert.get(), name);
    X509_NAME_free(name);
    X509_set_issuer_name(cert.get(), X509_get_subject_name(ca));
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), days * 24 * 3600);
    vqxml::korean::setKcdsaPublicKeyInfo(X509_get_X509_PUBKEY(cert.get()), key);

    X509V3_CTX ctx;
    X509V3_set_ctx(&ctx, ca, cert.get(), nullptr, nullptr, 0);
    addExtension(cert.get(), &ctx, "basicConstraints", "critical,CA:FALSE");
    addExtension(cert.get(), &ctx, "keyUsage", "critical,digitalSignature,nonRepudiation");
    addExtension(cert.get(), &ctx, "subjectKeyIdentifier", "hash");
    addExtension(cert.get(), &ctx, "authorityKeyIdentifier", "keyid");
    if (X509_sign(cert.get(), caKey, EVP_sha256()) <= 0)
        fail("cannot sign the certificate");
    return cert;
}

void writeFile(const std::string& path, const unsigned char* data, std::size_t len) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(data), std::streamsize(len));
    if (!out)
        fail("cannot write " + path);
}

template <class T, int (*I2d)(const T*, unsigned char**)>
void writeDer(const std::string& path, const T* object) {
    unsigned char* der = nullptr;
    int len = I2d(object, &der);
    if (len <= 0)
        fail("cannot encode " + path);
    writeFile(path, der, std::size_t(len));
    OPENSSL_free(der);
}

const char kRandomNumOid[] = "1.2.410.200004.10.1.1.3";
const char kSeedWithSha1Oid[] = "1.2.410.200004.1.15";
constexpr int kNpkiIterations = 2048;

// The PrivateKeyInfo with the identity-verification random as an attribute.
vqxml::korean::SecureBytes withRandomNum(const vqxml::korean::SecureBytes& info,
                                         const std::vector<unsigned char>& random) {
    const unsigned char* p = info.data();
    OpenSSLPtr<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free> p8(
        d2i_PKCS8_PRIV_KEY_INFO(nullptr, &p, long(info.size())));
    OpenSSLPtr<ASN1_BIT_STRING, ASN1_BIT_STRING_free> bits(ASN1_BIT_STRING_new());
    OpenSSLPtr<ASN1_OBJECT, ASN1_OBJECT_free> oid(OBJ_txt2obj(kRandomNumOid, 1));
    // All bits used, trailing zero bits included.
    if (!p8 || !bits || !oid || ASN1_BIT_STRING_set(bits.get(), const_cast<unsigned char*>(random.data()),
                                                    int(random.size())) != 1)
        fail("cannot build the random attribute");
    bits->flags = ASN1_STRING_FLAG_BITS_LEFT;
    X509_ATTRIBUTE* attr = X509_ATTRIBUTE_create_by_OBJ(nullptr, oid.get(), V_ASN1_BIT_STRING, bits.get(), -1);
    if (attr == nullptr || PKCS8_pkey_add1_attr(p8.get(), attr) != 1)
        fail("cannot add the random attribute");
    X509_ATTRIBUTE_free(attr);
    unsigned char* der = nullptr;
    int len = i2d_PKCS8_PRIV_KEY_INFO(p8.get(), &der);
    if (len <= 0)
        fail("cannot encode the key with its random");
    vqxml::korean::SecureBytes out(der, der + len);
    OPENSSL_clear_free(der, std::size_t(len));
    return out;
}

// PBKDF1-SHA1: T1 = SHA1(password || salt), then SHA1 again until `iterations`
// hashes are done; key = DK[0..15], IV = SHA1(DK[16..19])[0..15].
void npkiKeyAndIv(const std::string& password, const unsigned char* salt, std::size_t saltLen,
                  unsigned char key[16], unsigned char iv[16]) {
    unsigned char dk[20];
    std::vector<unsigned char> first(password.begin(), password.end());
    first.insert(first.end(), salt, salt + saltLen);
    SHA1(first.data(), first.size(), dk);
    for (int i = 1; i < kNpkiIterations; ++i)
        SHA1(dk, sizeof dk, dk);
    unsigned char ivHash[20];
    SHA1(dk + 16, 4, ivHash);
    std::memcpy(key, dk, 16);
    std::memcpy(iv, ivHash, 16);
    OPENSSL_cleanse(dk, sizeof dk);
}

void writeNpkiKey(const std::string& path, const vqxml::korean::SecureBytes& info, const std::string& password) {
    unsigned char salt[8], key[16], iv[16];
    if (RAND_bytes(salt, sizeof salt) != 1)
        fail("cannot draw a salt");
    npkiKeyAndIv(password, salt, sizeof salt, key, iv);
    std::vector<unsigned char> cipherText(info.size() + 16);
    int len = 0, tail = 0;
    EVP_CIPHER* seed = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    bool ok = seed && ctx && EVP_EncryptInit_ex2(ctx, seed, key, iv, nullptr) == 1 &&
              EVP_EncryptUpdate(ctx, cipherText.data(), &len, info.data(), int(info.size())) == 1 &&
              EVP_EncryptFinal_ex(ctx, cipherText.data() + len, &tail) == 1;
    EVP_CIPHER_CTX_free(ctx);
    EVP_CIPHER_free(seed);
    OPENSSL_cleanse(key, sizeof key);
    if (!ok)
        fail("cannot encrypt the NPKI key");

    // EncryptedPrivateKeyInfo { { 1.2.410.200004.1.15, SEQUENCE { salt, iterations } }, data }
    OpenSSLPtr<ASN1_OCTET_STRING, ASN1_OCTET_STRING_free> saltString(ASN1_OCTET_STRING_new());
    OpenSSLPtr<ASN1_INTEGER, ASN1_INTEGER_free> count(ASN1_INTEGER_new());
    ASN1_OCTET_STRING_set(saltString.get(), salt, sizeof salt);
    ASN1_INTEGER_set(count.get(), kNpkiIterations);
    unsigned char* saltDer = nullptr;
    unsigned char* countDer = nullptr;
    int saltLen = i2d_ASN1_OCTET_STRING(saltString.get(), &saltDer);
    int countLen = i2d_ASN1_INTEGER(count.get(), &countDer);
    std::vector<unsigned char> params = {0x30, std::uint8_t(saltLen + countLen)};
    params.insert(params.end(), saltDer, saltDer + saltLen);
    params.insert(params.end(), countDer, countDer + countLen);
    OPENSSL_free(saltDer);
    OPENSSL_free(countDer);
    ASN1_STRING* paramString = ASN1_STRING_new();
    ASN1_STRING_set(paramString, params.data(), int(params.size()));

    OpenSSLPtr<X509_SIG, X509_SIG_free> encrypted(X509_SIG_new());
    X509_ALGOR* alg = nullptr;
    ASN1_OCTET_STRING* data = nullptr;
    X509_SIG_getm(encrypted.get(), &alg, &data);
    if (X509_ALGOR_set0(alg, OBJ_txt2obj(kSeedWithSha1Oid, 1), V_ASN1_SEQUENCE, paramString) != 1 ||
        ASN1_OCTET_STRING_set(data, cipherText.data(), len + tail) != 1)
        fail("cannot build the NPKI key");
    writeDer<X509_SIG, i2d_X509_SIG>(path, encrypted.get());
}

void writeEncryptedKey(const std::string& path, const vqxml::korean::SecureBytes& info,
                       const std::string& password) {
    const unsigned char* p = info.data();
    OpenSSLPtr<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free> p8(
        d2i_PKCS8_PRIV_KEY_INFO(nullptr, &p, long(info.size())));
    EVP_CIPHER* seed = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    X509_SIG* encrypted = p8 && seed ? PKCS8_encrypt(-1, seed, password.c_str(), int(password.size()), nullptr,
                                                     0, 2048, p8.get())
                                     : nullptr;
    EVP_CIPHER_free(seed);
    if (encrypted == nullptr)
        fail("cannot encrypt the private key");
    writeDer<X509_SIG, i2d_X509_SIG>(path, encrypted);
    X509_SIG_free(encrypted);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 9) {
        std::cerr << "usage: vqxml_testpki_kcdsa PARAMS.pem CA.crt.pem CA.key.pem SUBJECT SERIAL DAYS "
                     "PASSWORD OUT\n";
        return 2;
    }
    vqxml::loadOpenSSLProviders();
    const std::string out = argv[8];
    try {
        KcdsaKey key = makeKey(argv[1]);
        Cert ca(PEM_read_bio_X509(openFile(argv[2]).get(), nullptr, nullptr, nullptr));
        Pkey caKey(PEM_read_bio_PrivateKey(openFile(argv[3]).get(), nullptr, nullptr, nullptr));
        if (!ca || !caKey)
            fail("cannot read the CA certificate or key");
        Cert cert = makeCertificate(key, ca.get(), caKey.get(), argv[4], argv[5], std::stol(argv[6]));

        writeDer<X509, i2d_X509>(out + ".crt.der", cert.get());
        Bio pem(BIO_new_file((out + ".crt.pem").c_str(), "w"));
        if (!pem || PEM_write_bio_X509(pem.get(), cert.get()) != 1)
            fail("cannot write " + out + ".crt.pem");
        vqxml::korean::SecureBytes info = vqxml::korean::encodeKcdsaPrivateKeyInfo(key);
        writeFile(out + ".key.der", info.data(), info.size());
        writeEncryptedKey(out + ".key.enc.der", info, argv[7]);
        std::vector<unsigned char> random(20);
        if (RAND_bytes(random.data(), int(random.size())) != 1)
            fail("cannot draw the identity-verification random");
        writeNpkiKey(out + ".signPri.key", withRandomNum(info, random), argv[7]);
        std::ofstream hex(out + ".random.hex");
        for (unsigned char b : random)
            hex << "0123456789abcdef"[b >> 4] << "0123456789abcdef"[b & 15];
        hex << "\n";
    } catch (const std::exception& e) {
        fail(e.what());
    }
    return 0;
}
