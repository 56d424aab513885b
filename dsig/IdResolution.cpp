#include "dsig/IdResolution.hpp"

#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/Transcode.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "engine/ParkedObjects.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kWsuNamespace[] =
    u"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";

bool isIdAttribute(const DOMAttr* attr) {
    const XMLCh* name = attr->getLocalName() != nullptr ? attr->getLocalName() : attr->getName();
    return attr->isId() || XMLString::equals(name, u"Id") || XMLString::equals(name, u"id") ||
           XMLString::equals(name, u"ID");
}

}  // namespace

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

void enableIdAttributes(DSIGSignature*& signature) {
    signature->setIdByAttributeName(true);
    try {
        signature->registerIdAttributeNameNS(kWsuNamespace, u"Id");
    } catch (const OutOfMemoryException&) {
        // The engine lists the name's entry before copying the strings into it
        // (copies that fail with this exception), so the entry keeps an
        // indeterminate pointer that the signature's destructor would free. Such a
        // signature can never be destroyed safely: it is given up (left allocated)
        // rather than crash. A failure before the entry is listed is std::bad_alloc.
        park(signature);
        signature = nullptr;
        throw;
    }
}

void checkReferencedIds(const DSIGSignature* signature) {
    const DSIGReferenceList* references = signature->getReferenceList();
    const DOMDocument* doc = signature->getParentDocument();
    for (DSIGReferenceList::size_type i = 0; references != nullptr && i < references->getSize(); ++i) {
        const XString id = referencedId(references->item(i)->getURI());
        if (id.empty())
            continue;
        const size_t found = elementsWithId(doc, id.c_str()).size();
        if (found != 1) {
            XString text = found == 0 ? u"No element carries the referenced Id " : u"More than one element carries the referenced Id ";
            text += id;
            throw XSECException(XSECException::IDNotFoundInDOMDoc, text.c_str());
        }
    }
}

const DOMElement* elementWithId(const DOMDocument* doc, const XMLCh* id) {
    const std::vector<const DOMElement*> found = elementsWithId(doc, id);
    return found.size() == 1 ? found[0] : nullptr;
}

}  // namespace vqxml
