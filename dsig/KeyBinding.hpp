// Key information that names one certificate and carries another key is
// refused, wherever a signer's key information is read (XML Signature, ebXML,
// WS-Security): every item of a ds:KeyInfo that carries a key (an
// X509Data's signer certificate, a token reference's BinarySecurityToken, a
// KeyValue, a DEREncodedKeyValue) must be the same key, and every item that
// names a certificate (X509SubjectName, X509IssuerSerial, X509SKI, X509Digest, a
// token reference's issuer and serial) must name the certificate carried. Names
// beside a KeyValue and no certificate name nothing the key shows, and are
// refused too. KeyName is a label of the signer's choosing and is not compared;
// EncryptedKey items hold another key and are not read here.
#ifndef VQXML_DSIG_KEYBINDING_HPP
#define VQXML_DSIG_KEYBINDING_HPP

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <openssl/x509.h>
#include <xercesc/dom/DOM.hpp>

#include "core/Transcode.hpp"

class DSIGKeyInfo;
class DSIGKeyInfoList;
class DSIGKeyInfoX509;
class VQXML_WSSecSecurityTokenReference;
class XSECCryptoKey;
class XSECCryptoX509;

namespace vqxml {

// X509Data may carry a whole chain, in any order: the signer's certificate is
// the one that issued none of the others. With no such single certificate, the
// first.
int signerCertificateIndex(const DSIGKeyInfoX509* x509);

class KeyBinding {
public:
    // Reads every item of list (null: none). security is the WS-Security header
    // whose BinarySecurityTokens an issuer-and-serial reference may name (null
    // outside WS-Security). Throws VQXML_XSECException 11213 when the items
    // disagree.
    KeyBinding(DSIGKeyInfoList* list, const XERCES_CPP_NAMESPACE::DOMElement* security);
    ~KeyBinding();
    KeyBinding(const KeyBinding&) = delete;
    KeyBinding& operator=(const KeyBinding&) = delete;

    // A new public key to verify with: the certificate's, else the KeyValue's,
    // else that of the header's token with the issuer and serial named; null
    // when the key information gives none.
    XSECCryptoKey* newKey() const;
    // Throws 11213 unless cert (the caller's) is the certificate the key
    // information carries or, carrying none, the one it names.
    void requireCertificate(const X509* cert) const;
    // Throws 11213 when the key information names a certificate or carries a
    // public key: a secret the caller gives is what verifies.
    void requireNoPublicKey() const;

private:
    struct IssuerSerial {
        XString issuer, serial;
    };
    void readX509(DSIGKeyInfoX509* x509);
    void readTokenReference(XERCES_CPP_NAMESPACE::DOMElement* element);
    void addCertificate(const XSECCryptoX509* cert);
    void requireNamed(const X509* cert) const;
    bool namesAnything() const;

    DSIGKeyInfoList* m_list;
    const XERCES_CPP_NAMESPACE::DOMElement* m_security;
    const XSECCryptoX509* m_certificate = nullptr;  // the first carried; all others are the same
    std::vector<std::unique_ptr<VQXML_WSSecSecurityTokenReference>> m_references;  // own token certificates
    std::vector<const DSIGKeyInfo*> m_keyValues;  // KeyValue and DEREncodedKeyValue items
    std::vector<XString> m_subjects;
    std::vector<IssuerSerial> m_issuerSerials;
    std::vector<XString> m_skis;
    std::vector<std::pair<XString, XString>> m_digests;  // algorithm, value
};

}  // namespace vqxml

#endif
