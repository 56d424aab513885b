#include "engine/SameDocumentIds.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

bool isIdAttribute(const DOMAttr* attr) {
    const XMLCh* name = attr->getLocalName() != nullptr ? attr->getLocalName() : attr->getName();
    return attr->isId() || XMLString::equals(name, u"Id") || XMLString::equals(name, u"id") ||
           XMLString::equals(name, u"ID");
}

}  // namespace

XString referencedId(const XMLCh* uri) {
    if (uri == nullptr || uri[0] != u'#' || uri[1] == 0)
        return {};
    const XString fragment(uri + 1);
    if (fragment.rfind(u"xpointer(", 0) != 0)
        return fragment;
    // xpointer(id('x')) or xpointer(id("x"))
    const XString head = u"xpointer(id(";
    if (fragment.size() < head.size() + 4 || fragment.compare(0, head.size(), head) != 0 ||
        fragment.compare(fragment.size() - 2, 2, u"))") != 0)
        return {};
    const XString quoted = fragment.substr(head.size(), fragment.size() - head.size() - 2);
    if (quoted.size() < 3 || (quoted.front() != u'\'' && quoted.front() != u'"') || quoted.back() != quoted.front())
        return {};
    return quoted.substr(1, quoted.size() - 2);
}

std::vector<const DOMElement*> elementsWithId(const DOMDocument* doc, const XMLCh* id) {
    std::vector<const DOMElement*> found;
    DOMNodeIterator* it = const_cast<DOMDocument*>(doc)->createNodeIterator(
        const_cast<DOMElement*>(doc->getDocumentElement()), DOMNodeFilter::SHOW_ELEMENT, nullptr, false);
    for (DOMNode* node = it->nextNode(); node != nullptr && found.size() < 2; node = it->nextNode()) {
        DOMNamedNodeMap* attrs = node->getAttributes();
        for (XMLSize_t i = 0; attrs != nullptr && i < attrs->getLength(); ++i) {
            auto* attr = static_cast<DOMAttr*>(attrs->item(i));
            if (isIdAttribute(attr) && XMLString::equals(attr->getValue(), id)) {
                found.push_back(static_cast<const DOMElement*>(node));
                break;
            }
        }
    }
    it->release();
    return found;
}

}  // namespace vqxml
