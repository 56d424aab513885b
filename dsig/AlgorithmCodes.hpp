// The XML Signature family's view of the algorithm table (engine/Algorithms.def,
// which lists the engine's codes): signature methods, digests, canonicalizations.
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

// The URI of a canonicalization code 1-6; null for 0 and anything else.
const XMLCh* canonicalizationURI(int canonicalizationMethod);

// Callers' selectors. Each returns false for a selector it does not know.
bool signatureSelector(int selector, SignatureCodes& out);
bool canonicalizationSelector(int selector, int& out);
// A SOAP signature's SignedInfo canonicalization (selectors of its own).
bool soapCanonicalizationSelector(int selector, int& out);
bool digestSelector(int selector, int& out);

}  // namespace vqxml

#endif
