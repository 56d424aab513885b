#include "core/adapter/ElementMaker.hpp"

#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/dom/impl/DOMElementNSImpl.hpp>

#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// The names of DOMElementNSImpl are protected; pointers to them, taken here,
// reach them on any element of that class.
struct ElementNames : DOMElementNSImpl {
    ElementNames() = delete;
    static constexpr const XMLCh* DOMElementNSImpl::*kUri = &ElementNames::fNamespaceURI;
    static constexpr const XMLCh* DOMElementNSImpl::*kLocalName = &ElementNames::fLocalName;
    static constexpr const XMLCh* DOMElementNSImpl::*kPrefix = &ElementNames::fPrefix;
};

}  // namespace

DOMElement* vqxml::ElementMaker::make(const XMLCh* uri, const XMLCh* qName) {
    if (uri != nullptr && *uri == 0)
        uri = nullptr;
    auto* doc = static_cast<DOMDocumentImpl*>(m_doc);
    // Interns the qualified name only; the other names are null until set.
    auto* element = new (doc, DOMMemoryManager::ELEMENT_NS_OBJECT) DOMElementNSImpl(doc, qName);
    std::vector<Names>& named = m_names[element->getNodeName()];
    for (const Names& n : named)
        if (n.scannerUri == uri) {
            element->*ElementNames::kUri = n.uri;
            element->*ElementNames::kLocalName = n.localName;
            element->*ElementNames::kPrefix = n.prefix;
            return element;
        }
    // The first of its name is named the DOM's own way.
    element->setName(uri, qName);
    named.push_back({uri, element->getNamespaceURI(), element->getLocalName(), element->getPrefix()});
    return element;
}
