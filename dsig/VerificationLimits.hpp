// What a signature from a stranger may ask of the verifier.
//
// - At most 64 References, each with at most 16 Transforms: a document cannot make
//   the verifier digest the same content thousands of times.
// - An XPath transform evaluates its expression once for every node of the
//   document, so an expression that itself walks the document ("//", the
//   descendant, following and preceding axes, id()) costs the square of the
//   document's size. Such expressions are refused, and expressions longer than
//   1024 characters; what is left looks up (ancestors, bounded by the nesting
//   limit), at the node, its attributes, namespaces and children, and stays
//   linear. XPath Filter 2.0 expressions are evaluated once and are not limited.
// Transforms that would run a stylesheet or fetch are refused earlier, when the
// signature is loaded (engine/KeyInfoGuard.hpp).
#ifndef VQXML_DSIG_VERIFICATIONLIMITS_HPP
#define VQXML_DSIG_VERIFICATIONLIMITS_HPP

class DSIGSignature;

namespace vqxml {

constexpr unsigned kMaxReferences = 64;
constexpr unsigned kMaxTransforms = 16;
constexpr unsigned kMaxXPathLength = 1024;

// Why this XPath transform expression is not run when verifying; empty when it may be.
const char* xpathRefusal(const char* expression);

// Throws XSECException naming the limit a loaded signature goes past.
void checkVerificationLimits(const DSIGSignature* signature);

}  // namespace vqxml

#endif
