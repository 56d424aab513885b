// What both sides of XML Encryption share: the cipher that goes with the
// document, and the session key buffer.
//
// Choices of ours where the rules leave the outcome open:
//  - Every call that needs the cipher and finds none for the loaded document
//    (nothing loaded, or another family's loader replaced the document) fails
//    with the family's "no document" code: 10106 when encrypting, 10311 when
//    decrypting.
//  - Loading a document starts afresh: the marks of elements encrypted so far,
//    their count and the "key name went into the data" flag name objects of the
//    previous document and are cleared with it; so is the EncryptedKey read last.
//    The position in the walk over document-level EncryptedKeys is the handle's
//    and is kept.
//  - One document per handle: loading releases the signature object of the XML
//    Signature family too, which would otherwise point into the old document,
//    and an ebXML package, which would otherwise wrap the result.
//  - An EncryptedKey read from inside an EncryptedData is forgotten when the
//    cipher lets that object go (decryption); unwrapping then fails with 10304.
#include <cstdlib>
#include <cstring>

#include <openssl/crypto.h>
#include <xercesc/dom/DOM.hpp>
#include <xsec/framework/XSECProvider.hpp>

#include "engine/EngineLifecycle.hpp"
#include "core/VQXMLException.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "vqxml/VQXML_Mime.h"
#include "xenc/KeyBuffer.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

// Another family's loader may have replaced the document under the cipher; such
// a cipher serves no more.
XENCCipher& VQXML_XMLSecurity::requireCipher(int code) const {
    if (m_cipher == nullptr || !static_cast<const VQXML_XENCCipher*>(m_cipher)->serves(m_document))
        throw VQXML_XSECException(code, "Load a document with XMLENC_setXMLDocument or XMLENC_setEncXMLDocument first");
    return *m_cipher;
}

// The marks of elements encrypted so far name objects of the cipher: they go
// with it, so a new document starts with none.
void VQXML_XMLSecurity::releaseCipherAndDocument() {
    m_encryptedKey = nullptr;
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
        if (m_cipher != nullptr)
            g_provider->releaseCipher(m_cipher);
        m_cipher = nullptr;
    } catch (...) {
        m_cipher = nullptr;
        throw VQXML_XSECException(VQXML_ERR_RELEASE);
    }
    releaseSignatureAndDocument();
}

void VQXML_XMLSecurity::loadCipherDocument(char* xml, int len, int noDocumentCode) {
    releaseCipherAndDocument();
    if (xml == nullptr || xml[0] == '\0')
        throw VQXML_XSECException(noDocumentCode);
    loadDocument(xml, len);
    m_cipher = new VQXML_XENCCipher(*g_provider, m_document);
}

// The buffer always holds m_symmKeyLen + 1 bytes, so the destructor's wipe of
// m_symmKeyLen bytes covers every key byte.
void VQXML_XMLSecurity::replaceSessionKey(unsigned char* key, int len) {
    if (m_symmKey != nullptr)
        OPENSSL_cleanse(m_symmKey, static_cast<size_t>(m_symmKeyLen));
    std::free(m_symmKey);
    m_symmKey = key;
    m_symmKeyLen = key != nullptr ? len : 0;
}

// Keeps the key bytes that fit; a longer length reads zeros after them.
void VQXML_XMLSecurity::resizeSessionKey(int len) {
    if (m_symmKey == nullptr) {
        m_symmKeyLen = len;
        return;
    }
    vqxml::KeyBuffer resized(len);
    std::memcpy(resized.get(), m_symmKey, static_cast<size_t>(len < m_symmKeyLen ? len : m_symmKeyLen));
    replaceSessionKey(resized.release(), len);
}
