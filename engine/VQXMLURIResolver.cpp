#include "engine/VQXMLURIResolver.hpp"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/framework/XSECException.hpp>
#include <xsec/framework/XSECURIResolverXerces.hpp>

#include "core/adapter/Upstream.hpp"
#include "core/Transcode.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

const XMLCh kCidScheme[] = u"cid:";
constexpr XMLSize_t kCidSchemeLength = 4;

[[noreturn]] void refuse(const char16_t* reason, const XMLCh* uri) {
    vqxml::XString text = reason;
    text += uri != nullptr ? uri : u"";
    throw XSECException(XSECException::ErrorOpeningURI, text.c_str());
}

int hexValue(char c) {
    static const char kDigits[] = "0123456789abcdef";
    const char* at = c != '\0' ? std::strchr(kDigits, std::tolower(static_cast<unsigned char>(c))) : nullptr;
    return at != nullptr ? static_cast<int>(at - kDigits) : -1;
}

// The Content-ID a "cid:" URI names (RFC 2392): the rest of the URI with its
// %hh escapes decoded, and nothing else changed. False for a broken escape.
bool contentIdOf(const XMLCh* rest, vqxml::XString& id) {
    std::unique_ptr<char, decltype(&std::free)> utf8(vqxml::transcodeOut(rest, "UTF-8"), &std::free);
    if (!utf8)
        return false;
    std::string decoded;
    for (const char* c = utf8.get(); *c != '\0'; ++c) {
        if (*c != '%') {
            decoded += *c;
            continue;
        }
        const int high = hexValue(c[1]);
        const int low = high < 0 ? -1 : hexValue(c[2]);
        if (low < 0)
            return false;
        decoded += static_cast<char>(high * 16 + low);
        c += 2;
    }
    id = vqxml::XMLT("UTF-8", decoded.c_str());
    return true;
}

}  // namespace

VQXML_URIResolver::VQXML_URIResolver(bool readExternal)
    : m_readExternal(readExternal), m_attachments(std::make_shared<Attachments>()) {}

BinInputStream* VQXML_URIResolver::resolveURI(const XMLCh* uri) {
    if (uri != nullptr && XMLString::startsWith(uri, kCidScheme)) {
        vqxml::XString id;
        auto found = contentIdOf(uri + kCidSchemeLength, id) ? m_attachments->find(id) : m_attachments->end();
        if (found == m_attachments->end())
            refuse(u"No attachment of the package has the Content-ID of ", uri);
        static const XMLByte kNothing = 0;
        const std::vector<unsigned char>& bytes = found->second;
        // The kept bytes outlive the stream: both belong to the signature.
        return new BinMemInputStream(bytes.empty() ? &kNothing : bytes.data(), bytes.size(),
                                     BinMemInputStream::BufOpt_Reference);
    }
    if (!m_readExternal)
        refuse(u"References outside the document are not followed when verifying: ", uri);
    XSECURIResolverXerces reader;
    return reader.resolveURI(uri);
}

void VQXML_URIResolver::setBaseURI(const XMLCh*) {
    // URIs are taken as the document gives them: there is no base to resolve against.
}

XSECURIResolver* VQXML_URIResolver::clone() {
    // The engine deletes a signature's resolver before it stores the clone, so a
    // clone that threw would leave it a dangling pointer; a null one it can live with.
    return new (std::nothrow) VQXML_URIResolver(*this);
}

void VQXML_URIResolver::keepAttachment(const XMLCh* contentId, const unsigned char* data, int length) {
    std::vector<unsigned char> bytes(data, data + (length > 0 ? length : 0));
    (*m_attachments)[contentId != nullptr ? contentId : u""] = std::move(bytes);
}

namespace vqxml {

void installURIResolver(DSIGSignature& signature, bool readExternal) {
    VQXML_URIResolver resolver(readExternal);
    signature.setURIResolver(&resolver);
    if (signature.getURIResolver() == nullptr)
        throw std::bad_alloc();
}

void addAttachment(DSIGSignature& signature, const XMLCh* contentId, const unsigned char* data, int length) {
    auto* resolver = dynamic_cast<VQXML_URIResolver*>(signature.getURIResolver());
    if (resolver == nullptr)
        throw XSECException(XSECException::ErrorOpeningURI, "The signature cannot keep attachments");
    resolver->keepAttachment(contentId, data, length);
}

}  // namespace vqxml
