// What a key object built from a certificate tells about that certificate:
// subject, issuer and serial number (in the forms of CertificateNames.hpp) and
// the certificate itself. The KCDSA key object has it, and so should the RSA one.
#ifndef VQXML_ENGINE_VQTKCERTIFICATEINFO_HPP
#define VQXML_ENGINE_VQTKCERTIFICATEINFO_HPP

#include <memory>
#include <string>

#include <openssl/x509.h>

#include "engine/korean/OpenSSLPtr.hpp"

class VQTKCertificateInfo {
public:
    // Each null while no certificate is loaded; valid as long as the key object
    // lives and until the next certificate is loaded.
    const char* getSubjectName() const;
    const char* getIssuerName() const;
    const char* getSerialNumber() const;
    const X509* getCertificate() const { return m_cert.get(); }

protected:
    VQTKCertificateInfo() = default;
    VQTKCertificateInfo(const VQTKCertificateInfo& other);
    VQTKCertificateInfo& operator=(const VQTKCertificateInfo&) = delete;
    ~VQTKCertificateInfo() = default;

    using X509Ptr = vqxml::korean::OpenSSLPtr<X509, X509_free>;

    // Parses a DER certificate filling exactly len bytes; raises
    // XSECCryptoException (X509Error) if it cannot.
    static X509Ptr parseCertificateDER(const unsigned char* der, int len);
    // Makes cert the loaded certificate and reads its names; raises
    // XSECCryptoException (X509Error) and keeps the previous one if it cannot.
    void setCertificate(X509Ptr cert);

private:
    X509Ptr m_cert;
    std::string m_subject, m_issuer, m_serial;
};

#endif
