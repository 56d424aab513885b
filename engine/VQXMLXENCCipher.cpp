#include "engine/VQXMLXENCCipher.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <set>
#include <string>

#include <openssl/crypto.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/framework/XSECAlgorithmHandler.hpp>
#include <xsec/framework/XSECAlgorithmMapper.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/framework/XSECProvider.hpp>
#include <xsec/transformers/TXFMBase64.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMSB.hpp>
#include <xsec/utils/XSECBinTXFMInputStream.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>
#include <xsec/xenc/XENCCipherValue.hpp>
#include <xsec/xenc/XENCEncryptedData.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>
#include <xsec/xenc/XENCEncryptionMethod.hpp>

#include "core/ElementWalk.hpp"
#include "core/ParseLimits.hpp"
#include "core/adapter/TextRoom.hpp"
#include "engine/Base64.hpp"
#include "engine/korean/PagedBytes.hpp"
#include "engine/KeyInfoGuard.hpp"
#include "engine/WholeBufferCipherHandler.hpp"
#include "engine/XencFragmentParser.hpp"
#include "engine/XencPlaintext.hpp"
#include "engine/XencReferences.hpp"

XERCES_CPP_NAMESPACE_USE

using XString = std::basic_string<XMLCh>;

namespace {

const XMLCh kEncryptedKey[] = u"EncryptedKey";
const XMLCh kIdPrefix[] = u"EncDataId-";
// The document's URI names the cipher made for it. (User data would do too, but
// it makes Xerces visit every node when the document is released.)
const XMLCh kCipherMark[] = u"urn:vqxml:xenc-cipher:";
std::atomic<unsigned long> g_ciphersMade{0};

// Every Id-like attribute value of the document ("Id", "ID" or "id" in any
// namespace, wsu:Id included), so that a new identifier collides with none.
std::set<XString> identifiersInUse(DOMDocument* doc) {
    std::set<XString> used;
    vqxml::forEachElement(doc, [&used](DOMElement* element) {
        DOMNamedNodeMap* attributes = element->getAttributes();
        for (XMLSize_t a = 0; attributes != nullptr && a < attributes->getLength(); ++a) {
            DOMNode* attribute = attributes->item(a);
            const XMLCh* name = attribute->getLocalName() != nullptr ? attribute->getLocalName()
                                                                     : attribute->getNodeName();
            if (XMLString::compareIString(name, u"Id") == 0)
                used.insert(attribute->getNodeValue());
        }
    });
    return used;
}

bool holdsElement(const DOMNode* nodes) {
    for (const DOMNode* n = nodes->getFirstChild(); n != nullptr; n = n->getNextSibling())
        if (n->getNodeType() == DOMNode::ELEMENT_NODE)
            return true;
    return false;
}

// A Type other than these is the engine's to refuse.
bool holdsNodes(const XENCEncryptedData* data) {
    const XMLCh* type = data->getType();
    return type == nullptr || XMLString::equals(type, DSIGConstants::s_unicodeStrURIXENC_ELEMENT) ||
           XMLString::equals(type, DSIGConstants::s_unicodeStrURIXENC_CONTENT);
}

struct NodeRelease {
    void operator()(DOMNode* node) const { node->release(); }
};

bool isWhitespace(const XMLCh* text) {
    for (; *text != 0; ++text)
        if (*text != u' ' && *text != u'\t' && *text != u'\r' && *text != u'\n')
            return false;
    return true;
}

// The document element replaced by the one element the plaintext holds, with
// the comments and processing instructions beside it; whitespace has no place
// outside the document element and is dropped.
void replaceDocumentElement(DOMDocument* doc, DOMElement* old, DOMDocumentFragment* nodes) {
    int elements = 0;
    bool strayText = false;
    for (const DOMNode* n = nodes->getFirstChild(); n != nullptr; n = n->getNextSibling()) {
        elements += n->getNodeType() == DOMNode::ELEMENT_NODE;
        strayText = strayText || n->getNodeType() == DOMNode::CDATA_SECTION_NODE ||
                    (n->getNodeType() == DOMNode::TEXT_NODE && !isWhitespace(n->getNodeValue()));
    }
    if (elements != 1 || strayText)
        throw XSECException(XSECException::CipherError, "The decrypted document element is not one element");
    DOMNode* next = old->getNextSibling();
    doc->removeChild(old);
    while (DOMNode* child = nodes->getFirstChild()) {
        nodes->removeChild(child);
        if (child->getNodeType() != DOMNode::TEXT_NODE)
            doc->insertBefore(child, next);
    }
}

// Whatever makes a ciphertext fail to decrypt into content (its padding, its
// octets as UTF-8 or as XML, the bounds on what they hold) gives one status and
// one text that says nothing of the plaintext: answers that told these apart
// would let a stranger read the plaintext by sending changed ciphertexts (the
// CBC padding and parser oracles of XML Encryption). Running out of memory is
// not the ciphertext's doing and stays itself.
template <class Work>
auto undecryptableAsOne(Work&& work) -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const OutOfMemoryException&) {
        throw;
    } catch (...) {
        throw XSECException(XSECException::CipherError, VQXML_XENCCipher::kUndecryptableText);
    }
}

// The element's first child in the XML Encryption namespace with that local name.
DOMElement* xencChild(const DOMNode* parent, const XMLCh* localName) {
    for (DOMNode* n = parent != nullptr ? parent->getFirstChild() : nullptr; n != nullptr; n = n->getNextSibling())
        if (n->getNodeType() == DOMNode::ELEMENT_NODE &&
            XMLString::equals(n->getNamespaceURI(), DSIGConstants::s_unicodeStrURIXENC) &&
            XMLString::equals(n->getLocalName(), localName))
            return static_cast<DOMElement*>(n);
    return nullptr;
}

// The children of an EncryptedData's CipherValue, taken out while the engine
// loads it and put back afterwards: the engine gathers the text into a buffer
// and keeps a copy, twice the megabytes of a large value, which the library
// reads where it stands instead.
class CipherValueSetAside {
public:
    explicit CipherValueSetAside(DOMElement* encryptedData)
        : m_value(xencChild(xencChild(encryptedData, u"CipherData"), u"CipherValue")) {
        if (m_value == nullptr)
            return;
        m_held = m_value->getOwnerDocument()->createDocumentFragment();
        while (DOMNode* child = m_value->getFirstChild())
            m_held->appendChild(m_value->removeChild(child));
    }
    ~CipherValueSetAside() {
        if (m_held == nullptr)
            return;
        while (DOMNode* child = m_held->getFirstChild())
            m_value->appendChild(m_held->removeChild(child));
        m_held->release();
    }
    CipherValueSetAside(const CipherValueSetAside&) = delete;
    CipherValueSetAside& operator=(const CipherValueSetAside&) = delete;

private:
    DOMElement* m_value;
    DOMDocumentFragment* m_held = nullptr;
};

// The CipherValue's text as it stands in the document: its one text node's
// value as it is, or the text of all its children joined in joined.
const XMLCh* textOf(const DOMElement* cipherValue, XString& joined) {
    const DOMNode* first = cipherValue->getFirstChild();
    if (first != nullptr && first->getNextSibling() == nullptr && first->getNodeType() == DOMNode::TEXT_NODE)
        return first->getNodeValue();
    for (const DOMNode* n = first; n != nullptr; n = n->getNextSibling())
        if (n->getNodeType() == DOMNode::TEXT_NODE || n->getNodeType() == DOMNode::CDATA_SECTION_NODE)
            joined += n->getNodeValue();
    return joined.c_str();
}

XString decimal(unsigned long n) {
    const std::string digits = std::to_string(n);
    return XString(digits.begin(), digits.end());
}

}  // namespace

// The engine's cipher is made after every member (a member that fails to
// construct would otherwise leak it) and given back if marking the document fails.
VQXML_XENCCipher::VQXML_XENCCipher(XSECProvider& provider, DOMDocument* doc)
    : m_provider(provider), m_engine(nullptr), m_mark(XString(kCipherMark) + decimal(++g_ciphersMade)) {
    m_engine = provider.newCipher(doc);
    try {
        vqxml::xenc::declareIds(doc);
        doc->setDocumentURI(m_mark.c_str());
    } catch (...) {
        provider.releaseCipher(m_engine);
        throw;
    }
}

VQXML_XENCCipher::~VQXML_XENCCipher() {
    for (XENCEncryptedKey* key : m_documentKeys)
        delete key;
    m_provider.releaseCipher(m_engine);
}

// The engine parses what it decrypts with a parser of its own, which knows no
// bounds; so the plaintext is decrypted once more beforehand and its shape
// checked where it will stand.
void VQXML_XENCCipher::checkDecryptedShape(DOMElement* encryptedData) {
    std::size_t levelsAbove = 0;
    for (DOMNode* up = encryptedData->getParentNode(); up != nullptr; up = up->getParentNode())
        levelsAbove += up->getNodeType() == DOMNode::ELEMENT_NODE ? 1 : 0;
    std::unique_ptr<XSECBinTXFMInputStream> plain(m_engine->decryptToBinInputStream(encryptedData));
    vqxml::korean::SecureBytes octets;
    XMLByte chunk[4096];
    while (XMLSize_t n = plain->readBytes(chunk, sizeof chunk))
        octets.insert(octets.end(), chunk, chunk + n);
    OPENSSL_cleanse(chunk, sizeof chunk);
    vqxml::checkFragmentShape(reinterpret_cast<const char*>(octets.data()), octets.size(), levelsAbove);
}

// ---- the engine's operations, passed on ----

DOMDocument* VQXML_XENCCipher::decryptElement(DOMElement* element) {
    vqxml::checkKeyInformation(element);
    return undecryptableAsOne([&] {
        if (decryptInPlace(element))
            return getDocument();
        m_newXencElements = true;
        checkDecryptedShape(element);
        return m_engine->decryptElement(element);
    });
}
DOMNode* VQXML_XENCCipher::decryptElementDetached(DOMElement* element) {
    vqxml::checkKeyInformation(element);
    return undecryptableAsOne([&] {
        checkDecryptedShape(element);
        return m_engine->decryptElementDetached(element);
    });
}
// The loaded EncryptedData goes the checked way too; with none, the engine refuses.
DOMDocument* VQXML_XENCCipher::decryptElement() {
    XENCEncryptedData* data = m_engine->getEncryptedData();
    return data != nullptr ? decryptElement(data->getElement()) : m_engine->decryptElement();
}
DOMNode* VQXML_XENCCipher::decryptElementDetached() {
    XENCEncryptedData* data = m_engine->getEncryptedData();
    return data != nullptr ? decryptElementDetached(data->getElement()) : m_engine->decryptElementDetached();
}
XSECBinTXFMInputStream* VQXML_XENCCipher::decryptToBinInputStream(DOMElement* element) {
    vqxml::checkKeyInformation(element);
    return undecryptableAsOne([&] { return m_engine->decryptToBinInputStream(element); });
}
int VQXML_XENCCipher::decryptKey(DOMElement* keyNode, XMLByte* rawKey, int maxKeySize) {
    std::unique_ptr<XENCEncryptedKey> key(loadEncryptedKey(keyNode));
    return decryptKey(key.get(), rawKey, maxKeySize);
}
XENCEncryptedKey* VQXML_XENCCipher::encryptKey(const unsigned char* keyBuffer, unsigned int keyLen,
                                               const XMLCh* algorithmURI, const XMLCh* mgfURI,
                                               unsigned char* oaepParams, unsigned int oaepParamsLen) {
    return m_engine->encryptKey(keyBuffer, keyLen, algorithmURI, mgfURI, oaepParams, oaepParamsLen);
}
XENCEncryptedData* VQXML_XENCCipher::encryptBinInputStream(BinInputStream* plainText, const XMLCh* algorithmURI) {
    return m_engine->encryptBinInputStream(plainText, algorithmURI);
}
XENCEncryptedData* VQXML_XENCCipher::encryptTXFMChain(TXFMChain* plainText, const XMLCh* algorithmURI) {
    return m_engine->encryptTXFMChain(plainText, algorithmURI);
}
DOMDocument* VQXML_XENCCipher::getDocument() const {
    return m_engine->getDocument();
}
const XMLCh* VQXML_XENCCipher::getXENCNSPrefix() const {
    return m_engine->getXENCNSPrefix();
}
XENCEncryptedData* VQXML_XENCCipher::getEncryptedData() const {
    return m_engine->getEncryptedData();
}
bool VQXML_XENCCipher::getPrettyPrint() const {
    return m_engine->getPrettyPrint();
}
bool VQXML_XENCCipher::getExclusiveC14nSerialisation() const {
    return m_engine->getExclusiveC14nSerialisation();
}
void VQXML_XENCCipher::setKey(XSECCryptoKey* key) {
    m_engine->setKey(key);
    m_key = key;
}
void VQXML_XENCCipher::setKEK(XSECCryptoKey* key) {
    m_engine->setKEK(key);
    m_kek = key;
}
void VQXML_XENCCipher::setKeyInfoResolver(const XSECKeyInfoResolver* resolver) {
    m_engine->setKeyInfoResolver(resolver);
}
void VQXML_XENCCipher::setXENCNSPrefix(const XMLCh* prefix) {
    m_engine->setXENCNSPrefix(prefix);
}
void VQXML_XENCCipher::setPrettyPrint(bool flag) {
    m_engine->setPrettyPrint(flag);
}
void VQXML_XENCCipher::setExclusiveC14nSerialisation(bool flag) {
    m_engine->setExclusiveC14nSerialisation(flag);
}
XENCEncryptedData* VQXML_XENCCipher::createEncryptedData(XENCCipherData::XENCCipherDataType type,
                                                         const XMLCh* algorithm, const XMLCh* value) {
    return m_engine->createEncryptedData(type, algorithm, value);
}
XENCEncryptedKey* VQXML_XENCCipher::loadEncryptedKey(DOMElement* keyNode) {
    vqxml::checkKeyInformation(keyNode);
    return m_engine->loadEncryptedKey(keyNode);
}
XENCEncryptedData* VQXML_XENCCipher::loadEncryptedData(DOMElement* dataNode) {
    vqxml::checkKeyInformation(dataNode);
    const CipherValueSetAside aside(dataNode);
    return m_engine->loadEncryptedData(dataNode);
}

// ---- encryption of elements and content, with the plaintext of XencPlaintext.hpp ----

DOMNode* VQXML_XENCCipher::encryptElementDetached(DOMElement* element, const XMLCh* algorithmURI) {
    vqxml::korean::PagedBytes plain;
    vqxml::xenc::appendPlaintext(element, element->getParentNode(), plain);
    XENCEncryptedData* data = encryptOctets(plain.data(), plain.size(), algorithmURI);
    data->setType(DSIGConstants::s_unicodeStrURIXENC_ELEMENT);
    return data->getElement();
}

DOMDocument* VQXML_XENCCipher::encryptElement(DOMElement* element, const XMLCh* algorithmURI) {
    DOMNode* parent = element->getParentNode();
    if (parent == nullptr)
        throw XSECException(XSECException::CipherError, "The element to encrypt has no parent");
    // The replaced nodes are left to the document, which frees them with itself:
    // releasing them one by one costs Xerces a walk over every node.
    parent->replaceChild(encryptElementDetached(element, algorithmURI), element);
    return getDocument();
}

DOMNode* VQXML_XENCCipher::encryptElementContentDetached(DOMElement* element, const XMLCh* algorithmURI) {
    vqxml::korean::PagedBytes plain;
    for (DOMNode* child = element->getFirstChild(); child != nullptr; child = child->getNextSibling())
        vqxml::xenc::appendPlaintext(child, element, plain);
    XENCEncryptedData* data = encryptOctets(plain.data(), plain.size(), algorithmURI);
    data->setType(DSIGConstants::s_unicodeStrURIXENC_CONTENT);
    return data->getElement();
}

DOMDocument* VQXML_XENCCipher::encryptElementContent(DOMElement* element, const XMLCh* algorithmURI) {
    DOMNode* encrypted = encryptElementContentDetached(element, algorithmURI);
    while (DOMNode* child = element->getFirstChild())
        element->removeChild(child);  // left to the document, as above
    element->appendChild(encrypted);
    return getDocument();
}

// The library's ciphers write the CipherValue's base64 straight into the text
// node of a new EncryptedData, with no copy on the way and none kept by the
// engine's object; others go through the engine's transforms.
XENCEncryptedData* VQXML_XENCCipher::encryptOctets(const std::uint8_t* plain, std::size_t size,
                                                   const XMLCh* algorithmURI) {
    const auto* handler = algorithmURI != nullptr ? dynamic_cast<const WholeBufferCipherHandler*>(
                                                        XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(algorithmURI))
                                                  : nullptr;
    if (handler != nullptr && m_key != nullptr) {
        XENCEncryptedData* data = m_engine->createEncryptedData(XENCCipherData::VALUE_TYPE, algorithmURI, u"");
        const std::vector<std::uint8_t> octets =
            handler->encryptOctets(data->getEncryptionMethod(), m_key, plain, size);
        DOMNode* text = data->getCipherData()->getCipherValue()->getElement()->getFirstChild();
        XMLCh* room = text != nullptr && text->getNodeType() == DOMNode::TEXT_NODE
                          ? vqxml::textRoom(static_cast<DOMText*>(text), vqxml::base64TextLength(octets.size()))
                          : nullptr;
        if (room == nullptr)
            throw XSECException(XSECException::CipherError, "The new CipherValue holds no text to write into");
        vqxml::writeBase64Text(octets.data(), octets.size(), room);
        return data;
    }
    safeBuffer octets;
    octets.isSensitive();
    octets.sbMemcpyIn(plain, size);
    auto* source = new TXFMSB(getDocument());
    TXFMChain chain(source);
    source->setInput(octets, static_cast<unsigned int>(size));
    return m_engine->encryptTXFMChain(&chain, algorithmURI);
}

// The engine parses the plaintext into a document of its own and copies the
// nodes over, which costs more than the cipher; this parses once, in place.
bool VQXML_XENCCipher::decryptInPlace(DOMElement* element) {
    DOMNode* parent = element->getParentNode();
    if (m_key == nullptr || parent == nullptr)
        return false;
    // Loading again would decode its key information (certificates included) again.
    XENCEncryptedData* data = m_engine->getEncryptedData();
    if (data == nullptr || data->getElement() != element)
        data = m_engine->loadEncryptedData(element);
    XENCEncryptionMethod* method = data->getEncryptionMethod();
    XENCCipherData* cipherData = data->getCipherData();
    if (method == nullptr || cipherData == nullptr || cipherData->getCipherDataType() != XENCCipherData::VALUE_TYPE ||
        cipherData->getCipherValue() == nullptr || !holdsNodes(data))
        return false;
    const auto* handler = dynamic_cast<const WholeBufferCipherHandler*>(
        XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(method->getAlgorithm()));
    if (handler == nullptr)
        return false;
    XString joined;
    const vqxml::korean::SecureBytes plain =
        handler->decryptCipherValue(method, m_key, textOf(cipherData->getCipherValue()->getElement(), joined));
    XString().swap(joined);
    bool holdsXenc = false;
    const std::unique_ptr<DOMDocumentFragment, NodeRelease> nodes(
        vqxml::xenc::parseInPlace(plain, element, &holdsXenc));
    // An encrypted element decrypts to an element: nothing at all, or text only,
    // is what a wrong key gives now and then (a last block of valid padding).
    if (XMLString::equals(data->getType(), DSIGConstants::s_unicodeStrURIXENC_ELEMENT) && !holdsElement(nodes.get()))
        throw XSECException(XSECException::CipherError, "An encrypted element decrypts to no element");
    m_newXencElements = m_newXencElements || holdsXenc;
    if (parent->getNodeType() == DOMNode::DOCUMENT_NODE)
        replaceDocumentElement(static_cast<DOMDocument*>(parent), element, nodes.get());
    else
        parent->replaceChild(nodes.get(), element);
    return true;
}

// The engine's decryptKey leaves the unwrapped key in a buffer it frees without
// wiping; this runs the same algorithm handler into one that is wiped. Keys
// carried by reference, or with no key-encryption key set, stay the engine's.
int VQXML_XENCCipher::decryptKey(XENCEncryptedKey* encryptedKey, XMLByte* rawKey, int maxKeySize) {
    XENCCipherData* data = encryptedKey->getCipherData();
    if (m_kek == nullptr || data == nullptr || data->getCipherDataType() != XENCCipherData::VALUE_TYPE ||
        data->getCipherValue() == nullptr)
        return m_engine->decryptKey(encryptedKey, rawKey, maxKeySize);

    XENCEncryptionMethod* method = encryptedKey->getEncryptionMethod();
    const XSECAlgorithmHandler* handler = XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(
        method != nullptr ? method->getAlgorithm() : XSECAlgorithmMapper::s_defaultEncryptionMapping);
    if (handler == nullptr)
        throw XSECException(XSECException::CipherError, "No algorithm handler for the EncryptedKey's method");

    DOMDocument* doc = getDocument();
    safeBuffer text;
    text.sbTranscodeIn(data->getCipherValue()->getCipherString());
    TXFMSB* source = new TXFMSB(doc);
    TXFMChain chain(source);
    source->setInput(text);
    chain.appendTxfm(new TXFMBase64(doc));

    safeBuffer key;
    key.isSensitive();
    const unsigned int keySize = handler->decryptToSafeBuffer(&chain, method, m_kek, doc, key);
    const unsigned int copied = std::min(keySize, static_cast<unsigned int>(std::max(maxKeySize, 0)));
    std::memcpy(rawKey, key.rawBuffer(), copied);
    return static_cast<int>(copied);
}

// ---- additions ----

bool VQXML_XENCCipher::serves(const DOMDocument* doc) const {
    return doc != nullptr && doc == getDocument() && XMLString::equals(doc->getDocumentURI(), m_mark.c_str());
}

const XMLCh* VQXML_XENCCipher::identifierOf(XENCEncryptedData* data) {
    DOMElement* element = data->getElement();
    const XMLCh* present = element->getAttributeNS(nullptr, vqxml::xenc::kIdAttribute);
    if (present != nullptr && *present != 0) {
        m_identifiers.emplace_back(present);
        return m_identifiers.back().c_str();
    }
    const std::set<XString> used = identifiersInUse(element->getOwnerDocument());
    XString id;
    for (unsigned n = 1;; ++n) {
        id = XString(kIdPrefix) + decimal(n);
        if (used.count(id) == 0)
            break;
    }
    element->setAttributeNS(nullptr, vqxml::xenc::kIdAttribute, id.c_str());
    element->setIdAttributeNS(nullptr, vqxml::xenc::kIdAttribute, true);
    m_identifiers.push_back(id);
    return m_identifiers.back().c_str();
}

const std::vector<XENCEncryptedKey*>& VQXML_XENCCipher::documentKeys() {
    if (!m_documentKeysFound)
        findDocumentKeys();
    return m_documentKeys;
}

void VQXML_XENCCipher::adoptDocumentKey(XENCEncryptedKey* key) {
    m_documentKeys.push_back(key);
}

bool VQXML_XENCCipher::isDocumentKey(const XENCEncryptedKey* key) const {
    return key != nullptr && std::find(m_documentKeys.begin(), m_documentKeys.end(), key) != m_documentKeys.end();
}

// Keys handed over earlier stand in the document too: they keep their objects,
// and the list takes the document's order.
void VQXML_XENCCipher::findDocumentKeys() {
    std::vector<XENCEncryptedKey*> found;
    std::vector<XENCEncryptedKey*> handed = m_documentKeys;
    try {
        for (DOMElement* element : vqxml::xenc::xencElements(getDocument(), kEncryptedKey)) {
            if (vqxml::xenc::insideKeyInfo(element))
                continue;
            auto mine = std::find_if(handed.begin(), handed.end(),
                                     [element](XENCEncryptedKey* k) { return k->getElement() == element; });
            if (mine != handed.end()) {
                found.push_back(*mine);
                handed.erase(mine);
            } else {
                std::unique_ptr<XENCEncryptedKey> loaded(loadEncryptedKey(element));
                found.push_back(loaded.get());
                loaded.release();
            }
        }
    } catch (...) {
        for (XENCEncryptedKey* key : found)
            if (!isDocumentKey(key))
                delete key;
        throw;
    }
    found.insert(found.end(), handed.begin(), handed.end());
    m_documentKeys.swap(found);
    m_documentKeysFound = true;
}
