#include "ebxml/XPathPrefixes.hpp"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLUniDefs.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/dsig/DSIGTransformList.hpp>
#include <xsec/dsig/DSIGTransformXPath.hpp>

XERCES_CPP_NAMESPACE_USE

namespace vqxml::ebxml {

namespace {

using XString = std::basic_string<XMLCh>;

const XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";

// NCName characters, with every non-ASCII character admitted: a prefix is only
// looked up, so a generous reading does no harm.
bool nameStart(XMLCh c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c > 0x7F;
}

bool nameChar(XMLCh c) {
    return nameStart(c) || (c >= u'0' && c <= u'9') || c == u'-' || c == u'.';
}

// The engine keeps a transform's element to itself; a transform knows it as a
// protected member, which a member pointer taken through a derived class reaches.
struct TransformElement : DSIGTransform {
    static DOMNode* of(const DSIGTransform& transform) { return transform.*(&TransformElement::mp_txfmNode); }
};

DOMElement* xpathElementOf(const DSIGTransformXPath& transform) {
    DOMNode* node = TransformElement::of(transform);
    for (DOMNode* child = node != nullptr ? node->getFirstChild() : nullptr; child != nullptr;
         child = child->getNextSibling())
        if (child->getNodeType() == DOMNode::ELEMENT_NODE && XMLString::equals(child->getLocalName(), u"XPath"))
            return static_cast<DOMElement*>(child);
    return nullptr;
}

void declareUsedPrefixes(DOMElement* xpath) {
    for (const XString& prefix : prefixesUsed(xpath->getTextContent())) {
        if (XMLString::equals(prefix.c_str(), u"xml") || xpath->hasAttributeNS(kXmlnsNamespace, prefix.c_str()))
            continue;
        const XMLCh* uri = xpath->lookupNamespaceURI(prefix.c_str());
        if (uri != nullptr)
            xpath->setAttributeNS(kXmlnsNamespace, (u"xmlns:" + prefix).c_str(), uri);
    }
}

}  // namespace

std::set<XString> prefixesUsed(const XMLCh* expression) {
    std::set<XString> prefixes;
    if (expression == nullptr)
        return prefixes;
    const XMLCh* at = expression;
    while (*at != 0) {
        if (*at == u'"' || *at == u'\'') {
            const XMLCh* close = XMLString::findAny(at + 1, at[0] == u'"' ? u"\"" : u"'");
            if (close == nullptr)
                break;
            at = close + 1;
            continue;
        }
        if (!nameStart(*at)) {
            ++at;
            continue;
        }
        const XMLCh* start = at;
        while (nameChar(*at))
            ++at;
        // "p:name" and "p:*" are qualified, "axis::" is not; the name after a
        // single colon is a local part.
        const bool localPart = start - expression >= 1 && start[-1] == u':' &&
                               !(start - expression >= 2 && start[-2] == u':');
        if (!localPart && at[0] == u':' && at[1] != u':' && at[1] != 0)
            prefixes.emplace(start, at);
    }
    return prefixes;
}

void declareXPathPrefixes(DSIGSignature& signature) {
    const DSIGReferenceList* references = signature.getReferenceList();
    for (DSIGReferenceList::size_type i = 0; references != nullptr && i < references->getSize(); ++i) {
        const DSIGTransformList* transforms = references->item(i)->getTransforms();
        for (DSIGTransformList::size_type j = 0; transforms != nullptr && j < transforms->getSize(); ++j) {
            auto* transform = dynamic_cast<DSIGTransformXPath*>(transforms->item(j));
            DOMElement* xpath = transform != nullptr ? xpathElementOf(*transform) : nullptr;
            if (xpath == nullptr)
                continue;
            declareUsedPrefixes(xpath);
            // A transform made here and never given a namespace does not look at its
            // element's declarations until it reads the element again.
            if (transform->getNamespaces() == nullptr)
                transform->load();
        }
    }
}

}  // namespace vqxml::ebxml
