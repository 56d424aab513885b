// Decrypted octets made into nodes of the document they came from.
//
// The octets are parsed as the content of an element that declares every
// namespace in scope where the EncryptedData stands, and the nodes are made
// straight in that document: no second document is built and copied over.
// Text, CDATA sections, comments and processing instructions are kept as a DOM
// parser keeps them; a document type or anything not well-formed is refused.
#ifndef VQXML_ENGINE_XENCFRAGMENTPARSER_HPP
#define VQXML_ENGINE_XENCFRAGMENTPARSER_HPP

#include <xercesc/dom/DOMDocumentFragment.hpp>
#include <xercesc/dom/DOMElement.hpp>

#include "engine/korean/SecureBytes.hpp"

namespace vqxml::xenc {

// A new fragment of encryptedData's document holding the nodes of plain (UTF-8),
// read where encryptedData stands; *holdsXenc tells whether any of them is an
// element in the XML Encryption namespace. Raises XSECException when plain does
// not parse.
XERCES_CPP_NAMESPACE::DOMDocumentFragment* parseInPlace(const korean::SecureBytes& plain,
                                                         const XERCES_CPP_NAMESPACE::DOMElement* encryptedData,
                                                         bool* holdsXenc);

}  // namespace vqxml::xenc

#endif
