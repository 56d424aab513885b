// Every loader of every family starts from an empty handle and leaves an empty
// one when it fails.
//
// The engine objects refer into the document and go first (the WS-Security
// engine, the cipher with the marks of elements encrypted so far, which name its
// objects, the signature), then the document and the ebXML package around it.
// A loader that fails part way releases what it made: a later call then finds no
// document and says so, with its family's "no document" status, rather than act
// on the previous document or on half of the new one. The position in the walk
// over document-level EncryptedKeys, the session key and the names read last are
// the handle's and stay.
#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECProvider.hpp>

#include "engine/EngineLifecycle.hpp"
#include "core/VQXMLException.hpp"
#include "engine/VQXML_XSECProvider.hpp"
#include "vqxml/VQXML_Mime.h"
#include "vqxml/VQXML_XMLSecurity.h"

void VQXML_XMLSecurity::releaseLoadedDocument() {
    m_encryptedKey = nullptr;
    m_signatureElement = nullptr;
    m_signingKey = nullptr;
    while (m_encDataList != nullptr) {
        VQXML_EncDataNode* next = m_encDataList->next;
        delete m_encDataList;
        m_encDataList = next;
    }
    m_encDataCount = 0;
    m_keyNameInData = false;
    delete m_mimeMessage;
    m_mimeMessage = nullptr;
    try {
        if (m_wsSecurity != nullptr)
            g_provider->releaseWSSecSecurity(std::exchange(m_wsSecurity, nullptr));
        if (m_cipher != nullptr)
            g_provider->releaseCipher(std::exchange(m_cipher, nullptr));
        if (m_signature != nullptr)
            g_provider->releaseSignature(std::exchange(m_signature, nullptr));
        if (m_document != nullptr)
            std::exchange(m_document, nullptr)->release();
    } catch (...) {
        m_wsSecurity = nullptr;
        m_cipher = nullptr;
        m_signature = nullptr;
        m_document = nullptr;
        throw VQXML_XSECException(VQXML_ERR_RELEASE);
    }
}

void VQXML_XMLSecurity::loadAfresh(const std::function<void()>& load) {
    releaseLoadedDocument();
    try {
        load();
    } catch (...) {
        try {
            releaseLoadedDocument();
        } catch (...) {
            // The load's own failure is the one to report.
        }
        throw;
    }
}
