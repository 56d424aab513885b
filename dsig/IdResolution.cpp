#include "dsig/IdResolution.hpp"

#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/Transcode.hpp"
#include "engine/ParkedObjects.hpp"
#include "engine/SameDocumentIds.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kWsuNamespace[] =
    u"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";

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
