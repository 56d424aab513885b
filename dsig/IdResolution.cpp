#include "dsig/IdResolution.hpp"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/Transcode.hpp"
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

// Elements carrying an Id-like attribute with that value, counted up to two.
int elementsWithId(const DOMDocument* doc, const XMLCh* id) {
    int found = 0;
    DOMNodeIterator* it = const_cast<DOMDocument*>(doc)->createNodeIterator(
        const_cast<DOMElement*>(doc->getDocumentElement()), DOMNodeFilter::SHOW_ELEMENT, nullptr, false);
    for (DOMNode* node = it->nextNode(); node != nullptr && found < 2; node = it->nextNode()) {
        DOMNamedNodeMap* attrs = node->getAttributes();
        for (XMLSize_t i = 0; attrs != nullptr && i < attrs->getLength(); ++i) {
            auto* attr = static_cast<DOMAttr*>(attrs->item(i));
            if (isIdAttribute(attr) && XMLString::equals(attr->getValue(), id)) {
                ++found;
                break;
            }
        }
    }
    it->release();
    return found;
}

}  // namespace

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
        const XMLCh* uri = references->item(i)->getURI();
        if (uri == nullptr || uri[0] != u'#' || uri[1] == 0 || XMLString::startsWith(uri, u"#xpointer("))
            continue;
        const int found = elementsWithId(doc, uri + 1);
        if (found != 1) {
            XString text = found == 0 ? u"No element carries the referenced Id " : u"More than one element carries the referenced Id ";
            text += uri + 1;
            throw XSECException(XSECException::IDNotFoundInDOMDoc, text.c_str());
        }
    }
}

}  // namespace vqxml
