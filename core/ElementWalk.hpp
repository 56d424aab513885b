// Every element under a node, in document order, for the searches that look at
// a whole document (Id attributes, XML Encryption elements). The DOM's own
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

// Calls visit(element) for root, when it is an element, and for every element
// below it. visit must leave the tree's shape as it is.
template <class Visit>
void forEachElement(XERCES_CPP_NAMESPACE::DOMNode* root, Visit&& visit) {
    using XERCES_CPP_NAMESPACE::DOMNode;
    if (root == nullptr)
        return;
    std::vector<DOMNode*> path;
    DOMNode* node = root;
    for (;;) {
        const DOMNode::NodeType type = node->getNodeType();
        if (type == DOMNode::ELEMENT_NODE)
            visit(static_cast<XERCES_CPP_NAMESPACE::DOMElement*>(node));
        DOMNode* child = type == DOMNode::ELEMENT_NODE || type == DOMNode::DOCUMENT_NODE ? node->getFirstChild() : nullptr;
        if (child != nullptr) {
            path.push_back(node);
            node = child;
            continue;
        }
        for (;;) {
            if (node == root)
                return;
            if (DOMNode* next = node->getNextSibling()) {
                node = next;
                break;
            }
            node = path.back();
            path.pop_back();
        }
    }
}

}  // namespace vqxml

#endif
