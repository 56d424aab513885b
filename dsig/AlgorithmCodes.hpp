// The engine's numeric algorithm codes and the URIs they stand for.
//
// signatureMethod: 1 DSA, 2 HMAC, 3 RSA, 4 ECDSA, 5 KCDSA.
// hashMethod: 1 SHA-1, 2 MD5, 3 SHA-224, 4 SHA-256, 5 SHA-384, 6 SHA-512, 7 HAS-160.
// canonicalizationMethod: 0 none, 1 C14N, 2 C14N with comments, 3 exclusive C14N,
// 4 exclusive C14N with comments.
#ifndef VQXML_DSIG_ALGORITHMCODES_HPP
#define VQXML_DSIG_ALGORITHMCODES_HPP

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

struct SignatureCodes {
    int signatureMethod;
    int hashMethod;
};

// The SignatureMethod URI of a (signature, hash) pair; null if the pair has none.
const XMLCh* signatureMethodURI(SignatureCodes codes);
// The codes of a SignatureMethod URI; {0, 0} when unknown.
SignatureCodes signatureCodesOf(const XMLCh* uri);

// The DigestMethod URI of a hash code; null if none.
const XMLCh* digestMethodURI(int hashMethod);

// The URI of a canonicalization code 1-4; null for 0 and anything else.
const XMLCh* canonicalizationURI(int canonicalizationMethod);

// Callers' selectors. Each returns false for a selector it does not know.
bool signatureSelector(int selector, SignatureCodes& out);
bool canonicalizationSelector(int selector, int& out);
bool digestSelector(int selector, int& out);

}  // namespace vqxml

#endif
