// Which key a document was encrypted for, and unwrapping its session key
// (xenc/KeyUnwrapper.hpp).
//
// An EncryptedData whose ds:KeyInfo holds no EncryptedKey (only a KeyName, say)
// still has its document-level EncryptedKeys walked; the KeyName read from the
// EncryptedData stays when the EncryptedKey names none.
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ErrorFrame.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "engine/XencReferences.hpp"
#include "xenc/KeyUnwrapper.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {


struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};
using CText = std::unique_ptr<char, FreeDeleter>;

bool holdsEncryptedKey(DSIGKeyInfoList* list) {
    for (DSIGKeyInfoList::size_type i = 0; i < list->getSize(); ++i)
        if (list->item(i)->getKeyInfoType() == DSIGKeyInfo::KEYINFO_ENCRYPTEDKEY)
            return true;
    return false;
}

}  // namespace

int VQXML_XMLSecurity::XMLENC_getEncKeyInfo() {
    return vqxml::guarded(*this, "XMLENC_getEncKeyInfo > ", [&] {
        auto& cipher = static_cast<VQXML_XENCCipher&>(requireCipher(VQXML_ERR_ENC_NO_ENCRYPTED_DOCUMENT));
        DOMElement* element = findXENCElement(u"EncryptedData");
        if (element == nullptr)
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_ENCRYPTED_DATA);
        forgetNestedEncryptedKey();
        XENCEncryptedData* data = cipher.loadEncryptedData(element);
        const XENCEncryptionMethod* method = data->getEncryptionMethod();
        const vqxml::SymmetricAlgorithm* algorithm =
            vqxml::symmetricByURI(method != nullptr ? method->getAlgorithm() : nullptr);
        resizeSessionKey(algorithm != nullptr ? algorithm->keyBytes : 16);
        if (algorithm == nullptr)
            throw VQXML_XSECException(VQXML_ERR_ENC_CIPHER_SELECTOR);
        m_symmAlg = algorithm->methodCode;

        DSIGKeyInfoList* list = data->getKeyInfoList();
        if (!list->isEmpty()) {
            getKeyInfoListData(list);
            if (holdsEncryptedKey(list))
                return;
        }
        CText dataKeyName(std::exchange(m_keyName, nullptr));
        try {
            readDocumentLevelKey(cipher, element->getAttributeNS(nullptr, vqxml::xenc::kIdAttribute));
        } catch (...) {
            if (m_keyName == nullptr)
                m_keyName = dataKeyName.release();
            throw;
        }
        if (m_keyName == nullptr)
            m_keyName = dataKeyName.release();
    });
}

void VQXML_XMLSecurity::readDocumentLevelKey(XENCCipher& cipher, const XMLCh* dataId) {
    const std::vector<XENCEncryptedKey*>& keys = static_cast<VQXML_XENCCipher&>(cipher).documentKeys();
    if (keys.empty())
        return;
    if (m_encKeyIndex < 0 || static_cast<size_t>(m_encKeyIndex) >= keys.size())
        throw VQXML_XSECException(VQXML_ERR_ENC_KEYS_VISITED);
    XENCEncryptedKey* key = keys[static_cast<size_t>(m_encKeyIndex)];
    if (vqxml::xenc::refersTo(*key, dataId))
        getEncryptedKeyInfo(key);
    m_encKeyIndex += 1;
}

int VQXML_XMLSecurity::XMLENC_decryptKeyWrapKey(unsigned char* cert, int certLen, unsigned char* priKey,
                                                int priKeyLen) {
    return vqxml::guarded(*this, "XMLENC_decryptKeyWrapKey > ", [&] {
        auto& cipher = static_cast<VQXML_XENCCipher&>(requireCipher(VQXML_ERR_ENC_NO_ENCRYPTED_DOCUMENT));
        unwrapSessionKey(cipher, cipher.isDocumentKey(m_encryptedKey), vqxml::xenc::kXmlEncUnwrapCodes, cert, certLen,
                         priKey, priKeyLen);
    });
}
