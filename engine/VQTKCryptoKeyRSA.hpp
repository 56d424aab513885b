// The RSA key object: a key of the engine's OpenSSL provider that also carries the
// signer's certificate.
//
// Certificates are DER or PEM X.509. Private keys are an unencrypted PKCS#8
// PrivateKeyInfo or a PKCS#1 RSAPrivateKey, DER or PEM. When both are given they
// must belong together. Parsed key pairs are kept in the key cache (KeyCache.hpp).
#ifndef VQXML_ENGINE_VQTKCRYPTOKEYRSA_HPP
#define VQXML_ENGINE_VQTKCRYPTOKEYRSA_HPP

#include <memory>
#include <string>
#include <vector>

#include <openssl/x509.h>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyRSA.hpp>

class VQTKCryptoKeyRSA : public OpenSSLCryptoKeyRSA {
public:
    // Either argument may be absent (null or length below 1): a certificate alone
    // gives a public key, a private key alone a key without names. Throws
    // XSECCryptoException for bytes it cannot use.
    static VQTKCryptoKeyRSA* load(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen);

    // Whether cert (may be null) holds an RSA key OpenSSL can read, and that key.
    static bool hasRsaKey(const X509* cert);
    static VQTKCryptoKeyRSA* publicKeyOf(const X509* cert);

    XSECCryptoKey* clone() const override;
    unsigned int signSHA1PKCS1Base64Signature(unsigned char* hashBuf, unsigned int hashLen, char* base64SignatureBuf,
                                              unsigned int base64SignatureBufLen,
                                              XSECCryptoHash::HashType type) const override;
    unsigned int privateDecrypt(const unsigned char* inBuf, unsigned char* plainBuf, unsigned int inLength,
                                unsigned int maxOutLength, PaddingType padding, const XMLCh* hashURI = nullptr,
                                const XMLCh* mgfURI = nullptr, unsigned char* params = nullptr,
                                unsigned int paramsLen = 0) const override;

    // The keyLen-byte key that in wraps by RSA PKCS #1 v1.5, or, when it does
    // not, the key derived in its place (Pkcs1ImplicitRejection.hpp).
    void unwrapKeyImplicitly(const unsigned char* in, size_t inLen, unsigned char* out, size_t keyLen) const;

    bool hasCertificate() const { return m_cert != nullptr; }
    // The certificate's DER bytes (empty without a certificate).
    const std::vector<unsigned char>& certificateDER() const { return m_certDER; }
    std::string subjectName() const;
    std::string issuerName() const;
    std::string serialNumber() const;
    // Big-endian bytes of the public modulus and exponent.
    std::vector<unsigned char> modulus() const;
    std::vector<unsigned char> exponent() const;

private:
    VQTKCryptoKeyRSA(std::shared_ptr<EVP_PKEY> key, std::shared_ptr<X509> cert, KeyType expected);
    void copyIntoEngineKey();

    std::shared_ptr<EVP_PKEY> m_pkey;
    std::shared_ptr<X509> m_cert;
    std::vector<unsigned char> m_certDER;
};

#endif
