#include "dsig/Signing.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECAlgorithmHandler.hpp>
#include <xsec/framework/XSECAlgorithmMapper.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/Namespaces.hpp"
#include "core/VQXMLException.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "engine/Base64.hpp"
#include "dsig/SignedInfoCanonicalization.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE

namespace {

std::vector<DOMElement*> dsigChildren(const DOMElement* parent, const XMLCh* localName) {
    std::vector<DOMElement*> out;
    for (DOMElement* e = parent != nullptr ? parent->getFirstElementChild() : nullptr; e != nullptr;
         e = e->getNextElementSibling())
        if (XMLString::equals(e->getLocalName(), localName) &&
            XMLString::equals(e->getNamespaceURI(), vqxml::kDsigNamespace))
            out.push_back(e);
    return out;
}

void setText(DOMElement* element, const std::string& text) {
    element->setTextContent(vqxml::toXString(text).c_str());
}

std::string withoutLineBreaks(std::string text) {
    std::string out;
    for (char c : text)
        if (c != '\n' && c != '\r')
            out.push_back(c);
    return out;
}

// Signs with the library's own reference pipeline; false when it does not take
// every reference or the SignedInfo, and nothing has been written.
bool signWithOwnTransforms(DSIGSignature& signature, DOMElement* signatureElement, XSECCryptoKey* key) {
    if (signatureElement == nullptr || key == nullptr)
        return false;
    DOMElement* signedInfo = signatureElement->getFirstElementChild();
    const std::vector<DOMElement*> referenceElements = vqxml::referenceElements(signatureElement);
    if (referenceElements.empty())
        return false;
    std::vector<std::vector<unsigned char>> digests;
    for (const DOMElement* reference : referenceElements) {
        std::optional<vqxml::ReferenceDigest> digest =
            vqxml::digestReference(reference, signatureElement, vqxml::OrphanForm::Santuario);
        if (!digest)
            return false;
        digests.push_back(std::move(digest->value));
    }
    const XSECAlgorithmHandler* handler =
        XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(signature.getAlgorithmURI());
    const std::vector<DOMElement*> signatureValues = dsigChildren(signatureElement, u"SignatureValue");
    const std::optional<vqxml::CanonicalOptions> how = vqxml::signedInfoCanonicalization(signedInfo);
    if (handler == nullptr || signatureValues.size() != 1 || !how)
        return false;

    for (size_t i = 0; i < digests.size(); ++i) {
        const std::vector<DOMElement*> value = dsigChildren(referenceElements[i], u"DigestValue");
        if (value.size() != 1)
            throw VQXML_XSECException(VQXML_ERR_UNKNOWN, "A Reference has no DigestValue");
        setText(value[0], withoutLineBreaks(vqxml::base64Text(digests[i])));
    }
    const std::unique_ptr<TXFMChain> chain = vqxml::canonicalChain(signedInfo, *how);
    safeBuffer value;
    if (!handler->signToSafeBuffer(chain.get(), signature.getAlgorithmURI(), key, 0, value))
        throw XSECException(XSECException::SigVfyError, "The signature value could not be computed");
    setText(signatureValues[0], value.rawCharBuffer());
    return true;
}

}  // namespace

namespace vqxml {

void signSignature(DSIGSignature& signature, DOMElement* signatureElement, XSECCryptoKey* key) {
    if (!signWithOwnTransforms(signature, signatureElement, key))
        signature.sign();
}

}  // namespace vqxml
