#include "dsig/NodeSelection.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

void SubtreeSelection::enter(const DOMElement* e) {
    if (m_depthInside > 0 || e == m_apex)
        ++m_depthInside;
}

void SubtreeSelection::leave() {
    if (m_depthInside > 0)
        --m_depthInside;
}

bool SubtreeSelection::leaf(const DOMNode* n) {
    return inside() && (m_comments || n->getNodeType() != DOMNode::COMMENT_NODE);
}

void ExcludedSubtree::enter(const DOMElement* e) {
    if (m_depthInside > 0 || e == m_excluded)
        ++m_depthInside;
}

void ExcludedSubtree::leave() {
    if (m_depthInside > 0)
        --m_depthInside;
}

void Intersection::enter(const DOMElement* e) {
    for (NodeSelection* p : m_parts)
        p->enter(e);
}

void Intersection::leave() {
    for (NodeSelection* p : m_parts)
        p->leave();
}

bool Intersection::element() {
    for (NodeSelection* p : m_parts)
        if (!p->element())
            return false;
    return true;
}

bool Intersection::attribute(const DOMAttr* a) {
    for (NodeSelection* p : m_parts)
        if (!p->attribute(a))
            return false;
    return true;
}

bool Intersection::namespaceNode(const XMLCh* prefix, const XMLCh* uri) {
    for (NodeSelection* p : m_parts)
        if (!p->namespaceNode(prefix, uri))
            return false;
    return true;
}

bool Intersection::leaf(const DOMNode* n) {
    for (NodeSelection* p : m_parts)
        if (!p->leaf(n))
            return false;
    return true;
}

}  // namespace vqxml
