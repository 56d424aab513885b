#include "core/adapter/ElementMaker.hpp"

#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/dom/impl/DOMElementNSImpl.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUniDefs.hpp>

#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// The names of DOMElementNSImpl are protected; pointers to them, taken here,
// reach them on any element of that class.
struct ElementNames : DOMElementNSImpl {
    ElementNames() = delete;
    static constexpr const XMLCh* DOMElementImpl::*kQName = &ElementNames::fName;
    static constexpr const XMLCh* DOMElementNSImpl::*kUri = &ElementNames::fNamespaceURI;
    static constexpr const XMLCh* DOMElementNSImpl::*kLocalName = &ElementNames::fLocalName;
    static constexpr const XMLCh* DOMElementNSImpl::*kPrefix = &ElementNames::fPrefix;
};

}  // namespace

void vqxml::ElementMaker::giveNames(DOMElement* element, const Names& names) {
    auto* named = static_cast<DOMElementNSImpl*>(element);
    named->*ElementNames::kUri = names.uri;
    named->*ElementNames::kLocalName = names.localName;
    named->*ElementNames::kPrefix = names.prefix;
}

vqxml::ElementMaker::Names vqxml::ElementMaker::namesOf(const XMLCh* scannerUri, const DOMElement* element) {
    return {scannerUri, element->getNamespaceURI(), element->getLocalName(), element->getPrefix(),
            element->getNodeName()};
}

DOMElement* vqxml::ElementMaker::make(const XMLCh* uri, const XMLCh* qName) {
    if (uri != nullptr && *uri == 0)
        uri = nullptr;
    auto* doc = static_cast<DOMDocumentImpl*>(m_doc);
    // Interns the qualified name only; the other names are null until set.
    auto* element = new (doc, DOMMemoryManager::ELEMENT_NS_OBJECT) DOMElementNSImpl(doc, qName);
    std::vector<Names>& named = m_names[element->getNodeName()];
    for (const Names& n : named)
        if (n.scannerUri == uri) {
            giveNames(element, n);
            return element;
        }
    // The first of its name is named the DOM's own way.
    element->setName(uri, qName);
    named.push_back(namesOf(uri, element));
    return element;
}

DOMElement* vqxml::ElementMaker::make(const void* key, const XMLCh* uri, const XMLCh* prefix,
                                      const XMLCh* localName) {
    if (uri != nullptr && *uri == 0)
        uri = nullptr;
    auto* doc = static_cast<DOMDocumentImpl*>(m_doc);
    std::vector<Names>& keyed = m_keyed[key];
    // A document type may give elements default attributes by their name,
    // which an element made without it would miss.
    if (doc->getDoctype() == nullptr)
        for (const Names& n : keyed)
            if (n.scannerUri == uri && XMLString::equals(n.prefix, prefix)) {
                static const XMLCh kNoName[] = {0};
                auto* element = new (doc, DOMMemoryManager::ELEMENT_NS_OBJECT) DOMElementNSImpl(doc, kNoName);
                element->*ElementNames::kQName = n.qName;
                giveNames(element, n);
                return element;
            }
    const XMLCh* qName = localName;
    if (prefix != nullptr && *prefix != 0) {
        m_qName.assign(prefix);
        m_qName += chColon;
        m_qName += localName;
        qName = m_qName.c_str();
    }
    DOMElement* element = make(uri, qName);
    keyed.push_back(namesOf(uri, element));
    return element;
}
