#include "dsig/SignedInfoCanonicalization.hpp"

#include <memory>
#include <vector>

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
#include "dsig/NodeSelection.hpp"
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

std::optional<CanonicalOptions> signedInfoCanonicalization(const DOMElement* signedInfo) {
    const std::vector<DOMElement*> methods = children(signedInfo, kDsigNamespace, u"CanonicalizationMethod");
    if (methods.size() != 1)
        return std::nullopt;
    CanonicalizationChoice choice;
    if (!canonicalizationChoice(methods[0]->getAttribute(u"Algorithm"), choice))
        return std::nullopt;
    CanonicalOptions how;
    how.exclusive = choice.exclusive;
    how.comments = choice.comments;
    how.version11 = choice.version11;
    const std::vector<DOMElement*> prefixLists = children(methods[0], kExcC14nNamespace, u"InclusiveNamespaces");
    if (prefixLists.size() > 1 || (!how.exclusive && !prefixLists.empty()))
        return std::nullopt;
    if (!prefixLists.empty())
        how.inclusivePrefixes = prefixListOf(prefixLists[0]->getAttribute(u"PrefixList"));
    return how;
}

std::string canonicalForm(const DOMElement* element, const CanonicalOptions& how) {
    struct Text : ByteSink {
        void write(const char* bytes, std::size_t n) override { text.append(bytes, n); }
        std::string text;
    } out;
    SubtreeSelection whole(element, how.comments);
    canonicalize(element, whole, how, out);
    return std::move(out.text);
}

std::unique_ptr<TXFMChain> canonicalChain(const DOMElement* signedInfo, const CanonicalOptions& how) {
    const std::string canonical = canonicalForm(signedInfo, how);
    safeBuffer bytes;
    bytes.sbMemcpyIn(canonical.data(), canonical.size());
    auto source = std::make_unique<TXFMSB>(signedInfo->getOwnerDocument());
    source->setInput(bytes, static_cast<unsigned int>(canonical.size()));
    // The chain owns its source once made; held until then, so a failed allocation frees it.
    auto chain = std::make_unique<TXFMChain>(source.get());
    source.release();
    return chain;
}

bool signedInfoVerifies(const DSIGSignature& sig, const DOMElement* signature, XSECCryptoKey* key) {
    DOMElement* signedInfo = signature != nullptr ? signature->getFirstElementChild() : nullptr;
    if (key == nullptr || signedInfo == nullptr || !XMLString::equals(signedInfo->getLocalName(), u"SignedInfo"))
        throw XSECException(XSECException::SigVfyError, "No SignedInfo or no key to check it with");
    const std::optional<CanonicalOptions> how = signedInfoCanonicalization(signedInfo);
    if (!how)
        throw XSECException(XSECException::SigVfyError, "Unknown CanonicalizationMethod of SignedInfo");
    const unsigned int outputLength = hmacOutputLength(signedInfo);
    const XSECAlgorithmHandler* handler = XSECPlatformUtils::g_algorithmMapper->mapURIToHandler(sig.getAlgorithmURI());
    if (handler == nullptr)
        throw XSECException(XSECException::SigVfyError, "Unknown SignatureMethod");
    const std::unique_ptr<TXFMChain> chain = canonicalChain(signedInfo, *how);
    const std::string value = asciiOf(sig.getSignatureValue());
    return handler->verifyBase64Signature(chain.get(), sig.getAlgorithmURI(), value.c_str(), outputLength, key);
}

}  // namespace vqxml
