// The one reader of key information: signer and recipient data out of a parsed
// ds:KeyInfo whose items agree (dsig/KeyBinding.hpp); verification takes its
// key from the same agreement.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/dsig/DSIGKeyInfoName.hpp>
#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ErrorFrame.hpp"
#include "core/Transcode.hpp"
#include "dsig/KeyBinding.hpp"
#include "engine/CertificateEncoding.hpp"
#include "engine/VQTKCryptoX509.hpp"
#include "soapsec/wssec/VQXML_WSSecSecurity.hpp"
#include "engine/wssec/WssNames.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

using vqxml::opensslCertificate;

template <class T>
void freeAndClear(T*& buffer) {
    std::free(buffer);
    buffer = nullptr;
}

void replaceText(char*& field, const XMLCh* text, const char* encoding) {
    freeAndClear(field);
    field = vqxml::transcodeOut(text, encoding);
}

// The engine parses a wsse:SecurityTokenReference as an extension item; it is
// read through the WS-Security engine's token reference.
void readTokenReference(VQXML_XMLSecurity& ctx, DSIGKeyInfo* item) {
    DOMNode* node = item->getKeyInfoDOMNode();
    if (!vqxml::wss::isElement(node, vqxml::wss::kWsse, u"SecurityTokenReference"))
        return;
    VQXML_WSSecSecurityTokenReference reference(nullptr, static_cast<DOMElement*>(node));
    reference.load();
    ctx.getSecTokenRefInfo(&reference);
}

}  // namespace

int VQXML_XMLSecurity::getKeyInfoListData(DSIGKeyInfoList* list) {
    return readKeyInfo(list, true);
}

// A signer's key information whose items disagree leaves nothing to report. A
// recipient's (an EncryptedKey's) is compared with the recipient's own
// certificate before anything is unwrapped, which needs its names as stated.
int VQXML_XMLSecurity::readKeyInfo(DSIGKeyInfoList* list, bool signer) {
    return vqxml::guarded(*this, "getKeyInfoListData > ", [&] {
        freeAndClear(m_subjectName);
        freeAndClear(m_issuer);
        freeAndClear(m_serialNumber);
        freeAndClear(m_cert);
        freeAndClear(m_keyName);
        if (signer)
            vqxml::KeyBinding(list, nullptr);  // throws when the items disagree
        std::string subjectEncoding = vqxml::declaredEncoding(m_document);
        if (subjectEncoding.empty())
            subjectEncoding = "UTF-8";
        for (DSIGKeyInfoList::size_type i = 0; i < list->getSize(); ++i) {
            DSIGKeyInfo* item = list->item(i);
            switch (static_cast<int>(item->getKeyInfoType())) {
            case DSIGKeyInfo::KEYINFO_X509:
                readX509Data(static_cast<DSIGKeyInfoX509*>(item), subjectEncoding.c_str());
                break;
            case DSIGKeyInfo::KEYINFO_NAME:
                replaceText(m_keyName, static_cast<DSIGKeyInfoName*>(item)->getKeyName(), nullptr);
                break;
            case DSIGKeyInfo::KEYINFO_ENCRYPTEDKEY:
                getEncryptedKeyInfo(static_cast<XENCEncryptedKey*>(item));
                break;
            case DSIGKeyInfo::KEYINFO_EXTENSION:
            case VQXML_WSSecSecurityTokenReference::kKeyInfoType:
                readTokenReference(*this, item);
                break;
            default:
                break;
            }
        }
    });
}

void VQXML_XMLSecurity::readX509Data(DSIGKeyInfoX509* x509, const char* subjectEncoding) {
    if (const XMLCh* subject = x509->getX509SubjectName())
        replaceText(m_subjectName, subject, subjectEncoding);
    if (const XMLCh* issuer = x509->getX509IssuerName())
        replaceText(m_issuer, issuer, nullptr);
    if (const XMLCh* serial = x509->getX509IssuerSerialNumber())
        replaceText(m_serialNumber, serial, nullptr);
    if (x509->getCertificateListSize() == 0)
        return;
    storeCertificate(x509->getCertificateCryptoItem(vqxml::signerCertificateIndex(x509)));
}

// The engine's certificate object keeps base64 text; callers get DER bytes.
void VQXML_XMLSecurity::storeCertificate(const XSECCryptoX509* cert) {
    const X509* x509 = opensslCertificate(cert);
    if (x509 == nullptr)
        throw VQXML_XSECException(VQXML_ERR_CRYPTO_PROVIDER, "The certificate could not be read");
    const std::vector<unsigned char> der = vqxml::encodeCertificate(x509);
    if (der.empty())
        throw VQXML_XSECException(VQXML_ERR_CRYPTO_PROVIDER, "The certificate could not be encoded");
    freeAndClear(m_cert);
    m_cert = static_cast<unsigned char*>(std::malloc(der.size()));
    if (m_cert == nullptr)
        throw std::bad_alloc();
    std::memcpy(m_cert, der.data(), der.size());
    m_certLen = static_cast<int>(der.size());
}

int VQXML_XMLSecurity::getEncryptedKeyInfo(XENCEncryptedKey* key) {
    return vqxml::guarded(*this, "getEncryptedKeyInfo > ", [&] {
        replaceText(m_encKeyText1, key->getCarriedKeyName(), nullptr);
        replaceText(m_encKeyText2, key->getRecipient(), nullptr);
        const XMLCh* algorithm =
            key->getEncryptionMethod() != nullptr ? key->getEncryptionMethod()->getAlgorithm() : nullptr;
        const vqxml::KeyTransport* transport = vqxml::transportByURI(algorithm);
        if (transport == nullptr)
            throw VQXML_XSECException(VQXML_ERR_TRANSPORT_UNKNOWN);
        m_keyWrapAlg = transport->methodCode;
        // The recipient fields describe this key alone: names or a certificate
        // left by an earlier reading (the signer's, say) would be checked
        // against the caller's certificate as if they were the recipient's.
        freeAndClear(m_subjectName);
        freeAndClear(m_issuer);
        freeAndClear(m_serialNumber);
        freeAndClear(m_cert);
        if (!key->getKeyInfoList()->isEmpty())
            readKeyInfo(key->getKeyInfoList(), false);
        m_encryptedKey = key;
    });
}

// A reference to an encrypted key reads that key, which the engine holds (how an
// EncryptedData of a WS-Security message names its key).
int VQXML_XMLSecurity::getSecTokenRefInfo(VQXML_WSSecSecurityTokenReference* ref) {
    return vqxml::guarded(*this, "getSecTokenRefInfo > ", [&] {
        freeAndClear(m_cert);
        freeAndClear(m_issuer);
        freeAndClear(m_serialNumber);
        switch (ref->getSecurityTokenReferenceKeyType()) {
        case VQXML_WSSecSecurityTokenReference::CERTIFICATE:
            if (const XSECCryptoX509* cert = ref->getXSECCrytpoCert())
                storeCertificate(cert);
            break;
        case VQXML_WSSecSecurityTokenReference::ISSUER_SERIAL:
            if (ref->getX509Issuer() != nullptr)
                m_issuer = vqxml::transcodeOut(ref->getX509Issuer(), nullptr);
            if (ref->getX509Serial() != nullptr)
                m_serialNumber = vqxml::transcodeOut(ref->getX509Serial(), nullptr);
            break;
        case VQXML_WSSecSecurityTokenReference::ENCRYPTED_KEY:
            if (m_wsSecurity != nullptr)
                if (XENCEncryptedKey* key = m_wsSecurity->encryptedKeyFor(ref->getReferencedElement()))
                    getEncryptedKeyInfo(key);
            break;
        default:
            break;
        }
    });
}
