// The nodes for which a compiled XPath filter (dsig/XPathExpression.hpp) is true,
// answered during one walk of the tree: at every element the walk enters, each
// step slot records whether the element matches the step and how many of its
// ancestors-or-self do; every other question looks at those records of the
// element and its parent only. The walk is charged, for every node asked
// about and every element entered, the filter's cost there (dsig/XPathExpression.hpp),
// and stops with XSECException UnsupportedFunction past kMaxXPathCost
// (dsig/VerificationLimits.hpp).
#ifndef VQXML_DSIG_XPATHSELECTION_HPP
#define VQXML_DSIG_XPATHSELECTION_HPP

#include <cstdint>
#include <vector>

#include "dsig/NodeSelection.hpp"
#include "dsig/XPathExpression.hpp"

namespace vqxml {

class XPathSelection : public NodeSelection {
public:
    // filter outlives the selection; doc is the tree the walk goes through.
    XPathSelection(const xpath::Filter& filter, const XERCES_CPP_NAMESPACE::DOMDocument* doc);

    void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) override;
    void leave() override;
    bool element() override;
    bool attribute(const XERCES_CPP_NAMESPACE::DOMAttr* a) override;
    bool namespaceNode(const XMLCh* prefix, const XMLCh* uri) override;
    bool leaf(const XERCES_CPP_NAMESPACE::DOMNode* n) override;

    enum class Kind { Document, Element, Attribute, Namespace, Text, Comment, ProcessingInstruction };

    // The node an expression is evaluated at. own is the frame of an element or
    // the document (filled up to the slot being computed), parent the frame of
    // the element or document the node is in.
    struct Context {
        Kind kind;
        const XERCES_CPP_NAMESPACE::DOMNode* node;
        const XMLCh* prefix;  // namespace nodes
        const XMLCh* uri;     // namespace nodes
        int own;
        int parent;
    };

    struct Scalar {
        xpath::Type type;
        bool boolean;
        double number;
        const XMLCh* string;
    };

private:
    void spend(const XERCES_CPP_NAMESPACE::DOMNode* n);
    void pushFrame(const Context& at);
    bool holds(const Context& at);
    bool truth(const xpath::Expr& e, const Context& at) const;
    Scalar scalar(const xpath::Expr& e, const Context& at) const;
    bool compare(const xpath::Expr& e, const Context& at) const;
    uint32_t count(const xpath::Expr& step, const Context& at) const;
    bool matches(const xpath::Expr& step, const Context& at) const;
    template <class Visit>
    bool anyAttribute(const xpath::Expr& step, const Context& at, Visit visit) const;
    uint32_t& selfCount(int frame, int slot) { return m_counts[(frame * m_slots + slot) * 2]; }
    uint32_t& chainCount(int frame, int slot) { return m_counts[(frame * m_slots + slot) * 2 + 1]; }
    uint32_t selfCount(int frame, int slot) const { return m_counts[(frame * m_slots + slot) * 2]; }
    uint32_t chainCount(int frame, int slot) const { return m_counts[(frame * m_slots + slot) * 2 + 1]; }
    int top() const { return static_cast<int>(m_nodes.size()) - 1; }

    const xpath::Filter& m_filter;
    int m_slots;
    std::vector<const XERCES_CPP_NAMESPACE::DOMNode*> m_nodes;  // frame i's element; the document first
    std::vector<uint32_t> m_counts;
    int m_namespaceAnswer = -1;  // the element's namespace nodes, when the filter cannot tell them apart
    std::uint64_t m_spent = 0;
};

}  // namespace vqxml

#endif
