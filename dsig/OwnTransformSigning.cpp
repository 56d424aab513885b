// Signing with the library's own transforms.
//
// When the library's pipeline (ReferenceDigesting.hpp) takes every reference,
// it computes their digests, the same way verification recomputes them; the
// SignedInfo is then canonicalized and signed by the same algorithm handler the
// engine's sign() would use. Any other signature is signed by the engine.
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
#include <xsec/transformers/TXFMSB.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/Namespaces.hpp"
#include "core/VQXMLException.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "engine/Base64.hpp"
#include "engine/SignedInfoCanonicalization.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

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

}  // namespace

bool VQXML_XMLSecurity::signWithOwnTransforms() {
    if (m_signatureElement == nullptr || m_signingKey == nullptr)
        return false;
    DOMElement* signedInfo = m_signatureElement->getFirstElementChild();
    const std::vector<DOMElement*> referenceElements = vqxml::referenceElements(m_signatureElement);
    if (referenceElements.empty())
        return false;
    std::vector<std::vector<unsigned char>> digests;
    for (const DOMElement* reference : referenceElements) {
        std::optional<vqxml::ReferenceDigest> digest =
            vqxml::digestReference(reference, m_signatureElement, vqxml::OrphanForm::Santuario);
        if (!digest)
            return false;
        digests.push_back(std::move(digest->value));
    }
    const XSECAlgorithmHandler* handler =
        XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(m_signature->getAlgorithmURI());
    const std::vector<DOMElement*> signatureValues = dsigChildren(m_signatureElement, u"SignatureValue");
    // A PrefixList stays with the engine, which signs without it.
    const std::optional<vqxml::SignedInfoCanonicalization> how = vqxml::signedInfoCanonicalization(signedInfo);
    if (handler == nullptr || signatureValues.size() != 1 || !how || how->prefixList)
        return false;

    for (size_t i = 0; i < digests.size(); ++i) {
        const std::vector<DOMElement*> value = dsigChildren(referenceElements[i], u"DigestValue");
        if (value.size() != 1)
            throw VQXML_XSECException(VQXML_ERR_UNKNOWN, "A Reference has no DigestValue");
        setText(value[0], withoutLineBreaks(vqxml::base64Text(digests[i])));
    }
    safeBuffer canonical;
    const XMLSize_t len = vqxml::canonicalForm(m_document, signedInfo, *how, canonical);
    TXFMSB* source = new TXFMSB(m_document);
    TXFMChain chain(source);
    source->setInput(canonical, static_cast<unsigned int>(len));
    safeBuffer signature;
    if (!handler->signToSafeBuffer(&chain, m_signature->getAlgorithmURI(), m_signingKey, 0, signature))
        throw XSECException(XSECException::SigVfyError, "The signature value could not be computed");
    setText(signatureValues[0], signature.rawCharBuffer());
    return true;
}
