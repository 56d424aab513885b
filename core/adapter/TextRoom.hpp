// A long text value written straight into its node. Setting a node's value
// copies it into the document, so a value made beforehand (the megabytes of a
// CipherValue's base64) is held twice at the moment of copying; this hands out
// the node's own buffer instead. The buffer is made to the exact length (the
// DOM's own growth adds a quarter) and the one it replaces goes back at once.
#ifndef VQXML_CORE_ADAPTER_TEXTROOM_HPP
#define VQXML_CORE_ADAPTER_TEXTROOM_HPP

#include <cstddef>

#include <xercesc/dom/DOMText.hpp>

namespace vqxml {

// Room for exactly length units, which become the value of text (a text node,
// not a CDATA section, of a document Xerces made) once the caller has written
// every one of them; null for a node of another kind.
XMLCh* textRoom(XERCES_CPP_NAMESPACE::DOMText* text, std::size_t length);

// The same, after the text's present value, which stays: room for extra more units.
XMLCh* textRoomAfter(XERCES_CPP_NAMESPACE::DOMText* text, std::size_t extra);

}  // namespace vqxml

#endif
