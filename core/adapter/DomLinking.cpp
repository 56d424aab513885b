#include "core/adapter/DomLinking.hpp"

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMText.hpp>
#include <xercesc/dom/impl/DOMAttrImpl.hpp>
#include <xercesc/dom/impl/DOMCasts.hpp>
#include <xercesc/dom/impl/DOMElementImpl.hpp>
#include <xercesc/dom/impl/DOMTextImpl.hpp>

#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// Elements and text are what a parse makes by the thousand; every element
// class of the DOM derives from DOMElementImpl, every text node is a
// DOMTextImpl. Anything else takes the DOM's own casts.
DOMElementImpl* asElement(DOMNode* n) {
    return static_cast<DOMElementImpl*>(static_cast<DOMElement*>(n));
}

DOMTextImpl* asText(DOMNode* n) {
    return static_cast<DOMTextImpl*>(static_cast<DOMText*>(n));
}

template <class Part>
Part* partOf(DOMNode* n, Part DOMElementImpl::*ofElement, Part DOMTextImpl::*ofText, Part* (*ofOther)(DOMNode*)) {
    switch (n->getNodeType()) {
    case DOMNode::ELEMENT_NODE:
        return &(asElement(n)->*ofElement);
    case DOMNode::TEXT_NODE:
        return &(asText(n)->*ofText);
    default:
        return ofOther(n);
    }
}

DOMNodeImpl* nodePart(DOMNode* n) {
    return partOf<DOMNodeImpl>(n, &DOMElementImpl::fNode, &DOMTextImpl::fNode,
                               [](DOMNode* other) { return castToNodeImpl(other); });
}

DOMChildNode* childPart(DOMNode* n) {
    return partOf<DOMChildNode>(n, &DOMElementImpl::fChild, &DOMTextImpl::fChild,
                                [](DOMNode* other) { return castToChildImpl(other); });
}

DOMParentNode* parentPart(DOMNode* n) {
    switch (n->getNodeType()) {
    case DOMNode::ELEMENT_NODE:
        return &asElement(n)->fParent;
    case DOMNode::ATTRIBUTE_NODE:
        return &static_cast<DOMAttrImpl*>(static_cast<DOMAttr*>(n))->fParent;
    default:
        return castToParentImpl(n);
    }
}

}  // namespace

void vqxml::appendNewChild(DOMNode* parent, DOMNode* child) {
    DOMParentNode* children = parentPart(parent);
    DOMNodeImpl* node = nodePart(child);
    DOMChildNode* place = childPart(child);
    node->fOwnerNode = parent;
    node->isOwned(true);
    // The first child's previousSibling is the last child: the list is closed
    // backwards so that appending needs no walk.
    if (children->fFirstChild == nullptr) {
        children->fFirstChild = child;
        node->isFirstChild(true);
        place->previousSibling = child;
        return;
    }
    DOMChildNode* first = childPart(children->fFirstChild);
    DOMNode* last = first->previousSibling;
    childPart(last)->nextSibling = child;
    place->previousSibling = last;
    first->previousSibling = child;
}

DOMNode* vqxml::parentOfElement(DOMNode* element) {
    const DOMNodeImpl& node = asElement(element)->fNode;
    return node.isOwned() ? node.fOwnerNode : nullptr;
}
