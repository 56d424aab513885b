// Makes the namespace prefixes of XPath transforms resolvable by the engine.
//
// An XPath expression may use every prefix in scope at its XPath element. The
// engine resolves only those declared on the XPath element itself or on the
// document element, so an ebXML XPath that names ds:Signature (bound on the
// Signature element only) would fail. Declaring, on the XPath element, the prefixes
// its expression uses with the values they already have there changes nothing a
// verifier sees: Canonical XML (inclusive or exclusive) does not repeat a
// declaration an output ancestor already made with the same value, and drops one
// no element visibly uses, so the canonical SignedInfo is the same bytes before
// and after.
#ifndef VQXML_EBXML_XPATHPREFIXES_HPP
#define VQXML_EBXML_XPATHPREFIXES_HPP

#include <set>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

class DSIGSignature;

namespace vqxml::ebxml {

// The prefixes of the qualified names in an XPath expression (names inside string
// literals and axis names do not count).
std::set<std::basic_string<XMLCh>> prefixesUsed(const XMLCh* expression);

// For every XPath transform of the signature's references, declares on its XPath
// element each prefix the expression uses that is in scope there and not declared
// on the element itself, and has the engine read the element's declarations again.
void declareXPathPrefixes(DSIGSignature& signature);

}  // namespace vqxml::ebxml

#endif
