// Writing a DOM tree as UTF-8 bytes, fast.
//
// Xerces' DOMLSSerializer formats every character through its transcoder and
// escape tables and was a tenth of a small signature's verification. This writer
// produces the same bytes for the trees the library writes (the declaration,
// namespace fix-up, attribute order and escaping as the serializer does them with
// pretty-printing off); for anything rarer (a DOCTYPE, entity nodes, attributes
// defaulted by a DTD, a namespaced attribute without prefix, text that is not
// well-formed UTF-16) it declines and the caller uses Xerces. One deliberate
// difference: a CDATA section holding "]]>" is split keeping every character
// (Xerces drops the ">").
#ifndef VQXML_CORE_ADAPTER_DOMWRITER_HPP
#define VQXML_CORE_ADAPTER_DOMWRITER_HPP

#include <string>

#include <xercesc/dom/DOMNode.hpp>

#include "core/GrowingBuffer.hpp"

namespace vqxml {

// Appends node (a document, element or any child node) to out; false, with out
// unspecified, when the tree holds something this writer leaves to Xerces.
bool writeDom(const XERCES_CPP_NAMESPACE::DOMNode* node, std::string& out);
// The same into a buffer the result can be handed over in.
bool writeDom(const XERCES_CPP_NAMESPACE::DOMNode* node, GrowingBuffer& out);

}  // namespace vqxml

#endif
