#include "dsig/NodeSelection.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

bool SubtreeSelection::leaf(const DOMNode* n) {
    return m_subtree.inside() && (m_comments || n->getNodeType() != DOMNode::COMMENT_NODE);
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
