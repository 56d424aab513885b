// Depth-first searches in document order, used to place signatures and find
// SOAP headers.
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "core/Namespaces.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

namespace {

// The given node is tested whatever its type; only element children are
// descended into. Iterative, so a deeply nested document cannot exhaust the stack.
template <class Match>
DOMNode* firstInDocumentOrder(DOMNode* start, Match&& match) {
    if (start == nullptr)
        return nullptr;
    if (match(start))
        return start;
    DOMNode* node = start->getFirstChild();
    while (node != nullptr) {
        if (node->getNodeType() == DOMNode::ELEMENT_NODE) {
            if (match(node))
                return node;
            if (node->getFirstChild() != nullptr) {
                node = node->getFirstChild();
                continue;
            }
        }
        while (node != nullptr && node->getNextSibling() == nullptr) {
            node = node->getParentNode();
            if (node == start)
                return nullptr;
        }
        if (node != nullptr)
            node = node->getNextSibling();
    }
    return nullptr;
}

}  // namespace

DOMNode* VQXML_XMLSecurity::findNode(DOMNode* node, const XMLCh* name) {
    return firstInDocumentOrder(node, [name](DOMNode* n) { return XMLString::equals(n->getNodeName(), name); });
}

DOMNode* VQXML_XMLSecurity::findNameSpaceNode(DOMNode* node) {
    return firstInDocumentOrder(node, [](DOMNode* n) {
        const XMLCh* ns = n->getNamespaceURI();
        return ns != nullptr && (XMLString::equals(ns, vqxml::kSoap11Namespace) ||
                                 XMLString::equals(ns, vqxml::kSoap12Namespace));
    });
}

DOMNode* VQXML_XMLSecurity::findSOAPHeaderNode(DOMNode* node) {
    DOMNode* soap = findNameSpaceNode(node);
    if (soap == nullptr)
        return nullptr;
    // An unprefixed envelope yields ":Header", which matches nothing: such an
    // envelope has no header in this sense.
    const XMLCh* prefix = soap->getPrefix();
    std::basic_string<XMLCh> name = prefix != nullptr ? prefix : u"";
    name += u":Header";
    return findNode(soap, name.c_str());
}

DOMNode* VQXML_XMLSecurity::findDSIGNode(DOMNode* node, const XMLCh* localName) {
    return firstInDocumentOrder(node, [localName](DOMNode* n) {
        return n->getNodeType() == DOMNode::ELEMENT_NODE && XMLString::equals(n->getLocalName(), localName) &&
               XMLString::equals(n->getNamespaceURI(), vqxml::kDsigNamespace);
    });
}
