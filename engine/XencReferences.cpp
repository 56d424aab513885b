#include "engine/XencReferences.hpp"

#include <string>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>

#include "core/ElementWalk.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

using XString = std::basic_string<XMLCh>;

const XMLCh kReferenceList[] = u"ReferenceList";
const XMLCh kDataReference[] = u"DataReference";
const XMLCh kCarriedKeyName[] = u"CarriedKeyName";
const XMLCh kURI[] = u"URI";
const XMLCh kNewline[] = u"\n";

bool isXenc(const DOMNode* node, const XMLCh* localName) {
    return node->getNodeType() == DOMNode::ELEMENT_NODE &&
           XMLString::equals(node->getNamespaceURI(), DSIGConstants::s_unicodeStrURIXENC) &&
           XMLString::equals(node->getLocalName(), localName);
}

DOMElement* xencChild(const DOMElement* parent, const XMLCh* localName) {
    for (DOMNode* child = parent->getFirstChild(); child != nullptr; child = child->getNextSibling())
        if (isXenc(child, localName))
            return static_cast<DOMElement*>(child);
    return nullptr;
}

// An element of the XML Encryption namespace written with the key's prefix.
DOMElement* makeXencElement(const DOMElement* key, const XMLCh* localName) {
    XString qualified;
    if (key->getPrefix() != nullptr && *key->getPrefix() != 0)
        qualified = XString(key->getPrefix()) + u":";
    qualified += localName;
    return key->getOwnerDocument()->createElementNS(DSIGConstants::s_unicodeStrURIXENC, qualified.c_str());
}

}  // namespace

namespace vqxml::xenc {

void declareIds(DOMDocument* doc) {
    forEachElement(doc, [](DOMElement* element) {
        if (XMLString::equals(element->getNamespaceURI(), DSIGConstants::s_unicodeStrURIXENC) &&
            element->hasAttributeNS(nullptr, kIdAttribute))
            element->setIdAttributeNS(nullptr, kIdAttribute, true);
    });
}

std::vector<DOMElement*> xencElements(DOMNode* root, const XMLCh* localName) {
    std::vector<DOMElement*> found;
    forEachElement(root, [&found, localName](DOMElement* element) {
        if (isXenc(element, localName))
            found.push_back(element);
    });
    return found;
}

bool insideKeyInfo(const DOMElement* element) {
    for (const DOMNode* n = element->getParentNode(); n != nullptr; n = n->getParentNode())
        if (n->getNodeType() == DOMNode::ELEMENT_NODE && XMLString::equals(n->getLocalName(), u"KeyInfo") &&
            XMLString::equals(n->getNamespaceURI(), DSIGConstants::s_unicodeStrURIDSIG))
            return true;
    return false;
}

void addDataReference(XENCEncryptedKey& key, const XMLCh* id, bool prettyPrint) {
    DOMElement* keyElement = key.getElement();
    DOMDocument* doc = keyElement->getOwnerDocument();
    DOMElement* list = xencChild(keyElement, kReferenceList);
    if (list == nullptr) {
        list = makeXencElement(keyElement, kReferenceList);
        DOMNode* before = xencChild(keyElement, kCarriedKeyName);
        keyElement->insertBefore(list, before);
        if (prettyPrint) {
            keyElement->insertBefore(doc->createTextNode(kNewline), before);
            list->appendChild(doc->createTextNode(kNewline));
        }
    }
    DOMElement* reference = makeXencElement(keyElement, kDataReference);
    reference->setAttributeNS(nullptr, kURI, (XString(u"#") + id).c_str());
    list->appendChild(reference);
    if (prettyPrint)
        list->appendChild(doc->createTextNode(kNewline));
}

bool refersTo(const XENCEncryptedKey& key, const XMLCh* id) {
    const DOMElement* list = key.getElement() != nullptr ? xencChild(key.getElement(), kReferenceList) : nullptr;
    if (list == nullptr || id == nullptr)
        return false;
    const XString target = XString(u"#") + id;
    for (DOMNode* child = list->getFirstChild(); child != nullptr; child = child->getNextSibling())
        if (isXenc(child, kDataReference) &&
            XMLString::equals(static_cast<DOMElement*>(child)->getAttributeNS(nullptr, kURI), target.c_str()))
            return true;
    return false;
}

}  // namespace vqxml::xenc
