// Depth-first searches in document order, used to place signatures and find
// SOAP headers.
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "core/ElementWalk.hpp"
#include "core/Namespaces.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

DOMNode* VQXML_XMLSecurity::findNode(DOMNode* node, const XMLCh* name) {
    return vqxml::firstElement(node, [name](DOMElement* n) { return XMLString::equals(n->getNodeName(), name); });
}

DOMNode* VQXML_XMLSecurity::findNameSpaceNode(DOMNode* node) {
    return vqxml::firstElement(node, [](DOMElement* n) {
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
    return vqxml::firstElement(node, [localName](DOMElement* n) {
        return XMLString::equals(n->getLocalName(), localName) &&
               XMLString::equals(n->getNamespaceURI(), vqxml::kDsigNamespace);
    });
}
