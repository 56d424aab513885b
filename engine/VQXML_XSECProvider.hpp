// The engine's provider with the WS-Security engine objects besides its
// signatures and ciphers.
#ifndef VQXML_ENGINE_VQXML_XSECPROVIDER_HPP
#define VQXML_ENGINE_VQXML_XSECPROVIDER_HPP

#include <xsec/framework/XSECProvider.hpp>

class VQXML_WSSecSecurity;
class XSECEnv;

class VQXML_XSECProvider : public XSECProvider {
public:
    // Not yet bound to a document: the first signature or cipher binds it.
    VQXML_WSSecSecurity* newWSSecSecurity();
    // Bound to doc, for reading its header with load().
    VQXML_WSSecSecurity* newWSSecSecurityFromDOM(XERCES_CPP_NAMESPACE::DOMDocument* doc, XSECEnv* env);
    void releaseWSSecSecurity(VQXML_WSSecSecurity* security);
};

#endif
