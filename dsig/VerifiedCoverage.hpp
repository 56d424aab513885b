// What a verified signature's references resolved to, held against what the
// caller is handed afterwards: a signature that verifies vouches only for what
// its references cover, so content it did not cover is refused or taken out
// before anything is handed back. Shared by XML Signature (and ebXML) and
// WS-Security verification.
#ifndef VQXML_DSIG_VERIFIEDCOVERAGE_HPP
#define VQXML_DSIG_VERIFIEDCOVERAGE_HPP

#include <string>

#include <xercesc/dom/DOM.hpp>

namespace vqxml {

// The node a same-document reference resolved to: the document for "" and
// "#xpointer(/)", the one element carrying the Id for "#id" and
// "#xpointer(id('id'))"; null for every other URI (cid:, external).
const XERCES_CPP_NAMESPACE::DOMNode* referenceTarget(const XERCES_CPP_NAMESPACE::DOMElement* reference);

// XML Signature, after signature (a ds:Signature element) verified. Throws
// VQXML_XSECException 11213 unless what the caller is handed was signed:
//  - an enveloping signature (the document element) hands out the first
//    element of its first ds:Object: a reference must have resolved to that
//    element, to an element holding it, or to the document;
//  - any other hands out the whole document: a reference must have resolved to
//    the document or the document element, and no "#id" reference may have
//    resolved inside a ds:Signature element (its element would not be what the
//    caller reads in the document).
void requireCoveredContent(const XERCES_CPP_NAMESPACE::DOMElement* signature);

// Removes from signature's document every other ds:Signature element (an
// enveloping signature's Object content included) of which no reference's
// node-set holds every node: a signature's transforms may leave every
// ds:Signature out, and what such an element carries was not signed.
void removeUncoveredSignatures(const XERCES_CPP_NAMESPACE::DOMElement* signature);

// WS-Security: throws VQXML_XSECException 11213 unless body (the Envelope's
// own Body child) is there and some reference of signature resolved to it
// or to an element or document holding it, with a node-set holding every node
// of it.
void requireCoveredBody(const XERCES_CPP_NAMESPACE::DOMElement* signature,
                        const XERCES_CPP_NAMESPACE::DOMElement* body);

// What signature's references resolved to, one line each in their order
// (UTF-8, each line ended by "\n"): "/" for the whole document; for an
// element, its path from the document element, each step "{namespace}name"
// ("name" without a namespace) with "[n]" after it when its parent has several
// child elements of that name (n counts from 1); any other URI as it stands.
std::string signedParts(const XERCES_CPP_NAMESPACE::DOMElement* signature);

}  // namespace vqxml

#endif
