#include "dsig/XmlsecSigner.hpp"

#include <mutex>
#include <stdexcept>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <xmlsec/crypto.h>
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

}  // namespace

void start() {
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        if (xmlSecInit() < 0 || xmlSecCryptoAppInit(nullptr) < 0 || xmlSecCryptoInit() < 0)
            throw std::runtime_error("xmlsec could not start");
    });
}

std::string signEnveloped(const std::string& text, const std::string& keyDer, const std::string& certDer) {
    xmlDocPtr doc = parse(text);
    xmlNodePtr root = xmlDocGetRootElement(doc);
    xmlNodePtr sig = xmlSecTmplSignatureCreate(doc, xmlSecTransformExclC14NId, xmlSecTransformRsaSha256Id, nullptr);
    if (xmlNodePtr anchor = childNamed(root, "TaxInvoiceDocument"))
        xmlAddPrevSibling(anchor, sig);
    else
        xmlAddChild(root, sig);
    xmlNodePtr ref = xmlSecTmplSignatureAddReference(sig, xmlSecTransformSha256Id, nullptr, BAD_CAST "", nullptr);
    xmlNodePtr xpath = xmlSecTmplReferenceAddTransform(ref, xmlSecTransformXPathId);
    const xmlChar* namespaces[] = {BAD_CAST "ds", BAD_CAST "http://www.w3.org/2000/09/xmldsig#", nullptr};
    xmlSecTmplTransformAddXPath(xpath, BAD_CAST "not(ancestor-or-self::ds:Signature)", namespaces);
    xmlNodePtr x509 = xmlSecTmplKeyInfoAddX509Data(xmlSecTmplSignatureEnsureKeyInfo(sig, nullptr));
    xmlSecTmplX509DataAddCertificate(x509);

    xmlSecDSigCtxPtr ctx = xmlSecDSigCtxCreate(nullptr);
    ctx->signKey = xmlSecCryptoAppKeyLoadMemory(bytes(keyDer), keyDer.size(), xmlSecKeyDataFormatDer, nullptr,
                                                nullptr, nullptr);
    if (ctx->signKey == nullptr ||
        xmlSecCryptoAppKeyCertLoadMemory(ctx->signKey, bytes(certDer), certDer.size(), xmlSecKeyDataFormatDer) < 0 ||
        xmlSecDSigCtxSign(ctx, sig) < 0) {
        xmlSecDSigCtxDestroy(ctx);
        xmlFreeDoc(doc);
        throw std::runtime_error("xmlsec could not sign");
    }
    std::string out = dump(doc);
    xmlSecDSigCtxDestroy(ctx);
    xmlFreeDoc(doc);
    return out;
}

bool verify(const std::string& text, const std::string& certDer) {
    xmlDocPtr doc = parse(text);
    xmlNodePtr sig = xmlSecFindNode(xmlDocGetRootElement(doc), xmlSecNodeSignature, xmlSecDSigNs);
    xmlSecDSigCtxPtr ctx = xmlSecDSigCtxCreate(nullptr);
    ctx->signKey = xmlSecCryptoAppKeyLoadMemory(bytes(certDer), certDer.size(), xmlSecKeyDataFormatCertDer, nullptr,
                                                nullptr, nullptr);
    bool ok = sig != nullptr && ctx->signKey != nullptr && xmlSecDSigCtxVerify(ctx, sig) >= 0 &&
              ctx->status == xmlSecDSigStatusSucceeded;
    xmlSecDSigCtxDestroy(ctx);
    xmlFreeDoc(doc);
    return ok;
}

}  // namespace xmlsecbench
