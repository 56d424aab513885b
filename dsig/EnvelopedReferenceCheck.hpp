// Digests the tax-invoice reference shape without the XPath engine.
//
// A Reference with URI="" whose only transforms are the XPath filter
// "not(ancestor-or-self::P:Signature)" (P bound to the XML Signature namespace on
// the XPath element) and optionally a C14N or exclusive C14N transform selects the
// whole document without any ds:Signature subtree. That is the canonical form of
// the document with those subtrees taken out, which the canonicalizer produces
// directly; Xalan's evaluation of the filter over every node costs more than all
// the rest of a verification of a small invoice.
#ifndef VQXML_DSIG_ENVELOPEDREFERENCECHECK_HPP
#define VQXML_DSIG_ENVELOPEDREFERENCECHECK_HPP

#include <optional>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

class DSIGReference;

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
XERCES_CPP_NAMESPACE_END

namespace vqxml {

enum class ReferenceCheck { Valid, Invalid, NotThisShape };

// The digest of a reference of that shape; nothing for any other reference.
std::optional<std::vector<unsigned char>> envelopedDigest(const DSIGReference* reference,
                                                          XERCES_CPP_NAMESPACE::DOMDocument* doc);

// Compares that digest with the reference's DigestValue.
ReferenceCheck checkEnvelopedReference(const DSIGReference* reference, XERCES_CPP_NAMESPACE::DOMDocument* doc);

}  // namespace vqxml

#endif
