#include "engine/VQTKCryptoKeyRSA.hpp"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/core_names.h>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/CertificateNames.hpp"
#include "engine/OpenSSLInput.hpp"

namespace {

[[noreturn]] void fail(const char* why) {
    throw XSECCryptoException(XSECCryptoException::RSAError, why);
}

std::vector<unsigned char> publicParameter(EVP_PKEY* key, const char* name) {
    BIGNUM* n = nullptr;
    if (EVP_PKEY_get_bn_param(key, name, &n) != 1)
        fail("The RSA key has no public part");
    std::vector<unsigned char> out(static_cast<size_t>(BN_num_bytes(n)));
    BN_bn2bin(n, out.data());
    BN_free(n);
    return out;
}

}  // namespace

VQTKCryptoKeyRSA* VQTKCryptoKeyRSA::load(const unsigned char* cert, int certLen, const unsigned char* key,
                                         int keyLen) {
    std::shared_ptr<X509> x509;
    if (cert != nullptr && certLen > 0) {
        x509 = vqxml::readCertificate(cert, certLen);
        if (!x509)
            fail("The certificate is neither DER nor PEM X.509");
    }
    vqxml::PKeyPtr pkey;
    if (key != nullptr && keyLen > 0) {
        pkey = vqxml::readPrivateKey(key, keyLen);
        if (!pkey)
            fail("The private key is neither an unencrypted PKCS#8 nor a PKCS#1 RSA key (DER or PEM)");
        if (x509 && X509_check_private_key(x509.get(), pkey.get()) != 1)
            fail("The private key does not belong to the certificate");
    } else if (x509) {
        pkey.reset(X509_get_pubkey(x509.get()));
    }
    if (!pkey || EVP_PKEY_get_base_id(pkey.get()) != EVP_PKEY_RSA)
        fail("The key is not an RSA key");
    return new VQTKCryptoKeyRSA(std::shared_ptr<EVP_PKEY>(pkey.release(), &EVP_PKEY_free), std::move(x509));
}

VQTKCryptoKeyRSA::VQTKCryptoKeyRSA(std::shared_ptr<EVP_PKEY> key, std::shared_ptr<X509> cert)
    : OpenSSLCryptoKeyRSA(key.get()), m_pkey(std::move(key)), m_cert(std::move(cert)) {
    if (m_cert) {
        unsigned char* der = nullptr;
        int len = i2d_X509(m_cert.get(), &der);
        if (len > 0)
            m_certDER.assign(der, der + len);
        OPENSSL_free(der);
    }
}

XSECCryptoKey* VQTKCryptoKeyRSA::clone() const {
    return new VQTKCryptoKeyRSA(m_pkey, m_cert);
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
