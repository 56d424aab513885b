// The library's XML Encryption cipher: xml-security-c's cipher for one document,
// with what its interface lacks.
//
//  - An identifier for every EncryptedData it is asked about: the element's Id
//    attribute, or, when it has none, a new one "EncDataId-<n>" (the smallest n
//    no element of the document uses as its Id yet).
//  - The document-level EncryptedKeys: the EncryptedKey elements that stand
//    outside every ds:KeyInfo (those inside one are read through that KeyInfo),
//    found when first asked for, plus the ones the library hands over after
//    making them. The cipher owns them.
//  - Elements and content are encrypted as they read in their place
//    (XencPlaintext.hpp), rather than in the engine's exclusive canonical form.
//  - Key information the engine mishandles is refused before it loads an
//    element (KeyInfoGuard.hpp); the Id attributes of the document's XML
//    Encryption elements are IDs (XencReferences.hpp: declareIds).
//  - decryptKey keeps the unwrapped key only in memory that is wiped when freed.
//  - An EncryptedData whose cipher is one of the library's is decrypted in one
//    piece and its plaintext parsed straight into the document
//    (XencFragmentParser.hpp); as the document element it must hold one element.
//    Anything else is left to the engine, after its content is checked against
//    the parse bounds (core/ParseLimits.hpp); content decrypted in place is
//    held to them while it is built.
//  - The engine's object for an EncryptedData this cipher loads or makes does
//    not hold the CipherValue's text (megabytes, and the engine copies it twice):
//    the library reads and writes it in the document. The engine's own
//    operations on an element load it again, whole.
//  - Every failure to decrypt a ciphertext into content (padding, UTF-8, XML,
//    bounds) is one XSECException, CipherError with kUndecryptableText.
//
// Everything else is the engine's cipher, which this one makes from the provider
// and gives back to it when destroyed. XSECProvider::releaseCipher deletes it.
#ifndef VQXML_ENGINE_VQXMLXENCCIPHER_HPP
#define VQXML_ENGINE_VQXMLXENCCIPHER_HPP

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <xsec/xenc/XENCCipher.hpp>

#include "engine/korean/SecureBytes.hpp"

class XSECProvider;

class VQXML_XENCCipher : public XENCCipher {
public:
    VQXML_XENCCipher(XSECProvider& provider, XERCES_CPP_NAMESPACE::DOMDocument* doc);
    ~VQXML_XENCCipher() override;
    VQXML_XENCCipher(const VQXML_XENCCipher&) = delete;
    VQXML_XENCCipher& operator=(const VQXML_XENCCipher&) = delete;

    // ---- the engine's operations ----
    XERCES_CPP_NAMESPACE::DOMDocument* decryptElement(XERCES_CPP_NAMESPACE::DOMElement* element) override;
    XERCES_CPP_NAMESPACE::DOMNode* decryptElementDetached(XERCES_CPP_NAMESPACE::DOMElement* element) override;
    XERCES_CPP_NAMESPACE::DOMDocument* decryptElement() override;
    XERCES_CPP_NAMESPACE::DOMNode* decryptElementDetached() override;
    XSECBinTXFMInputStream* decryptToBinInputStream(XERCES_CPP_NAMESPACE::DOMElement* element) override;
    int decryptKey(XENCEncryptedKey* encryptedKey, XMLByte* rawKey, int maxKeySize) override;
    int decryptKey(XERCES_CPP_NAMESPACE::DOMElement* keyNode, XMLByte* rawKey, int maxKeySize) override;
    XERCES_CPP_NAMESPACE::DOMDocument* encryptElement(XERCES_CPP_NAMESPACE::DOMElement* element,
                                                      const XMLCh* algorithmURI) override;
    XERCES_CPP_NAMESPACE::DOMNode* encryptElementDetached(XERCES_CPP_NAMESPACE::DOMElement* element,
                                                          const XMLCh* algorithmURI) override;
    XERCES_CPP_NAMESPACE::DOMDocument* encryptElementContent(XERCES_CPP_NAMESPACE::DOMElement* element,
                                                             const XMLCh* algorithmURI) override;
    XERCES_CPP_NAMESPACE::DOMNode* encryptElementContentDetached(XERCES_CPP_NAMESPACE::DOMElement* element,
                                                                 const XMLCh* algorithmURI) override;
    XENCEncryptedKey* encryptKey(const unsigned char* keyBuffer, unsigned int keyLen, const XMLCh* algorithmURI,
                                 const XMLCh* mgfURI = nullptr, unsigned char* oaepParams = nullptr,
                                 unsigned int oaepParamsLen = 0) override;
    XENCEncryptedData* encryptBinInputStream(XERCES_CPP_NAMESPACE::BinInputStream* plainText,
                                             const XMLCh* algorithmURI) override;
    XENCEncryptedData* encryptTXFMChain(TXFMChain* plainText, const XMLCh* algorithmURI) override;
    XERCES_CPP_NAMESPACE::DOMDocument* getDocument() const override;
    const XMLCh* getXENCNSPrefix() const override;
    XENCEncryptedData* getEncryptedData() const override;
    bool getPrettyPrint() const override;
    bool getExclusiveC14nSerialisation() const override;
    void setKey(XSECCryptoKey* key) override;
    void setKEK(XSECCryptoKey* key) override;
    void setKeyInfoResolver(const XSECKeyInfoResolver* resolver) override;
    void setXENCNSPrefix(const XMLCh* prefix) override;
    void setPrettyPrint(bool flag) override;
    void setExclusiveC14nSerialisation(bool flag) override;
    XENCEncryptedData* createEncryptedData(XENCCipherData::XENCCipherDataType type, const XMLCh* algorithm,
                                           const XMLCh* value) override;
    XENCEncryptedKey* loadEncryptedKey(XERCES_CPP_NAMESPACE::DOMElement* keyNode) override;
    XENCEncryptedData* loadEncryptedData(XERCES_CPP_NAMESPACE::DOMElement* dataNode) override;

    // ---- additions ----
    static constexpr const char* kUndecryptableText =
        "The EncryptedData does not decrypt to well-formed content with the session key";
    // Whether doc is the very document this cipher was made for (not merely one
    // that took its place at the same address after it was released).
    bool serves(const XERCES_CPP_NAMESPACE::DOMDocument* doc) const;
    // The identifier of data, as described above; valid as long as this cipher.
    const XMLCh* identifierOf(XENCEncryptedData* data);
    // The document-level EncryptedKeys, in document order, then in handing order.
    const std::vector<XENCEncryptedKey*>& documentKeys();
    // Takes key (made by encryptKey) into the document-level list.
    void adoptDocumentKey(XENCEncryptedKey* key);
    bool isDocumentKey(const XENCEncryptedKey* key) const;
    // Whether a decryption since the last call may have brought XML Encryption
    // elements into the document (always so when the engine did the work).
    bool takeNewXencElements() { return std::exchange(m_newXencElements, false); }

private:
    void findDocumentKeys();
    // A new EncryptedData holding the size bytes at plain, encrypted.
    XENCEncryptedData* encryptOctets(const std::uint8_t* plain, std::size_t size, const XMLCh* algorithmURI);
    // Decrypts element in place if it can; false leaves it to the engine.
    bool decryptInPlace(XERCES_CPP_NAMESPACE::DOMElement* element);
    void checkDecryptedShape(XERCES_CPP_NAMESPACE::DOMElement* encryptedData);

    XSECProvider& m_provider;
    XENCCipher* m_engine;
    XSECCryptoKey* m_key = nullptr;  // the engine's cipher owns it
    XSECCryptoKey* m_kek = nullptr;  // the engine's cipher owns it
    bool m_newXencElements = false;
    std::basic_string<XMLCh> m_mark;  // the document's URI while this cipher serves it
    std::vector<XENCEncryptedKey*> m_documentKeys;  // owned
    bool m_documentKeysFound = false;
    std::deque<std::basic_string<XMLCh>> m_identifiers;  // a deque never moves its elements
};

#endif
