// What a signature from a stranger may ask of the verifier.
//
// - At most 64 References, each with at most 16 Transforms: a document cannot make
//   the verifier digest the same content thousands of times.
// - XPath expressions (transforms and XPath Filter 2.0) of at most 1024 characters,
//   whose evaluation is bounded in nodes visited before the verifier reaches for a
//   key. The library's own evaluator (dsig/XPathSelection.hpp) is linear and
//   counts as it goes: at most kMaxXPathCost, the expression's size times the
//   nodes it is asked about. An expression left to the engine is estimated from
//   its text before it runs (dsig/XPathCost.hpp): an XPath transform is evaluated
//   at every node, so its estimate times the document's nodes, a Filter 2.0
//   expression once; more than kMaxEngineXPathCost is refused. Expressions that
//   look up from the node ("not(ancestor-or-self::ds:Signature)", the national
//   tax-invoice recipe, here()) cost a few visits per node and stay far below on
//   documents of millions of nodes; one that walks the document from each node
//   ("count(//*)", "count(../*)", "following::*"), or nests walks in a Filter 2.0
//   expression, costs the square (or more) of the document and is refused once
//   the document has more than a few thousand nodes.
// Refusals are XSECException UnsupportedFunction (status 35).
// Transforms that would run a stylesheet or fetch are refused earlier, when the
// signature is loaded (engine/KeyInfoGuard.hpp).
#ifndef VQXML_DSIG_VERIFICATIONLIMITS_HPP
#define VQXML_DSIG_VERIFICATIONLIMITS_HPP

#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
XERCES_CPP_NAMESPACE_END

class DSIGSignature;

namespace vqxml {

constexpr unsigned kMaxReferences = 64;
constexpr unsigned kMaxTransforms = 16;
constexpr unsigned kMaxXPathLength = 1024;
constexpr std::uint64_t kMaxXPathCost = std::uint64_t(1) << 28;
constexpr std::uint64_t kMaxEngineXPathCost = std::uint64_t(1) << 23;

// Throws XSECException naming the limit a loaded signature goes past.
void checkVerificationLimits(const DSIGSignature* signature);

// Throws XSECException when the engine's XPath transforms and XPath Filter 2.0
// expressions of the ds:Reference element reference would cost more than
// kMaxEngineXPathCost in its document.
void checkEngineXPathCost(const XERCES_CPP_NAMESPACE::DOMElement* reference);

// The same for one ds:XPath element's expression, evaluated by the engine at
// every node of doc.
void checkEngineXPathCost(const XERCES_CPP_NAMESPACE::DOMElement* xpath, const XERCES_CPP_NAMESPACE::DOMDocument* doc);

}  // namespace vqxml

#endif
