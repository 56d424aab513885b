// Text nodes whose buffers are made to the length of their value.
//
// Xerces gives every new text 15 units to spare, 30 bytes for each of the
// hundreds of thousands of texts of a large document, and grows a buffer by a
// quarter. A long value is also written straight into its node: setting a
// node's value copies it into the document, so a value made beforehand (the
// megabytes of a CipherValue's base64) would be held twice at the moment of
// copying; the node's own buffer is handed out instead, and the one it
// replaces goes back at once.
#ifndef VQXML_CORE_ADAPTER_TEXTROOM_HPP
#define VQXML_CORE_ADAPTER_TEXTROOM_HPP

#include <cstddef>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMText.hpp>

namespace vqxml {

// A new text node of doc (a document Xerces made) holding the length units at
// chars, its buffer one unit longer than that (the terminator).
XERCES_CPP_NAMESPACE::DOMText* exactText(XERCES_CPP_NAMESPACE::DOMDocument* doc, const XMLCh* chars,
                                         std::size_t length);

// Room for exactly length units, which become the value of text (a text node,
// not a CDATA section, of a document Xerces made) once the caller has written
// every one of them; null for a node of another kind.
XMLCh* textRoom(XERCES_CPP_NAMESPACE::DOMText* text, std::size_t length);

// The same, after the text's present value, which stays: room for extra more units.
XMLCh* textRoomAfter(XERCES_CPP_NAMESPACE::DOMText* text, std::size_t extra);

}  // namespace vqxml

#endif
