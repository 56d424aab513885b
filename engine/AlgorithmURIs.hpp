// Every algorithm identifier the engine adds to xml-security-c's own, in one
// place (docs/algorithms.md tables them with the standard ones).
//
// SEED-CBC and the KCDSA identifiers are the ones in public use. ARIA-128-CBC,
// NEAT-CBC, HAS-160 and KCDSA with HAS-160 have no public identifier; this
// library names them under its own URN namespace "urn:vqxml:xmlsec:", which
// belongs to no one else and will not change.
#ifndef VQXML_ENGINE_ALGORITHMURIS_HPP
#define VQXML_ENGINE_ALGORITHMURIS_HPP

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml::uri {

// Block ciphers in CBC mode (EncryptionMethod).
inline constexpr XMLCh kSeedCbc[] = u"http://www.w3.org/2007/05/xmldsig-more#seed128-cbc";  // RFC 6931
inline constexpr XMLCh kAria128Cbc[] = u"urn:vqxml:xmlsec:aria128-cbc";
inline constexpr XMLCh kNeatCbc[] = u"urn:vqxml:xmlsec:neat128-cbc";

// Digest (DigestMethod); the engine's digest code 7.
inline constexpr XMLCh kHas160[] = u"urn:vqxml:xmlsec:has160";

// Signatures (SignatureMethod); the engine's signature method 5.
inline constexpr XMLCh kKcdsaSha1[] = u"http://www.tta.or.kr/2002/11/xmldsig#kcdsa-sha1";
inline constexpr XMLCh kKcdsaSha256[] = u"http://www.tta.or.kr/2002/11/xmldsig#kcdsa-sha256";
inline constexpr XMLCh kKcdsaHas160[] = u"urn:vqxml:xmlsec:kcdsa-has160";

}  // namespace vqxml::uri

#endif
