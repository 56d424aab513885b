/*
 * VQXML_XMLSecurity: the context behind one handle of the C interface.
 *
 * C++ callers may use the class directly instead of the C functions; the rules of
 * vqxml.h apply (one thread at a time per object, buffers owned by the object).
 * Building against this header needs the Xerces-C and xml-security-c headers
 * (pkg-config --cflags vqxml names them).
 */
#ifndef VQXML_VQXML_XMLSECURITY_H
#define VQXML_VQXML_XMLSECURITY_H

#include <vqxml/vqxml.h>

#include <functional>
#include <string>

#include <xercesc/util/XercesDefs.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
class DOMImplementation;
class DOMNode;
XERCES_CPP_NAMESPACE_END

class DSIGKeyInfoList;
class DSIGKeyInfoX509;
class DSIGReference;
class DSIGSignature;
class VQTKCryptoKeyKCDSA;
class VQTKCryptoKeyRSA;
class XSECCryptoKey;
class XSECCryptoKeyHMAC;
class XSECCryptoX509;
class XENCCipher;
class XENCEncryptedKey;
class VQXML_WSSecSecurity;
class CMimeMessage;
class VQXML_XENCCipher;
namespace vqxml::xenc {
struct UnwrapCodes;
}

/* One node of the list of EncryptedData identifiers made on a handle. */
struct VQXML_EncDataNode {
    const XMLCh* id;
    VQXML_EncDataNode* next;
};

class VQXML_EXPORT VQXML_XMLSecurity {
public:
    explicit VQXML_XMLSecurity(char* locale = nullptr);
    virtual ~VQXML_XMLSecurity();
    VQXML_XMLSecurity(const VQXML_XMLSecurity&) = delete;
    VQXML_XMLSecurity& operator=(const VQXML_XMLSecurity&) = delete;

    /* ---- accessors ---- */
    char* getVersion();
    char* getXMLEncoding();
    char* getLastErrorMsg();
    int getLaseErrorCode();
    char* getXMLDocument();
    int getXMLDocumentLength();
    char* getKeyName();
    /* How the last verification read its references (VQXML_READING_*); an addition. */
    int getCanonicalReading() const { return m_canonicalReading; }
    int getCert(unsigned char** cert);
    char* getIssuer();
    char* getSerialNumber();
    char* getSubjectName();
    unsigned char* getPriKeyInfo();
    unsigned char* getPriKeyEncRandom();

    /* ---- switches (none has an opposite) ---- */
    int appendX509IssuerSerialNumber();
    int appendX509SubjectName();
    int appendKeyValue();
    int SOAPSEC_removeSecurityHeader();
    void setEbXml();

    /* ---- XML Signature: building and signing ---- */
    int XMLDSIG_setXMLDocument(char* xml, int len);
    int XMLDSIG_setPrefix(char* prefix);
    int XMLDSIG_setSignatureAlg(int signatureSelector, int canonicalizationSelector);
    int XMLDSIG_createReference(char* uri, int digestSelector, int canonicalizationSelector, char* xpath);
    int XMLDSIG_appendObject(char* id, char* content, int len);
    int XMLDSIG_setKeyName(char* name);
    int XMLDSIG_sign();

    /* ---- XML Signature: keys ---- */
    int XMLDSIG_setSignCertAndKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen, char* token1,
                                  char* token2, void* token3, void* token4);
    int XMLDSIG_setHMACKey(unsigned char* key, unsigned int len);
    XSECCryptoKeyHMAC* createHMACKey(unsigned char* key, unsigned int len);
    /* A KCDSA key from a DER or PEM certificate and/or an unencrypted PKCS#8 key. */
    VQTKCryptoKeyKCDSA* createKCDSAKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen);
    VQTKCryptoKeyRSA* createRSAKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen, char* token1,
                                   char* token2, void* token3, void* token4);

    /* ---- XML Signature: verification ---- */
    int XMLDSIG_setSignXMLDocument(char* xml, int len);
    int XMLDSIG_verify();
    /* Lets verification read Reference URIs outside the document (files, web
     * addresses); off by default. */
    void XMLDSIG_allowExternalReferences(bool allow);

    /* ---- XML Encryption: encrypting ----
     * Symmetric selectors: 1 Triple DES (24 key bytes), 2 SEED, 3 NEAT, 4 ARIA-128
     * (16 key bytes), all CBC. Transport selectors: 1 Triple DES key wrap (key:
     * the key-encryption key), 2 RSA PKCS #1 v1.5, 3 RSA-OAEP (key: the
     * recipient's certificate, DER or PEM). AES and RSA-OAEP 1.1 are additions
     * (vqxml.h). */
    int XMLENC_setXMLDocument(char* xml, int len);
    /* A null key makes a random one; otherwise key must hold the algorithm's key
     * bytes, whatever keyLen says. */
    int XMLENC_setSymmKey(unsigned char* key, int keyLen, int alg);
    int XMLENC_setPrefix(char* prefix);
    int XMLENC_setKeyName(char* keyName);
    /* mode 1 the element's content, 2 the element; a null, empty or " " target is
     * the document element, any other the first element of that qualified name. */
    int XMLENC_encryptElement(char* target, int mode, bool withKeyName);
    int XMLENC_encryptKeyWrapKey(unsigned char* key, int keyLen, int alg);
    int XMLENC_encrypt();

    /* ---- XML Encryption: decrypting ---- */
    int XMLENC_setEncXMLDocument(char* xml, int len);
    int XMLENC_getEncKeyInfo();
    int XMLENC_decryptKeyWrapKey(unsigned char* cert, int certLen, unsigned char* priKey, int priKeyLen);
    int XMLENC_decrypt();

    /* ---- key information reading ---- */
    int getKeyInfoListData(DSIGKeyInfoList* list);
    int getEncryptedKeyInfo(XENCEncryptedKey* key);

    /* ---- ebXML packages (MIME multipart/related: the SOAP envelope, then the
     * attachments, referenced as "cid:" plus their Content-ID) ---- */
    /* The held package; an empty one is made on first use. While a package is
     * held, every result document is that package with the serialised document as
     * its first part. */
    CMimeMessage* getMimeMessage();
    /* Loads a package and its envelope part with loadEnvelope (one of the XML
     * Signature loaders), and holds the package once both have loaded. Like
     * every loader it releases the previous document and package first and leaves
     * the handle empty when it fails: 10103 when the package cannot be loaded or
     * used (the error text is not touched then), 1 without memory, else the
     * status of loadEnvelope. */
    int EBXML_loadPackage(const char* data, int len, int (VQXML_XMLSecurity::*loadEnvelope)(char*, int)) noexcept;
    /* The attachment step before signing (sign true: a "cid:" reference per
     * attachment, with the reference digest and, for XML attachments, the
     * reference canonicalization) and before verifying; both hand every
     * attachment's bytes to the signature. Does nothing without a package.
     * Returns 0; failures are raised to the calling method's frame. */
    int processAttachment(bool sign);

    /* ---- algorithm selectors read back ---- */
    int getSymmAlg();
    int getKeyWrapAlg();
    int getSignatureAlg();

    /* ---- SOAP message security: securing an envelope with a WS-Security header ----
     * Signature selectors 1 HMAC-SHA1, 2 RSA-SHA1, 3 KCDSA-SHA1, 4 KCDSA-HAS160,
     * 5 RSA-SHA256; canonicalization 0 (exclusive C14N), 1, 2. A null reference URI
     * signs the SOAP Body (given a wsu:Id); a null encryption target is the Body's
     * content; other targets are "#" plus an Id or an element's qualified name. */
    int SOAPSEC_setSOAPDocument(char* xml, int len);
    int SOAPSEC_setSignatureAlg(int signatureAlg, int canonAlg);
    int SOAPSEC_createReference(char* uri, int digestAlg, int canonAlg, char* xpath);
    int SOAPSEC_setSignCertAndKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen);
    int SOAPSEC_setHMACKey(unsigned char* key, unsigned int len);
    int SOAPSEC_setSignKeyName(char* name);
    int SOAPSEC_sign();
    int SOAPSEC_setSymmKey(unsigned char* key, int len, int alg);
    int SOAPSEC_encryptElement(char* target, int type, bool withKeyName);
    int SOAPSEC_setEncKeyName(char* name);
    int SOAPSEC_encryptKeyWrapKey(unsigned char* key, int len, int wrapAlg);
    int SOAPSEC_encrypt();
    /* ---- SOAP message security: processing a received envelope ---- */
    int SOAPSEC_setSOAPSecDocument(char* xml, int len);
    int SOAPSEC_getSOAPSignInfo(int* isSigned);
    int SOAPSEC_getSOAPEncInfo(int* isEncrypted);
    int SOAPSEC_decryptKeyWrapKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen);
    int SOAPSEC_processSOAP();
    /* The signer's certificate (DER or PEM) for a message that names it only by
     * issuer and serial; its key verifies the signature ahead of any token. */
    int SOAPSEC_setVerifyCert(unsigned char* cert, int certLen);
    /* Addition: VQTK_SOAPSEC_GetSignedParts. What the last successful
     * SOAPSEC_processSOAP's signature covered; "" before one. */
    const char* SOAPSEC_getSignedParts() const;
    /* Reads one wsse:SecurityTokenReference (key information reading). */
    int getSecTokenRefInfo(class VQXML_WSSecSecurityTokenReference* ref);

    /* ---- errors ---- */
    /* Records code and prefix + message (EUC-KR, at most 1023 bytes); returns code. */
    int ProcessExceptionMessage(int code, const char* prefix, const XMLCh* message);
    /* The same with a message already in EUC-KR bytes. */
    int ProcessExceptionMessage(int code, const char* prefix, const char* message);

    /* ---- documents ---- */
    /* Parses len bytes into *out; returns the parser's error count (0 = well formed).
     * DTDs, external entities and URLs are never loaded. */
    int setXMLDocument(char* xml, int len, XERCES_CPP_NAMESPACE::DOMDocument** out);
    /* Releases m_document and parses xml into it; throws 10105 (not well formed or
     * no root element) or 10107 (declared encoding other than "UTF-8"/"utf-8"). */
    void loadDocument(char* xml, int len);
    /* Throws 10107 unless m_document declares no encoding, "UTF-8" or "utf-8". */
    void checkDocumentEncoding() const;
    XERCES_CPP_NAMESPACE::DOMNode* findNode(XERCES_CPP_NAMESPACE::DOMNode* node, const XMLCh* name);
    XERCES_CPP_NAMESPACE::DOMNode* findNameSpaceNode(XERCES_CPP_NAMESPACE::DOMNode* node);
    XERCES_CPP_NAMESPACE::DOMNode* findSOAPHeaderNode(XERCES_CPP_NAMESPACE::DOMNode* node);
    /* The first element with that local name in the XML Signature namespace. */
    XERCES_CPP_NAMESPACE::DOMNode* findDSIGNode(XERCES_CPP_NAMESPACE::DOMNode* node, const XMLCh* localName);
    int XMLDocument2char(XERCES_CPP_NAMESPACE::DOMImplementation* impl,
                         XERCES_CPP_NAMESPACE::DOMNode* node, char** out);
    /* written bytes into a new buffer for *out (or into the held package). */
    int storeBytes(const unsigned char* written, std::size_t len, char** out);
    /* Replaces m_xmlDocument by the serialised m_document. */
    void storeResultDocument();

    /* ---- certificates and private keys ---- */
    /* 0 if the DER certificate chains to one of the built-in roots; else 12011
     * and the reason in the error text. */
    int verifyCert(unsigned char* cert, int certLen);
    /* Addition: VQTK_XMLDSIG_VerifySignerCert. The loaded signature's signer
     * certificate with the other KeyInfo certificates and chain as intermediates,
     * and crls, against the built-in roots. */
    int verifySignerCert(unsigned char* chain, int chainLen, unsigned char* crls, int crlsLen);
    /* Decrypts a password-protected PKCS #8 key into m_priKeyInfo (the DER
     * PrivateKeyInfo and one zero byte after it); its length goes to *keyOutLen. */
    int decryptPriKey(char* password, unsigned char* key, int keyLen, int* keyOutLen);
    /* Puts the key's identity-verification random into m_priKeyEncRandom as base64
     * text; RSA-encrypted (PKCS #1 v1.5) first for recipientKey, a DER certificate,
     * when one is given. A null password takes key as a plain PrivateKeyInfo. */
    int getRandomFromPriKey(char* password, unsigned char* key, int keyLen,
                            unsigned char* recipientKey, int recipientKeyLen);

protected:
    /* Every loader: releases the document and every engine object over it (and
     * the ebXML package), runs load, and releases again what load made if it
     * fails (core/DocumentReset.cpp). */
    void releaseLoadedDocument();
    void loadAfresh(const std::function<void()>& load);
    void requireSignature() const;
    void requireTemplate(int code) const;
    void placeSignature(XERCES_CPP_NAMESPACE::DOMElement* signature);
    DSIGReference* appendReference(const XMLCh* uri, const char* xpath);
    void writeX509Names(DSIGKeyInfoX509* x509, const std::string& subject, const std::string& issuer,
                        const std::string& serial);
    template <class Key>
    void describeSigner(DSIGKeyInfoX509* x509, const Key& key, bool withCertificate);
    XSECCryptoKey* verificationKey();
    void setSigningKey(XSECCryptoKey* key);
    void storeVerifiedContent();
    int readKeyInfo(DSIGKeyInfoList* list, bool signer);
    void readX509Data(DSIGKeyInfoX509* x509, const char* subjectEncoding);
    void storeCertificate(const XSECCryptoX509* cert);
    void referenceAttachment(const XMLCh* uri, bool xml);
    /* The held package with envelope as its first part, stored into a new buffer. */
    int storePackage(const unsigned char* envelope, int len, char** out);

    /* XML Encryption */
    XENCCipher& requireCipher(int code) const;
    void loadCipherDocument(char* xml, int len, int noDocumentCode);
    void replaceSessionKey(unsigned char* key, int len);
    void resizeSessionKey(int len);
    XENCEncryptedKey* wrapSessionKey(XENCCipher& cipher, const XMLCh* transportURI, int transportCode,
                                     unsigned char* key, int keyLen);
    XERCES_CPP_NAMESPACE::DOMElement* findXENCElement(const XMLCh* localName) const;
    void forgetNestedEncryptedKey();
    void readDocumentLevelKey(XENCCipher& cipher, const XMLCh* dataId);
    std::string subjectEncoding() const;
    /* Replaces the session key by the one the EncryptedKey read last wraps for
     * the caller (xenc/KeyUnwrapper.hpp); shared by XML Encryption and SOAP. */
    void unwrapSessionKey(VQXML_XENCCipher& cipher, bool readKeyIsDocumentKey, const vqxml::xenc::UnwrapCodes& codes,
                          unsigned char* cert, int certLen, unsigned char* priKey, int priKeyLen);
    void storeDecryptedOctets(XERCES_CPP_NAMESPACE::DOMElement* encryptedData);

    /* SOAP message security */
    VQXML_WSSecSecurity& requireWSSecurity() const;
    void decryptSOAPParts();

    bool m_ebXml;
    DSIGSignature* m_signature;
    XENCCipher* m_cipher;
    VQXML_WSSecSecurity* m_wsSecurity;
    XERCES_CPP_NAMESPACE::DOMDocument* m_document;
    XERCES_CPP_NAMESPACE::DOMImplementation* m_domImpl;
    safeBuffer m_encodingBuf;
    int m_errorCode;
    char* m_version;
    char* m_errorMsg;
    char* m_subjectName;
    char* m_serialNumber;
    char* m_issuer;
    bool m_appendIssuerSerial;
    bool m_appendSubjectName;
    bool m_appendKeyValue;
    bool m_removeSecurityHeader;
    char* m_keyName;
    unsigned char* m_cert;
    int m_certLen;
    unsigned char* m_priKeyInfo;
    unsigned char* m_priKeyEncRandom;
    int m_signatureMethod;
    int m_hashMethod;
    char* m_xmlDocument;
    int m_xmlDocumentLength;
    XENCEncryptedKey* m_encryptedKey;
    unsigned char* m_symmKey;
    int m_symmKeyLen;
    int m_symmAlg;
    int m_keyWrapAlg;
    int m_encDataCount;
    VQXML_EncDataNode* m_encDataList;
    int m_encKeyIndex;
    bool m_keyNameInData;
    char* m_encKeyText1;
    char* m_encKeyText2;
    int m_refHashMethod;
    int m_refCanonMethod;
    CMimeMessage* m_mimeMessage;
    bool m_allowExternalReferences;
    /* The Signature element being built, and its signing key (both the signature
     * object's; views for signing with the library's own transforms). */
    XERCES_CPP_NAMESPACE::DOMElement* m_signatureElement = nullptr;
    XSECCryptoKey* m_signingKey = nullptr;
    int m_priKeyInfoLength = 0; /* bytes of key in m_priKeyInfo, to wipe them */
    int m_canonicalReading = 0; /* VQXML_READING_* of the last verification */
};

#endif
