// Linking freshly made nodes into a tree while it is being built.
//
// Xerces 3.2 reaches the parts of a node (its place among siblings, its
// children) through dynamic_cast, several times for every node appended, and
// its appendChild checks the whole tree on top: building a large document
// spent a third of its time there. A parser that has just made a node knows
// what the checks would find, and knows the node's class from its type, so it
// links the node itself.
#ifndef VQXML_CORE_ADAPTER_DOMLINKING_HPP
#define VQXML_CORE_ADAPTER_DOMLINKING_HPP

#include <xercesc/dom/DOMNode.hpp>

namespace vqxml {

// Appends child as the last child of parent. child must have been made in
// parent's document and be in no tree yet, and parent must be able to hold
// it (an element or attribute holding text, an element holding an element).
void appendNewChild(XERCES_CPP_NAMESPACE::DOMNode* parent, XERCES_CPP_NAMESPACE::DOMNode* child);

// The node element hangs under, or null when it hangs under none.
XERCES_CPP_NAMESPACE::DOMNode* parentOfElement(XERCES_CPP_NAMESPACE::DOMNode* element);

}  // namespace vqxml

#endif
