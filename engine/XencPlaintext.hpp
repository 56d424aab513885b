// The octets XML Encryption encrypts for an element, or for one node of an
// element's content: the node in canonical form (C14N 1.0 with comments) as it
// reads in its place.
//
// Canonical XML declares on the first element every namespace in scope, since it
// cannot know where its octets will be read. Decryption reads them in the same
// place (XML Encryption parses a decrypted element or content in the context of
// the EncryptedData's parent), so the declarations that context already makes
// are left out: the element's octets are those it had in the document. One
// declaration is added instead, as the XML Encryption recommendation advises:
// xmlns="" on an element outside any default namespace whose context has one,
// which canonical XML omits and without which the element would come back in
// the context's default namespace.
#ifndef VQXML_ENGINE_XENCPLAINTEXT_HPP
#define VQXML_ENGINE_XENCPLAINTEXT_HPP

#include <xercesc/util/XercesDefs.hpp>

#include "engine/korean/SecureBytes.hpp"

XERCES_CPP_NAMESPACE_BEGIN
class DOMNode;
XERCES_CPP_NAMESPACE_END

namespace vqxml::xenc {

// context: the element the node is (or will be read) in; null for none, as for
// the document element.
korean::SecureBytes plaintextOf(XERCES_CPP_NAMESPACE::DOMNode* node, const XERCES_CPP_NAMESPACE::DOMNode* context);

}  // namespace vqxml::xenc

#endif
