// Wrapping the session key for a recipient, and where the EncryptedKey goes.
//
// With no element encrypted yet on a fresh document there is no EncryptedData to
// hold the key: that is refused (10302). An EncryptedKey refers to its
// EncryptedData through a ReferenceList of DataReference URIs, "#" and the data's
// Id ("EncDataId-<n>", the smallest n the document does not use yet).
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGKeyInfoX509.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ErrorFrame.hpp"
#include "core/Transcode.hpp"
#include "engine/CertificateAppending.hpp"
#include "engine/ParkedObjects.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "engine/XencReferences.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// "EncKeyId-" and the decimal value of 4 random bytes.
vqxml::XString encryptedKeyIdentifier() {
    unsigned int r = 0;
    XSECPlatformUtils::g_cryptoProvider->getRandom(reinterpret_cast<unsigned char*>(&r), sizeof r);
    char id[32] = {};
    std::snprintf(id, sizeof id, "EncKeyId-%u", r);
    return vqxml::XMLT(id);
}

}  // namespace

int VQXML_XMLSecurity::XMLENC_encryptKeyWrapKey(unsigned char* key, int keyLen, int alg) {
    return vqxml::guarded(*this, "XMLENC_encryptKeyWrapKey > ", [&] {
        const vqxml::KeyTransport* transport = vqxml::transportBySelector(alg);
        if (transport == nullptr)
            throw VQXML_XSECException(VQXML_ERR_ENC_TRANSPORT_SELECTOR);
        if (key == nullptr || keyLen <= 0)
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_KEY);
        if (m_symmKey == nullptr || m_symmKeyLen <= 0)
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_SESSION_KEY);
        auto& cipher = static_cast<VQXML_XENCCipher&>(requireCipher(VQXML_ERR_NO_DOCUMENT));
        const bool documentLevel = m_encDataCount > 1;
        if (!documentLevel && cipher.getEncryptedData() == nullptr)
            throw VQXML_XSECException(VQXML_ERR_ENC_NO_ELEMENT, "No element has been encrypted yet: the key would serve nothing");

        std::unique_ptr<XENCEncryptedKey> encryptedKey(wrapSessionKey(cipher, transport->uri, transport->methodCode, key, keyLen));
        DOMElement* element = encryptedKey->getElement();
        const vqxml::XString id = encryptedKeyIdentifier();
        element->setAttributeNS(nullptr, vqxml::xenc::kIdAttribute, id.c_str());
        element->setIdAttributeNS(nullptr, vqxml::xenc::kIdAttribute, true);
        m_keyWrapAlg = transport->methodCode;
        if (m_keyName != nullptr && !m_keyNameInData) {
            encryptedKey->appendKeyName(
                vqxml::XMLT(vqxml::declaredEncoding(m_document).c_str(), m_keyName).c_str(), false);
            std::free(m_keyName);
            m_keyName = nullptr;
        }
        for (const VQXML_EncDataNode* node = m_encDataList; node != nullptr; node = node->next)
            vqxml::xenc::addDataReference(*encryptedKey, node->id, cipher.getPrettyPrint());

        if (documentLevel) {
            DOMElement* root = m_document->getDocumentElement();
            root->insertBefore(element, root->getFirstChild());
            cipher.adoptDocumentKey(encryptedKey.release());
        } else {
            // Moves the element into the EncryptedData's ds:KeyInfo.
            cipher.getEncryptedData()->appendEncryptedKey(encryptedKey.release());
        }
    });
}

// A new EncryptedKey (not yet in the document) holding the session key; an RSA
// one names its recipient in an X509Data.
XENCEncryptedKey* VQXML_XMLSecurity::wrapSessionKey(XENCCipher& cipher, const XMLCh* transportURI,
                                                    int transportCode, unsigned char* key, int keyLen) {
    const vqxml::KeyTransport& transport = *vqxml::transportByMethodCode(transportCode);
    if (vqxml::wrapsWithSharedKey(transport)) {
        cipher.setKEK(vqxml::newKeyEncryptionKey(transport, key, keyLen, VQXML_ERR_ENC_NO_KEY));
        return cipher.encryptKey(m_symmKey, unsigned(m_symmKeyLen), transportURI);
    }
    VQTKCryptoKeyRSA* rsa = createRSAKey(key, keyLen, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    cipher.setKEK(rsa);
    std::unique_ptr<XENCEncryptedKey> encryptedKey(
        cipher.encryptKey(m_symmKey, unsigned(m_symmKeyLen), transportURI, vqxml::writtenMgf(transport)));
    DSIGKeyInfoX509* x509 = encryptedKey->appendX509Data();
    writeX509Names(x509, rsa->subjectName(), rsa->issuerName(), rsa->serialNumber());
    vqxml::appendX509Certificate(*x509, rsa->certificateDER(), [&] { vqxml::park(encryptedKey.release()); });
    return encryptedKey.release();
}
