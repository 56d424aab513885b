// Every element under a node, in document order, for the searches that look at
// a whole document (Id attributes, XML Encryption elements, SOAP headers). The DOM's own
// element lists ask each node for its parent on the way back up, which Xerces
// answers through dynamic_cast: a tenth of encrypting a 100 KB document went
// there. This walk keeps the path down itself and needs no recursion, so a
// deeply nested document cannot exhaust the stack.
#ifndef VQXML_CORE_ELEMENTWALK_HPP
#define VQXML_CORE_ELEMENTWALK_HPP

#include <vector>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNode.hpp>

namespace vqxml {

// The first of root (when it is an element) and the elements below it, in
// document order, for which found(element) is true; null when none is.
template <class Found>
XERCES_CPP_NAMESPACE::DOMElement* firstElement(XERCES_CPP_NAMESPACE::DOMNode* root, Found&& found) {
    using XERCES_CPP_NAMESPACE::DOMNode;
    if (root == nullptr)
        return nullptr;
    std::vector<DOMNode*> path;
    DOMNode* node = root;
    for (;;) {
        const DOMNode::NodeType type = node->getNodeType();
        if (type == DOMNode::ELEMENT_NODE && found(static_cast<XERCES_CPP_NAMESPACE::DOMElement*>(node)))
            return static_cast<XERCES_CPP_NAMESPACE::DOMElement*>(node);
        DOMNode* child = type == DOMNode::ELEMENT_NODE || type == DOMNode::DOCUMENT_NODE ? node->getFirstChild() : nullptr;
        if (child != nullptr) {
            path.push_back(node);
            node = child;
            continue;
        }
        for (;;) {
            if (node == root)
                return nullptr;
            if (DOMNode* next = node->getNextSibling()) {
                node = next;
                break;
            }
            node = path.back();
            path.pop_back();
        }
    }
}

// Calls visit(element) for root, when it is an element, and for every element
// below it. visit must leave the tree's shape as it is.
template <class Visit>
void forEachElement(XERCES_CPP_NAMESPACE::DOMNode* root, Visit&& visit) {
    firstElement(root, [&visit](XERCES_CPP_NAMESPACE::DOMElement* element) {
        visit(element);
        return false;
    });
}

}  // namespace vqxml

#endif
