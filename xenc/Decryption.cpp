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

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECBinTXFMInputStream.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ErrorFrame.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

constexpr int kNoDocument = 10311;

const XMLCh* algorithmOf(const XENCEncryptedData* data) {
    const XENCEncryptionMethod* method = data->getEncryptionMethod();
    return method != nullptr ? method->getAlgorithm() : nullptr;
}

bool holdsOctets(const XENCEncryptedData* data) {
    const DOMElement* element = data->getElement();
    return element == element->getOwnerDocument()->getDocumentElement() &&
           !XMLString::equals(data->getType(), DSIGConstants::s_unicodeStrURIXENC_ELEMENT);
}

}  // namespace

DOMElement* VQXML_XMLSecurity::findXENCElement(const XMLCh* localName) const {
    DOMNodeList* found = m_document->getElementsByTagNameNS(DSIGConstants::s_unicodeStrURIXENC, localName);
    return found->getLength() > 0 ? static_cast<DOMElement*>(found->item(0)) : nullptr;
}

// An EncryptedKey read from inside an EncryptedData belongs to that object,
// which the cipher deletes when it loads or decrypts another one.
void VQXML_XMLSecurity::forgetNestedEncryptedKey() {
    if (!static_cast<VQXML_XENCCipher*>(m_cipher)->isDocumentKey(m_encryptedKey))
        m_encryptedKey = nullptr;
}

int VQXML_XMLSecurity::XMLENC_setEncXMLDocument(char* xml, int len) {
    return vqxml::guarded(*this, "XMLENC_setEncXMLDocument > ", [&] { loadCipherDocument(xml, len, kNoDocument); });
}

int VQXML_XMLSecurity::XMLENC_decrypt() {
    return vqxml::guarded(*this, "XMLENC_decrypt > ", [&] {
        XENCCipher& cipher = requireCipher(kNoDocument);
        XENCEncryptedData* data = cipher.getEncryptedData();
        while (data != nullptr) {
            const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricByURI(algorithmOf(data));
            if (algorithm == nullptr)
                throw VQXML_XSECException(10301);
            if (m_symmKey == nullptr)
                throw VQXML_XSECException(10314);
            std::unique_ptr<XSECCryptoSymmetricKey> key(vqxml::newSymmetricKey(algorithm->keyType));
            if (!key)
                throw VQXML_XSECException(11102);
            key->setKey(m_symmKey, unsigned(m_symmKeyLen));
            cipher.setKey(key.release());
            forgetNestedEncryptedKey();
            if (holdsOctets(data)) {
                storeDecryptedOctets(data->getElement());
                return;
            }
            cipher.decryptElement(data->getElement());
            DOMElement* next = findXENCElement(u"EncryptedData");
            data = next != nullptr ? cipher.loadEncryptedData(next) : nullptr;
        }
        // The removed elements are left to the document, which frees them with
        // itself: document-level key objects may still point at them.
        while (DOMElement* key = findXENCElement(u"EncryptedKey"))
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
