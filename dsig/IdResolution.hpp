// How same-document references find their elements.
#ifndef VQXML_DSIG_IDRESOLUTION_HPP
#define VQXML_DSIG_IDRESOLUTION_HPP

class DSIGSignature;

namespace vqxml {

// Lets "#x" references find elements by an attribute named Id or id (and wsu:Id),
// as well as by attributes the document declares as IDs.
void enableIdAttributes(DSIGSignature* signature);

// Refuses (XSECException) a signature that references an Id more than one element
// carries: which of them the engine would digest is not what the signer may have
// meant (signature wrapping).
void refuseAmbiguousReferences(const DSIGSignature* signature);

}  // namespace vqxml

#endif
