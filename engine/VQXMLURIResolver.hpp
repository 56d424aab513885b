// Resolves the Reference URIs that do not point into the document itself.
//
// "cid:" URIs name the attachments of an ebXML package (RFC 2392: the URI's %hh
// escapes decoded, then compared exactly): they are served from the
// bytes kept with addAttachment, exactly as kept, and never from anywhere else; an
// identifier nobody kept is an engine error (ErrorOpeningURI), signing or verifying.
//
// When verifying, nothing outside the document is read: a URI naming a file, a
// web address or anything else is refused with an engine error, unless the
// application allowed external references on the handle
// (VQTK_XMLDSIG_AllowExternalReferences). When signing, the caller chose the URIs,
// so they are read.
#ifndef VQXML_ENGINE_VQXMLURIRESOLVER_HPP
#define VQXML_ENGINE_VQXMLURIRESOLVER_HPP

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <xsec/framework/XSECURIResolver.hpp>

class DSIGSignature;

class VQXML_URIResolver : public XSECURIResolver {
public:
    explicit VQXML_URIResolver(bool readExternal);

    XERCES_CPP_NAMESPACE::BinInputStream* resolveURI(const XMLCh* uri) override;
    void setBaseURI(const XMLCh* uri) override;
    // Clones share the kept attachments: the engine works on its own clone.
    XSECURIResolver* clone() override;

    // Copies length bytes under contentId (the URI without "cid:"); keeping the
    // same identifier again replaces the bytes.
    void keepAttachment(const XMLCh* contentId, const unsigned char* data, int length);

private:
    using Attachments = std::map<std::basic_string<XMLCh>, std::vector<unsigned char>>;

    bool m_readExternal;
    std::shared_ptr<Attachments> m_attachments;
};

namespace vqxml {

// Gives signature a VQXML_URIResolver that reads outside the document only when
// readExternal is true.
void installURIResolver(DSIGSignature& signature, bool readExternal);

// The engine's attachment operation: a Reference of signature whose URI is "cid:"
// followed by contentId takes these bytes (copied here) as its input. The
// signature must have been given a VQXML_URIResolver (every signature the context
// makes is).
void addAttachment(DSIGSignature& signature, const XMLCh* contentId, const unsigned char* data, int length);

}  // namespace vqxml

#endif
