#include "core/adapter/QuickDOMParser.hpp"

#include <cstring>

#include <xercesc/dom/DOMText.hpp>
#include <xercesc/dom/impl/DOMAttrImpl.hpp>
#include <xercesc/dom/impl/DOMAttrMapImpl.hpp>
#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/dom/impl/DOMElementImpl.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "core/adapter/DomLinking.hpp"
#include "core/adapter/TextRoom.hpp"
#include "core/adapter/Upstream.hpp"
#include "core/RecyclingMemoryManager.hpp"

XERCES_CPP_NAMESPACE_USE

vqxml::QuickDOMParser::QuickDOMParser()
    : XercesDOMParser(nullptr, &RecyclingMemoryManager::instance(), nullptr) {
    fScanner->setInputBufferSize(kTextPiece);
}

void vqxml::QuickDOMParser::startElement(const XMLElementDecl& decl, unsigned int urlId, const XMLCh* prefix,
                                         const RefVectorOf<XMLAttr>& attributes, XMLSize_t attributeCount,
                                         bool isEmpty, bool isRoot) {
    finishLongText();
    if (!startQuickly(decl, urlId, prefix, attributes, attributeCount))
        XercesDOMParser::startElement(decl, urlId, prefix, attributes, attributeCount, false, isRoot);
    if (isEmpty)
        endElement(decl, urlId, isRoot, prefix);
}

void vqxml::QuickDOMParser::endElement(const XMLElementDecl& decl, unsigned int urlId, bool isRoot,
                                       const XMLCh* prefix) {
    finishLongText();
    if (!endQuickly())
        XercesDOMParser::endElement(decl, urlId, isRoot, prefix);
}

void vqxml::QuickDOMParser::docCharacters(const XMLCh* chars, XMLSize_t length, bool cdataSection) {
    if (m_longText != nullptr && m_longText == fCurrentNode && !cdataSection) {
        m_pieces.emplace_back(chars, length);
        return;
    }
    finishLongText();
    if (!fWithinElement || cdataSection || fCurrentParent->getNodeType() != DOMNode::ELEMENT_NODE) {
        XercesDOMParser::docCharacters(chars, length, cdataSection);
        return;
    }
    // Text that follows text joins it: the next piece of a long one.
    if (fCurrentNode->getNodeType() == DOMNode::TEXT_NODE) {
        m_longText = static_cast<DOMText*>(fCurrentNode);
        docCharacters(chars, length, cdataSection);
        return;
    }
    DOMText* text = createText(chars, length);
    appendNewChild(fCurrentParent, text);
    fCurrentNode = text;
}

DOMText* vqxml::QuickDOMParser::createText(const XMLCh* chars, XMLSize_t length) {
    return exactText(fDocument, chars, length);
}

void vqxml::QuickDOMParser::finishLongText() {
    if (m_longText == nullptr)
        return;
    std::size_t length = 0;
    for (const std::basic_string<XMLCh>& piece : m_pieces)
        length += piece.size();
    XMLCh* room = textRoomAfter(m_longText, length);
    for (const std::basic_string<XMLCh>& piece : m_pieces) {
        if (room == nullptr) {
            m_longText->appendData(piece.c_str());  // not a node of ours: the DOM's way
            continue;
        }
        std::memcpy(room, piece.data(), piece.size() * sizeof(XMLCh));
        room += piece.size();
    }
    m_longText = nullptr;
    m_pieces.clear();
}

bool vqxml::QuickDOMParser::startQuickly(const XMLElementDecl& decl, unsigned int urlId, const XMLCh* prefix,
                                         const RefVectorOf<XMLAttr>& attributes, XMLSize_t attributeCount) {
    if (!fScanner->getDoNamespaces() || decl.hasAttDefs() || fCreateSchemaInfo || fPSVIHandler != nullptr ||
        fCurrentParent->getNodeType() != DOMNode::ELEMENT_NODE)
        return false;
    // An ID attribute goes into the document's ID map.
    for (XMLSize_t i = 0; i < attributeCount; ++i)
        if (attributes.elementAt(i)->getType() == XMLAttDef::ID)
            return false;
    DOMElement* element = makeElement(decl, urlId, prefix);
    addAttributes(element, attributes, attributeCount);
    appendNewChild(fCurrentParent, element);
    fCurrentParent = element;
    fCurrentNode = element;
    return true;
}

void vqxml::QuickDOMParser::startDocument() {
    m_longText = nullptr;
    m_pieces.clear();
    XercesDOMParser::startDocument();
    m_elements.emplace(fDocument);
}

DOMElement* vqxml::QuickDOMParser::makeElement(const XMLElementDecl& decl, unsigned int urlId, const XMLCh* prefix) {
    const XMLCh* uri = urlId == fScanner->getEmptyNamespaceId() ? nullptr : fScanner->getURIText(urlId);
    // The scanner keeps one declaration for each name while it parses.
    return m_elements->make(&decl, uri, prefix, decl.getBaseName());
}

void vqxml::QuickDOMParser::addAttributes(DOMElement* element, const RefVectorOf<XMLAttr>& attributes,
                                          XMLSize_t attributeCount) {
    if (attributeCount == 0)
        return;
    const unsigned int emptyId = fScanner->getEmptyNamespaceId();
    DOMAttrMapImpl* map = static_cast<DOMElementImpl*>(element)->fAttributes;
    map->reserve(attributeCount);
    for (XMLSize_t i = 0; i < attributeCount; ++i) {
        const XMLAttr* source = attributes.elementAt(i);
        const XMLCh* prefix = source->getPrefix();
        const XMLCh* localName = source->getName();
        // A default namespace declaration belongs to the xmlns namespace too.
        const bool defaultDeclaration = (prefix == nullptr || *prefix == 0) &&
                                        XMLString::equals(localName, XMLUni::fgXMLNSString);
        const unsigned int uriId = defaultDeclaration ? fScanner->getXMLNSNamespaceId() : source->getURIId();
        const XMLCh* uri = uriId != emptyId ? fScanner->getURIText(uriId) : nullptr;
        auto* attribute = static_cast<DOMAttrImpl*>(createAttrNS(uri, prefix, localName, source->getQName()));
        map->setNamedItemNSFast(attribute);
        if (source->getValue() != nullptr)
            appendNewChild(attribute, exactText(fDocument, source->getValue(), XMLString::stringLen(source->getValue())));
        attribute->fNode.isSpecified(source->getSpecified());
    }
}

bool vqxml::QuickDOMParser::endQuickly() {
    if (fDoXInclude || fCurrentParent->getNodeType() != DOMNode::ELEMENT_NODE)
        return false;
    DOMNode* parent = parentOfElement(fCurrentParent);
    if (parent == nullptr)
        return false;
    fCurrentNode = fCurrentParent;
    fCurrentParent = parent;
    if (parent == fDocument)
        fWithinElement = false;
    return true;
}

XMLFileLoc vqxml::QuickDOMParser::currentLine() const {
    return getScanner()->getLocator()->getLineNumber();
}
