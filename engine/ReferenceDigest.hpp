// Checking one Reference's digest without the engine's checkHash(), which leaks
// both its buffers when the DigestValue cannot be read (a malformed document).
#ifndef VQXML_ENGINE_REFERENCEDIGEST_HPP
#define VQXML_ENGINE_REFERENCEDIGEST_HPP

class DSIGReference;

namespace vqxml {

// Whether the digest of what the reference points at equals its DigestValue;
// throws what the engine throws for a reference it cannot process.
bool referenceDigestMatches(const DSIGReference* reference);

}  // namespace vqxml

#endif
