// XPath filter expressions compiled for evaluation in one pass over a tree.
//
// An XPath transform keeps the nodes for which its expression is true, so the
// expression is evaluated once for every node of the document. The forms used in
// practice only look at the node itself and up its ancestor chain (self::,
// parent::, ancestor::, ancestor-or-self::, attribute tests, name() comparisons,
// |, and, or, not()). Each such step is given a slot: at every element the
// walker records whether the element matches the step (and how many of its
// ancestors-or-self do), so a step costs one lookup at each node and the whole
// filter stays linear in the document. An expression outside this subset does
// not compile, and its transform is left to the general XPath engine.
#ifndef VQXML_DSIG_XPATHEXPRESSION_HPP
#define VQXML_DSIG_XPATHEXPRESSION_HPP

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/Transcode.hpp"

namespace vqxml::xpath {

enum class Axis { Self, Parent, Ancestor, AncestorOrSelf, Attribute };

enum class TestKind { AnyNode, Text, Comment, ProcessingInstruction, AnyName, AnyInNamespace, QName };

struct NodeTest {
    TestKind kind = TestKind::AnyNode;
    XString namespaceURI;  // AnyInNamespace and QName
    XString localName;     // QName; ProcessingInstruction's target when given
};

enum class Op {
    Or, And, Not, Boolean, True, False,
    Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual,
    Union, Step,
    Literal, Number,
    Name, LocalName, NamespaceURI, Count, StartsWith, Contains
};

// The type an expression yields; node-sets of attributes have string values the
// filter can compare, other node-sets only a count.
enum class Type { Boolean, Number, String, Attributes, Nodes };

struct Expr {
    Op op = Op::Literal;
    Type type = Type::Boolean;
    std::vector<Expr> args;  // operands, predicates of a step
    // Step
    Axis axis = Axis::Self;
    NodeTest test;
    int slot = -1;  // steps other than attribute steps
    // Literal, Number
    XString text;
    double number = 0;
};

// A compiled filter: its expression and its steps by slot, inner steps first.
// Whether it can tell one namespace node of an element from another (only a
// name function asked of the namespace node itself can): if not, it is
// evaluated once for all of them.
// size and attributeSteps measure what one evaluation costs: its expressions,
// and for each attribute step, a look at every attribute of the element.
struct Filter {
    Expr root;
    std::vector<const Expr*> slots;
    bool namespaceSensitive = true;
    std::size_t size = 0;
    std::size_t attributeSteps = 0;
};

// The namespace bound to a prefix where the expression stands; nothing if none.
using PrefixResolver = std::function<std::optional<XString>(const XString& prefix)>;

// The filter of expression, or null when it is not of the subset described above
// (or is not an expression at all).
std::unique_ptr<Filter> compile(const XString& expression, const PrefixResolver& resolve);

}  // namespace vqxml::xpath

#endif
