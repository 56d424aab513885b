// Canonical XML 1.0 and 1.1 and Exclusive Canonical XML 1.0, with or without
// comments, of any node-set of a tree, written in one walk.
//
// Canonical XML 1.1 differs from 1.0 only where an output element's ancestors
// are left out: their xml:id is not inherited, and their xml:base values are
// joined onto the element's own (as Santuario joins them: only the ancestors
// left out since the nearest output one, innermost first, by RFC 3986 with the
// 1.1 dot-segment rule, which keeps leading "../" of a relative path).
//
// Node-sets that leave an element out but keep some of its namespace or
// attribute nodes ("orphans") are where implementations part ways:
// - Santuario (and the national tax-invoice test bed that follows it) writes
//   every in-scope namespace node of such an element that is in the node-set at
//   the element's place, never its other attributes, and counts what it wrote as
//   declared for the element's descendants;
// - the canonicalization text read literally (libxmlsec1) also writes the
//   orphan attributes, writes a namespace node only where the nearest element
//   that is output lacks it, and makes every output child of such an element
//   declare its namespaces again.
// Both are offered; they agree on every node-set without orphans. Santuario's
// form also writes every attribute of an output element under inclusive
// canonicalization, as Santuario does.
#ifndef VQXML_DSIG_CANONICALIZER_HPP
#define VQXML_DSIG_CANONICALIZER_HPP

#include <cstddef>
#include <optional>
#include <vector>

#include "core/Transcode.hpp"
#include "dsig/NodeSelection.hpp"

namespace vqxml {

enum class OrphanForm { Santuario, Literal };

struct CanonicalOptions {
    bool exclusive = false;
    bool comments = false;
    bool version11 = false;  // inclusive only
    std::vector<XString> inclusivePrefixes;  // exclusive only; "" stands for #default
    OrphanForm orphans = OrphanForm::Santuario;
    // The tree as Exclusive C14N of all of it, with this PrefixList, would have
    // written it: each element declaring only the namespaces that writes there
    // (what parsing that output gives, without parsing it).
    std::optional<std::vector<XString>> exclusiveView;
};

class ByteSink {
public:
    virtual ~ByteSink() = default;
    virtual void write(const char* bytes, std::size_t n) = 0;
};

// Writes the canonical form of the nodes that selection selects among root (the
// document or an element, whose ancestors then give only their namespaces and
// xml: attributes) and its descendants. Returns whether the node-set has nodes
// that the two forms write differently (orphans, or attributes of an output
// element left out of the node-set, under inclusive canonicalization).
bool canonicalize(const XERCES_CPP_NAMESPACE::DOMNode* root, NodeSelection& selection, const CanonicalOptions& how,
                  ByteSink& out);

// The prefixes of an InclusiveNamespaces PrefixList ("" for #default).
std::vector<XString> prefixListOf(const XMLCh* list);

// reference resolved against base as Canonical XML 1.1 joins xml:base values
// (both may be relative).
XString joinXmlBase(const XString& base, const XString& reference);

}  // namespace vqxml

#endif
