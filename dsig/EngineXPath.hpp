// XPath filter expressions beyond the library's linear subset
// (dsig/XPathExpression.hpp), evaluated by the engine (xml-security-c with Xalan)
// once over a whole tree, and the result taken as one more filter of the
// library's reference pipeline (dsig/ReferenceDigesting.hpp): so such an
// expression still meets the nodes the transforms before it left (after
// enveloped-signature, the engine's own chain would see the Signature again).
//
// The engine's node list has no namespace nodes: a namespace node is taken to be
// selected when its element is, which holds for every expression that looks at
// the node and up its ancestors (a namespace node's ancestors are its element's
// ancestor-or-self axis); an expression that tests namespace nodes themselves
// ("namespace::", "self::namespace-node") would be read differently.
#ifndef VQXML_DSIG_ENGINEXPATH_HPP
#define VQXML_DSIG_ENGINEXPATH_HPP

#include <memory>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "core/Transcode.hpp"
#include "dsig/NodeSelection.hpp"

class TXFMChain;
class XSECXPathNodeList;

namespace vqxml {

// The engine resolves only the prefixes declared on the ds:XPath element itself,
// while an expression's context is every declaration in scope there (and peers
// declare ds on ds:Signature only). The declarations in scope are copied onto
// each ds:XPath element given for the while, and taken away again before
// anything else (the SignedInfo's canonical form) sees the element.
class XPathContextDeclared {
public:
    explicit XPathContextDeclared(const std::vector<XERCES_CPP_NAMESPACE::DOMElement*>& xpathElements);
    ~XPathContextDeclared();
    XPathContextDeclared(const XPathContextDeclared&) = delete;
    XPathContextDeclared& operator=(const XPathContextDeclared&) = delete;

private:
    std::vector<std::pair<XERCES_CPP_NAMESPACE::DOMElement*, XString>> m_added;
};

// The nodes of doc at which the expression of the ds:XPath element xpath is true.
// Throws XSECException when the engine cannot evaluate it.
class EngineXPathSelection : public NodeSelection {
public:
    EngineXPathSelection(const XERCES_CPP_NAMESPACE::DOMElement* xpath, const XERCES_CPP_NAMESPACE::DOMDocument* doc);
    ~EngineXPathSelection() override;
    void enter(const XERCES_CPP_NAMESPACE::DOMElement* e) override;
    void leave() override { m_elements.pop_back(); }
    bool element() override { return m_elements.back(); }
    bool attribute(const XERCES_CPP_NAMESPACE::DOMAttr* a) override;
    bool namespaceNode(const XMLCh*, const XMLCh*) override { return m_elements.back(); }
    bool leaf(const XERCES_CPP_NAMESPACE::DOMNode* n) override;

private:
    std::unique_ptr<TXFMChain> m_chain;  // owns the transform whose node list is read
    const XSECXPathNodeList* m_nodes;
    std::vector<bool> m_elements;
};

}  // namespace vqxml

#endif
