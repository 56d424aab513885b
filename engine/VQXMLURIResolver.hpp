// Resolves the Reference URIs that do not point into the document itself.
//
// When verifying, nothing outside the document is read: a URI naming a file, a
// web address or anything else is refused with an engine error, unless the
// application allowed external references on the handle
// (VQTK_XMLDSIG_AllowExternalReferences). When signing, the caller chose the URIs,
// so they are read.
#ifndef VQXML_ENGINE_VQXMLURIRESOLVER_HPP
#define VQXML_ENGINE_VQXMLURIRESOLVER_HPP

#include <xsec/framework/XSECURIResolver.hpp>

class VQXML_URIResolver : public XSECURIResolver {
public:
    explicit VQXML_URIResolver(bool readExternal);

    XERCES_CPP_NAMESPACE::BinInputStream* resolveURI(const XMLCh* uri) override;
    void setBaseURI(const XMLCh* uri) override;
    XSECURIResolver* clone() override;

private:
    bool m_readExternal;
};

#endif
