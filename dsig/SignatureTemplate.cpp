// Building a signature: the document, the blank Signature and where it goes,
// references, objects, key names, and signing.
#include <cstring>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGObject.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/dsig/DSIGTransformXPath.hpp>
#include <xsec/framework/XSECProvider.hpp>

#include "core/ErrorFrame.hpp"
#include "core/NamespaceFixup.hpp"
#include "core/Transcode.hpp"
#include "dsig/AlgorithmCodes.hpp"
#include "dsig/IdResolution.hpp"
#include "dsig/Signing.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/VQXMLURIResolver.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// Null, empty and a single space all mean "nothing given".
bool isBlank(const char* text) {
    return text == nullptr || text[0] == '\0' || std::strcmp(text, " ") == 0;
}

bool startsWith(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

// The whole document for a blank uri; an external or explicit fragment URI as it
// stands; anything else names an element by its Id.
vqxml::XString referenceURI(const char* uri) {
    if (isBlank(uri))
        return vqxml::XString();
    if (uri[0] == '#' || startsWith(uri, "http:") || startsWith(uri, "https:") || startsWith(uri, "file:"))
        return vqxml::XMLT(uri);
    return u"#" + vqxml::XMLT(uri);
}

}  // namespace

void VQXML_XMLSecurity::requireSignature() const {
    if (m_signature == nullptr)
        throw VQXML_XSECException(VQXML_ERR_DSIG_NO_SIGNATURE);
}

// The engine cannot add to a signature whose element does not exist yet.
void VQXML_XMLSecurity::requireTemplate(int code) const {
    requireSignature();
    if (m_signature->getParentDocument() == nullptr)
        throw VQXML_XSECException(code, "No Signature element yet: choose the signature algorithm first");
}

int VQXML_XMLSecurity::XMLDSIG_setXMLDocument(char* xml, int len) {
    return vqxml::guarded(*this, "XMLDSIG_setXMLDocument > ", [&] {
        loadAfresh([&] {
            if (xml != nullptr && len > 0 && xml[0] != '\0')
                loadDocument(xml, len);
            m_signature = g_provider->newSignature();
            m_signature->setPrettyPrint(true);
            vqxml::enableIdAttributes(m_signature);
            vqxml::installURIResolver(*m_signature, true);
        });
    });
}

int VQXML_XMLSecurity::XMLDSIG_setPrefix(char* prefix) {
    return vqxml::guarded(*this, "XMLDSIG_setPrefix > ", [&] {
        requireSignature();
        if (prefix == nullptr || prefix[0] == '\0')
            throw VQXML_XSECException(VQXML_ERR_DSIG_NO_PREFIX);
        m_signature->setDSIGNSPrefix(vqxml::XMLT(prefix).c_str());
    });
}

int VQXML_XMLSecurity::XMLDSIG_setSignatureAlg(int signatureSelector, int canonicalizationSelector) {
    return vqxml::guarded(*this, "XMLDSIG_setSignatureAlg > ", [&] {
        requireSignature();
        vqxml::SignatureCodes codes{};
        if (!vqxml::signatureSelector(signatureSelector, codes))
            throw VQXML_XSECException(VQXML_ERR_DSIG_SIGNATURE_SELECTOR);
        m_signatureMethod = codes.signatureMethod;
        int canonicalization = 0;
        if (!vqxml::canonicalizationSelector(canonicalizationSelector, canonicalization))
            throw VQXML_XSECException(VQXML_ERR_DSIG_C14N_SELECTOR);
        const XMLCh* signatureURI = vqxml::signatureMethodURI(codes);
        if (signatureURI == nullptr)
            throw VQXML_XSECException(VQXML_ERR_DSIG_SIGNATURE_SELECTOR, "That signature algorithm is not available");
        // SignedInfo always needs a canonicalization: "none" means Canonical XML 1.0.
        const XMLCh* c14nURI = vqxml::canonicalizationURI(canonicalization != 0 ? canonicalization : 1);

        if (m_document == nullptr) {
            m_document = m_domImpl->createDocument(XMLPlatformUtils::fgMemoryManager);
            m_signatureElement = m_signature->createBlankSignature(m_document, c14nURI, signatureURI);
            m_document->appendChild(m_signatureElement);
            return;
        }
        m_signatureElement = m_signature->createBlankSignature(m_document, c14nURI, signatureURI);
        placeSignature(m_signatureElement);
    });
}

// In a SOAP Header if there is one; else before an existing Signature, else before
// the tax invoice's TaxInvoiceDocument, else at the end of the root element.
void VQXML_XMLSecurity::placeSignature(DOMElement* signature) {
    DOMElement* root = m_document->getDocumentElement();
    if (root == nullptr)
        throw VQXML_XSECException(VQXML_ERR_PARSE);
    if (DOMNode* header = findSOAPHeaderNode(root)) {
        header->appendChild(signature);
        return;
    }
    for (const XMLCh* anchor : {u"Signature", u"TaxInvoiceDocument"}) {
        if (DOMNode* before = findNode(m_document, anchor)) {
            root->insertBefore(signature, before);
            return;
        }
    }
    root->appendChild(signature);
}

int VQXML_XMLSecurity::XMLDSIG_createReference(char* uri, int digestSelector, int canonicalizationSelector,
                                               char* xpath) {
    return vqxml::guarded(*this, "XMLDSIG_createReference > ", [&] {
        requireTemplate(VQXML_ERR_DSIG_NO_SIGNATURE);
        if (!vqxml::canonicalizationSelector(canonicalizationSelector, m_refCanonMethod))
            throw VQXML_XSECException(VQXML_ERR_DSIG_C14N_SELECTOR);
        if (!vqxml::digestSelector(digestSelector, m_refHashMethod))
            throw VQXML_XSECException(VQXML_ERR_DSIG_DIGEST_SELECTOR);
        appendReference(referenceURI(uri).c_str(), xpath);
    });
}

DSIGReference* VQXML_XMLSecurity::appendReference(const XMLCh* uri, const char* xpath) {
    const XMLCh* digestURI = vqxml::digestMethodURI(m_refHashMethod);
    if (digestURI == nullptr)
        throw VQXML_XSECException(VQXML_ERR_DSIG_DIGEST_SELECTOR, "That digest algorithm is not available");
    DSIGReference* reference = m_signature->createReference(uri, digestURI);
    if (m_refCanonMethod != 0)
        reference->appendCanonicalizationTransform(vqxml::canonicalizationURI(m_refCanonMethod));
    if (xpath != nullptr) {
        DSIGTransformXPath* transform = reference->appendXPathTransform(xpath);
        // The XPath engine resolves only prefixes declared on the XPath element.
        if (!m_ebXml)
            transform->setNamespace("ds", "http://www.w3.org/2000/09/xmldsig#");
    }
    return reference;
}

int VQXML_XMLSecurity::XMLDSIG_appendObject(char* id, char* content, int len) {
    return vqxml::guarded(*this, "XMLDSIG_appendObject > ", [&] {
        requireTemplate(VQXML_ERR_DSIG_NO_SIGNATURE);
        if (isBlank(content))
            throw VQXML_XSECException(VQXML_ERR_DSIG_NO_OBJECT);
        DSIGObject* object = m_signature->appendObject();
        if (isBlank(id))
            throw VQXML_XSECException(VQXML_ERR_DSIG_NO_OBJECT_ID);
        if (id[0] == '#')
            throw VQXML_XSECException(VQXML_ERR_DSIG_OBJECT_ID_HASH);
        object->setId(vqxml::XMLT(id).c_str());

        DOMDocument* parsed = nullptr;
        const int errors = setXMLDocument(content, len, &parsed);
        if (errors != 0 || parsed == nullptr || parsed->getDocumentElement() == nullptr) {
            if (parsed != nullptr)
                parsed->release();
            const std::string text(content, len > 0 ? static_cast<size_t>(len) : std::strlen(content));
            const std::string encoding = vqxml::declaredEncoding(m_document);
            object->appendChild(m_document->createTextNode(vqxml::XMLT(encoding.c_str(), text.c_str()).c_str()));
            return;
        }
        try {
            checkDocumentEncoding();
            auto* content = static_cast<DOMElement*>(m_document->importNode(parsed->getDocumentElement(), true));
            object->appendChild(content);
            vqxml::declareNamespaces(content);
            object->appendChild(m_document->createTextNode(u"\n"));
        } catch (...) {
            parsed->release();
            throw;
        }
        parsed->release();
    });
}

int VQXML_XMLSecurity::XMLDSIG_setKeyName(char* name) {
    return vqxml::guarded(*this, "XMLDSIG_setKeyName > ", [&] {
        if (name == nullptr || name[0] == '\0')
            throw VQXML_XSECException(VQXML_ERR_DSIG_NO_KEY_NAME);
        requireTemplate(VQXML_ERR_DSIG_NO_SIGNATURE);
        const std::string encoding = vqxml::declaredEncoding(m_document);
        m_signature->appendKeyName(vqxml::XMLT(encoding.c_str(), name).c_str(), false);
    });
}

int VQXML_XMLSecurity::XMLDSIG_sign() {
    return vqxml::guarded(*this, "XMLDSIG_sign > ", [&] {
        requireTemplate(VQXML_ERR_DSIG_NO_SIGNATURE);
        processAttachment(true);
        vqxml::signSignature(*m_signature, m_signatureElement, m_signingKey);
        storeResultDocument();
    });
}
