#include "soapsec/wssec/VQXML_WSSecSecurity.hpp"

#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include <openssl/x509.h>
#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGKeyInfoList.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/enc/XSECCryptoKey.hpp>
#include <xsec/framework/XSECEnv.hpp>
#include <xsec/framework/XSECProvider.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>

#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "dsig/AlgorithmCodes.hpp"
#include "dsig/IdResolution.hpp"
#include "dsig/KeyBinding.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "dsig/Signing.hpp"
#include "dsig/VerificationLimits.hpp"
#include "dsig/Verifier.hpp"
#include "dsig/VerifiedCoverage.hpp"
#include "engine/KeyInfoGuard.hpp"
#include "engine/VQXMLURIResolver.hpp"
#include "engine/VQXMLXENCCipher.hpp"
#include "engine/wssec/WssNames.hpp"
#include "xenc/XencAlgorithms.hpp"

XERCES_CPP_NAMESPACE_USE
using namespace vqxml::wss;
using XString = std::basic_string<XMLCh>;

namespace {

constexpr int kNoDocument = 10400;
constexpr int kNoHeader = 10401;
constexpr int kBadTarget = 10501;
constexpr int kBadHeader = 10508;
constexpr int kNotVerified = 11213;

XString randomId(const char* prefix) {
    unsigned int r = 0;
    XSECPlatformUtils::g_cryptoProvider->getRandom(reinterpret_cast<unsigned char*>(&r), sizeof r);
    char id[40] = {};
    std::snprintf(id, sizeof id, "%s%u", prefix, r);
    return vqxml::XMLT(id);
}

// The wsu:Id of element, given one (with its namespace declared there) if it has
// no identifier yet.
XString identify(DOMElement* element) {
    for (const XMLCh* present : {element->getAttributeNS(kWsu, u"Id"), element->getAttributeNS(nullptr, u"Id")})
        if (present != nullptr && *present != 0)
            return present;
    XString id = randomId("id-");
    element->setAttributeNS(kXmlns, u"xmlns:wsu", kWsu);
    element->setAttributeNS(kWsu, u"wsu:Id", id.c_str());
    element->setIdAttributeNS(kWsu, u"Id", true);
    return id;
}

}  // namespace

VQXML_WSSecSecurity::VQXML_WSSecSecurity(XSECProvider& provider) : m_provider(provider) {}

VQXML_WSSecSecurity::VQXML_WSSecSecurity(XSECProvider& provider, DOMDocument* doc)
    : m_provider(provider), m_document(doc), m_env(std::make_unique<XSECEnv>(doc)) {}

VQXML_WSSecSecurity::~VQXML_WSSecSecurity() {
    m_encryptedKeys.reset();
    m_madeKeys.clear();
    m_tokenReferences.clear();
    delete m_signingKey;
    delete m_verificationKey;
    delete m_keyWrapKey;
    if (m_signature != nullptr)
        m_provider.releaseSignature(m_signature);
    if (m_cipher != nullptr)
        m_provider.releaseCipher(m_cipher);
}

// ---------------------------------------------------------------- the header

DOMElement* VQXML_WSSecSecurity::securityHeader(bool create) {
    if (m_document == nullptr)
        throw VQXML_XSECException(kNoDocument);
    DOMElement* header = soapPart(m_document, u"Header");
    if (header == nullptr) {
        if (!create)
            return nullptr;
        throw VQXML_XSECException(kNoHeader);
    }
    DOMElement* security = childElement(header, kWsse, u"Security");
    if (security != nullptr || !create)
        return security;
    security = m_document->createElementNS(kWsse, u"wsse:Security");
    security->setAttributeNS(kXmlns, u"xmlns:wsse", kWsse);
    security->setAttributeNS(kXmlns, u"xmlns:wsu", kWsu);
    const XMLCh* envelopeNs = header->getNamespaceURI();
    const XMLCh* prefix = header->getPrefix();
    XString qname = prefix != nullptr ? XString(prefix) + u":mustUnderstand" : XString(u"mustUnderstand");
    security->setAttributeNS(envelopeNs, qname.c_str(), u"1");
    header->insertBefore(security, header->getFirstChild());
    return security;
}

void VQXML_WSSecSecurity::prependToHeader(DOMElement* entry) {
    DOMElement* security = securityHeader(true);
    security->insertBefore(entry, security->getFirstChild());
}

// ---------------------------------------------------------------- signing

DSIGSignature& VQXML_WSSecSecurity::signature() const {
    if (m_signature == nullptr)
        throw VQXML_XSECException(10400, "No signature: choose the signature algorithm first");
    return *m_signature;
}

void VQXML_WSSecSecurity::createBlankSignature(DOMDocument* doc, int canonicalizationMethod, int signatureMethod,
                                               int hashMethod) {
    m_document = doc;
    if (!m_env)
        m_env = std::make_unique<XSECEnv>(doc);
    const XMLCh* signatureURI = vqxml::signatureMethodURI({signatureMethod, hashMethod});
    if (signatureURI == nullptr)
        throw VQXML_XSECException(10402, "That signature algorithm is not available");
    securityHeader(true);
    if (m_signature != nullptr)
        m_provider.releaseSignature(m_signature);
    m_signature = nullptr;
    m_signature = m_provider.newSignature();
    m_signature->setPrettyPrint(false);
    vqxml::enableIdAttributes(m_signature);
    vqxml::installURIResolver(*m_signature, false);
    const XMLCh* c14n = vqxml::canonicalizationURI(canonicalizationMethod != 0 ? canonicalizationMethod : 3);
    m_signatureElement = m_signature->createBlankSignature(doc, c14n, signatureURI);
    prependToHeader(m_signatureElement);
    m_signatureMethod = signatureMethod;
    m_hashMethod = hashMethod;
}

DSIGReference* VQXML_WSSecSecurity::createReference(const XMLCh* uri, int hashMethod, char* /*type*/) {
    DSIGSignature& sig = signature();
    const XMLCh* digestURI = vqxml::digestMethodURI(hashMethod);
    if (digestURI == nullptr)
        throw VQXML_XSECException(10404, "That digest algorithm is not available");
    XString target;
    if (uri == nullptr) {
        DOMElement* body = soapPart(m_document, u"Body");
        if (body == nullptr)
            throw VQXML_XSECException(kNoDocument, "The envelope has no SOAP Body to sign");
        target = u"#" + identify(body);
        uri = target.c_str();
    }
    return sig.createReference(uri, digestURI);
}

void VQXML_WSSecSecurity::setSigningKey(XSECCryptoKey* key) {
    delete m_signingKey;
    m_signingKey = key;
}

void VQXML_WSSecSecurity::setX509IssuerSerial(const XMLCh* issuer, const XMLCh* serial) {
    m_issuer = issuer != nullptr ? issuer : u"";
    m_serial = serial != nullptr ? serial : u"";
    m_bstBase64.clear();
}

void VQXML_WSSecSecurity::setX509B64bst(const XMLCh* base64) {
    m_bstBase64 = base64 != nullptr ? base64 : u"";
    m_issuer.clear();
    m_serial.clear();
}

void VQXML_WSSecSecurity::setSignKeyName(const XMLCh* name) {
    signature().appendKeyName(name);
}

// The token and the token reference go in after signing: neither is signed, and
// the Signature's KeyInfo is the engine's only once a KeyName asked for it.
void VQXML_WSSecSecurity::sign() {
    DSIGSignature& sig = signature();
    if (m_signingKey == nullptr)
        throw VQXML_XSECException(10405, "No signing key was set");
    XSECCryptoKey* key = std::exchange(m_signingKey, nullptr);
    sig.setSigningKey(key);
    vqxml::signSignature(sig, m_signatureElement, key);
    if (m_bstBase64.empty() && m_issuer.empty())
        return;
    DOMElement* signatureElement = m_signatureElement;
    DOMElement* keyInfo = childElement(signatureElement, kDsig, u"KeyInfo");
    if (keyInfo == nullptr) {
        const XMLCh* prefix = signatureElement->getPrefix();
        keyInfo = m_document->createElementNS(kDsig, prefix != nullptr ? (XString(prefix) + u":KeyInfo").c_str()
                                                                        : u"KeyInfo");
        DOMElement* object = childElement(signatureElement, kDsig, u"Object");
        signatureElement->insertBefore(keyInfo, object);
    }
    auto reference = VQXML_WSSecSecurityTokenReference::create(m_env.get(), keyInfo);
    if (!m_issuer.empty()) {
        reference->setX509IssuerSerial(m_issuer.c_str(), m_serial.c_str());
    } else {
        const XString id = randomId("X509-");
        DOMElement* token = m_document->createElementNS(kWsse, u"wsse:BinarySecurityToken");
        token->setAttributeNS(nullptr, u"EncodingType", kBase64Binary);
        token->setAttributeNS(nullptr, u"ValueType", kX509v3);
        token->setAttributeNS(kWsu, u"wsu:Id", id.c_str());
        token->appendChild(m_document->createTextNode(m_bstBase64.c_str()));
        signatureElement->getParentNode()->insertBefore(token, signatureElement);
        reference->setTokenReference(id.c_str());
    }
    m_tokenReferences.push_back(std::move(reference));
}

// ---------------------------------------------------------------- encrypting

VQXML_XENCCipher& VQXML_WSSecSecurity::cipher() {
    if (m_cipher == nullptr)
        throw VQXML_XSECException(10504, "No encryption pass: set the session key first");
    return *m_cipher;
}

void VQXML_WSSecSecurity::createNewCipher(DOMDocument* doc, XSECEnv* /*env*/) {
    if (doc == nullptr)
        throw VQXML_XSECException(kNoDocument);
    m_document = doc;
    if (!m_env)
        m_env = std::make_unique<XSECEnv>(doc);
    m_headerDataRefs.clear();
    if (m_cipher == nullptr)
        m_cipher = new VQXML_XENCCipher(m_provider, doc);
}

void VQXML_WSSecSecurity::setCipherKey(XSECCryptoKey* key) {
    cipher().setKey(key);
}

void VQXML_WSSecSecurity::encryptTarget(const char* target, int encryptionMethod, bool content) {
    VQXML_XENCCipher& c = cipher();
    const vqxml::SymmetricAlgorithm* algorithm = vqxml::symmetricByMethodCode(encryptionMethod);
    if (algorithm == nullptr)
        throw VQXML_XSECException(10500);
    DOMElement* element = nullptr;
    if (target == nullptr || target[0] == '\0' || std::strcmp(target, " ") == 0) {
        element = soapPart(m_document, u"Body");
    } else if (target[0] == '#') {
        if (elementsWithId(m_document, vqxml::XMLT(target + 1).c_str(), &element) > 1)
            throw VQXML_XSECException(kBadTarget, "More than one element carries that Id");
    } else {
        DOMNodeList* found = m_document->getElementsByTagName(vqxml::XMLT(target).c_str());
        element = found->getLength() > 0 ? static_cast<DOMElement*>(found->item(0)) : nullptr;
    }
    if (element == nullptr)
        throw VQXML_XSECException(kBadTarget, "No element of the envelope matches the encryption target");
    if (element == m_document->getDocumentElement() || element == soapPart(m_document, u"Header") ||
        (!content && element == soapPart(m_document, u"Body")))
        throw VQXML_XSECException(kBadTarget, "The envelope, its Header and its Body element stay in clear");
    if (content)
        c.encryptElementContent(element, algorithm->uri);
    else
        c.encryptElement(element, algorithm->uri);
}

void VQXML_WSSecSecurity::encryptElementContent(const char* target, int encryptionMethod, const XMLCh*) {
    encryptTarget(target, encryptionMethod, true);
}

void VQXML_WSSecSecurity::encryptElement(const char* target, int encryptionMethod, const XMLCh*) {
    encryptTarget(target, encryptionMethod, false);
}

XENCEncryptedData* VQXML_WSSecSecurity::getEncryptedData() const {
    return m_cipher != nullptr ? m_cipher->getEncryptedData() : nullptr;
}

const XMLCh* VQXML_WSSecSecurity::getEncryptedDataId() {
    XENCEncryptedData* data = getEncryptedData();
    return data != nullptr ? cipher().identifierOf(data) : nullptr;
}

void VQXML_WSSecSecurity::setKeyWrapKey(XSECCryptoKey* key) {
    delete m_keyWrapKey;
    m_keyWrapKey = key;
}

XENCEncryptedKey* VQXML_WSSecSecurity::encryptKey(const unsigned char* key, unsigned int len,
                                                  const vqxml::Algorithm& transport) {
    VQXML_XENCCipher& c = cipher();
    if (m_keyWrapKey == nullptr)
        throw VQXML_XSECException(10503, "No key-encryption key was set");
    c.setKEK(m_keyWrapKey);
    m_keyWrapKey = nullptr;
    std::unique_ptr<XENCEncryptedKey> made(c.encryptKey(key, len, transport.uri, vqxml::writtenMgf(transport)));
    const XString id = randomId("EncKeyId-");
    made->getElement()->setAttributeNS(nullptr, u"Id", id.c_str());
    made->getElement()->setIdAttributeNS(nullptr, u"Id", true);
    m_madeKeys.push_back(std::move(made));
    return m_madeKeys.back().get();
}

VQXML_WSSecSecurityTokenReference* VQXML_WSSecSecurity::getSecurityTokenReference(XENCEncryptedKey* key,
                                                                                  int /*index*/) {
    DOMElement* element = key->getElement();
    DOMElement* keyInfo = childElement(element, kDsig, u"KeyInfo");
    if (keyInfo == nullptr) {
        keyInfo = m_document->createElementNS(kDsig, u"ds:KeyInfo");
        keyInfo->setAttributeNS(kXmlns, u"xmlns:ds", kDsig);
        DOMElement* method = childElement(element, kXenc, u"EncryptionMethod");
        element->insertBefore(keyInfo, method != nullptr ? method->getNextSibling() : element->getFirstChild());
    }
    m_tokenReferences.push_back(VQXML_WSSecSecurityTokenReference::create(m_env.get(), keyInfo));
    return m_tokenReferences.back().get();
}

void VQXML_WSSecSecurity::addEncryptedKeyList(XENCEncryptedKey* key) {
    prependToHeader(key->getElement());
}

void VQXML_WSSecSecurity::appendDataReference(const XMLCh* id) {
    m_headerDataRefs.emplace_back(id);
}

void VQXML_WSSecSecurity::encrypt() {
    cipher();
    if (m_headerDataRefs.empty())
        return;
    DOMElement* list = m_document->createElementNS(kXenc, u"xenc:ReferenceList");
    list->setAttributeNS(kXmlns, u"xmlns:xenc", kXenc);
    for (const XString& id : m_headerDataRefs) {
        DOMElement* reference = m_document->createElementNS(kXenc, u"xenc:DataReference");
        reference->setAttributeNS(nullptr, u"URI", (u"#" + id).c_str());
        list->appendChild(reference);
    }
    prependToHeader(list);
    m_headerDataRefs.clear();
}

// ---------------------------------------------------------------- processing

void VQXML_WSSecSecurity::load() {
    DOMElement* security = securityHeader(false);
    if (security == nullptr)
        return;
    VQXML_XENCCipher& cipher = receivingCipher();
    m_encryptedKeys = std::make_unique<DSIGKeyInfoList>(m_env.get());
    for (DOMNode* entry = security->getFirstChild(); entry != nullptr; entry = entry->getNextSibling()) {
        if (isElement(entry, kDsig, u"Signature")) {
            if (m_signature != nullptr)
                throw VQXML_XSECException(kBadHeader, "The security header carries more than one signature");
            m_signature = m_provider.newSignatureFromDOM(m_document, entry);
            m_signatureElement = static_cast<DOMElement*>(entry);
            vqxml::enableIdAttributes(m_signature);
            vqxml::installURIResolver(*m_signature, false);
            vqxml::checkKeyInformation(m_signatureElement);
            m_signature->load();
            vqxml::checkVerificationLimits(m_signature);
            const vqxml::SignatureCodes codes = vqxml::signatureCodesOf(m_signature->getAlgorithmURI());
            m_signatureMethod = codes.signatureMethod;
            m_hashMethod = codes.hashMethod;
        } else if (isElement(entry, kXenc, u"EncryptedKey")) {
            m_encryptedKeys->addKeyInfo(cipher.loadEncryptedKey(static_cast<DOMElement*>(entry)));
        }
    }
}

bool VQXML_WSSecSecurity::isWSSecSignature() const {
    return m_signature != nullptr;
}

bool VQXML_WSSecSecurity::isWSSEncryption() const {
    DOMElement* security = const_cast<VQXML_WSSecSecurity*>(this)->securityHeader(false);
    return childElement(security, kXenc, u"EncryptedKey") != nullptr ||
           childElement(security, kXenc, u"ReferenceList") != nullptr ||
           descendant(m_document, kXenc, u"EncryptedData") != nullptr;
}

bool VQXML_WSSecSecurity::isfirstSignatureProcess() const {
    DOMElement* security = const_cast<VQXML_WSSecSecurity*>(this)->securityHeader(false);
    for (DOMNode* entry = security != nullptr ? security->getFirstChild() : nullptr; entry != nullptr;
         entry = entry->getNextSibling()) {
        if (isElement(entry, kDsig, u"Signature"))
            return true;
        if (isElement(entry, kXenc, u"EncryptedKey") || isElement(entry, kXenc, u"ReferenceList"))
            return false;
    }
    return false;
}

DSIGKeyInfoList* VQXML_WSSecSecurity::getKeyInfoList() const {
    return signature().getKeyInfoList();
}

int VQXML_WSSecSecurity::getSignatureMethod() const {
    return m_signatureMethod;
}

int VQXML_WSSecSecurity::getHashMethod() const {
    return m_hashMethod;
}

void VQXML_WSSecSecurity::setVerificationKey(XSECCryptoKey* key, const std::vector<unsigned char>& certDer) {
    std::unique_ptr<XSECCryptoKey> owned(key);
    const unsigned char* p = certDer.data();
    std::unique_ptr<X509, void (*)(X509*)> cert(d2i_X509(nullptr, &p, static_cast<long>(certDer.size())), X509_free);
    if (cert == nullptr)
        throw VQXML_XSECException(10405, "The certificate to verify with cannot be read");
    delete m_verificationKey;
    m_verificationKey = owned.release();
    m_verificationCert = std::move(cert);
}

// The receiver's certificate, else the secret set by setSigningKey (HMAC), else
// the key the signature's key information carries; in every case the key
// information's items must agree with each other and with that key
// (dsig/KeyBinding.hpp). Each reference first, then the SignedInfo by our
// canonical form, which honours an exclusive PrefixList (the engine's check
// ignores it); then what the references cover.
bool VQXML_WSSecSecurity::verify() {
    DSIGSignature& sig = signature();
    m_errMsgs.clear();
    m_signedParts.clear();
    try {
        const vqxml::KeyBinding binding(sig.getKeyInfoList(), securityHeader(false));
        vqxml::verifySignature(sig, m_signatureElement, [&]() -> XSECCryptoKey* {
            XSECCryptoKey* key = nullptr;
            if (m_verificationKey != nullptr) {
                binding.requireCertificate(m_verificationCert.get());
                key = std::exchange(m_verificationKey, nullptr);
            } else if (m_signingKey != nullptr) {
                binding.requireNoPublicKey();
                key = std::exchange(m_signingKey, nullptr);
            } else {
                key = binding.newKey();
            }
            if (key != nullptr)
                sig.setSigningKey(key);
            return key;
        });
        vqxml::requireCoveredBody(m_signatureElement, onlyBody());
        m_signedParts = vqxml::signedParts(m_signatureElement);
        return true;
    } catch (const XSECException& e) {
        m_errMsgs = vqxml::toEucKr(e.getMsg());
    }
    if (m_errMsgs.empty())
        m_errMsgs = "The signature does not verify";
    return false;
}

// The Envelope's Body child; null when it has none, or several (a reader
// could take either).
DOMElement* VQXML_WSSecSecurity::onlyBody() const {
    DOMElement* body = soapPart(m_document, u"Body");
    for (DOMElement* e = body != nullptr ? body->getNextElementSibling() : nullptr; e != nullptr;
         e = e->getNextElementSibling())
        if (isElement(e, body->getNamespaceURI(), u"Body"))
            return nullptr;
    return body;
}

VQXML_XENCCipher& VQXML_WSSecSecurity::receivingCipher() {
    if (m_cipher == nullptr)
        m_cipher = new VQXML_XENCCipher(m_provider, m_document);
    return *m_cipher;
}

XENCEncryptedData* VQXML_WSSecSecurity::findEncryptedData() {
    DOMElement* element = descendant(m_document, kXenc, u"EncryptedData");
    return element != nullptr ? receivingCipher().loadEncryptedData(element) : nullptr;
}

XENCEncryptedKey* VQXML_WSSecSecurity::encryptedKeyFor(const DOMElement* element) const {
    for (DSIGKeyInfoList::size_type i = 0; m_encryptedKeys && i < m_encryptedKeys->getSize(); ++i) {
        auto* key = static_cast<XENCEncryptedKey*>(m_encryptedKeys->item(i));
        if (key->getElement() == element)
            return key;
    }
    return nullptr;
}

bool VQXML_WSSecSecurity::holdsEncryptedKey(const XENCEncryptedKey* key) const {
    for (DSIGKeyInfoList::size_type i = 0; key != nullptr && m_encryptedKeys && i < m_encryptedKeys->getSize(); ++i)
        if (m_encryptedKeys->item(i) == key)
            return true;
    return false;
}

void VQXML_WSSecSecurity::decryptElement(DOMElement* encryptedData) {
    cipher().decryptElement(encryptedData);
}

// Only identifiers of elements the signature references and that lie outside the
// header: the signer put them there for the signature.
void VQXML_WSSecSecurity::removeWsuId() {
    DOMElement* security = securityHeader(false);
    const DSIGReferenceList* references = m_signature != nullptr ? m_signature->getReferenceList() : nullptr;
    for (DSIGReferenceList::size_type i = 0; references != nullptr && i < references->getSize(); ++i) {
        const XMLCh* uri = references->item(i)->getURI();
        DOMElement* element = nullptr;
        if (uri == nullptr || uri[0] != u'#' || elementsWithId(m_document, uri + 1, &element) != 1)
            continue;
        if (security != nullptr && (element == security || (security->compareDocumentPosition(element) &
                                                             DOMNode::DOCUMENT_POSITION_CONTAINED_BY) != 0))
            continue;
        if (element->hasAttributeNS(kWsu, u"Id")) {
            element->removeAttributeNS(kWsu, u"Id");
            if (XMLString::equals(element->getAttributeNS(kXmlns, u"wsu"), kWsu))
                element->removeAttributeNS(kXmlns, u"wsu");
        }
    }
}

void VQXML_WSSecSecurity::removeSecurityHeader() {
    DOMElement* security = securityHeader(false);
    if (security != nullptr)
        security->getParentNode()->removeChild(security);
}
