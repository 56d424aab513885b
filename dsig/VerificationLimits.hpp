// What a signature from a stranger may ask of the verifier.
//
// - At most 64 References, each with at most 16 Transforms: a document cannot make
//   the verifier digest the same content thousands of times.
// - No XSLT transform: a stylesheet from the document would run in the verifier.
// - No transform after a base64 transform: the engine would parse the decoded
//   bytes with a parser that follows external entities.
#ifndef VQXML_DSIG_VERIFICATIONLIMITS_HPP
#define VQXML_DSIG_VERIFICATIONLIMITS_HPP

class DSIGSignature;

namespace vqxml {

constexpr unsigned kMaxReferences = 64;
constexpr unsigned kMaxTransforms = 16;

// Throws XSECException naming the limit a loaded signature goes past.
void checkVerificationLimits(const DSIGSignature* signature);

}  // namespace vqxml

#endif
