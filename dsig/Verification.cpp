// Loading a signed document and checking its signature.
#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGObject.hpp>
#include <xsec/dsig/DSIGSignature.hpp>
#include <xsec/enc/XSECCryptoKey.hpp>
#include <xsec/framework/XSECProvider.hpp>

#include "core/ErrorFrame.hpp"
#include "core/Transcode.hpp"
#include "dsig/AlgorithmCodes.hpp"
#include "dsig/IdResolution.hpp"
#include "dsig/KeyBinding.hpp"
#include "dsig/Verifier.hpp"
#include "dsig/VerifiedCoverage.hpp"
#include "engine/EngineLifecycle.hpp"
#include "engine/KeyInfoGuard.hpp"
#include "engine/VQXMLURIResolver.hpp"

XERCES_CPP_NAMESPACE_USE

int VQXML_XMLSecurity::XMLDSIG_setSignXMLDocument(char* xml, int len) {
    return vqxml::guarded(*this, "XMLDSIG_setSignXMLDocument > ", [&] {
        loadAfresh([&] {
            if (xml == nullptr || len <= 0 || xml[0] == '\0')
                throw VQXML_XSECException(VQXML_ERR_DSIG_NO_SIGNED_DOCUMENT);
            loadDocument(xml, len);
            m_signature = g_provider->newSignatureFromDOM(m_document);
            vqxml::installURIResolver(*m_signature, m_allowExternalReferences);
            vqxml::enableIdAttributes(m_signature);
            // What the engine would follow, fetch or run as it loads is refused first.
            m_signatureElement = static_cast<DOMElement*>(findDSIGNode(m_document, u"Signature"));
            if (m_signatureElement != nullptr)
                vqxml::checkKeyInformation(m_signatureElement);
            m_signature->load();
            const vqxml::SignatureCodes codes = vqxml::signatureCodesOf(m_signature->getAlgorithmURI());
            m_signatureMethod = codes.signatureMethod;
            m_hashMethod = codes.hashMethod;
            if (!m_signature->getKeyInfoList()->isEmpty())
                getKeyInfoListData(m_signature->getKeyInfoList());
        });
    });
}

int VQXML_XMLSecurity::XMLDSIG_verify() {
    return vqxml::guarded(*this, "XMLDSIG_verify > ", [&] {
        requireSignature();
        m_canonicalReading = VQXML_READING_PLAIN;
        processAttachment(false);
        m_canonicalReading = vqxml::verifySignature(*m_signature, m_signatureElement, [this] { return verificationKey(); });
        vqxml::requireCoveredContent(m_signatureElement);
        storeVerifiedContent();
    });
}

// A secret the caller set (an HMAC key), or else the key the key information
// carries, all of whose items agree (the signature then owns it).
XSECCryptoKey* VQXML_XMLSecurity::verificationKey() {
    const vqxml::KeyBinding binding(m_signature->getKeyInfoList(), nullptr);
    if (m_signingKey != nullptr && m_signingKey->getKeyType() == XSECCryptoKey::KEY_HMAC) {
        binding.requireNoPublicKey();
        return m_signingKey;
    }
    XSECCryptoKey* key = binding.newKey();
    if (key == nullptr)
        throw XSECException(XSECException::SigVfyError, "No key to verify the signature with");
    setSigningKey(key);
    return key;
}

// An enveloping signature yields the first element its first Object carries; any
// other yields the document without its first Signature and without the other
// Signatures its references left out.
void VQXML_XMLSecurity::storeVerifiedContent() {
    vqxml::removeUncoveredSignatures(m_signatureElement);
    DOMElement* root = m_document->getDocumentElement();
    if (XMLString::equals(root->getLocalName(), u"Signature")) {
        if (m_signature->getObjectLength() == 0)
            return;
        DSIGObject* object = m_signature->getObjectItem(0);
        object->load();
        std::free(m_xmlDocument);
        m_xmlDocument = nullptr;
        m_xmlDocumentLength = 0;
        DOMNode* child = object->getElement()->getFirstChild();
        while (child != nullptr && child->getNodeType() != DOMNode::ELEMENT_NODE)
            child = child->getNextSibling();
        if (child != nullptr)
            m_xmlDocumentLength = XMLDocument2char(m_domImpl, child, &m_xmlDocument);
        return;
    }
    // Removed, not released: the loaded signature object still refers to it.
    if (DOMNode* parent = m_signatureElement->getParentNode())
        parent->removeChild(m_signatureElement);
    storeResultDocument();
}

void VQXML_XMLSecurity::XMLDSIG_allowExternalReferences(bool allow) {
    m_allowExternalReferences = allow;
}
