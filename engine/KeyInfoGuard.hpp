// What a received element may ask of the engine (xml-security-c 2.0.4) while it
// is loaded: the one policy for every loader of key information (signatures,
// EncryptedData, EncryptedKey), applied before the engine sees the element.
// Nothing is fetched, no transform runs and nothing loops:
//  - ds:RetrievalMethod. The engine follows one as it loads, into the element
//    its URI names, whose own key information it loads in turn, recursively and
//    without a limit; transforms it carries run there and then (XSLT included,
//    whose document() reads files and addresses), and other URIs are fetched.
//    A RetrievalMethod must name the document ("", "#xpointer(/)", from which
//    the engine takes nothing) or one of its elements ("#id",
//    "#xpointer(id('id'))"), and carry no Transforms.
//  - ds:Reference of Type Manifest. The engine loads the Manifest it names with
//    the signature, and that Manifest's References in turn, as recursively.
//    Manifest references are counted and followed with RetrievalMethods.
//  - xenc:CipherReference. The engine opens its URI and runs its transforms
//    when it decrypts: it must name the document or one of its elements, and
//    carry no Transforms.
//  - ds:Transform, wherever it stands: an XSLT transform (a stylesheet from the
//    document would run, and its document() reads files and addresses), or a
//    transform after a base64 transform (the engine parses the decoded octets
//    with a parser that follows external entities). The engine may run a
//    Reference's transforms when verifying or when the loaded signature is
//    signed again, a Manifest's included.
//  - An X509Data with more than one X509SubjectName, X509IssuerSerial or
//    X509SKI, except in the ds:KeyInfo of an xenc:EncryptedKey. The engine keeps
//    one of each, which is all a signer's key binding (dsig/KeyBinding.hpp)
//    checks against the key; the others would pass unchecked. An EncryptedKey
//    may name its recipient's certificate beside others, and the recipient is
//    chosen among them all (xenc/RecipientNames.hpp).
//  - An X509SubjectName, X509IssuerName or KeyName longer than kMaxNameLength
//    (core/ParseLimits.hpp): the engine reads names in quadratic time.
// The RetrievalMethods and Manifest references seen from one element, counted
// every time the engine would follow one, must be at most kMaxRetrievals and
// free of loops. Their targets are found as broadly as the engine may find them:
// by declared ID, or by an attribute named Id, ID or id in any namespace
// (wsu:Id); an Id that several elements carry is refused.
// Every refusal is XSECException::UnsupportedFunction (status 35).
#ifndef VQXML_ENGINE_KEYINFOGUARD_HPP
#define VQXML_ENGINE_KEYINFOGUARD_HPP

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace vqxml {

inline constexpr unsigned kMaxRetrievals = 8;

// Throws XSECException naming what it refuses in element, or in what element's
// RetrievalMethods lead to.
void checkKeyInformation(const XERCES_CPP_NAMESPACE::DOMElement* element);

}  // namespace vqxml

#endif
