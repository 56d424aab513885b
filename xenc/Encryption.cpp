// Encrypting: the document, the session key, the prefix and key name, the
// elements, and the result.
#include <cstdlib>
#include <cstring>
#include <memory>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLChar.hpp>
#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>

#include "core/ErrorFrame.hpp"
#include "core/OwnedText.hpp"
#include "core/Transcode.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "xenc/KeyBuffer.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {


// Null, empty and a single space all name the document element.
bool namesDocumentElement(const char* target) {
    return target == nullptr || target[0] == '\0' || std::strcmp(target, " ") == 0;
}

}  // namespace

int VQXML_XMLSecurity::XMLENC_setXMLDocument(char* xml, int len) {
    return vqxml::guarded(*this, "XMLENC_setXMLDocument > ", [&] {
        loadCipherDocument(xml, len, VQXML_ERR_NO_DOCUMENT);
        m_cipher->setPrettyPrint(true);
    });
}

int VQXML_XMLSecurity::XMLENC_setSymmKey(unsigned char* key, int /*keyLen: the algorithm fixes the length*/,
                                         int alg) {
    return vqxml::guarded(*this, "XMLENC_setSymmKey > ", [&] {
        const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricBySelector(alg);
        if (algorithm == nullptr)
            throw VQXML_XSECException(VQXML_ERR_ENC_CIPHER_SELECTOR);
        XENCCipher& cipher = requireCipher(VQXML_ERR_NO_DOCUMENT);
        vqxml::KeyBuffer bytes(algorithm->keyBytes);
        bytes.fill(key);
        std::unique_ptr<XSECCryptoSymmetricKey> engineKey(vqxml::newSymmetricKey(algorithm->keyType));
        if (!engineKey)
            throw VQXML_XSECException(VQXML_ERR_PROVIDER_KEY_TYPE);
        engineKey->setKey(bytes.get(), unsigned(bytes.size()));
        cipher.setKey(engineKey.release());
        replaceSessionKey(bytes.release(), algorithm->keyBytes);
        m_symmAlg = algorithm->methodCode;
    });
}

// A prefix the document could not carry is refused now rather than when the
// first element is made.
int VQXML_XMLSecurity::XMLENC_setPrefix(char* prefix) {
    return vqxml::guarded(*this, "XMLENC_setPrefix > ", [&] {
        if (prefix == nullptr || prefix[0] == '\0')
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_PREFIX);
        XENCCipher& cipher = requireCipher(VQXML_ERR_NO_DOCUMENT);
        const vqxml::XString name = vqxml::XMLT(prefix);
        if (!XMLChar1_0::isValidNCName(name.c_str(), name.size()) || name == u"xml" || name == u"xmlns")
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_PREFIX, "The prefix is not a valid XML namespace prefix");
        cipher.setXENCNSPrefix(name.c_str());
    });
}

int VQXML_XMLSecurity::XMLENC_setKeyName(char* keyName) {
    return vqxml::guarded(*this, "XMLENC_setKeyName > ", [&] {
        if (keyName == nullptr || keyName[0] == '\0')
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_KEY_NAME);
        vqxml::replaceOwnedText(m_keyName, keyName);
    });
}

int VQXML_XMLSecurity::XMLENC_encryptElement(char* target, int mode, bool withKeyName) {
    return vqxml::guarded(*this, "XMLENC_encryptElement > ", [&] {
        auto& cipher = static_cast<VQXML_XENCCipher&>(requireCipher(VQXML_ERR_NO_DOCUMENT));
        DOMElement* element = m_document->getDocumentElement();
        if (!namesDocumentElement(target))
            element = static_cast<DOMElement*>(findNode(element, vqxml::XMLT(target).c_str()));
        if (element == nullptr)
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_ELEMENT);
        const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricByMethodCode(m_symmAlg);
        const XMLCh* uri = algorithm != nullptr ? algorithm->uri : nullptr;
        if (mode == 1)
            cipher.encryptElementContent(element, uri);
        else if (mode == 2)
            cipher.encryptElement(element, uri);
        else
            throw VQXML_XSECException(VQXML_ERR_ENC_MODE);
        m_encDataCount += 1;

        XENCEncryptedData* data = cipher.getEncryptedData();
        if (withKeyName && m_keyName != nullptr && m_keyName[0] != '\0') {
            data->appendKeyName(vqxml::XMLT(vqxml::declaredEncoding(m_document).c_str(), m_keyName).c_str(), false);
            m_keyNameInData = true;
        }
        auto* node = new VQXML_EncDataNode{cipher.identifierOf(data), nullptr};
        VQXML_EncDataNode** tail = &m_encDataList;
        while (*tail != nullptr)
            tail = &(*tail)->next;
        *tail = node;
    });
}

// Unlike every other method, the text carries no method name.
int VQXML_XMLSecurity::XMLENC_encrypt() {
    return vqxml::guarded(*this, "", [&] {
        requireCipher(VQXML_ERR_NO_DOCUMENT);
        storeResultDocument();
    });
}
