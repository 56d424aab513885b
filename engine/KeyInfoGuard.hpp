// Key information the engine (xml-security-c 2.0.4) cannot be given safely,
// refused before it loads an element that carries some:
//  - ds:RetrievalMethod chains. The engine follows a RetrievalMethod into the
//    element it names and loads that element's own key information, recursively
//    and without a limit, so a loop exhausts the stack. Chains of same-document
//    references (resolved as the engine resolves them, by declared ID) must be
//    free of loops and shorter than kMaxRetrievalChain.
//  - An X509Data with more than one X509SubjectName or X509IssuerSerial. The
//    engine keeps the last and loses the memory of the others, which a document
//    could repeat at will.
//  - An X509SubjectName, X509IssuerName or KeyName longer than kMaxNameLength
//    (core/ParseLimits.hpp): the engine reads names in quadratic time.
#ifndef VQXML_ENGINE_KEYINFOGUARD_HPP
#define VQXML_ENGINE_KEYINFOGUARD_HPP

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace vqxml {

inline constexpr int kMaxRetrievalChain = 8;

// Throws XSECException naming what it refuses in element, or in what element's
// RetrievalMethods lead to.
void checkKeyInformation(const XERCES_CPP_NAMESPACE::DOMElement* element);

}  // namespace vqxml

#endif
