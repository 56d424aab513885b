// The KCDSA key object: a certificate whose SubjectPublicKeyInfo is KCDSA, an
// unencrypted DER PKCS #8 KCDSA private key, or both (which must then match).
// It serves as the signing key of DSIGSignature (setSigningKey) for the KCDSA
// signature methods, and tells the certificate's subject, issuer and serial.
//
// xml-security-c has no key type for KCDSA, so getKeyType() is KEY_NONE; the
// engine's KCDSA handler recognises the class itself. Failures raise
// XSECCryptoException: X509Error for a certificate that cannot be read, DSAError
// for a key that is not KCDSA, is inconsistent or does not match.
#ifndef VQXML_ENGINE_VQTKCRYPTOKEYKCDSA_HPP
#define VQXML_ENGINE_VQTKCRYPTOKEYKCDSA_HPP

#include <memory>

#include <xsec/enc/XSECCryptoKey.hpp>

#include "engine/VQTKCertificateInfo.hpp"
#include "engine/korean/Kcdsa.hpp"

class VQTKCryptoKeyKCDSA : public XSECCryptoKey, public VQTKCertificateInfo {
public:
    VQTKCryptoKeyKCDSA();
    ~VQTKCryptoKeyKCDSA() override;
    VQTKCryptoKeyKCDSA& operator=(const VQTKCryptoKeyKCDSA&) = delete;

    void loadCertificate(const unsigned char* der, int len);
    void loadPrivateKey(const unsigned char* der, int len);

    KeyType getKeyType() const override { return KEY_NONE; }
    const XMLCh* getProviderName() const override;
    XSECCryptoKey* clone() const override;

    bool hasPrivateKey() const;
    bool hasPublicKey() const;
    // The key for signing (private part required) or for verification (the
    // certificate's key, else the public half of the private key); raise
    // XSECCryptoException if missing.
    const vqxml::korean::KcdsaKey& signingKey() const;
    const vqxml::korean::KcdsaKey& verificationKey() const;

private:
    VQTKCryptoKeyKCDSA(const VQTKCryptoKeyKCDSA& other);

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
