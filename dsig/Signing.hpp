// The one signing step of every family (XML Signature, ebXML, WS-Security).
//
// When the library's pipeline (ReferenceDigesting.hpp) takes every reference, it
// computes their digests the same way verification recomputes them; the SignedInfo
// is then canonicalized and signed by the algorithm handler the engine's sign()
// would use. Any other signature is signed by the engine.
#ifndef VQXML_DSIG_SIGNING_HPP
#define VQXML_DSIG_SIGNING_HPP

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

class DSIGSignature;
class XSECCryptoKey;

namespace vqxml {

// Fills in the digests and the SignatureValue of signature, whose element is
// signatureElement; key is the signing key signature already holds.
void signSignature(DSIGSignature& signature, XERCES_CPP_NAMESPACE::DOMElement* signatureElement,
                   XSECCryptoKey* key);

}  // namespace vqxml

#endif
