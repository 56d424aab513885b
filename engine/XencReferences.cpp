#include "engine/XencReferences.hpp"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/xenc/XENCEncryptedKey.hpp>

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

// The elements that the RetrievalMethods inside element name in its document.
std::vector<const DOMElement*> retrievedBy(const DOMElement* element) {
    std::vector<const DOMElement*> targets;
    DOMNodeList* methods = const_cast<DOMElement*>(element)->getElementsByTagNameNS(DSIGConstants::s_unicodeStrURIDSIG,
                                                                                   u"RetrievalMethod");
    for (XMLSize_t i = 0; i < methods->getLength(); ++i) {
        const XMLCh* uri = static_cast<DOMElement*>(methods->item(i))->getAttributeNS(nullptr, kURI);
        if (uri == nullptr || uri[0] != u'#' || uri[1] == 0)
            continue;
        if (const DOMElement* target = element->getOwnerDocument()->getElementById(uri + 1))
            targets.push_back(target);
    }
    return targets;
}

// Depth first; an element explored once without trouble is not explored again.
void followChains(const DOMElement* element, std::vector<const DOMElement*>& path,
                  std::set<const DOMElement*>& cleared) {
    if (cleared.count(element) != 0)
        return;
    if (std::find(path.begin(), path.end(), element) != path.end())
        throw XSECException(XSECException::UnsupportedFunction, "A RetrievalMethod leads back to itself");
    if (path.size() >= static_cast<size_t>(vqxml::xenc::kMaxRetrievalChain))
        throw XSECException(XSECException::UnsupportedFunction, "RetrievalMethods lead too far");
    path.push_back(element);
    for (const DOMElement* target : retrievedBy(element))
        followChains(target, path, cleared);
    path.pop_back();
    cleared.insert(element);
}

}  // namespace

namespace vqxml::xenc {

void checkRetrievalChains(const DOMElement* element) {
    std::vector<const DOMElement*> path;
    std::set<const DOMElement*> cleared;
    followChains(element, path, cleared);
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
