#include "engine/KeyInfoGuard.hpp"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/ParseLimits.hpp"
#include "core/Transcode.hpp"
#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

DOMNodeList* dsigElements(const DOMElement* element, const XMLCh* localName) {
    return const_cast<DOMElement*>(element)->getElementsByTagNameNS(DSIGConstants::s_unicodeStrURIDSIG, localName);
}

size_t dsigChildren(const DOMNode* parent, const XMLCh* localName) {
    size_t n = 0;
    for (const DOMNode* c = parent->getFirstChild(); c != nullptr; c = c->getNextSibling())
        n += c->getNodeType() == DOMNode::ELEMENT_NODE && XMLString::equals(c->getLocalName(), localName) &&
             XMLString::equals(c->getNamespaceURI(), DSIGConstants::s_unicodeStrURIDSIG);
    return n;
}

void checkX509Data(const DOMElement* element) {
    DOMNodeList* data = dsigElements(element, u"X509Data");
    for (XMLSize_t i = 0; i < data->getLength(); ++i)
        if (dsigChildren(data->item(i), u"X509SubjectName") > 1 || dsigChildren(data->item(i), u"X509IssuerSerial") > 1)
            throw XSECException(XSECException::UnsupportedFunction,
                                "An X509Data with several X509SubjectName or X509IssuerSerial elements is not read");
}

// The engine reads these names in time that grows with the square of their length.
void checkNameLengths(const DOMElement* element) {
    for (const XMLCh* name : {u"X509SubjectName", u"X509IssuerName", u"KeyName"}) {
        DOMNodeList* named = dsigElements(element, name);
        for (XMLSize_t i = 0; i < named->getLength(); ++i) {
            std::size_t length = 0;
            for (const DOMNode* c = named->item(i)->getFirstChild(); c != nullptr; c = c->getNextSibling())
                if (c->getNodeType() == DOMNode::TEXT_NODE || c->getNodeType() == DOMNode::CDATA_SECTION_NODE)
                    length += XMLString::stringLen(c->getNodeValue());
            if (length > kMaxNameLength)
                throw XSECException(XSECException::UnsupportedFunction,
                                    (u"The " + XString(name) + u" is longer than " +
                                     toXString(std::to_string(kMaxNameLength)) + u" characters: it is not read")
                                        .c_str());
        }
    }
}

// The elements that the RetrievalMethods inside element name in its document.
std::vector<const DOMElement*> retrievedBy(const DOMElement* element) {
    std::vector<const DOMElement*> targets;
    DOMNodeList* methods = dsigElements(element, u"RetrievalMethod");
    for (XMLSize_t i = 0; i < methods->getLength(); ++i) {
        const XMLCh* uri = static_cast<DOMElement*>(methods->item(i))->getAttributeNS(nullptr, u"URI");
        if (uri == nullptr || uri[0] != u'#' || uri[1] == 0)
            continue;
        if (const DOMElement* target = element->getOwnerDocument()->getElementById(uri + 1))
            targets.push_back(target);
    }
    return targets;
}

// Depth first; an element explored once without trouble is not explored again.
void follow(const DOMElement* element, std::vector<const DOMElement*>& path, std::set<const DOMElement*>& cleared) {
    if (cleared.count(element) != 0)
        return;
    if (std::find(path.begin(), path.end(), element) != path.end())
        throw XSECException(XSECException::UnsupportedFunction, "A RetrievalMethod leads back to itself");
    if (path.size() >= static_cast<size_t>(kMaxRetrievalChain))
        throw XSECException(XSECException::UnsupportedFunction, "RetrievalMethods lead too far");
    checkX509Data(element);
    checkNameLengths(element);
    path.push_back(element);
    for (const DOMElement* target : retrievedBy(element))
        follow(target, path, cleared);
    path.pop_back();
    cleared.insert(element);
}

}  // namespace

void checkKeyInformation(const DOMElement* element) {
    std::vector<const DOMElement*> path;
    std::set<const DOMElement*> cleared;
    follow(element, path, cleared);
}

}  // namespace vqxml
