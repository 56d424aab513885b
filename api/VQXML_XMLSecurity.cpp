// Construction, destruction and plain accessors of the context.
#include "vqxml/VQXML_XMLSecurity.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <openssl/crypto.h>
#include <xercesc/dom/DOM.hpp>
#include "engine/VQXML_XSECProvider.hpp"

#include "engine/EngineLifecycle.hpp"
#include "core/VQXMLException.hpp"
#include "vqxml/VQXML_Mime.h"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

const char kVersion[] = "V1.0.0.7";
constexpr size_t kVersionBufferSize = 16;
constexpr size_t kErrorBufferSize = 1024;

template <class T>
void freeAndClear(T*& buffer) {
    std::free(buffer);
    buffer = nullptr;
}

// Secrets are wiped before their memory goes back to the allocator.
void wipeAndClear(unsigned char*& buffer, size_t len) {
    if (buffer != nullptr)
        OPENSSL_cleanse(buffer, len);
    freeAndClear(buffer);
}

}  // namespace

VQXML_XMLSecurity::VQXML_XMLSecurity(char* /*locale: accepted, never used*/)
    : m_ebXml(false),
      m_signature(nullptr),
      m_cipher(nullptr),
      m_wsSecurity(nullptr),
      m_document(nullptr),
      m_domImpl(nullptr),
      m_errorCode(0),
      m_version(nullptr),
      m_errorMsg(nullptr),
      m_subjectName(nullptr),
      m_serialNumber(nullptr),
      m_issuer(nullptr),
      m_appendIssuerSerial(false),
      m_appendSubjectName(false),
      m_appendKeyValue(true),
      m_removeSecurityHeader(true),
      m_keyName(nullptr),
      m_cert(nullptr),
      m_certLen(0),
      m_priKeyInfo(nullptr),
      m_priKeyEncRandom(nullptr),
      m_signatureMethod(0),
      m_hashMethod(0),
      m_xmlDocument(nullptr),
      m_xmlDocumentLength(0),
      m_encryptedKey(nullptr),
      m_symmKey(nullptr),
      m_symmKeyLen(0),
      m_symmAlg(0),
      m_keyWrapAlg(0),
      m_encDataCount(0),
      m_encDataList(nullptr),
      m_encKeyIndex(0),
      m_keyNameInData(false),
      m_encKeyText1(nullptr),
      m_encKeyText2(nullptr),
      m_refHashMethod(4),
      m_refCanonMethod(0),
      m_mimeMessage(nullptr),
      m_allowExternalReferences(false) {
    vqxml::joinEngines();
    m_errorMsg = static_cast<char*>(std::calloc(kErrorBufferSize, 1));
    m_version = static_cast<char*>(std::calloc(kVersionBufferSize, 1));
    if (m_errorMsg == nullptr || m_version == nullptr) {
        std::free(m_errorMsg);
        std::free(m_version);
        vqxml::leaveEngines();
        throw VQXML_XSECException(VQXML_ERR_MEMORY);
    }
    std::memcpy(m_version, kVersion, sizeof kVersion);
    static const XMLCh kCore[] = {chLatin_C, chLatin_o, chLatin_r, chLatin_e, chNull};
    m_domImpl = DOMImplementationRegistry::getDOMImplementation(kCore);
}

VQXML_XMLSecurity::~VQXML_XMLSecurity() {
    freeAndClear(m_xmlDocument);
    freeAndClear(m_subjectName);
    freeAndClear(m_serialNumber);
    freeAndClear(m_issuer);
    freeAndClear(m_keyName);
    wipeAndClear(m_priKeyEncRandom,
                 m_priKeyEncRandom != nullptr ? std::strlen(reinterpret_cast<char*>(m_priKeyEncRandom)) : 0);
    wipeAndClear(m_priKeyInfo, static_cast<size_t>(m_priKeyInfoLength));
    freeAndClear(m_cert);
    wipeAndClear(m_symmKey, static_cast<size_t>(m_symmKeyLen));
    freeAndClear(m_encKeyText1);
    freeAndClear(m_encKeyText2);
    freeAndClear(m_version);
    freeAndClear(m_errorMsg);
    try {
        releaseLoadedDocument();
    } catch (...) {
        // The handle goes away all the same; nothing is left to report to.
    }
    vqxml::leaveEngines();
}

char* VQXML_XMLSecurity::getVersion() { return m_version; }
char* VQXML_XMLSecurity::getLastErrorMsg() { return m_errorMsg; }
int VQXML_XMLSecurity::getLaseErrorCode() { return m_errorCode; }
char* VQXML_XMLSecurity::getXMLDocument() { return m_xmlDocument; }
int VQXML_XMLSecurity::getXMLDocumentLength() { return m_xmlDocumentLength; }
char* VQXML_XMLSecurity::getKeyName() { return m_keyName; }
char* VQXML_XMLSecurity::getIssuer() { return m_issuer; }
char* VQXML_XMLSecurity::getSerialNumber() { return m_serialNumber; }
char* VQXML_XMLSecurity::getSubjectName() { return m_subjectName; }
unsigned char* VQXML_XMLSecurity::getPriKeyInfo() { return m_priKeyInfo; }
unsigned char* VQXML_XMLSecurity::getPriKeyEncRandom() { return m_priKeyEncRandom; }

int VQXML_XMLSecurity::getCert(unsigned char** cert) {
    *cert = m_cert;
    return m_cert != nullptr ? m_certLen : 0;
}

int VQXML_XMLSecurity::appendX509IssuerSerialNumber() {
    m_appendIssuerSerial = true;
    return 0;
}

int VQXML_XMLSecurity::appendX509SubjectName() {
    m_appendSubjectName = true;
    return 0;
}

int VQXML_XMLSecurity::appendKeyValue() {
    m_appendKeyValue = true;
    return 0;
}

int VQXML_XMLSecurity::SOAPSEC_removeSecurityHeader() {
    m_removeSecurityHeader = true;
    return 0;
}

void VQXML_XMLSecurity::setEbXml() { m_ebXml = true; }

// 0 for an algorithm no caller chooses.
int VQXML_XMLSecurity::getSymmAlg() {
    const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricByMethodCode(m_symmAlg);
    return algorithm != nullptr && algorithm->selector > 0 ? algorithm->selector : 0;
}

int VQXML_XMLSecurity::getKeyWrapAlg() {
    const vqxml::KeyTransport* transport = vqxml::transportByMethodCode(m_keyWrapAlg);
    return transport != nullptr && transport->selector > 0 ? transport->selector : 0;
}

int VQXML_XMLSecurity::getSignatureAlg() {
    struct Pair { int signature, hash, selector; };
    static const Pair kPairs[] = {{2, 1, 1}, {3, 1, 2}, {5, 1, 3}, {5, 7, 7}, {3, 4, 5}};
    for (const Pair& p : kPairs)
        if (p.signature == m_signatureMethod && p.hash == m_hashMethod)
            return p.selector;
    return 0;
}
