// A node-set as the canonicalizer asks about it while it walks a tree in
// document order, one node at a time: the walk announces every element on the
// way down (enter) and up (leave), and asks about the element entered last, its
// attributes and namespace nodes, and the text, comments and processing
// instructions directly inside it (or directly inside the document).
//
// Each kind of selection (a same-document URI, the enveloped-signature
// transform, an XPath filter) keeps what it needs of the ancestors on its own
// stack, so asking costs the same at every node and a whole walk stays linear.
#ifndef VQXML_DSIG_NODESELECTION_HPP
#define VQXML_DSIG_NODESELECTION_HPP

#include <vector>

#include <xercesc/dom/DOM.hpp>

namespace vqxml {

class NodeSelection {
public:
    virtual ~NodeSelection() = default;
    virtual void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) = 0;
    virtual void leave() = 0;
    virtual bool element() = 0;
    virtual bool attribute(const XERCES_CPP_NAMESPACE::DOMAttr* a) = 0;
    virtual bool namespaceNode(const XMLCh* prefix, const XMLCh* uri) = 0;
    virtual bool leaf(const XERCES_CPP_NAMESPACE::DOMNode* n) = 0;
};

// Whether the walk is inside the subtree of one element (of every element when
// it is null), kept as the walk enters and leaves elements.
class SubtreeTracker {
public:
    explicit SubtreeTracker(const XERCES_CPP_NAMESPACE::DOMElement* top) : m_top(top) {}
    void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) {
        if (m_depthInside > 0 || e == m_top)
            ++m_depthInside;
    }
    void leave() {
        if (m_depthInside > 0)
            --m_depthInside;
    }
    bool inside() const { return m_top == nullptr || m_depthInside > 0; }

private:
    const XERCES_CPP_NAMESPACE::DOMElement* m_top;
    int m_depthInside = 0;
};

// The nodes of a subtree (the whole document when apex is null), comments only
// when asked for: what a same-document URI selects.
class SubtreeSelection : public NodeSelection {
public:
    SubtreeSelection(const XERCES_CPP_NAMESPACE::DOMElement* apex, bool comments) : m_subtree(apex), m_comments(comments) {}
    void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) override { m_subtree.enter(e); }
    void leave() override { m_subtree.leave(); }
    bool element() override { return m_subtree.inside(); }
    bool attribute(const XERCES_CPP_NAMESPACE::DOMAttr*) override { return m_subtree.inside(); }
    bool namespaceNode(const XMLCh*, const XMLCh*) override { return m_subtree.inside(); }
    bool leaf(const XERCES_CPP_NAMESPACE::DOMNode* n) override;

private:
    SubtreeTracker m_subtree;
    bool m_comments;
};

// Every node but those of one subtree: the enveloped-signature transform.
class ExcludedSubtree : public NodeSelection {
public:
    explicit ExcludedSubtree(const XERCES_CPP_NAMESPACE::DOMElement* excluded) : m_subtree(excluded) {}
    void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) override { m_subtree.enter(e); }
    void leave() override { m_subtree.leave(); }
    bool element() override { return !m_subtree.inside(); }
    bool attribute(const XERCES_CPP_NAMESPACE::DOMAttr*) override { return !m_subtree.inside(); }
    bool namespaceNode(const XMLCh*, const XMLCh*) override { return !m_subtree.inside(); }
    bool leaf(const XERCES_CPP_NAMESPACE::DOMNode*) override { return !m_subtree.inside(); }

private:
    SubtreeTracker m_subtree;  // never null: the excluded Signature
};

// The nodes every one of the parts selects: a URI's node-set after each
// transform that filters it. The parts are not owned.
class Intersection : public NodeSelection {
public:
    void add(NodeSelection* part) { m_parts.push_back(part); }
    void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) override;
    void leave() override;
    bool element() override;
    bool attribute(const XERCES_CPP_NAMESPACE::DOMAttr* a) override;
    bool namespaceNode(const XMLCh* prefix, const XMLCh* uri) override;
    bool leaf(const XERCES_CPP_NAMESPACE::DOMNode* n) override;

private:
    std::vector<NodeSelection*> m_parts;
};

}  // namespace vqxml

#endif
