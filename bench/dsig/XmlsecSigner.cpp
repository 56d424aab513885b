#include "dsig/XmlsecSigner.hpp"

#include <functional>
#include <mutex>
#include <stdexcept>
#include <utility>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <openssl/x509.h>
#include <xmlsec/base64.h>
#include <xmlsec/crypto.h>
#include <xmlsec/openssl/evp.h>
#include <xmlsec/templates.h>
#include <xmlsec/xmldsig.h>
#include <xmlsec/xmlsec.h>
#include <xmlsec/xmltree.h>

namespace xmlsecbench {

xmlDocPtr parse(const std::string& text) {
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_HUGE);
    if (doc == nullptr)
        throw std::runtime_error("libxml2 could not parse the document");
    return doc;
}

std::string dump(xmlDocPtr doc) {
    xmlChar* out = nullptr;
    int len = 0;
    xmlDocDumpMemory(doc, &out, &len);
    std::string text(reinterpret_cast<char*>(out), static_cast<size_t>(len));
    xmlFree(out);
    return text;
}

namespace {

xmlNodePtr childNamed(xmlNodePtr parent, const char* name) {
    for (xmlNodePtr n = parent->children; n != nullptr; n = n->next)
        if (n->type == XML_ELEMENT_NODE && xmlStrEqual(n->name, BAD_CAST name))
            return n;
    return nullptr;
}

// Runs work on a signature context that owns key; frees both.
bool runContext(xmlSecKeyPtr key, const std::function<bool(xmlSecDSigCtxPtr)>& work) {
    xmlSecDSigCtxPtr ctx = xmlSecDSigCtxCreate(nullptr);
    bool ok = false;
    if (ctx != nullptr && key != nullptr) {
        ctx->signKey = key;
        key = nullptr;
        ok = work(ctx);
    }
    if (key != nullptr)
        xmlSecKeyDestroy(key);
    if (ctx != nullptr)
        xmlSecDSigCtxDestroy(ctx);
    return ok;
}

}  // namespace

void start() {
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        if (xmlSecInit() < 0 || xmlSecCryptoAppInit(nullptr) < 0 || xmlSecCryptoInit() < 0)
            throw std::runtime_error("xmlsec could not start");
    });
}

SignatureKey::SignatureKey(xmlSecKeyPtr key, std::string certificate)
    : m_key(key), m_certificate(std::move(certificate)) {
    if (m_key == nullptr)
        throw std::runtime_error("xmlsec could not load the key");
}

SignatureKey::SignatureKey(SignatureKey&& other) noexcept
    : m_key(other.m_key), m_certificate(std::move(other.m_certificate)) {
    other.m_key = nullptr;
}

SignatureKey::~SignatureKey() {
    if (m_key != nullptr)
        xmlSecKeyDestroy(m_key);
}

SignatureKey SignatureKey::signer(const std::string& keyDer, const std::string& certDer) {
    start();
    xmlChar* base64 = xmlSecBase64Encode(bytes(certDer), certDer.size(), 0);
    const std::string certificate = base64 != nullptr ? reinterpret_cast<const char*>(base64) : "";
    xmlFree(base64);
    if (certificate.empty())
        throw std::runtime_error("xmlsec could not encode the certificate");
    return SignatureKey(
        xmlSecCryptoAppKeyLoadMemory(bytes(keyDer), keyDer.size(), xmlSecKeyDataFormatDer, nullptr, nullptr, nullptr),
        certificate);
}

SignatureKey SignatureKey::verifier(const std::string& certDer) {
    start();
    const unsigned char* der = bytes(certDer);
    X509* cert = d2i_X509(nullptr, &der, static_cast<long>(certDer.size()));
    EVP_PKEY* publicKey = cert != nullptr ? X509_get_pubkey(cert) : nullptr;
    X509_free(cert);
    xmlSecKeyDataPtr value = publicKey != nullptr ? xmlSecOpenSSLEvpKeyAdopt(publicKey) : nullptr;
    if (value == nullptr)
        EVP_PKEY_free(publicKey);
    xmlSecKeyPtr key = value != nullptr ? xmlSecKeyCreate() : nullptr;
    if (key == nullptr || xmlSecKeySetValue(key, value) < 0) {
        xmlSecKeyDataDestroy(value);
        if (key != nullptr)
            xmlSecKeyDestroy(key);
        key = nullptr;
    }
    return SignatureKey(key, "");
}

xmlSecKeyPtr SignatureKey::copy() const {
    return xmlSecKeyDuplicate(m_key);
}

std::string signEnveloped(const std::string& text, const Recipe& recipe, const SignatureKey& signer) {
    xmlDocPtr doc = parse(text);
    xmlNodePtr root = xmlDocGetRootElement(doc);
    xmlNodePtr sig = xmlSecTmplSignatureCreateNsPref(doc, recipe.signedInfoC14n, xmlSecTransformRsaSha256Id, nullptr,
                                                     BAD_CAST "ds");
    if (xmlNodePtr anchor = childNamed(root, "TaxInvoiceDocument"))
        xmlAddPrevSibling(anchor, sig);
    else
        xmlAddChild(root, sig);
    xmlNodePtr ref = xmlSecTmplSignatureAddReference(sig, xmlSecTransformSha256Id, nullptr, BAD_CAST "", nullptr);
    for (xmlSecTransformId id : recipe.transforms) {
        xmlNodePtr transform = xmlSecTmplReferenceAddTransform(ref, id);
        if (id == xmlSecTransformXPathId)
            xmlSecTmplTransformAddXPath(transform, BAD_CAST recipe.xpath.c_str(), nullptr);
    }
    // The key carries no certificate, so libxmlsec1 leaves this one as it is.
    xmlNodePtr cert =
        xmlSecTmplX509DataAddCertificate(xmlSecTmplKeyInfoAddX509Data(xmlSecTmplSignatureEnsureKeyInfo(sig, nullptr)));
    xmlNodeSetContent(cert, BAD_CAST signer.certificate().c_str());

    const bool ok = runContext(signer.copy(), [sig](xmlSecDSigCtxPtr ctx) { return xmlSecDSigCtxSign(ctx, sig) >= 0; });
    std::string out = ok ? dump(doc) : std::string();
    xmlFreeDoc(doc);
    if (!ok)
        throw std::runtime_error("xmlsec could not sign");
    return out;
}

bool verify(const std::string& text, const SignatureKey& verifier) {
    xmlDocPtr doc = parse(text);
    xmlNodePtr sig = xmlSecFindNode(xmlDocGetRootElement(doc), xmlSecNodeSignature, xmlSecDSigNs);
    const bool ok = sig != nullptr && runContext(verifier.copy(), [sig](xmlSecDSigCtxPtr ctx) {
        return xmlSecDSigCtxVerify(ctx, sig) >= 0 && ctx->status == xmlSecDSigStatusSucceeded;
    });
    xmlFreeDoc(doc);
    return ok;
}

}  // namespace xmlsecbench
