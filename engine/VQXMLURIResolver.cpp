#include "engine/VQXMLURIResolver.hpp"

#include <xsec/framework/XSECException.hpp>
#include <xsec/framework/XSECURIResolverXerces.hpp>

#include "core/Transcode.hpp"

VQXML_URIResolver::VQXML_URIResolver(bool readExternal) : m_readExternal(readExternal) {}

XERCES_CPP_NAMESPACE::BinInputStream* VQXML_URIResolver::resolveURI(const XMLCh* uri) {
    if (!m_readExternal) {
        vqxml::XString text = u"References outside the document are not followed when verifying: ";
        text += uri != nullptr ? uri : u"";
        throw XSECException(XSECException::ErrorOpeningURI, text.c_str());
    }
    XSECURIResolverXerces reader;
    return reader.resolveURI(uri);
}

void VQXML_URIResolver::setBaseURI(const XMLCh*) {
    // URIs are taken as the document gives them: there is no base to resolve against.
}

XSECURIResolver* VQXML_URIResolver::clone() {
    return new VQXML_URIResolver(*this);
}
