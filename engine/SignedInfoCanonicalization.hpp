// The canonical form of a SignedInfo as its CanonicalizationMethod asks, an
// exclusive InclusiveNamespaces PrefixList included, and the signature check
// over it.
//
// The engine's own SignedInfo check ignores the PrefixList, so every signature
// whose SignedInfo names one (WSS4J signs with PrefixList="soapenv") failed
// there although its references were intact.
#ifndef VQXML_ENGINE_SIGNEDINFOCANONICALIZATION_HPP
#define VQXML_ENGINE_SIGNEDINFOCANONICALIZATION_HPP

#include <optional>
#include <string>

#include <xercesc/dom/DOM.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

class DSIGSignature;
class XSECCryptoKey;

namespace vqxml {

struct SignedInfoCanonicalization {
    bool exclusive = false;
    bool comments = false;
    std::optional<std::string> prefixList;  // exclusive only; "#default" and prefixes, space-separated
};

// The method of signedInfo's one CanonicalizationMethod, if it is C14N 1.0 or
// exclusive C14N with or without comments.
std::optional<SignedInfoCanonicalization> signedInfoCanonicalization(const XERCES_CPP_NAMESPACE::DOMElement* signedInfo);

// element's canonical form by how, into out; its length.
XMLSize_t canonicalForm(XERCES_CPP_NAMESPACE::DOMDocument* doc, XERCES_CPP_NAMESPACE::DOMElement* element,
                        const SignedInfoCanonicalization& how, safeBuffer& out);

// Whether the SignatureValue of the loaded sig, whose element is signature,
// verifies with key over its SignedInfo's canonical form. Throws XSECException when the method cannot be
// checked (unknown canonicalization or signature method, unsafe HMAC length).
bool signedInfoVerifies(const DSIGSignature& sig, const XERCES_CPP_NAMESPACE::DOMElement* signature,
                        XSECCryptoKey* key);

}  // namespace vqxml

#endif
