// What an XPath expression costs the engine (Xalan, through xml-security-c) to
// evaluate once, in nodes visited, estimated from the expression before it runs.
//
// Each location step visits, for each node the path has reached so far, the
// nodes its axis leads to: one for self, parent, ancestors and attributes (the
// nesting limit bounds ancestors); the whole document, at worst, for the
// descendant, following and preceding axes, "//" and id(). A child step from
// the context node costs one when the expression is evaluated at every node
// (each node is some node's child), but all the document after a step up or
// aside: "../*" reaches every sibling. A predicate costs its own estimate for
// every node its step reaches, so walks nested in predicates multiply. A path
// read as a string or number (compared, in arithmetic, given to string
// functions) costs its nodes' text too: all the document for the root or an
// ancestor, little for attributes, text and what lies below the context node.
#ifndef VQXML_DSIG_XPATHCOST_HPP
#define VQXML_DSIG_XPATHCOST_HPP

#include <optional>

#include "core/Transcode.hpp"

namespace vqxml::xpath {

// The estimate for one evaluation in a document of nodes nodes (namespace
// nodes included); atEveryNode when the expression is evaluated once for every
// node (an XPath transform), not once for the document (XPath Filter 2.0).
// Nothing when expression is not an XPath expression.
std::optional<double> evaluationCost(const XString& expression, double nodes, bool atEveryNode);

}  // namespace vqxml::xpath

#endif
