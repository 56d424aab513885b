#include "engine/VQTKCertificateInfo.hpp"

#include <exception>

#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/CertificateNames.hpp"

VQTKCertificateInfo::VQTKCertificateInfo(const VQTKCertificateInfo& other)
    : m_subject(other.m_subject), m_issuer(other.m_issuer), m_serial(other.m_serial) {
    if (other.m_cert != nullptr && X509_up_ref(other.m_cert.get()) == 1)
        m_cert.reset(other.m_cert.get());
}

const char* VQTKCertificateInfo::getSubjectName() const {
    return m_cert ? m_subject.c_str() : nullptr;
}

const char* VQTKCertificateInfo::getIssuerName() const {
    return m_cert ? m_issuer.c_str() : nullptr;
}

const char* VQTKCertificateInfo::getSerialNumber() const {
    return m_cert ? m_serial.c_str() : nullptr;
}

VQTKCertificateInfo::X509Ptr VQTKCertificateInfo::parseCertificateDER(const unsigned char* der,
                                                                      int len) {
    if (der == nullptr || len <= 0)
        throw XSECCryptoException(XSECCryptoException::X509Error, "no certificate bytes given");
    const unsigned char* p = der;
    X509Ptr cert(d2i_X509(nullptr, &p, len));
    if (!cert || p != der + len)
        throw XSECCryptoException(XSECCryptoException::X509Error, "certificate is not valid DER");
    return cert;
}

void VQTKCertificateInfo::setCertificate(X509Ptr cert) {
    try {
        std::string subject = vqxml::certificateSubject(cert.get());
        std::string issuer = vqxml::certificateIssuer(cert.get());
        std::string serial = vqxml::certificateSerialDecimal(cert.get());
        m_subject.swap(subject);
        m_issuer.swap(issuer);
        m_serial.swap(serial);
    } catch (const std::exception& e) {
        throw XSECCryptoException(XSECCryptoException::X509Error, e.what());
    }
    m_cert = std::move(cert);
}
