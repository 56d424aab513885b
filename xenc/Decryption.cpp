// Decrypting: the encrypted document, and every EncryptedData in it with the
// session key.
//
// An EncryptedData that is the document element and holds no element (no Type,
// or a Type other than #Element: octets, text) cannot become a document; its
// plaintext octets are the result as they are.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECBinTXFMInputStream.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ErrorFrame.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "engine/XencReferences.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {


const XMLCh* algorithmOf(const XENCEncryptedData* data) {
    const XENCEncryptionMethod* method = data->getEncryptionMethod();
    return method != nullptr ? method->getAlgorithm() : nullptr;
}

bool holdsOctets(const XENCEncryptedData* data) {
    const DOMElement* element = data->getElement();
    return element == element->getOwnerDocument()->getDocumentElement() &&
           !XMLString::equals(data->getType(), DSIGConstants::s_unicodeStrURIXENC_ELEMENT);
}

bool inDocument(const DOMNode* node) {
    while (node->getParentNode() != nullptr)
        node = node->getParentNode();
    return node->getNodeType() == DOMNode::DOCUMENT_NODE;
}

// The XML Encryption elements still in the document, in document order, found
// with one walk rather than one per decrypted element: decrypting only takes
// elements away, unless the plaintext brings new ones, which calls for a new walk.
class XencElementsLeft {
public:
    explicit XencElementsLeft(DOMDocument* doc) : m_doc(doc) { walk(); }

    void walk() {
        m_data = vqxml::xenc::xencElements(m_doc, u"EncryptedData");
        m_keys = vqxml::xenc::xencElements(m_doc, u"EncryptedKey");
        m_next = 0;
    }

    DOMElement* firstData() {
        while (m_next < m_data.size() && !inDocument(m_data[m_next]))
            ++m_next;
        return m_next < m_data.size() ? m_data[m_next] : nullptr;
    }

    const std::vector<DOMElement*>& keys() const { return m_keys; }

private:
    DOMDocument* m_doc;
    std::vector<DOMElement*> m_data;
    std::vector<DOMElement*> m_keys;
    std::size_t m_next = 0;
};

}  // namespace

// The list's length would walk the whole document; its first item stops at the first match.
DOMElement* VQXML_XMLSecurity::findXENCElement(const XMLCh* localName) const {
    DOMNodeList* found = m_document->getElementsByTagNameNS(DSIGConstants::s_unicodeStrURIXENC, localName);
    return static_cast<DOMElement*>(found->item(0));
}

// An EncryptedKey read from inside an EncryptedData belongs to that object,
// which the cipher deletes when it loads or decrypts another one.
void VQXML_XMLSecurity::forgetNestedEncryptedKey() {
    if (!static_cast<VQXML_XENCCipher*>(m_cipher)->isDocumentKey(m_encryptedKey))
        m_encryptedKey = nullptr;
}

int VQXML_XMLSecurity::XMLENC_setEncXMLDocument(char* xml, int len) {
    return vqxml::guarded(*this, "XMLENC_setEncXMLDocument > ", [&] { loadCipherDocument(xml, len, VQXML_ERR_ENC_NO_ENCRYPTED_DOCUMENT); });
}

int VQXML_XMLSecurity::XMLENC_decrypt() {
    return vqxml::guarded(*this, "XMLENC_decrypt > ", [&] {
        auto& cipher = static_cast<VQXML_XENCCipher&>(requireCipher(VQXML_ERR_ENC_NO_ENCRYPTED_DOCUMENT));
        XENCEncryptedData* data = cipher.getEncryptedData();
        XencElementsLeft left(m_document);
        cipher.takeNewXencElements();
        while (data != nullptr) {
            const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricByURI(algorithmOf(data));
            if (algorithm == nullptr)
                throw VQXML_XSECException(VQXML_ERR_ENC_CIPHER_SELECTOR);
            if (m_symmKey == nullptr)
                throw VQXML_XSECException(VQXML_ERR_DEC_NO_SESSION_KEY);
            std::unique_ptr<XSECCryptoSymmetricKey> key(vqxml::newSymmetricKey(algorithm->keyType));
            if (!key)
                throw VQXML_XSECException(VQXML_ERR_PROVIDER_KEY_TYPE);
            key->setKey(m_symmKey, unsigned(m_symmKeyLen));
            cipher.setKey(key.release());
            forgetNestedEncryptedKey();
            if (holdsOctets(data)) {
                storeDecryptedOctets(data->getElement());
                return;
            }
            cipher.decryptElement(data->getElement());
            if (cipher.takeNewXencElements())
                left.walk();
            DOMElement* next = left.firstData();
            data = next != nullptr ? cipher.loadEncryptedData(next) : nullptr;
        }
        // The removed elements are left to the document, which frees them with
        // itself: document-level key objects may still point at them.
        for (DOMElement* key : left.keys())
            if (inDocument(key))
                key->getParentNode()->removeChild(key);
        storeResultDocument();
    });
}

void VQXML_XMLSecurity::storeDecryptedOctets(DOMElement* encryptedData) {
    std::unique_ptr<XSECBinTXFMInputStream> plain(m_cipher->decryptToBinInputStream(encryptedData));
    std::string octets;
    XMLByte chunk[4096];
    while (XMLSize_t n = plain->readBytes(chunk, sizeof chunk))
        octets.append(reinterpret_cast<const char*>(chunk), n);
    char* result = static_cast<char*>(std::malloc(octets.size() + 1));
    if (result == nullptr)
        throw std::bad_alloc();
    std::memcpy(result, octets.data(), octets.size());
    result[octets.size()] = '\0';
    std::free(m_xmlDocument);
    m_xmlDocument = result;
    m_xmlDocumentLength = static_cast<int>(octets.size());
}
