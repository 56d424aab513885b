#include "core/NamespaceFixup.hpp"

#include "core/Transcode.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";
const XMLCh kXmlNamespace[] = u"http://www.w3.org/XML/1998/namespace";

const XMLCh* orEmpty(const XMLCh* s) {
    return s != nullptr ? s : u"";
}

// Declares prefix (null: the default namespace) as uri on e unless that is what
// is in scope there already.
void declare(DOMElement* e, const XMLCh* prefix, const XMLCh* uri) {
    if (XMLString::equals(prefix, u"xml") || XMLString::equals(prefix, u"xmlns"))
        return;
    const bool isDefault = prefix == nullptr || *prefix == 0;
    if (XMLString::equals(orEmpty(e->lookupNamespaceURI(isDefault ? nullptr : prefix)), orEmpty(uri)))
        return;
    if (!isDefault && (uri == nullptr || *uri == 0))
        return;  // a prefix cannot be undeclared in XML 1.0; such a name never parsed
    const XString name = isDefault ? XString(u"xmlns") : XString(u"xmlns:") + prefix;
    e->setAttributeNS(kXmlnsNamespace, name.c_str(), orEmpty(uri));
}

}  // namespace

void declareNamespaces(DOMElement* root) {
    for (DOMElement* e = root; e != nullptr;) {
        declare(e, e->getPrefix(), e->getNamespaceURI());
        DOMNamedNodeMap* attributes = e->getAttributes();
        for (XMLSize_t i = 0; attributes != nullptr && i < attributes->getLength(); ++i) {
            const DOMNode* a = attributes->item(i);
            const XMLCh* ns = a->getNamespaceURI();
            if (a->getPrefix() != nullptr && !XMLString::equals(ns, kXmlnsNamespace) &&
                !XMLString::equals(ns, kXmlNamespace))
                declare(e, a->getPrefix(), ns);
        }
        // Next element in document order within root.
        if (DOMElement* child = e->getFirstElementChild()) {
            e = child;
            continue;
        }
        while (e != root && e->getNextElementSibling() == nullptr)
            e = static_cast<DOMElement*>(e->getParentNode());
        e = e == root ? nullptr : e->getNextElementSibling();
    }
}

}  // namespace vqxml
