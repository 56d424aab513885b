// The one check of a loaded signature that every family makes (XML Signature,
// ebXML, WS-Security): the verifier's limits, referenced Ids that name one
// element each, each reference's digest, then the SignedInfo under the key. What
// a family then requires of the covered content (VerifiedCoverage.hpp) and which
// key it trusts (KeyBinding.hpp) are its own.
#ifndef VQXML_DSIG_VERIFIER_HPP
#define VQXML_DSIG_VERIFIER_HPP

#include <functional>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

class DSIGSignature;
class XSECCryptoKey;

namespace vqxml {

// Checks signature, whose element is signatureElement. The key comes from
// verificationKey, asked only once every reference has matched, so that a
// reference that cannot be processed is reported as such rather than as a bad
// signature. Returns the canonical reading (VQXML_READING_*) the references
// needed; a reference or SignedInfo that does not match raises 11213 naming it;
// what cannot be processed raises the engine's exception.
int verifySignature(DSIGSignature& signature, XERCES_CPP_NAMESPACE::DOMElement* signatureElement,
                    const std::function<XSECCryptoKey*()>& verificationKey);

}  // namespace vqxml

#endif
