// A wsse:SecurityTokenReference, as a key information item.
//
// Read from the document (load), it is one of:
//  1 a wsse:Reference to a wsse:BinarySecurityToken of ValueType X509v3 in the
//    same message: the certificate;
//  2 a ds:X509Data/ds:X509IssuerSerial: the certificate's issuer and serial;
//  3 a wsse:Reference to an xenc:EncryptedKey (how an EncryptedData names the
//    key that opens it): the referenced element.
// A reference that finds no element, finds more than one (a wrapping attempt),
// or finds a token of another ValueType or encoding is refused when loaded.
// Built for a new message, it writes an issuer-serial or token reference.
#ifndef VQXML_ENGINE_WSSEC_VQXML_WSSECSECURITYTOKENREFERENCE_HPP
#define VQXML_ENGINE_WSSEC_VQXML_WSSECSECURITYTOKENREFERENCE_HPP

#include <memory>
#include <string>

#include <xsec/dsig/DSIGKeyInfo.hpp>

class XSECCryptoX509;

class VQXML_WSSecSecurityTokenReference : public DSIGKeyInfo {
public:
    enum KeyType { NONE = 0, CERTIFICATE = 1, ISSUER_SERIAL = 2, ENCRYPTED_KEY = 3 };
    // The item kind a key information list reports for a token reference.
    static constexpr keyInfoType kKeyInfoType = static_cast<keyInfoType>(100);

    // Over an existing wsse:SecurityTokenReference element.
    VQXML_WSSecSecurityTokenReference(const XSECEnv* env, XERCES_CPP_NAMESPACE::DOMElement* element);
    ~VQXML_WSSecSecurityTokenReference() override;

    // A new, empty element appended to parent.
    static std::unique_ptr<VQXML_WSSecSecurityTokenReference> create(const XSECEnv* env,
                                                                     XERCES_CPP_NAMESPACE::DOMElement* parent);

    void load() override;
    keyInfoType getKeyInfoType() const override { return kKeyInfoType; }
    const XMLCh* getKeyName() const override { return nullptr; }

    int getSecurityTokenReferenceKeyType() const { return m_keyType; }
    // The certificate of type 1; null otherwise. Owned by this object.
    const XSECCryptoX509* getXSECCrytpoCert() const { return m_cert.get(); }
    const XMLCh* getX509Issuer() const { return m_issuer.empty() ? nullptr : m_issuer.c_str(); }
    const XMLCh* getX509Serial() const { return m_serial.empty() ? nullptr : m_serial.c_str(); }
    // The element a type 1 or 3 reference points to.
    XERCES_CPP_NAMESPACE::DOMElement* getReferencedElement() const { return m_target; }

    // Writes ds:X509Data/ds:X509IssuerSerial into the element.
    void setX509IssuerSerial(const XMLCh* issuer, const XMLCh* serial);
    // Writes a wsse:Reference to the token with that wsu:Id.
    void setTokenReference(const XMLCh* tokenId);

private:
    void loadReference(const XERCES_CPP_NAMESPACE::DOMElement* reference);
    void loadIssuerSerial(const XERCES_CPP_NAMESPACE::DOMElement* serial);

    XERCES_CPP_NAMESPACE::DOMElement* m_element;
    int m_keyType = NONE;
    std::unique_ptr<XSECCryptoX509> m_cert;
    std::basic_string<XMLCh> m_issuer, m_serial;
    XERCES_CPP_NAMESPACE::DOMElement* m_target = nullptr;
};

#endif
