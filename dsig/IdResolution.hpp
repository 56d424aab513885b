// How same-document references find their elements.
#ifndef VQXML_DSIG_IDRESOLUTION_HPP
#define VQXML_DSIG_IDRESOLUTION_HPP

#include <xercesc/dom/DOM.hpp>

class DSIGSignature;

namespace vqxml {

// Lets "#x" references find elements by an attribute named Id or id (and wsu:Id),
// as well as by attributes the document declares as IDs. If that fails for want of
// memory at the wrong moment, signature is set to null: the object cannot be
// released safely.
void enableIdAttributes(DSIGSignature*& signature);

// Refuses (XSECException, naming the Id) a signature that references an Id no
// element carries, or one that more than one element carries: which of them the
// engine would digest need not be what the signer meant (signature wrapping).
void checkReferencedIds(const DSIGSignature* signature);

// The one element whose Id-like attribute (engine/SameDocumentIds.hpp) is id;
// null when none or several are.
const XERCES_CPP_NAMESPACE::DOMElement* elementWithId(const XERCES_CPP_NAMESPACE::DOMDocument* doc, const XMLCh* id);

}  // namespace vqxml

#endif
