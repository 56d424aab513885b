#include "dsig/XPathSelection.hpp"

#include <cmath>
#include <limits>

#include <xsec/framework/XSECException.hpp>

#include "dsig/VerificationLimits.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

using xpath::Axis;
using xpath::Expr;
using xpath::Op;
using xpath::TestKind;
using xpath::Type;

namespace {

const XMLCh kEmpty[] = u"";
const XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";

const XMLCh* orEmpty(const XMLCh* s) {
    return s != nullptr ? s : kEmpty;
}

bool isSpace(XMLCh c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

// XPath's number(): an optional minus, digits with at most one point, and
// nothing else but white space around it.
double numberOf(const XMLCh* s) {
    while (isSpace(*s))
        ++s;
    const bool negative = *s == u'-';
    if (negative)
        ++s;
    double value = 0, scale = 0;
    bool digits = false;
    for (; (*s >= u'0' && *s <= u'9') || (*s == u'.' && scale == 0); ++s) {
        if (*s == u'.') {
            scale = 1;
            continue;
        }
        digits = true;
        value = value * 10 + (*s - u'0');
        if (scale != 0)
            scale *= 10;
    }
    while (isSpace(*s))
        ++s;
    if (!digits || *s != 0)
        return std::numeric_limits<double>::quiet_NaN();
    value = scale != 0 ? value / scale : value;
    return negative ? -value : value;
}

bool truthOf(const XPathSelection::Scalar& v) {
    switch (v.type) {
    case Type::Boolean:
        return v.boolean;
    case Type::Number:
        return v.number != 0 && !std::isnan(v.number);
    default:
        return *v.string != 0;
    }
}

double numberOf(const XPathSelection::Scalar& v) {
    switch (v.type) {
    case Type::Boolean:
        return v.boolean ? 1 : 0;
    case Type::Number:
        return v.number;
    default:
        return numberOf(v.string);
    }
}

bool ordered(Op op, double a, double b) {
    switch (op) {
    case Op::Less:
        return a < b;
    case Op::LessOrEqual:
        return a <= b;
    case Op::Greater:
        return a > b;
    default:
        return a >= b;
    }
}

// XPath's comparison of two values that are not node-sets: as booleans if either
// is one, else as numbers if either is one (or the operator orders), else as strings.
bool compareScalars(Op op, const XPathSelection::Scalar& a, const XPathSelection::Scalar& b) {
    if (op != Op::Equal && op != Op::NotEqual)
        return ordered(op, numberOf(a), numberOf(b));
    bool same;
    if (a.type == Type::Boolean || b.type == Type::Boolean)
        same = truthOf(a) == truthOf(b);
    else if (a.type == Type::Number || b.type == Type::Number)
        same = numberOf(a) == numberOf(b);
    else
        same = XMLString::equals(a.string, b.string);
    return op == Op::Equal ? same : !same;
}

Op mirrored(Op op) {
    switch (op) {
    case Op::Less:
        return Op::Greater;
    case Op::LessOrEqual:
        return Op::GreaterOrEqual;
    case Op::Greater:
        return Op::Less;
    case Op::GreaterOrEqual:
        return Op::LessOrEqual;
    default:
        return op;
    }
}

XPathSelection::Kind kindOf(const DOMNode* n) {
    switch (n->getNodeType()) {
    case DOMNode::COMMENT_NODE:
        return XPathSelection::Kind::Comment;
    case DOMNode::PROCESSING_INSTRUCTION_NODE:
        return XPathSelection::Kind::ProcessingInstruction;
    case DOMNode::DOCUMENT_NODE:
        return XPathSelection::Kind::Document;
    case DOMNode::ELEMENT_NODE:
        return XPathSelection::Kind::Element;
    default:
        return XPathSelection::Kind::Text;
    }
}

}  // namespace

XPathSelection::XPathSelection(const xpath::Filter& filter, const DOMDocument* doc)
    : m_filter(filter), m_slots(static_cast<int>(filter.slots.size())) {
    pushFrame({Kind::Document, doc, nullptr, nullptr, 0, -1});
}

// One evaluation at a node: the filter's expressions, and its attribute steps
// look at each attribute of an element.
void XPathSelection::spend(const DOMNode* n) {
    const DOMNamedNodeMap* attributes = n->getNodeType() == DOMNode::ELEMENT_NODE ? n->getAttributes() : nullptr;
    m_spent += m_filter.size + m_filter.attributeSteps * (attributes != nullptr ? attributes->getLength() : 0);
    if (m_spent > kMaxXPathCost)
        throw XSECException(XSECException::UnsupportedFunction,
                            "An XPath transform would visit more nodes than allowed for this document");
}

void XPathSelection::pushFrame(const Context& at) {
    const int frame = static_cast<int>(m_nodes.size());
    m_nodes.push_back(at.node);
    m_counts.resize(m_counts.size() + 2 * static_cast<size_t>(m_slots));
    for (int s = 0; s < m_slots; ++s) {
        const uint32_t self = matches(*m_filter.slots[s], at) ? 1 : 0;
        selfCount(frame, s) = self;
        chainCount(frame, s) = self + (at.parent >= 0 ? chainCount(at.parent, s) : 0);
    }
}

void XPathSelection::enter(const DOMElement* e) {
    m_namespaceAnswer = -1;
    spend(e);
    const int parent = top();
    pushFrame({Kind::Element, e, nullptr, nullptr, parent + 1, parent});
}

void XPathSelection::leave() {
    m_namespaceAnswer = -1;
    m_nodes.pop_back();
    m_counts.resize(m_counts.size() - 2 * static_cast<size_t>(m_slots));
}

bool XPathSelection::element() {
    return holds({Kind::Element, m_nodes.back(), nullptr, nullptr, top(), top() - 1});
}

bool XPathSelection::attribute(const DOMAttr* a) {
    return holds({Kind::Attribute, a, nullptr, nullptr, -1, top()});
}

bool XPathSelection::namespaceNode(const XMLCh* prefix, const XMLCh* uri) {
    if (m_filter.namespaceSensitive)
        return holds({Kind::Namespace, m_nodes.back(), orEmpty(prefix), uri, -1, top()});
    if (m_namespaceAnswer < 0)
        m_namespaceAnswer = holds({Kind::Namespace, m_nodes.back(), orEmpty(prefix), uri, -1, top()}) ? 1 : 0;
    return m_namespaceAnswer == 1;
}

bool XPathSelection::leaf(const DOMNode* n) {
    return holds({kindOf(n), n, nullptr, nullptr, -1, top()});
}

bool XPathSelection::holds(const Context& at) {
    spend(at.node);
    return truth(m_filter.root, at);
}

bool XPathSelection::truth(const Expr& e, const Context& at) const {
    switch (e.op) {
    case Op::Or:
        return truth(e.args[0], at) || truth(e.args[1], at);
    case Op::And:
        return truth(e.args[0], at) && truth(e.args[1], at);
    case Op::Not:
        return !truth(e.args[0], at);
    case Op::Boolean:
        return truth(e.args[0], at);
    case Op::True:
        return true;
    case Op::False:
        return false;
    case Op::Union:
        for (const Expr& member : e.args)
            if (truth(member, at))
                return true;
        return false;
    case Op::Step:
        return e.axis == Axis::Attribute ? anyAttribute(e, at, [](const XMLCh*) { return true; }) : count(e, at) > 0;
    case Op::StartsWith:
    case Op::Contains: {
        const XMLCh* text = scalar(e.args[0], at).string;
        const XMLCh* part = scalar(e.args[1], at).string;
        return e.op == Op::StartsWith ? XMLString::startsWith(text, part)
                                      : *part == 0 || XMLString::patternMatch(text, part) >= 0;
    }
    case Op::Equal:
    case Op::NotEqual:
    case Op::Less:
    case Op::LessOrEqual:
    case Op::Greater:
    case Op::GreaterOrEqual:
        return compare(e, at);
    default:
        return truthOf(scalar(e, at));
    }
}

XPathSelection::Scalar XPathSelection::scalar(const Expr& e, const Context& at) const {
    Scalar v{e.type, false, 0, kEmpty};
    switch (e.op) {
    case Op::Literal:
        v.string = e.text.c_str();
        return v;
    case Op::Number:
        v.number = e.number;
        return v;
    case Op::Count:
        v.number = e.args[0].axis == Axis::Attribute ? 0 : count(e.args[0], at);
        if (e.args[0].axis == Axis::Attribute)
            anyAttribute(e.args[0], at, [&](const XMLCh*) {
                ++v.number;
                return false;
            });
        return v;
    case Op::Name:
    case Op::LocalName:
    case Op::NamespaceURI: {
        if (at.kind == Kind::Namespace) {
            v.string = e.op == Op::NamespaceURI ? kEmpty : at.prefix;
        } else if (at.kind == Kind::Element || at.kind == Kind::Attribute) {
            v.string = e.op == Op::Name           ? at.node->getNodeName()
                       : e.op == Op::NamespaceURI ? orEmpty(at.node->getNamespaceURI())
                       : at.node->getLocalName() != nullptr ? at.node->getLocalName()
                                                            : at.node->getNodeName();
        } else if (at.kind == Kind::ProcessingInstruction && e.op != Op::NamespaceURI) {
            v.string = at.node->getNodeName();
        }
        return v;
    }
    default:
        v.type = Type::Boolean;
        v.boolean = truth(e, at);
        return v;
    }
}

// A comparison with a node-set of attributes holds if it holds for one of their
// values; with any other node-set, only its truth can be compared (the compiler
// lets nothing else through).
bool XPathSelection::compare(const Expr& e, const Context& at) const {
    const Expr& left = e.args[0];
    const Expr& right = e.args[1];
    if (left.type == Type::Attributes || right.type == Type::Attributes) {
        const bool leftIsSet = left.type == Type::Attributes;
        const Expr& set = leftIsSet ? left : right;
        const Scalar other = scalar(leftIsSet ? right : left, at);
        const Op op = leftIsSet ? e.op : mirrored(e.op);
        if (other.type == Type::Boolean) {
            const Scalar exists{Type::Boolean, truth(set, at), 0, kEmpty};
            return compareScalars(op, exists, other);
        }
        return anyAttribute(set, at, [&](const XMLCh* value) {
            return compareScalars(op, Scalar{Type::String, false, 0, value}, other);
        });
    }
    return compareScalars(e.op, scalar(left, at), scalar(right, at));
}

uint32_t XPathSelection::count(const Expr& step, const Context& at) const {
    const int s = step.slot;
    switch (step.axis) {
    case Axis::Self:
        return at.own >= 0 ? selfCount(at.own, s) : (matches(step, at) ? 1 : 0);
    case Axis::Parent:
        return at.parent >= 0 ? selfCount(at.parent, s) : 0;
    case Axis::Ancestor:
        return at.parent >= 0 ? chainCount(at.parent, s) : 0;
    case Axis::AncestorOrSelf:
        return at.own >= 0 ? chainCount(at.own, s)
                           : (matches(step, at) ? 1 : 0) + (at.parent >= 0 ? chainCount(at.parent, s) : 0);
    default:
        return 0;
    }
}

bool XPathSelection::matches(const Expr& step, const Context& at) const {
    const bool principal = step.axis == Axis::Attribute ? at.kind == Kind::Attribute : at.kind == Kind::Element;
    const TestKind kind = step.test.kind;
    bool ok;
    switch (kind) {
    case TestKind::AnyNode:
        ok = true;
        break;
    case TestKind::Text:
        ok = at.kind == Kind::Text;
        break;
    case TestKind::Comment:
        ok = at.kind == Kind::Comment;
        break;
    case TestKind::ProcessingInstruction:
        ok = at.kind == Kind::ProcessingInstruction &&
             (step.test.localName.empty() || XMLString::equals(at.node->getNodeName(), step.test.localName.c_str()));
        break;
    case TestKind::AnyName:
        ok = principal;
        break;
    default: {
        const XMLCh* local = at.node->getLocalName() != nullptr ? at.node->getLocalName() : at.node->getNodeName();
        ok = principal && XMLString::equals(orEmpty(at.node->getNamespaceURI()), step.test.namespaceURI.c_str()) &&
             (kind == TestKind::AnyInNamespace || XMLString::equals(local, step.test.localName.c_str()));
    }
    }
    for (size_t i = 0; ok && i < step.args.size(); ++i)
        ok = truth(step.args[i], at);
    return ok;
}

// Calls visit with the value of each attribute of the element at that matches
// step (namespace declarations are not attributes), until visit says stop.
template <class Visit>
bool XPathSelection::anyAttribute(const Expr& step, const Context& at, Visit visit) const {
    if (at.kind != Kind::Element)
        return false;
    const DOMNamedNodeMap* attributes = at.node->getAttributes();
    const XMLSize_t n = attributes != nullptr ? attributes->getLength() : 0;
    for (XMLSize_t i = 0; i < n; ++i) {
        const DOMNode* a = attributes->item(i);
        if (XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace))
            continue;
        if (matches(step, {Kind::Attribute, a, nullptr, nullptr, -1, at.own}) && visit(a->getNodeValue()))
            return true;
    }
    return false;
}

}  // namespace vqxml
