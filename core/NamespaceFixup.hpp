// Namespace declarations for nodes the library puts into a tree.
//
// A subtree imported from another document keeps its elements' namespaces, but
// the declarations that bound them stay behind: <data> with no namespace put into
// a Signature whose default namespace is XML Signature's is, by the declarations
// in scope, in that namespace. The serializer adds the missing xmlns="" when it
// writes the tree, but a digest taken before that covered other bytes than the
// document returned. Declaring what each element and attribute needs where it
// stands makes the tree say what it means before anything is canonicalized.
#ifndef VQXML_CORE_NAMESPACEFIXUP_HPP
#define VQXML_CORE_NAMESPACEFIXUP_HPP

#include <xercesc/dom/DOM.hpp>

namespace vqxml {

// Adds to root and its descendants the namespace declarations their names need
// and the declarations in scope do not give.
void declareNamespaces(XERCES_CPP_NAMESPACE::DOMElement* root);

}  // namespace vqxml

#endif
