#include "dsig/EngineXPath.hpp"

#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMDocObject.hpp>
#include <xsec/transformers/TXFMXPath.hpp>
#include <xsec/utils/XSECSafeBuffer.hpp>

#include "core/Namespaces.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

XPathContextDeclared::XPathContextDeclared(const std::vector<DOMElement*>& xpathElements) {
    for (DOMElement* xpath : xpathElements)
        for (const DOMNode* n = xpath->getParentNode(); n != nullptr && n->getNodeType() == DOMNode::ELEMENT_NODE;
             n = n->getParentNode()) {
            const DOMNamedNodeMap* attributes = n->getAttributes();
            for (XMLSize_t i = 0; attributes != nullptr && i < attributes->getLength(); ++i) {
                const DOMNode* a = attributes->item(i);
                if (!XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace) ||
                    xpath->getAttributeNodeNS(kXmlnsNamespace, a->getLocalName()) != nullptr)
                    continue;
                xpath->setAttributeNS(kXmlnsNamespace, a->getNodeName(), a->getNodeValue());
                m_added.push_back({xpath, a->getLocalName()});
            }
        }
}

XPathContextDeclared::~XPathContextDeclared() {
    for (auto& [element, name] : m_added)
        element->removeAttributeNS(kXmlnsNamespace, name.c_str());
}

EngineXPathSelection::EngineXPathSelection(const DOMElement* xpath, const DOMDocument* doc) {
    DOMElement* element = const_cast<DOMElement*>(xpath);
    const XPathContextDeclared declared({element});
    DOMDocument* tree = const_cast<DOMDocument*>(doc);
    // Each transform is held until the chain owns it, so a failed allocation frees it.
    auto source = std::make_unique<TXFMDocObject>(tree);
    source->setInput(tree);
    m_chain = std::make_unique<TXFMChain>(source.get());
    source.release();
    auto owned = std::make_unique<TXFMXPath>(tree);
    TXFMXPath* filter = owned.get();
    m_chain->appendTxfm(owned.release());
    filter->setNameSpace(element->getAttributes());
    safeBuffer expression;
    expression.sbTranscodeIn(element->getTextContent());
    filter->evaluateExpr(element, expression);
    m_nodes = &filter->getXPathNodeList();
}

EngineXPathSelection::~EngineXPathSelection() = default;

void EngineXPathSelection::enter(const DOMElement* e) {
    m_elements.push_back(m_nodes->hasNode(e));
}

bool EngineXPathSelection::attribute(const DOMAttr* a) {
    return m_nodes->hasNode(a);
}

bool EngineXPathSelection::leaf(const DOMNode* n) {
    return m_nodes->hasNode(n);
}

}  // namespace vqxml
