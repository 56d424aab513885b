#include "engine/SignedInfoCanonicalization.hpp"

#include <vector>

#include <xsec/canon/XSECC14n20010315.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECAlgorithmHandler.hpp>
#include <xsec/framework/XSECAlgorithmMapper.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMSB.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

#include "core/adapter/Upstream.hpp"
#include "core/Namespaces.hpp"
#include "core/Transcode.hpp"
#include "engine/Algorithms.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {
namespace {


std::vector<DOMElement*> children(const DOMElement* parent, const XMLCh* ns, const XMLCh* localName) {
    std::vector<DOMElement*> out;
    for (DOMElement* e = parent != nullptr ? parent->getFirstElementChild() : nullptr; e != nullptr;
         e = e->getNextElementSibling())
        if (XMLString::equals(e->getLocalName(), localName) && XMLString::equals(e->getNamespaceURI(), ns))
            out.push_back(e);
    return out;
}

std::string asciiOf(const XMLCh* text) {
    std::string out;
    for (; text != nullptr && *text != 0; ++text) {
        if (*text > 0x7E)
            throw XSECException(XSECException::SigVfyError, "A SignedInfo value is not ASCII");
        out.push_back(static_cast<char>(*text));
    }
    return out;
}

// HMACOutputLength in bits, 0 when absent.
unsigned int hmacOutputLength(const DOMElement* signedInfo) {
    const std::vector<DOMElement*> methods = children(signedInfo, kDsigNamespace, u"SignatureMethod");
    const std::vector<DOMElement*> lengths =
        methods.size() == 1 ? children(methods[0], kDsigNamespace, u"HMACOutputLength") : std::vector<DOMElement*>();
    if (lengths.empty())
        return 0;
    const std::string text = asciiOf(lengths[0]->getTextContent());
    unsigned long bits = 0;
    for (char c : text) {
        if (c < '0' || c > '9' || bits > 100000)
            throw XSECException(XSECException::SigVfyError, "HMACOutputLength is not a number");
        bits = bits * 10 + static_cast<unsigned long>(c - '0');
    }
    if (text.empty() || bits < 80)
        throw XSECException(XSECException::SigVfyError, "HMACOutputLength is unsafe");
    return static_cast<unsigned int>(bits);
}

}  // namespace

std::optional<SignedInfoCanonicalization> signedInfoCanonicalization(const DOMElement* signedInfo) {
    const std::vector<DOMElement*> methods = children(signedInfo, kDsigNamespace, u"CanonicalizationMethod");
    if (methods.size() != 1)
        return std::nullopt;
    const XMLCh* algorithm = methods[0]->getAttribute(u"Algorithm");
    CanonicalizationChoice choice;
    if (!canonicalizationChoice(algorithm, choice))
        return std::nullopt;
    SignedInfoCanonicalization how;
    how.exclusive = choice.exclusive;
    how.comments = choice.comments;
    const std::vector<DOMElement*> prefixLists = children(methods[0], kExcC14nNamespace, u"InclusiveNamespaces");
    if (prefixLists.size() > 1 || (!how.exclusive && !prefixLists.empty()))
        return std::nullopt;
    if (!prefixLists.empty())
        how.prefixList = asciiOf(prefixLists[0]->getAttribute(u"PrefixList"));
    return how;
}

XMLSize_t canonicalForm(DOMDocument* doc, DOMElement* element, const SignedInfoCanonicalization& how,
                        safeBuffer& out) {
    XSECC14n20010315 canon(doc, element);
    canon.setCommentsProcessing(how.comments);
    std::string prefixes = how.prefixList.value_or("");
    if (how.exclusive && prefixes.find_first_not_of(" \t\r\n") != std::string::npos)
        canon.setExclusive(&prefixes[0]);
    else if (how.exclusive)
        canon.setExclusive();
    unsigned char chunk[8192];
    XMLSize_t len = 0;
    for (XMLSize_t n; (n = canon.outputBuffer(chunk, sizeof chunk)) > 0; len += n)
        out.sbMemcpyIn(len, chunk, n);
    return len;
}

bool signedInfoVerifies(const DSIGSignature& sig, const DOMElement* signature, XSECCryptoKey* key) {
    DOMElement* signedInfo = signature != nullptr ? signature->getFirstElementChild() : nullptr;
    if (key == nullptr || signedInfo == nullptr || !XMLString::equals(signedInfo->getLocalName(), u"SignedInfo"))
        throw XSECException(XSECException::SigVfyError, "No SignedInfo or no key to check it with");
    const std::optional<SignedInfoCanonicalization> how = signedInfoCanonicalization(signedInfo);
    if (!how)
        throw XSECException(XSECException::SigVfyError, "Unknown CanonicalizationMethod of SignedInfo");
    const unsigned int outputLength = hmacOutputLength(signedInfo);
    const XSECAlgorithmHandler* handler = XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(sig.getAlgorithmURI());
    if (handler == nullptr)
        throw XSECException(XSECException::SigVfyError, "Unknown SignatureMethod");
    DOMDocument* doc = signedInfo->getOwnerDocument();
    safeBuffer canonical;
    const XMLSize_t len = canonicalForm(doc, signedInfo, *how, canonical);
    TXFMSB* source = new TXFMSB(doc);
    TXFMChain chain(source);
    source->setInput(canonical, static_cast<unsigned int>(len));
    const std::string value = asciiOf(sig.getSignatureValue());
    return handler->verifyBase64Signature(&chain, sig.getAlgorithmURI(), value.c_str(), outputLength, key);
}

}  // namespace vqxml
