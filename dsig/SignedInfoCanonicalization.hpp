// The canonical form of a SignedInfo as its CanonicalizationMethod asks, written
// by the library's own canonicalizer (dsig/Canonicalizer.hpp), the same one the
// references use: Canonical XML 1.0 and 1.1 and exclusive C14N with an
// InclusiveNamespaces PrefixList, with or without comments. The method is read
// through the one algorithm table (engine/Algorithms.hpp), so SignedInfo knows
// every canonicalization a reference knows.
//
// The engine's own SignedInfo check ignores the PrefixList (WSS4J signs with
// PrefixList="soapenv") and knows no Canonical XML 1.1.
#ifndef VQXML_DSIG_SIGNEDINFOCANONICALIZATION_HPP
#define VQXML_DSIG_SIGNEDINFOCANONICALIZATION_HPP

#include <memory>
#include <optional>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "dsig/Canonicalizer.hpp"

class DSIGSignature;
class TXFMChain;
class XSECCryptoKey;

namespace vqxml {

// The method of signedInfo's one CanonicalizationMethod, if the table knows it
// (an InclusiveNamespaces child only under exclusive C14N).
std::optional<CanonicalOptions> signedInfoCanonicalization(const XERCES_CPP_NAMESPACE::DOMElement* signedInfo);

// element's canonical form by how.
std::string canonicalForm(const XERCES_CPP_NAMESPACE::DOMElement* element, const CanonicalOptions& how);

// A transform chain that starts with signedInfo's canonical form by how, for an
// algorithm handler to sign or verify.
std::unique_ptr<TXFMChain> canonicalChain(const XERCES_CPP_NAMESPACE::DOMElement* signedInfo,
                                          const CanonicalOptions& how);

// Whether the SignatureValue of the loaded sig, whose element is signature,
// verifies with key over its SignedInfo's canonical form. Throws XSECException when the method cannot be
// checked (unknown canonicalization or signature method, unsafe HMAC length).
bool signedInfoVerifies(const DSIGSignature& sig, const XERCES_CPP_NAMESPACE::DOMElement* signature,
                        XSECCryptoKey* key);

}  // namespace vqxml

#endif
