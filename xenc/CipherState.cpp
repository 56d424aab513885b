// What both sides of XML Encryption share: the cipher that goes with the
// document, and the session key buffer.
//
// Choices of ours where the rules leave the outcome open:
//  - Every call that needs the cipher and finds none for the loaded document
//    (nothing loaded, or another family's loader replaced the document) fails
//    with the family's "no document" code: 10106 when encrypting, 10311 when
//    decrypting.
//  - Loading a document starts afresh (core/DocumentReset.cpp): the marks of
//    elements encrypted so far, their count, the "key name went into the data"
//    flag and the EncryptedKey read last go with the previous document.
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

void VQXML_XMLSecurity::loadCipherDocument(char* xml, int len, int noDocumentCode) {
    loadAfresh([&] {
        if (xml == nullptr || xml[0] == '\0')
            throw VQXML_XSECException(noDocumentCode);
        loadDocument(xml, len);
        m_cipher = new VQXML_XENCCipher(*g_provider, m_document);
    });
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
