#include "dsig/EnvelopedReferenceCheck.hpp"

#include <cctype>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <xercesc/dom/DOM.hpp>
#include <xsec/canon/XSECC14n20010315.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/dsig/DSIGTransformC14n.hpp>
#include <xsec/dsig/DSIGTransformList.hpp>
#include <xsec/dsig/DSIGTransformXPath.hpp>

#include "core/Namespaces.hpp"
#include "core/Transcode.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kC14n[] = u"http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
const XMLCh kExcC14n[] = u"http://www.w3.org/2001/10/xml-exc-c14n#";

struct DigestChoice {
    const XMLCh* uri;
    const EVP_MD* (*md)();
};

const DigestChoice kDigests[] = {
    {u"http://www.w3.org/2000/09/xmldsig#sha1", &EVP_sha1},
    {u"http://www.w3.org/2001/04/xmldsig-more#sha224", &EVP_sha224},
    {u"http://www.w3.org/2001/04/xmlenc#sha256", &EVP_sha256},
    {u"http://www.w3.org/2001/04/xmldsig-more#sha384", &EVP_sha384},
    {u"http://www.w3.org/2001/04/xmlenc#sha512", &EVP_sha512},
};

const EVP_MD* digestFor(const XMLCh* uri) {
    for (const DigestChoice& d : kDigests)
        if (XMLString::equals(d.uri, uri))
            return d.md();
    return nullptr;
}

std::string trimmed(const char* text) {
    std::string s = text != nullptr ? text : "";
    const size_t first = s.find_first_not_of(" \t\r\n");
    const size_t last = s.find_last_not_of(" \t\r\n");
    return first == std::string::npos ? std::string() : s.substr(first, last - first + 1);
}

// The prefix P of "not(ancestor-or-self::P:Signature)", or "" if the expression
// is anything else.
std::string envelopedPrefix(const std::string& expr) {
    static const std::string head = "not(ancestor-or-self::";
    static const std::string tail = ":Signature)";
    if (expr.size() <= head.size() + tail.size() || expr.compare(0, head.size(), head) != 0 ||
        expr.compare(expr.size() - tail.size(), tail.size(), tail) != 0)
        return std::string();
    const std::string prefix = expr.substr(head.size(), expr.size() - head.size() - tail.size());
    for (char c : prefix)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '-' && c != '.')
            return std::string();
    return prefix;
}

bool bindsToDsig(const DSIGTransformXPath* xpath, const std::string& prefix) {
    const DOMNamedNodeMap* namespaces = xpath->getNamespaces();
    const XString name = u"xmlns:" + toXString(prefix);
    const DOMNode* decl = namespaces != nullptr ? namespaces->getNamedItem(name.c_str()) : nullptr;
    return decl != nullptr && XMLString::equals(decl->getNodeValue(), kDsigNamespace);
}

// Whether the transforms are the filter and at most a C14N of either kind without
// comments or prefix lists; sets exclusive for the latter.
bool isEnvelopedShape(const DSIGTransformList* transforms, bool& exclusive) {
    exclusive = false;
    if (transforms == nullptr || transforms->getSize() < 1 || transforms->getSize() > 2)
        return false;
    const auto* xpath = dynamic_cast<const DSIGTransformXPath*>(transforms->item(0));
    if (xpath == nullptr)
        return false;
    const std::string prefix = envelopedPrefix(trimmed(xpath->getExpression()));
    if (prefix.empty() || !bindsToDsig(xpath, prefix))
        return false;
    if (transforms->getSize() == 1)
        return true;
    const auto* c14n = dynamic_cast<const DSIGTransformC14n*>(transforms->item(1));
    if (c14n == nullptr)
        return false;
    const XMLCh* method = c14n->getCanonicalizationMethod();
    exclusive = XMLString::equals(method, kExcC14n);
    if (exclusive)
        return c14n->getPrefixList() == nullptr;
    return XMLString::equals(method, kC14n);
}

// Takes every outermost ds:Signature element out of the document and puts each
// back where it was when destroyed.
class SignaturesSetAside {
public:
    explicit SignaturesSetAside(DOMDocument* doc) { collect(doc->getDocumentElement()); }
    ~SignaturesSetAside() {
        for (auto it = m_removed.rbegin(); it != m_removed.rend(); ++it)
            it->parent->insertBefore(it->node, it->next);
    }
    SignaturesSetAside(const SignaturesSetAside&) = delete;
    SignaturesSetAside& operator=(const SignaturesSetAside&) = delete;

private:
    struct Place {
        DOMNode* node;
        DOMNode* parent;
        DOMNode* next;
    };

    void collect(DOMElement* root) {
        std::vector<DOMElement*> found;
        for (DOMElement* e = root; e != nullptr;) {
            if (XMLString::equals(e->getLocalName(), u"Signature") &&
                XMLString::equals(e->getNamespaceURI(), kDsigNamespace)) {
                found.push_back(e);
                e = nextOutside(e, root);
                continue;
            }
            DOMElement* child = e->getFirstElementChild();
            e = child != nullptr ? child : nextOutside(e, root);
        }
        for (DOMElement* e : found) {
            Place place{e, e->getParentNode(), e->getNextSibling()};
            if (place.parent == nullptr)
                continue;
            place.parent->removeChild(e);
            m_removed.push_back(place);
        }
    }

    // The next element in document order that is not inside e.
    static DOMElement* nextOutside(DOMElement* e, DOMElement* root) {
        for (DOMNode* n = e; n != nullptr && n != root; n = n->getParentNode()) {
            if (DOMElement* sibling = static_cast<DOMElement*>(n)->getNextElementSibling())
                return sibling;
        }
        return nullptr;
    }

    std::vector<Place> m_removed;
};

}  // namespace

std::optional<std::vector<unsigned char>> envelopedDigest(const DSIGReference* reference, DOMDocument* doc) {
    bool exclusive = false;
    const XMLCh* uri = reference->getURI();
    const EVP_MD* md = digestFor(reference->getAlgorithmURI());
    if (uri == nullptr || uri[0] != 0 || md == nullptr || reference->isManifest() || doc == nullptr ||
        doc->getDocumentElement() == nullptr || !isEnvelopedShape(reference->getTransforms(), exclusive))
        return std::nullopt;

    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!ctx || EVP_DigestInit_ex(ctx.get(), md, nullptr) != 1)
        return std::nullopt;
    {
        SignaturesSetAside setAside(doc);
        XSECC14n20010315 canon(doc);
        canon.setCommentsProcessing(false);
        if (exclusive)
            canon.setExclusive();
        unsigned char chunk[16384];
        for (XMLSize_t n; (n = canon.outputBuffer(chunk, sizeof chunk)) > 0;)
            EVP_DigestUpdate(ctx.get(), chunk, n);
    }
    std::vector<unsigned char> digest(EVP_MAX_MD_SIZE);
    unsigned int len = 0;
    EVP_DigestFinal_ex(ctx.get(), digest.data(), &len);
    digest.resize(len);
    return digest;
}

ReferenceCheck checkEnvelopedReference(const DSIGReference* reference, DOMDocument* doc) {
    const std::optional<std::vector<unsigned char>> computed = envelopedDigest(reference, doc);
    if (!computed)
        return ReferenceCheck::NotThisShape;
    unsigned char stated[EVP_MAX_MD_SIZE];
    const unsigned int statedLen = reference->readHash(stated, sizeof stated);
    return statedLen == computed->size() && CRYPTO_memcmp(stated, computed->data(), statedLen) == 0
               ? ReferenceCheck::Valid
               : ReferenceCheck::Invalid;
}

}  // namespace vqxml
