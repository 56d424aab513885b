// The octets XML Encryption encrypts for an element, or for one node of an
// element's content: the node as it reads in its place.
//
// Decryption reads the octets in the same place (XML Encryption parses a
// decrypted element or content in the context of the EncryptedData's parent), so
// a namespace declaration that the context already makes is left out and one it
// does not make is added: the element's octets are those it had in the document,
// and it comes back in the namespaces it had. That includes xmlns="" on an
// element outside any default namespace whose context has one, which canonical
// XML would omit (the XML Encryption recommendation's own caveat).
//
// Attributes keep their order; text and attribute values are escaped as
// canonical XML escapes them; comments and processing instructions are kept; an
// element without children is written <name/>. The octets are UTF-8.
#ifndef VQXML_ENGINE_XENCPLAINTEXT_HPP
#define VQXML_ENGINE_XENCPLAINTEXT_HPP

#include <xercesc/util/XercesDefs.hpp>

#include "engine/korean/PagedBytes.hpp"

XERCES_CPP_NAMESPACE_BEGIN
class DOMNode;
XERCES_CPP_NAMESPACE_END

namespace vqxml::xenc {

// context: the element the node is (or will be read) in; null for none, as for
// the document element. The octets are appended to out.
void appendPlaintext(const XERCES_CPP_NAMESPACE::DOMNode* node, const XERCES_CPP_NAMESPACE::DOMNode* context,
                     korean::PagedBytes& out);

}  // namespace vqxml::xenc

#endif
