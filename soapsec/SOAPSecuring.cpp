// Securing an envelope: loading it and signing it.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGTransformXPath.hpp>

#include "engine/EngineLifecycle.hpp"
#include "core/ErrorFrame.hpp"
#include "core/Transcode.hpp"
#include "dsig/AlgorithmCodes.hpp"
#include "engine/Base64.hpp"
#include "engine/SignerKeys.hpp"
#include "engine/VQTKCryptoKeyKCDSA.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "soapsec/wssec/VQXML_WSSecSecurity.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {


bool startsWith(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

vqxml::XString referenceURI(const char* uri) {
    if (uri[0] == '\0' || std::strcmp(uri, " ") == 0)
        return vqxml::XString();
    if (uri[0] == '#' || startsWith(uri, "http:") || startsWith(uri, "file:"))
        return vqxml::XMLT(uri);
    return u"#" + vqxml::XMLT(uri);
}

}  // namespace

VQXML_WSSecSecurity& VQXML_XMLSecurity::requireWSSecurity() const {
    if (m_wsSecurity == nullptr || m_document == nullptr ||
        (m_wsSecurity->getDocument() != nullptr && m_wsSecurity->getDocument() != m_document))
        throw VQXML_XSECException(VQXML_ERR_SOAP_NO_DOCUMENT, "Load an envelope with SetSOAPDocument or SetSOAPSecXMLDocument first");
    return *m_wsSecurity;
}

int VQXML_XMLSecurity::SOAPSEC_setSOAPDocument(char* xml, int len) {
    return vqxml::guarded(*this, "SOAPSEC_setSOAPDocument > ", [&] {
        loadAfresh([&] {
            if (xml == nullptr || xml[0] == '\0')
                throw VQXML_XSECException(VQXML_ERR_SOAP_NO_DOCUMENT);
            try {
                loadDocument(xml, len);
            } catch (const VQXML_XSECException& e) {
                throw VQXML_XSECException(e.getCode() == VQXML_ERR_PARSE ? VQXML_ERR_SOAP_NO_HEADER : e.getCode());
            }
            if (findSOAPHeaderNode(m_document->getDocumentElement()) == nullptr)
                throw VQXML_XSECException(VQXML_ERR_SOAP_NO_HEADER);
            m_wsSecurity = g_provider->newWSSecSecurity();
        });
    });
}

int VQXML_XMLSecurity::SOAPSEC_setSignatureAlg(int signatureAlg, int canonAlg) {
    return vqxml::guarded(*this, "SOAPSEC_setSignatureAlg > ", [&] {
        vqxml::SignatureCodes codes{};
        if (!vqxml::signatureSelector(signatureAlg, codes))
            throw VQXML_XSECException(VQXML_ERR_SOAP_SIGNATURE_SELECTOR);
        m_signatureMethod = codes.signatureMethod;
        int canonicalization = 0;
        if (!vqxml::soapCanonicalizationSelector(canonAlg, canonicalization))
            throw VQXML_XSECException(VQXML_ERR_SOAP_C14N_SELECTOR);
        requireWSSecurity().createBlankSignature(m_document, canonicalization, m_signatureMethod, codes.hashMethod);
        m_hashMethod = codes.hashMethod;
    });
}

int VQXML_XMLSecurity::SOAPSEC_createReference(char* uri, int digestAlg, int canonAlg, char* xpath) {
    return vqxml::guarded(*this, "SOAPSEC_createReference > ", [&] {
        int canonicalization = 0;
        if (!vqxml::canonicalizationSelector(canonAlg, canonicalization))
            throw VQXML_XSECException(VQXML_ERR_SOAP_C14N_SELECTOR);
        int digest = 0;
        if (!vqxml::digestSelector(digestAlg, digest))
            throw VQXML_XSECException(VQXML_ERR_SOAP_DIGEST_SELECTOR);
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        DSIGReference* reference = uri == nullptr ? engine.createReference(nullptr, digest, nullptr)
                                                  : engine.createReference(referenceURI(uri).c_str(), digest, nullptr);
        if (canonicalization != 0)
            reference->appendCanonicalizationTransform(vqxml::canonicalizationURI(canonicalization));
        if (xpath != nullptr)
            reference->appendXPathTransform(xpath)->setNamespace("ds", "http://www.w3.org/2000/09/xmldsig#");
    });
}

int VQXML_XMLSecurity::SOAPSEC_setSignCertAndKey(unsigned char* cert, int certLen, unsigned char* key, int keyLen) {
    return vqxml::guarded(*this, "SOAPSEC_setSignCertAndKey > ", [&] {
        if (!(cert != nullptr && certLen > 0) && !(key != nullptr && keyLen > 0))
            throw VQXML_XSECException(VQXML_ERR_SOAP_NO_KEY);
        VQXML_WSSecSecurity& engine = requireWSSecurity();
        std::string issuer, serial;
        std::vector<unsigned char> der;
        const auto take = [&](auto* signer) {
            engine.setSigningKey(signer);
            issuer = signer->issuerName();
            serial = signer->serialNumber();
            der = signer->certificateDER();
        };
        if (!vqxml::withSignerKey(m_signatureMethod, cert, certLen, key, keyLen, take))
            throw VQXML_XSECException(VQXML_ERR_SOAP_NOT_ASYMMETRIC);
        // Names come as UTF-8 from the key objects.
        if (m_appendIssuerSerial)
            engine.setX509IssuerSerial(vqxml::XMLT("UTF-8", issuer.c_str()).c_str(),
                                       vqxml::XMLT("UTF-8", serial.c_str()).c_str());
        else if (cert != nullptr && !der.empty())
            engine.setX509B64bst(vqxml::base64Encode(der).c_str());
    });
}

int VQXML_XMLSecurity::SOAPSEC_setHMACKey(unsigned char* key, unsigned int len) {
    return vqxml::guarded(*this, "SOAPSEC_setHMACKey > ", [&] {
        if (key == nullptr || key[0] == 0 || m_signatureMethod != 2)
            throw VQXML_XSECException(VQXML_ERR_SOAP_HMAC_KEY);
        requireWSSecurity().setSigningKey(createHMACKey(key, len));
    });
}

int VQXML_XMLSecurity::SOAPSEC_setSignKeyName(char* name) {
    return vqxml::guarded(*this, "SOAPSEC_setSignKeyName > ", [&] {
        if (name == nullptr || name[0] == '\0')
            throw VQXML_XSECException(VQXML_ERR_SOAP_NO_KEY_NAME);
        requireWSSecurity().setSignKeyName(vqxml::XMLT(vqxml::declaredEncoding(m_document).c_str(), name).c_str());
    });
}

int VQXML_XMLSecurity::SOAPSEC_sign() {
    return vqxml::guarded(*this, "SOAPSEC_sign > ", [&] {
        requireWSSecurity().sign();
        storeResultDocument();
        for (char** field : {&m_subjectName, &m_serialNumber, &m_issuer, &m_keyName}) {
            std::free(*field);
            *field = nullptr;
        }
        std::free(m_cert);
        m_cert = nullptr;
        m_appendIssuerSerial = false;
        m_appendSubjectName = false;
    });
}
