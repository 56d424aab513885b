// The signer's key and the KeyInfo that describes it.
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/enc/XSECCryptoKeyHMAC.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/ErrorFrame.hpp"
#include "core/Transcode.hpp"
#include "engine/Base64.hpp"
#include "engine/CertificateAppending.hpp"
#include "engine/ParkedObjects.hpp"
#include "engine/SignerKeys.hpp"
#include "engine/VQTKCryptoKeyKCDSA.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"

XSECCryptoKeyHMAC* VQXML_XMLSecurity::createHMACKey(unsigned char* key, unsigned int len) {
    std::unique_ptr<XSECCryptoKeyHMAC> hmac(XSECPlatformUtils::g_cryptoProvider->keyHMAC());
    hmac->setKey(key, len);
    return hmac.release();
}

// The four token values are accepted and not used: keys are always given as bytes.
VQTKCryptoKeyRSA* VQXML_XMLSecurity::createRSAKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen,
                                                  char* /*token1*/, char* /*token2*/, void* /*token3*/,
                                                  void* /*token4*/) {
    return VQTKCryptoKeyRSA::load(cert, certLen, key, keyLen);
}

// The signature owns the key; the context keeps a view of it for signing and
// for checking the SignedInfo.
void VQXML_XMLSecurity::setSigningKey(XSECCryptoKey* key) {
    m_signature->setSigningKey(key);
    m_signingKey = key;
}

VQTKCryptoKeyKCDSA* VQXML_XMLSecurity::createKCDSAKey(unsigned char* cert, int certLen, unsigned char* key,
                                                      int keyLen) {
    return vqxml::createKCDSAKey(cert, certLen, key, keyLen);
}

// The four token values are accepted and not used, as by createRSAKey.
int VQXML_XMLSecurity::XMLDSIG_setSignCertAndKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen,
                                                 char*, char*, void*, void*) {
    return vqxml::guarded(*this, "XMLDSIG_setSignCertAndKey > ", [&] {
        requireSignature();
        const bool haveCert = cert != nullptr && certLen > 0;
        const bool haveKey = key != nullptr && keyLen > 0;
        if (!haveCert && !haveKey)
            throw VQXML_XSECException(VQXML_ERR_DSIG_NO_KEY);
        requireTemplate(VQXML_ERR_DSIG_NOT_ASYMMETRIC);
        DSIGKeyInfoX509* x509 = m_signature->appendX509Data();
        const auto take = [&](auto* signer) {
            setSigningKey(signer);
            if constexpr (std::is_same_v<decltype(signer), VQTKCryptoKeyRSA*>) {
                if (m_appendKeyValue)
                    m_signature->appendRSAKeyValue(vqxml::base64Encode(signer->modulus()).c_str(),
                                                   vqxml::base64Encode(signer->exponent()).c_str());
            }
            describeSigner(x509, *signer, cert != nullptr);
        };
        if (!vqxml::withSignerKey(m_signatureMethod, cert, certLen, key, keyLen, take))
            throw VQXML_XSECException(VQXML_ERR_DSIG_NOT_ASYMMETRIC);
    });
}

// X509SubjectName and X509IssuerSerial when asked for, then the certificate when
// the caller gave one.
template <class Key>
void VQXML_XMLSecurity::describeSigner(DSIGKeyInfoX509* x509, const Key& key, bool withCertificate) {
    writeX509Names(x509, key.subjectName(), key.issuerName(), key.serialNumber());
    if (withCertificate) {
        vqxml::appendX509Certificate(*x509, key.certificateDER(), [this] {
            vqxml::park(m_signature);
            m_signature = nullptr;
            m_signingKey = nullptr;
            m_signatureElement = nullptr;
        });
    }
}

void VQXML_XMLSecurity::writeX509Names(DSIGKeyInfoX509* x509, const std::string& subject, const std::string& issuer,
                                       const std::string& serial) {
    const std::string encoding = vqxml::declaredEncoding(m_document);
    if (m_appendSubjectName)
        x509->setX509SubjectName(vqxml::XMLT(encoding.c_str(), subject.c_str()).c_str());
    if (m_appendIssuerSerial) {
        x509->setX509IssuerSerial(vqxml::XMLT(encoding.c_str(), issuer.c_str()).c_str(),
                                  vqxml::XMLT(encoding.c_str(), serial.c_str()).c_str());
    }
}

int VQXML_XMLSecurity::XMLDSIG_setHMACKey(unsigned char* key, unsigned int len) {
    return vqxml::guarded(*this, "XMLDSIG_setHMACKey > ", [&] {
        requireSignature();
        if (key == nullptr || key[0] == 0 || m_signatureMethod != 2)
            throw VQXML_XSECException(VQXML_ERR_DSIG_HMAC_KEY);
        requireTemplate(VQXML_ERR_DSIG_HMAC_KEY);
        setSigningKey(createHMACKey(key, len));
    });
}
