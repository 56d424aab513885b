// The digest of a same-document Reference computed by the library's own
// transforms: the URI's node-set, then enveloped-signature, XPath filters (the
// linear subset of dsig/XPathExpression.hpp evaluated here, any other expression
// by the engine, dsig/EngineXPath.hpp), Canonical XML 1.0 and 1.1 and Exclusive
// Canonical XML in any order (octets that a node-set transform needs are parsed
// again, as the recommendation says), and the final canonicalization. Signing
// and verifying both go through it, so what is signed is what is checked; the
// engine's transforms remain for whatever it does not take (other URIs and
// transforms).
#ifndef VQXML_DSIG_REFERENCEDIGESTING_HPP
#define VQXML_DSIG_REFERENCEDIGESTING_HPP

#include <memory>
#include <optional>
#include <vector>

#include <openssl/types.h>
#include <xercesc/dom/DOM.hpp>

#include "core/Transcode.hpp"
#include "dsig/Canonicalizer.hpp"

class DSIGReference;

namespace vqxml {

struct ReferenceDigest {
    std::vector<unsigned char> value;
    bool formsDiffer = false;  // Santuario's form and the literal one differ for its nodes
};

// The digest of the ds:Reference element reference (in the ds:Signature
// element signature) with node-sets written in form; nothing when the reference
// is not one the library's transforms take. Throws XSECException when the
// reference cannot be processed at all (an Id no element or several elements
// carry, octets that do not parse).
std::optional<ReferenceDigest> digestReference(const XERCES_CPP_NAMESPACE::DOMElement* reference,
                                               const XERCES_CPP_NAMESPACE::DOMElement* signature, OrphanForm form);

// The node-set a same-document reference's URI and transforms select, kept to
// ask which parts of the document it holds.
class ReferenceNodeSet {
public:
    virtual ~ReferenceNodeSet() = default;
    // Whether every element, attribute, text and processing instruction of
    // subtree (comments aside) is in the node-set.
    virtual bool holdsAll(const XERCES_CPP_NAMESPACE::DOMElement* subtree) = 0;
};

// Null when the library's transforms do not take the reference (the engine's
// would), or when its node-set is not of the document's own nodes (octets
// parsed again).
std::unique_ptr<ReferenceNodeSet> referenceNodeSet(const XERCES_CPP_NAMESPACE::DOMElement* reference,
                                                   const XERCES_CPP_NAMESPACE::DOMElement* signature);

// How a reference's digest matched, if it did: where Santuario's and the literal
// form are the same (or by the engine's transforms), in Santuario's form where
// they differ, or only in the literal form libxmlsec1 writes.
enum class ReferenceMatch { None, Plain, SantuarioForm, LiteralForm };

// Whether the reference (loaded by the engine from element, in the ds:Signature
// signature) has the digest it states: computed by the pipeline above in
// Santuario's form, and where the forms differ, also in the literal form; by
// the engine's transforms when the pipeline does not take the
// reference (element's ds:XPath elements then carry the declarations in scope
// for the while; XPath the engine would take too long over is refused first,
// dsig/VerificationLimits.hpp).
ReferenceMatch matchReferenceDigest(const DSIGReference& reference, XERCES_CPP_NAMESPACE::DOMElement* element,
                             const XERCES_CPP_NAMESPACE::DOMElement* signature);

// The ds:Reference elements of signature's SignedInfo, in order.
std::vector<XERCES_CPP_NAMESPACE::DOMElement*> referenceElements(const XERCES_CPP_NAMESPACE::DOMElement* signature);

// The OpenSSL digest of an XML Signature digest URI of the SHA family; null
// for any other.
const EVP_MD* openSslDigest(const XMLCh* uri);

}  // namespace vqxml

#endif
