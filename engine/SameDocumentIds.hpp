// How a same-document URI names an element, one way for the engine's own
// lookups and the library's checks: "#x" or "#xpointer(id('x'))" names the
// element whose Id-like attribute is x: one the document declares as an ID, or
// one named Id, ID or id in any namespace (wsu:Id among them).
#ifndef VQXML_ENGINE_SAMEDOCUMENTIDS_HPP
#define VQXML_ENGINE_SAMEDOCUMENTIDS_HPP

#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "core/Transcode.hpp"

namespace vqxml {

// The Id a same-document URI names ("#x", "#xpointer(id('x'))"); empty for
// "", "#xpointer(/)" and URIs that are not same-document.
XString referencedId(const XMLCh* uri);

// The first two elements whose Id-like attribute is id, in document order.
std::vector<const XERCES_CPP_NAMESPACE::DOMElement*> elementsWithId(const XERCES_CPP_NAMESPACE::DOMDocument* doc,
                                                                    const XMLCh* id);

}  // namespace vqxml

#endif
