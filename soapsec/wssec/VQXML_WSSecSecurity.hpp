// The WS-Security engine: one SOAP envelope's wsse:Security header, written for a
// new message or read from a received one, on the engine's signature and cipher.
//
// Choices of ours (OASIS WSS SOAP Message Security 1.0/1.1, X.509 Token Profile):
//  - Every new header entry goes first into wsse:Security, so the first entry is
//    the last operation the sender applied. isfirstSignatureProcess() is true
//    when a ds:Signature comes before every xenc:EncryptedKey and
//    xenc:ReferenceList: the signature covers the encrypted message and is
//    checked before anything is decrypted.
//  - A null reference URI signs the SOAP Body; a null encryption target
//    encrypts the Body's content. Targets are "#" plus an Id (Id, id or wsu:Id),
//    or a qualified name: the first element of that name in document order.
//  - Signed parts without an identifier get wsu:Id "id-<n>", the
//    BinarySecurityToken "X509-<n>", EncryptedData "EncDataId-<n>" (n decimal,
//    4 random bytes, or the smallest free number for EncryptedData).
//  - The signature's canonicalization 0 (none) is exclusive C14N, as WS-Security
//    profiles ask; references keep the transforms they are given.
//  - A signature whose key information names a certificate by issuer and serial
//    is checked with a BinarySecurityToken of the header that holds that
//    certificate, or with a key given by setVerificationKey or setSigningKey.
//  - A verified signature must cover the Envelope's one Body
//    (dsig/VerifiedCoverage.hpp); what it covered is kept for signedParts().
#ifndef VQXML_SOAPSEC_WSSEC_VQXML_WSSECSECURITY_HPP
#define VQXML_SOAPSEC_WSSEC_VQXML_WSSECSECURITY_HPP

#include <memory>
#include <string>
#include <vector>

#include <openssl/x509.h>
#include <xercesc/util/XercesDefs.hpp>

#include "engine/Algorithms.hpp"
#include "engine/wssec/VQXML_WSSecSecurityTokenReference.hpp"

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
XERCES_CPP_NAMESPACE_END

class DSIGKeyInfoList;
class DSIGReference;
class DSIGSignature;
class XENCEncryptedData;
class XENCEncryptedKey;
class XSECCryptoKey;
class XSECEnv;
class XSECProvider;
class VQXML_XENCCipher;

class VQXML_WSSecSecurity {
public:
    explicit VQXML_WSSecSecurity(XSECProvider& provider);
    VQXML_WSSecSecurity(XSECProvider& provider, XERCES_CPP_NAMESPACE::DOMDocument* doc);
    ~VQXML_WSSecSecurity();
    VQXML_WSSecSecurity(const VQXML_WSSecSecurity&) = delete;
    VQXML_WSSecSecurity& operator=(const VQXML_WSSecSecurity&) = delete;

    // ---- signing ----
    void createBlankSignature(XERCES_CPP_NAMESPACE::DOMDocument* doc, int canonicalizationMethod,
                              int signatureMethod, int hashMethod);
    DSIGReference* createReference(const XMLCh* uri, int hashMethod, char* type);
    // Takes key: for sign(), or for verify() ahead of the message's own.
    void setSigningKey(XSECCryptoKey* key);
    void setX509IssuerSerial(const XMLCh* issuer, const XMLCh* serial);
    void setX509B64bst(const XMLCh* base64);
    void setSignKeyName(const XMLCh* name);
    void sign();

    // ---- encrypting ----
    void createNewCipher(XERCES_CPP_NAMESPACE::DOMDocument* doc, XSECEnv* env);
    void setCipherKey(XSECCryptoKey* key);
    void encryptElementContent(const char* target, int encryptionMethod, const XMLCh* type);
    void encryptElement(const char* target, int encryptionMethod, const XMLCh* type);
    XENCEncryptedData* getEncryptedData() const;
    // The identifier of the EncryptedData just made.
    const XMLCh* getEncryptedDataId();
    void setKeyWrapKey(XSECCryptoKey* key);
    // The session key wrapped for transport with the key-encryption key set last.
    XENCEncryptedKey* encryptKey(const unsigned char* key, unsigned int len, const vqxml::Algorithm& transport);
    // The token reference of a new encrypted key's ds:KeyInfo, made on first use.
    VQXML_WSSecSecurityTokenReference* getSecurityTokenReference(XENCEncryptedKey* key, int index);
    void addEncryptedKeyList(XENCEncryptedKey* key);
    void appendDataReference(const XMLCh* id);
    void encrypt();

    // ---- processing ----
    void load();
    bool isWSSecSignature() const;
    bool isWSSEncryption() const;
    bool isfirstSignatureProcess() const;
    DSIGKeyInfoList* getKeyInfoList() const;
    int getSignatureMethod() const;
    int getHashMethod() const;
    // Takes key, the key of the receiver's certificate certDer: verify() uses it
    // ahead of any other, whenever it was set, if the key information agrees.
    void setVerificationKey(XSECCryptoKey* key, const std::vector<unsigned char>& certDer);
    // True when the signature verifies and covers the Envelope's one Body.
    bool verify();
    const char* getErrMsgs() const { return m_errMsgs.c_str(); }
    // What the verified signature's references covered (dsig/VerifiedCoverage.hpp,
    // signedParts); empty before a successful verify().
    const std::string& signedParts() const { return m_signedParts; }
    XENCEncryptedData* findEncryptedData();
    DSIGKeyInfoList* getEncryptedKeyList() const { return m_encryptedKeys.get(); }
    // The header's encrypted key with that wsu:Id or Id; null when none.
    XENCEncryptedKey* encryptedKeyFor(const XERCES_CPP_NAMESPACE::DOMElement* element) const;
    // Whether key is one of the header's encrypted keys (compared by address only).
    bool holdsEncryptedKey(const XENCEncryptedKey* key) const;
    // The cipher over the received envelope, for unwrapping and decrypting.
    VQXML_XENCCipher& receivingCipher();
    void decryptElement(XERCES_CPP_NAMESPACE::DOMElement* encryptedData);
    void removeWsuId();
    void removeSecurityHeader();

    XERCES_CPP_NAMESPACE::DOMDocument* getDocument() const { return m_document; }

private:
    XERCES_CPP_NAMESPACE::DOMElement* securityHeader(bool create);
    void prependToHeader(XERCES_CPP_NAMESPACE::DOMElement* entry);
    VQXML_XENCCipher& cipher();
    DSIGSignature& signature() const;
    void encryptTarget(const char* target, int encryptionMethod, bool content);
    XERCES_CPP_NAMESPACE::DOMElement* onlyBody() const;

    XSECProvider& m_provider;
    XERCES_CPP_NAMESPACE::DOMDocument* m_document = nullptr;
    std::unique_ptr<XSECEnv> m_env;
    DSIGSignature* m_signature = nullptr;  // the provider's
    XERCES_CPP_NAMESPACE::DOMElement* m_signatureElement = nullptr;
    VQXML_XENCCipher* m_cipher = nullptr;
    XSECCryptoKey* m_signingKey = nullptr;  // until sign() or verify() hands it to the signature
    XSECCryptoKey* m_verificationKey = nullptr;  // the receiver's own, until verify()
    std::unique_ptr<X509, void (*)(X509*)> m_verificationCert{nullptr, X509_free};  // its certificate
    XSECCryptoKey* m_keyWrapKey = nullptr;  // until encryptKey hands it on
    std::basic_string<XMLCh> m_bstBase64, m_issuer, m_serial;
    std::vector<std::basic_string<XMLCh>> m_headerDataRefs;
    std::vector<std::unique_ptr<VQXML_WSSecSecurityTokenReference>> m_tokenReferences;
    std::vector<std::unique_ptr<XENCEncryptedKey>> m_madeKeys;
    std::unique_ptr<DSIGKeyInfoList> m_encryptedKeys;
    std::string m_errMsgs;
    std::string m_signedParts;
    int m_signatureMethod = 0;
    int m_hashMethod = 0;
};

#endif
