// The crypto provider's certificate object.
//
// The engine decodes every X509Certificate it meets in a KeyInfo, and with
// OpenSSL 3 decoding the public key inside a certificate costs more than
// verifying an RSA signature. Receivers see the same few signer certificates
// again and again, so decoded certificates are kept process-wide by their DER
// bytes (the same bytes are the same certificate) and shared read-only.
#ifndef VQXML_ENGINE_VQTKCRYPTOX509_HPP
#define VQXML_ENGINE_VQTKCRYPTOX509_HPP

#include <cstddef>
#include <memory>

#include <openssl/x509.h>
#include <xsec/enc/XSECCryptoX509.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

class VQTKCryptoX509 : public XSECCryptoX509 {
public:
    XSECCryptoKey::KeyType getPublicKeyType() const override;
    // An engine key for RSA, DSA and EC certificates; null for any other key
    // (KCDSA keys are made by the library from the certificate's bytes).
    XSECCryptoKey* clonePublicKey() const override;
    const XMLCh* getProviderName() const override;
    // Throws XSECCryptoException when the text is not base64 of a certificate.
    void loadX509Base64Bin(const char* buf, unsigned int len) override;
    // The base64 text as loaded, as the engine's own certificate object keeps it.
    safeBuffer& getDEREncodingSB() override { return m_base64; }
    const safeBuffer& getDEREncodingSB() const override { return m_base64; }

    const X509* certificate() const { return m_cert.get(); }

private:
    std::shared_ptr<X509> m_cert;
    safeBuffer m_base64;
};

namespace vqxml {

// The OpenSSL certificate behind any provider's certificate object the library
// meets (ours, or the engine's own OpenSSL one); null when there is none.
const X509* opensslCertificate(const XSECCryptoX509* cert);

// The certificate of these DER bytes, decoded once and shared with every other
// holder of the same bytes; throws XSECCryptoException when they are not one.
std::shared_ptr<X509> sharedCertificate(const unsigned char* der, std::size_t len);

// Forgets the decoded certificates; done when the last handle stops the engines.
void clearCertificateCache();

}  // namespace vqxml

#endif
