#include "engine/wssec/WssNames.hpp"

#include <initializer_list>

#include <xercesc/dom/DOM.hpp>

XERCES_CPP_NAMESPACE_USE

namespace vqxml::wss {

namespace {

const XMLCh kEnvelope11[] = u"http://schemas.xmlsoap.org/soap/envelope/";
const XMLCh kEnvelope12[] = u"http://www.w3.org/2003/05/soap-envelope";

bool carriesId(const DOMElement* element, const XMLCh* id) {
    for (const XMLCh* value : {element->getAttributeNS(nullptr, u"Id"), element->getAttributeNS(nullptr, u"id"),
                               element->getAttributeNS(kWsu, u"Id")})
        if (value != nullptr && *value != 0 && XMLString::equals(value, id))
            return true;
    return false;
}

}  // namespace

bool isElement(const DOMNode* node, const XMLCh* ns, const XMLCh* localName) {
    return node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE &&
           XMLString::equals(node->getNamespaceURI(), ns) && XMLString::equals(node->getLocalName(), localName);
}

DOMElement* childElement(const DOMNode* parent, const XMLCh* ns, const XMLCh* localName) {
    for (DOMNode* child = parent != nullptr ? parent->getFirstChild() : nullptr; child != nullptr;
         child = child->getNextSibling())
        if (isElement(child, ns, localName))
            return static_cast<DOMElement*>(child);
    return nullptr;
}

// Iterative: a hostile document may nest deeper than the stack would allow.
DOMElement* descendant(const DOMNode* node, const XMLCh* ns, const XMLCh* localName) {
    const DOMNode* current = node;
    while (current != nullptr) {
        if (isElement(current, ns, localName))
            return const_cast<DOMElement*>(static_cast<const DOMElement*>(current));
        if (current->getFirstChild() != nullptr) {
            current = current->getFirstChild();
            continue;
        }
        while (current != nullptr && current != node && current->getNextSibling() == nullptr)
            current = current->getParentNode();
        if (current == nullptr || current == node)
            return nullptr;
        current = current->getNextSibling();
    }
    return nullptr;
}

DOMElement* soapPart(const DOMDocument* doc, const XMLCh* localName) {
    const DOMElement* root = doc != nullptr ? doc->getDocumentElement() : nullptr;
    for (const XMLCh* ns : {kEnvelope11, kEnvelope12})
        if (isElement(root, ns, u"Envelope"))
            return childElement(root, ns, localName);
    return nullptr;
}

int elementsWithId(const DOMDocument* doc, const XMLCh* id, DOMElement** first) {
    int count = 0;
    *first = nullptr;
    const DOMNode* root = doc->getDocumentElement();
    const DOMNode* current = root;
    while (current != nullptr && count < 2) {
        if (current->getNodeType() == DOMNode::ELEMENT_NODE && carriesId(static_cast<const DOMElement*>(current), id)) {
            if (count++ == 0)
                *first = const_cast<DOMElement*>(static_cast<const DOMElement*>(current));
        }
        if (current->getFirstChild() != nullptr) {
            current = current->getFirstChild();
            continue;
        }
        while (current != nullptr && current != root && current->getNextSibling() == nullptr)
            current = current->getParentNode();
        if (current == nullptr || current == root)
            break;
        current = current->getNextSibling();
    }
    return count;
}

}  // namespace vqxml::wss
