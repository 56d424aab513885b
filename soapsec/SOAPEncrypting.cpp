// Securing an envelope: the session key, encrypted parts and their recipients.
#include <cstdlib>
#include <cstring>
#include <memory>

#include <xsec/enc/XSECCryptoSymmetricKey.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>

#include "core/ErrorFrame.hpp"
#include "core/OwnedText.hpp"
#include "core/Transcode.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/XencReferences.hpp"
#include "soapsec/wssec/VQXML_WSSecSecurity.hpp"
#include "xenc/KeyBuffer.hpp"
#include "xenc/XencAlgorithms.hpp"

namespace {

vqxml::XString fromUTF8(const std::string& text) {
    return vqxml::XMLT("UTF-8", text.c_str());
}

}  // namespace

int VQXML_XMLSecurity::SOAPSEC_setSymmKey(unsigned char* key, int /*len: the algorithm fixes it*/, int alg) {
    return vqxml::guarded(*this, "SOAPSEC_setSymmKey > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        engine.createNewCipher(m_document, nullptr);
        const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricBySelector(alg);
        if (algorithm == nullptr)
            throw VQXML_XSECException(VQXML_ERR_SOAP_CIPHER_SELECTOR);
        vqxml::KeyBuffer bytes(algorithm->keyBytes);
        bytes.fill(key);
        std::unique_ptr<XSECCryptoSymmetricKey> engineKey(vqxml::newSymmetricKey(algorithm->keyType));
        if (!engineKey)
            throw VQXML_XSECException(VQXML_ERR_SOAP_CIPHER_SELECTOR, "That cipher is not available");
        engineKey->setKey(bytes.get(), unsigned(bytes.size()));
        engine.setCipherKey(engineKey.release());
        replaceSessionKey(bytes.release(), algorithm->keyBytes);
        m_symmAlg = algorithm->methodCode;
    });
}

int VQXML_XMLSecurity::SOAPSEC_encryptElement(char* target, int type, bool withKeyName) {
    return vqxml::guarded(*this, "SOAPSEC_encryptElement > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        const bool noTarget = target == nullptr || target[0] == '\0' || std::strcmp(target, " ") == 0;
        if (noTarget || type == 1)
            engine.encryptElementContent(target, m_symmAlg, nullptr);
        else if (type == 2)
            engine.encryptElement(target, m_symmAlg, nullptr);
        else
            throw VQXML_XSECException(VQXML_ERR_SOAP_TARGET);
        m_encDataCount += 1;
        XENCEncryptedData* data = engine.getEncryptedData();
        if (withKeyName && m_keyName != nullptr && m_keyName[0] != '\0') {
            m_keyNameInData = true;
            data->appendKeyName(vqxml::XMLT(vqxml::declaredEncoding(m_document).c_str(), m_keyName).c_str(), false);
        }
        if (const XMLCh* id = engine.getEncryptedDataId()) {
            VQXML_EncDataNode** tail = &m_encDataList;
            while (*tail != nullptr)
                tail = &(*tail)->next;
            *tail = new VQXML_EncDataNode{id, nullptr};
        }
    });
}

int VQXML_XMLSecurity::SOAPSEC_setEncKeyName(char* name) {
    return vqxml::guarded(*this, "SOAPSEC_setEncKeyName > ", [&] {
        if (name == nullptr || name[0] == '\0')
            throw VQXML_XSECException(VQXML_ERR_SOAP_ENC_NO_KEY_NAME);
        vqxml::replaceOwnedText(m_keyName, name);
    });
}

int VQXML_XMLSecurity::SOAPSEC_encryptKeyWrapKey(unsigned char* key, int len, int wrapAlg) {
    return vqxml::guarded(*this, "SOAPSEC_encryptKeyWrapKey > ", [&] {
        const vqxml::KeyTransport* transport = vqxml::transportBySelector(wrapAlg);
        if (transport == nullptr)
            throw VQXML_XSECException(VQXML_ERR_SOAP_TRANSPORT_SELECTOR);
        if (key == nullptr || len <= 0)
            throw VQXML_XSECException(VQXML_ERR_SOAP_NO_KEY_DATA);
        if (m_symmKey == nullptr || m_symmKeyLen <= 0)
            throw VQXML_XSECException(VQXML_ERR_SOAP_NO_SESSION_KEY);
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        XENCEncryptedKey* encryptedKey = nullptr;
        if (vqxml::wrapsWithSharedKey(*transport)) {
            engine.setKeyWrapKey(vqxml::newKeyEncryptionKey(*transport, key, len, VQXML_ERR_SOAP_NO_KEY_DATA));
            encryptedKey = engine.encryptKey(m_symmKey, unsigned(m_symmKeyLen), *transport);
        } else {
            VQTKCryptoKeyRSA* rsa = createRSAKey(key, len, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
            const std::string issuer = rsa->issuerName();
            const std::string serial = rsa->serialNumber();
            engine.setKeyWrapKey(rsa);
            encryptedKey = engine.encryptKey(m_symmKey, unsigned(m_symmKeyLen), *transport);
            if (m_appendIssuerSerial)
                engine.getSecurityTokenReference(encryptedKey, 0)
                    ->setX509IssuerSerial(fromUTF8(issuer).c_str(), fromUTF8(serial).c_str());
        }
        engine.addEncryptedKeyList(encryptedKey);
        if (m_keyName != nullptr) {
            encryptedKey->appendKeyName(
                vqxml::XMLT(vqxml::declaredEncoding(m_document).c_str(), m_keyName).c_str(), false);
            std::free(m_keyName);
            m_keyName = nullptr;
        }
        for (const VQXML_EncDataNode* node = m_encDataList; node != nullptr; node = node->next)
            vqxml::xenc::addDataReference(*encryptedKey, node->id, false);
        m_keyWrapAlg = transport->methodCode;
    });
}

int VQXML_XMLSecurity::SOAPSEC_encrypt() {
    return vqxml::guarded(*this, "SOAPSEC_encrypt > ", [&] {
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        if (m_encDataCount > 1 && m_keyWrapAlg == 0)
            for (const VQXML_EncDataNode* node = m_encDataList; node != nullptr; node = node->next)
                engine.appendDataReference(node->id);
        engine.encrypt();
        storeResultDocument();
    });
}
