// The KCDSA key object: a certificate whose SubjectPublicKeyInfo is KCDSA, an
// unencrypted PKCS #8 KCDSA private key, or both (which must then match); each
// DER or PEM. It serves as the signing key of DSIGSignature (setSigningKey) for
// the KCDSA signature methods, and tells the certificate's names and serial the
// way the RSA key object does (CertificateNames.hpp).
//
// xml-security-c has no key type for KCDSA, so getKeyType() is KEY_NONE; the
// engine's KCDSA handler recognises the class itself. Failures raise
// XSECCryptoException: X509Error for a certificate that cannot be read, DSAError
// for a key that is not KCDSA, is inconsistent or does not match.
#ifndef VQXML_ENGINE_VQTKCRYPTOKEYKCDSA_HPP
#define VQXML_ENGINE_VQTKCRYPTOKEYKCDSA_HPP

#include <memory>
#include <string>
#include <vector>

#include <openssl/x509.h>
#include <xsec/enc/XSECCryptoKey.hpp>

#include "engine/korean/Kcdsa.hpp"

class VQTKCryptoKeyKCDSA : public XSECCryptoKey {
public:
    VQTKCryptoKeyKCDSA();
    ~VQTKCryptoKeyKCDSA() override;
    VQTKCryptoKeyKCDSA& operator=(const VQTKCryptoKeyKCDSA&) = delete;

    // Each keeps the key object as it was when it raises.
    void loadCertificate(const unsigned char* bytes, int len);
    void loadPrivateKey(const unsigned char* bytes, int len);

    KeyType getKeyType() const override { return KEY_NONE; }
    const XMLCh* getProviderName() const override;
    XSECCryptoKey* clone() const override;

    bool hasCertificate() const { return m_cert != nullptr; }
    // The certificate's DER bytes (empty without a certificate).
    const std::vector<unsigned char>& certificateDER() const { return m_certDER; }
    // Empty without a certificate.
    std::string subjectName() const;
    std::string issuerName() const;
    std::string serialNumber() const;

    bool hasPrivateKey() const { return m_privateKey != nullptr; }
    bool hasPublicKey() const { return m_certificateKey != nullptr || m_privateKey != nullptr; }
    // The key for signing (private part required) or for verification (the
    // certificate's key, else the public half of the private key); raise
    // XSECCryptoException if missing.
    const vqxml::korean::KcdsaKey& signingKey() const;
    const vqxml::korean::KcdsaKey& verificationKey() const;

private:
    VQTKCryptoKeyKCDSA(const VQTKCryptoKeyKCDSA& other);

    std::shared_ptr<X509> m_cert;
    std::vector<unsigned char> m_certDER;
    std::unique_ptr<vqxml::korean::KcdsaKey> m_certificateKey;
    std::unique_ptr<vqxml::korean::KcdsaKey> m_privateKey;
};

namespace vqxml {

// Makes a KCDSA key object and loads the certificate if cert is non-null and
// certLen at least 1, and the private key under the same conditions; either
// may be absent (a certificate alone gives a verification key). The caller
// owns the result.
VQTKCryptoKeyKCDSA* createKCDSAKey(const unsigned char* cert, int certLen, const unsigned char* key,
                                   int keyLen);

}  // namespace vqxml

#endif
