// ebXML packages on the context: loading one, registering its attachments with the
// signature, and writing the package around the serialised envelope.
//
// Choices of ours where the interface leaves room:
// - A package is held only once it and its envelope have loaded and it can be
//   used (see ebxml/Package.hpp); loading another drops the previous one first,
//   and one that fails leaves the handle empty, as every loader does.
// - Attachment references the signature already has (a second signing on the same
//   handle) are not added again.
// - When signing in ebXML mode, or signing or verifying with a package held, the
//   prefixes the XPath transforms use are declared on their XPath elements (see
//   ebxml/XPathPrefixes.hpp).
// - A multipart package with no part at all (only a C++ caller can hold one, through
//   getMimeMessage) gets the envelope as its first part when written.
#include <cstdlib>
#include <memory>
#include <new>

#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGReferenceList.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/dsig/DSIGTransformList.hpp>
#include <xercesc/dom/DOMDocument.hpp>

#include "core/ParseLimits.hpp"
#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "dsig/AlgorithmCodes.hpp"
#include "ebxml/Package.hpp"
#include "ebxml/XPathPrefixes.hpp"
#include "ebxml/XmlProlog.hpp"
#include "engine/VQXMLURIResolver.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

namespace {

using vqxml::ebxml::Attachment;

// Whether a reference of the signature has that URI (and, with parsed, transforms:
// the engine then parses the bytes it gets).
bool referenced(const DSIGSignature& signature, const XMLCh* uri, bool parsed) {
    const DSIGReferenceList* references = signature.getReferenceList();
    for (DSIGReferenceList::size_type i = 0; references != nullptr && i < references->getSize(); ++i) {
        const DSIGReference* reference = references->item(i);
        const DSIGTransformList* transforms = reference->getTransforms();
        if (XMLString::equals(reference->getURI(), uri) &&
            (!parsed || (transforms != nullptr && transforms->getSize() > 0)))
            return true;
    }
    return false;
}

// The engine's parser follows external entities and knows no bounds on depth,
// so an attachment it would parse could make a verifier read files or fetch
// addresses, or spend its time and stack on nesting. Every such attachment
// must keep within our parser's bounds, and unless its prolog shows that it
// declares no document type, it must pass our parser, which refuses external
// entities.
void requireSafeXml(VQXML_XMLSecurity& context, const Attachment& attachment) {
    vqxml::checkDocumentShape(reinterpret_cast<const char*>(attachment.part->GetContent()),
                              static_cast<std::size_t>(attachment.part->GetTextLen()));
    if (vqxml::ebxml::hasPlainProlog(attachment.part->GetContent(), attachment.part->GetTextLen()))
        return;
    XERCES_CPP_NAMESPACE::DOMDocument* parsed = nullptr;
    auto* content = reinterpret_cast<char*>(const_cast<unsigned char*>(attachment.part->GetContent()));
    const int errors = context.setXMLDocument(content, attachment.part->GetTextLen(), &parsed);
    if (parsed != nullptr)
        parsed->release();
    if (errors != 0) {
        const std::string text = "The attachment <" + attachment.identifier +
                                 "> is not well-formed XML, or it refers to external entities";
        throw VQXML_XSECException(VQXML_ERR_PARSE, text.c_str());
    }
}

}  // namespace

CMimeMessage* VQXML_XMLSecurity::getMimeMessage() {
    if (m_mimeMessage == nullptr)
        m_mimeMessage = new CMimeMessage;
    return m_mimeMessage;
}

int VQXML_XMLSecurity::EBXML_loadPackage(const char* data, int len,
                                         int (VQXML_XMLSecurity::*loadEnvelope)(char*, int)) noexcept {
    auto package = std::make_unique<CMimeMessage>();
    std::string envelope;
    int rc = VQXML_OK;
    try {
        if (package->Load(data, len) <= 0)
            throw vqxml::ebxml::PackageError{"The package does not load"};
        vqxml::ebxml::attachmentsOf(*package);
        const CMimeBody& envelopePart = vqxml::ebxml::envelopeOf(*package);
        if (envelopePart.GetTextLen() == 0)
            throw vqxml::ebxml::PackageError{"The envelope part is empty"};
        envelopePart.GetText(envelope);
    } catch (const vqxml::ebxml::PackageError&) {
        rc = VQXML_ERR_RELEASE;
    } catch (const std::bad_alloc&) {
        rc = VQXML_ERR_MEMORY;
    }
    if (rc != VQXML_OK) {
        try {
            releaseLoadedDocument();
        } catch (...) {
            // 10103 either way.
        }
        return rc;
    }
    rc = (this->*loadEnvelope)(&envelope[0], static_cast<int>(envelope.size()));
    if (rc == VQXML_OK)
        m_mimeMessage = package.release();
    return rc;
}

int VQXML_XMLSecurity::processAttachment(bool sign) {
    if (m_mimeMessage != nullptr || (sign && m_ebXml))
        vqxml::ebxml::declareXPathPrefixes(*m_signature);
    if (m_mimeMessage == nullptr)
        return 0;
    std::vector<Attachment> attachments;
    try {
        attachments = vqxml::ebxml::attachmentsOf(*m_mimeMessage);
    } catch (const vqxml::ebxml::PackageError& e) {
        throw VQXML_XSECException(VQXML_ERR_RELEASE, e.reason.c_str());
    }
    for (const Attachment& attachment : attachments) {
        const vqxml::XString id = vqxml::XMLT("UTF-8", attachment.identifier.c_str());
        const vqxml::XString uri = vqxml::XMLT("UTF-8", vqxml::ebxml::cidURI(attachment.identifier).c_str());
        if (sign)
            referenceAttachment(uri.c_str(), attachment.xml);
        if (referenced(*m_signature, uri.c_str(), true))
            requireSafeXml(*this, attachment);
        vqxml::addAttachment(*m_signature, id.c_str(), attachment.part->GetContent(),
                             attachment.part->GetTextLen());
    }
    return 0;
}

void VQXML_XMLSecurity::referenceAttachment(const XMLCh* uri, bool xml) {
    if (referenced(*m_signature, uri, false))
        return;
    const XMLCh* digestURI = vqxml::digestMethodURI(m_refHashMethod);
    if (digestURI == nullptr)
        throw VQXML_XSECException(VQXML_ERR_DSIG_DIGEST_SELECTOR, "That digest algorithm is not available");
    DSIGReference* reference = m_signature->createReference(uri, digestURI);
    if (xml && m_refCanonMethod != 0)
        reference->appendCanonicalizationTransform(vqxml::canonicalizationURI(m_refCanonMethod));
}

int VQXML_XMLSecurity::storePackage(const unsigned char* envelope, int len, char** out) {
    std::list<CMimeBody*> leaves;
    m_mimeMessage->GetBodyPartList(leaves);
    CMimeBody* envelopePart = leaves.empty() ? nullptr : leaves.front();
    if (envelopePart == nullptr) {
        envelopePart = m_mimeMessage->CreatePart("text");
        envelopePart->SetContentType("text/xml; charset=UTF-8");
    }
    if (envelopePart->SetText(reinterpret_cast<const char*>(envelope), len) < 0)
        throw VQXML_XSECException(VQXML_ERR_MEMORY);
    const int bound = m_mimeMessage->GetLength();
    char* bytes = static_cast<char*>(std::calloc(static_cast<size_t>(bound) + 1, 1));
    if (bytes == nullptr)
        throw VQXML_XSECException(VQXML_ERR_MEMORY);
    const int written = m_mimeMessage->Store(bytes, bound);
    if (written <= 0) {
        std::free(bytes);
        throw VQXML_XSECException(VQXML_ERR_UNKNOWN, "The package could not be written");
    }
    *out = bytes;
    return written;
}
