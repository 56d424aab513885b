#include "dsig/VerificationLimits.hpp"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/dsig/DSIGTransformList.hpp>
#include <xsec/dsig/DSIGTransformXPath.hpp>
#include <xsec/dsig/DSIGTransformXPathFilter.hpp>
#include <xsec/dsig/DSIGXPathFilterExpr.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/Namespaces.hpp"
#include "core/Transcode.hpp"
#include "dsig/XPathCost.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kXPath[] = u"http://www.w3.org/TR/1999/REC-xpath-19991116";
const XMLCh kXPathFilter2[] = u"http://www.w3.org/2002/06/xmldsig-filter2";

[[noreturn]] void refuse(XSECException::XSECExceptionType type, const std::string& why) {
    throw XSECException(type, why.c_str());
}

void checkXPathLength(std::size_t length) {
    if (length > kMaxXPathLength)
        refuse(XSECException::UnsupportedFunction, "An XPath expression longer than " +
                                                       std::to_string(kMaxXPathLength) +
                                                       " characters is not run when verifying");
}

void checkTransforms(const DSIGTransformList* transforms) {
    if (transforms == nullptr)
        return;
    if (transforms->getSize() > kMaxTransforms)
        refuse(XSECException::TransformError,
               "A Reference has more than " + std::to_string(kMaxTransforms) + " transforms");
    for (DSIGTransformList::size_type i = 0; i < transforms->getSize(); ++i) {
        const DSIGTransform* transform = transforms->item(i);
        if (const auto* xpath = dynamic_cast<const DSIGTransformXPath*>(transform))
            checkXPathLength(xpath->getExpression() != nullptr ? std::strlen(xpath->getExpression()) : 0);
        if (const auto* filter = dynamic_cast<const DSIGTransformXPathFilter*>(transform))
            for (unsigned int e = 0; e < filter->getExprNum(); ++e)
                checkXPathLength(XMLString::stringLen(filter->expr(e)->getFilter()));
    }
}

// Nodes the engine's XPath sees in doc: every node of the tree, its attributes
// and each element's namespace nodes (one per declaration in scope, and xml).
double nodesOf(const DOMDocument* doc) {
    double nodes = 1;
    std::vector<std::pair<const DOMNode*, double>> pending{{doc->getDocumentElement(), 1}};
    while (!pending.empty()) {
        auto [element, inScope] = pending.back();
        pending.pop_back();
        const DOMNamedNodeMap* attributes = element->getAttributes();
        const XMLSize_t count = attributes != nullptr ? attributes->getLength() : 0;
        for (XMLSize_t i = 0; i < count; ++i)
            inScope += XMLString::equals(attributes->item(i)->getNamespaceURI(), XMLUni::fgXMLNSURIName) ? 1 : 0;
        nodes += 1 + static_cast<double>(count) + inScope;
        for (const DOMNode* c = element->getFirstChild(); c != nullptr; c = c->getNextSibling()) {
            if (c->getNodeType() == DOMNode::ELEMENT_NODE)
                pending.push_back({c, inScope});
            else
                ++nodes;
        }
    }
    return nodes;
}

const DOMElement* childNamed(const DOMElement* parent, const XMLCh* ns, const XMLCh* localName) {
    for (const DOMElement* e = parent != nullptr ? parent->getFirstElementChild() : nullptr; e != nullptr;
         e = e->getNextElementSibling())
        if (XMLString::equals(e->getLocalName(), localName) && XMLString::equals(e->getNamespaceURI(), ns))
            return e;
    return nullptr;
}

double costOf(const DOMElement* xpath, double nodes, bool atEveryNode) {
    const std::optional<double> cost = xpath::evaluationCost(XString(xpath->getTextContent()), nodes, atEveryNode);
    if (!cost)
        refuse(XSECException::UnsupportedFunction, "An XPath transform that is not an XPath expression is not run");
    return *cost;
}

void refuseAbove(double cost) {
    if (cost > kMaxEngineXPathCost)
        refuse(XSECException::UnsupportedFunction,
               "An XPath transform that would visit more than " + std::to_string(kMaxEngineXPathCost) +
                   " nodes in this document is not run when verifying");
}

}  // namespace

void checkEngineXPathCost(const DOMElement* reference) {
    const DOMElement* transforms = childNamed(reference, kDsigNamespace, u"Transforms");
    double nodes = 0;
    for (const DOMElement* t = transforms != nullptr ? transforms->getFirstElementChild() : nullptr; t != nullptr;
         t = t->getNextElementSibling()) {
        const XMLCh* algorithm = t->getAttribute(u"Algorithm");
        const bool filter = XMLString::equals(algorithm, kXPathFilter2);
        if (!filter && !XMLString::equals(algorithm, kXPath))
            continue;
        if (nodes == 0)
            nodes = nodesOf(reference->getOwnerDocument());
        double cost = 0;
        if (filter) {  // each expression once, then one walk of the document
            cost = nodes;
            for (const DOMElement* e = t->getFirstElementChild(); e != nullptr; e = e->getNextElementSibling())
                if (XMLString::equals(e->getNamespaceURI(), kXPathFilter2))
                    cost += costOf(e, nodes, false);
        } else if (const DOMElement* expression = childNamed(t, kDsigNamespace, u"XPath")) {
            cost = nodes * costOf(expression, nodes, true);
        }
        refuseAbove(cost);
    }
}

void checkEngineXPathCost(const DOMElement* xpath, const DOMDocument* doc) {
    const double nodes = nodesOf(doc);
    refuseAbove(nodes * costOf(xpath, nodes, true));
}

void checkVerificationLimits(const DSIGSignature* signature) {
    const DSIGReferenceList* references = signature->getReferenceList();
    if (references == nullptr)
        return;
    if (references->getSize() > kMaxReferences)
        refuse(XSECException::UnsupportedFunction,
               "The signature has more than " + std::to_string(kMaxReferences) + " references");
    for (DSIGReferenceList::size_type i = 0; i < references->getSize(); ++i)
        checkTransforms(references->item(i)->getTransforms());
}

}  // namespace vqxml
