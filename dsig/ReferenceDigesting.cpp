#include "dsig/ReferenceDigesting.hpp"

#include <memory>
#include <string>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <xercesc/util/XMLUni.hpp>
#include <xsec/dsig/DSIGReference.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/Namespaces.hpp"
#include "core/ParseLimits.hpp"
#include "dsig/EngineXPath.hpp"
#include "dsig/IdResolution.hpp"
#include "dsig/NodeSelection.hpp"
#include "dsig/VerificationLimits.hpp"
#include "dsig/XPathSelection.hpp"
#include "engine/AlgorithmURIs.hpp"
#include "engine/Algorithms.hpp"
#include "engine/ReferenceDigest.hpp"
#include "engine/SameDocumentIds.hpp"
#include "engine/korean/Digest.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kEnveloped[] = u"http://www.w3.org/2000/09/xmldsig#enveloped-signature";
const XMLCh kXPath[] = u"http://www.w3.org/TR/1999/REC-xpath-19991116";

const DOMElement* dsigChild(const DOMElement* parent, const XMLCh* localName) {
    for (const DOMElement* e = parent != nullptr ? parent->getFirstElementChild() : nullptr; e != nullptr;
         e = e->getNextElementSibling())
        if (XMLString::equals(e->getLocalName(), localName) && XMLString::equals(e->getNamespaceURI(), kDsigNamespace))
            return e;
    return nullptr;
}

class Hash : public ByteSink {
public:
    explicit Hash(const EVP_MD* md) : m_ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
        if (!m_ctx || EVP_DigestInit_ex(m_ctx.get(), md, nullptr) != 1)
            throw XSECException(XSECException::InternalError, "The digest could not be started");
    }
    explicit Hash(korean::HashAlgorithm alg) : m_ctx(nullptr, &EVP_MD_CTX_free), m_korean(std::make_unique<korean::Digest>(alg)) {}

    void write(const char* bytes, std::size_t n) override {
        if (m_korean)
            m_korean->update(reinterpret_cast<const std::uint8_t*>(bytes), n);
        else if (EVP_DigestUpdate(m_ctx.get(), bytes, n) != 1)
            throw XSECException(XSECException::InternalError, "The digest failed");
    }

    std::vector<unsigned char> finish() {
        if (m_korean)
            return m_korean->finish();
        std::vector<unsigned char> out(EVP_MAX_MD_SIZE);
        unsigned int len = 0;
        if (EVP_DigestFinal_ex(m_ctx.get(), out.data(), &len) != 1)
            throw XSECException(XSECException::InternalError, "The digest failed");
        out.resize(len);
        return out;
    }

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> m_ctx;
    std::unique_ptr<korean::Digest> m_korean;
};

std::unique_ptr<Hash> hashFor(const XMLCh* uri) {
    if (const EVP_MD* md = openSslDigest(uri))
        return std::make_unique<Hash>(md);
    if (XMLString::equals(uri, uri::kHas160))
        return std::make_unique<Hash>(korean::HashAlgorithm::Has160);
    return nullptr;
}

class Octets : public ByteSink {
public:
    void write(const char* bytes, std::size_t n) override { text.append(bytes, n); }
    std::string text;
};

struct DocumentRelease {
    void operator()(DOMDocument* doc) const { doc->release(); }
};

// The data of a reference as it goes through the transforms: a node-set of a
// tree (its root, the URI's nodes and the filters applied since), or octets.
class Pipeline {
public:
    // nodesOnly: the node-set is wanted, never octets (see referenceNodeSet).
    Pipeline(const DOMElement* signature, OrphanForm form, bool nodesOnly = false)
        : m_signature(signature), m_form(form), m_nodesOnly(nodesOnly) {}

    // The URI's node-set; false for URIs this pipeline does not take.
    bool dereference(const XMLCh* uri, const DOMDocument* doc) {
        if (uri == nullptr)
            return false;
        if (*uri == 0)
            return startNodes(doc, doc, nullptr, false);
        if (XMLString::equals(uri, u"#xpointer(/)"))
            return startNodes(doc, doc, nullptr, true);
        const XString id = referencedId(uri);
        if (id.empty())
            return false;
        const DOMElement* target = elementWithId(doc, id.c_str());
        if (target == nullptr)
            throw XSECException(XSECException::IDNotFoundInDOMDoc,
                                (u"No single element carries the referenced Id " + id).c_str());
        return startNodes(doc, target, target, XMLString::startsWith(uri, u"#xpointer("));
    }

    // One transform; false when this pipeline does not take it.
    bool apply(const DOMElement* transform) {
        const XMLCh* algorithm = transform->getAttribute(u"Algorithm");
        if (XMLString::equals(algorithm, kEnveloped)) {
            // Only the tree the signature is in holds the signature.
            needNodes();
            if (m_doc != m_signature->getOwnerDocument())
                return false;
            addFilter(std::make_unique<ExcludedSubtree>(m_signature));
            return true;
        }
        if (XMLString::equals(algorithm, kXPath))
            return xpath(transform);
        CanonicalOptions how;
        if (!canonicalization(transform, how))
            return false;
        needNodes();
        m_holdsOctets = true;
        // C14N of a whole tree no transform has filtered parses back into the
        // same tree, as far as the transforms here can tell (the same elements,
        // attributes, text and processing instructions; comments only if kept;
        // under exclusive C14N, only the namespace declarations it writes, which
        // the tree is then seen through): such octets are written only if
        // nothing needs the tree again.
        if (m_root == m_doc && m_filters.empty() && (!how.exclusive || !m_view)) {
            m_deferred = how;
            return true;
        }
        if (m_nodesOnly)
            return true;  // the octets would write m_selection; only its nodes are asked about
        Octets octets;
        m_formsDiffer = canonicalize(m_root, m_selection, viewed(how), octets) || m_formsDiffer;
        m_octets = std::move(octets.text);
        return true;
    }

    std::vector<unsigned char> digest(Hash& hash) {
        if (m_deferred) {
            m_formsDiffer = canonicalize(m_root, m_selection, viewed(*m_deferred), hash) || m_formsDiffer;
        } else if (m_holdsOctets) {
            hash.write(m_octets.data(), m_octets.size());
        } else {
            CanonicalOptions how;
            how.comments = true;  // the node-set says whether comments are in it
            how.orphans = m_form;
            m_formsDiffer = canonicalize(m_root, m_selection, viewed(how), hash) || m_formsDiffer;
        }
        return hash.finish();
    }

    bool formsDiffer() const { return m_formsDiffer; }

    // Whether the node-set is of doc's own nodes.
    bool selectsIn(const DOMDocument* doc) const { return m_doc == doc && !m_parsedAgain; }

    // Whether every element, attribute, text and processing instruction of
    // subtree is selected (comments are not content). The walk enters the
    // ancestors first, as the canonicalizer does.
    bool holdsAll(const DOMElement* subtree) {
        std::vector<const DOMElement*> ancestors;
        for (const DOMNode* n = subtree->getParentNode(); n != nullptr && n->getNodeType() == DOMNode::ELEMENT_NODE;
             n = n->getParentNode())
            ancestors.push_back(static_cast<const DOMElement*>(n));
        for (auto it = ancestors.rbegin(); it != ancestors.rend(); ++it)
            m_selection.enter(*it);
        const bool all = holdsSubtree(subtree);
        for (size_t i = 0; i < ancestors.size(); ++i)
            m_selection.leave();
        return all;
    }

private:
    bool holdsSubtree(const DOMElement* e) {
        m_selection.enter(e);
        bool all = m_selection.element();
        const DOMNamedNodeMap* attributes = e->getAttributes();
        for (XMLSize_t i = 0; all && attributes != nullptr && i < attributes->getLength(); ++i) {
            const auto* a = static_cast<const DOMAttr*>(attributes->item(i));
            all = XMLString::equals(a->getNamespaceURI(), XMLUni::fgXMLNSURIName) || m_selection.attribute(a);
        }
        for (const DOMNode* n = e->getFirstChild(); all && n != nullptr; n = n->getNextSibling()) {
            const short type = n->getNodeType();
            if (type == DOMNode::ELEMENT_NODE)
                all = holdsSubtree(static_cast<const DOMElement*>(n));
            else if (type != DOMNode::COMMENT_NODE)
                all = m_selection.leaf(n);
        }
        m_selection.leave();
        return all;
    }

    CanonicalOptions viewed(CanonicalOptions how) const {
        how.exclusiveView = m_view;
        return how;
    }

    bool startNodes(const DOMDocument* doc, const DOMNode* root, const DOMElement* apex, bool comments) {
        m_doc = doc;
        m_root = root;
        m_comments = comments;
        m_base = std::make_unique<SubtreeSelection>(apex, comments);
        m_selection.add(m_base.get());
        return true;
    }

    void addFilter(std::unique_ptr<NodeSelection> filter) {
        m_selection.add(filter.get());
        m_filters.push_back(std::move(filter));
    }

    // Octets a node-set transform needs are parsed into a tree of their own.
    void needNodes() {
        if (!m_holdsOctets)
            return;
        m_holdsOctets = false;
        m_selection = Intersection();
        if (m_deferred) {
            const bool comments = m_comments && m_deferred->comments;
            if (m_deferred->exclusive)
                m_view = m_deferred->inclusivePrefixes;
            m_deferred.reset();
            startNodes(m_doc, m_doc, nullptr, comments);
            return;
        }
        if (m_nodesOnly) {
            m_parsedAgain = true;  // nodes of another tree than the document
            return;
        }
        DOMDocument* parsed = nullptr;
        const int errors = parseBounded(m_octets.data(), m_octets.size(), &parsed);
        std::unique_ptr<DOMDocument, DocumentRelease> owned(parsed);
        if (errors != 0 || parsed == nullptr || parsed->getDocumentElement() == nullptr)
            throw XSECException(XSECException::TransformError,
                                "The octets of a transform do not parse into the nodes the next transform needs");
        m_octets.clear();
        m_filters.clear();
        m_view.reset();
        startNodes(parsed, parsed, nullptr, true);
        m_parsed.push_back(std::move(owned));
    }

    // An expression beyond the linear subset is evaluated by the engine, its cost
    // checked first.
    bool xpath(const DOMElement* transform) {
        const DOMElement* expression = dsigChild(transform, u"XPath");
        if (expression == nullptr)
            return false;
        auto filter = xpath::compile(XString(expression->getTextContent()), [expression](const XString& prefix) {
            const XMLCh* uri = expression->lookupNamespaceURI(prefix.c_str());
            return uri != nullptr ? std::optional<XString>(uri) : std::nullopt;
        });
        needNodes();
        if (!filter) {
            checkEngineXPathCost(expression, m_doc);
            addFilter(std::make_unique<EngineXPathSelection>(expression, m_doc));
            return true;
        }
        addFilter(std::make_unique<XPathSelection>(*filter, m_doc));
        m_compiled.push_back(std::move(filter));
        return true;
    }

    bool canonicalization(const DOMElement* transform, CanonicalOptions& how) const {
        const XMLCh* algorithm = transform->getAttribute(u"Algorithm");
        how.orphans = m_form;
        CanonicalizationChoice choice;
        if (!canonicalizationChoice(algorithm, choice))
            return false;
        how.exclusive = choice.exclusive;
        how.comments = choice.comments;
        how.version11 = choice.version11;
        for (const DOMElement* e = transform->getFirstElementChild(); e != nullptr; e = e->getNextElementSibling()) {
            if (!how.exclusive || !XMLString::equals(e->getLocalName(), u"InclusiveNamespaces") ||
                !XMLString::equals(e->getNamespaceURI(), kExcC14nNamespace))
                return false;
            for (XString& prefix : prefixListOf(e->getAttribute(u"PrefixList")))
                how.inclusivePrefixes.push_back(std::move(prefix));
        }
        return true;
    }

    const DOMElement* m_signature;
    OrphanForm m_form;
    bool m_nodesOnly;
    bool m_parsedAgain = false;
    const DOMDocument* m_doc = nullptr;
    const DOMNode* m_root = nullptr;
    std::unique_ptr<SubtreeSelection> m_base;
    std::vector<std::unique_ptr<NodeSelection>> m_filters;
    std::vector<std::unique_ptr<xpath::Filter>> m_compiled;
    Intersection m_selection;
    bool m_comments = false;                   // whether the URI's node-set keeps comments
    std::string m_octets;
    bool m_holdsOctets = false;
    std::optional<CanonicalOptions> m_deferred;  // octets not written yet (see apply)
    std::optional<std::vector<XString>> m_view;  // the tree as an exclusive C14N skipped over would have it
    bool m_formsDiffer = false;
    std::vector<std::unique_ptr<DOMDocument, DocumentRelease>> m_parsed;
};

// The ds:XPath elements of a reference's transforms.
std::vector<DOMElement*> xpathElements(DOMElement* reference) {
    std::vector<DOMElement*> out;
    const DOMElement* transforms = dsigChild(reference, u"Transforms");
    for (const DOMElement* t = transforms != nullptr ? transforms->getFirstElementChild() : nullptr; t != nullptr;
         t = t->getNextElementSibling())
        if (const DOMElement* xpath = dsigChild(t, u"XPath"))
            out.push_back(const_cast<DOMElement*>(xpath));
    return out;
}

class PipelineNodeSet : public ReferenceNodeSet {
public:
    explicit PipelineNodeSet(std::unique_ptr<Pipeline> pipeline) : m_pipeline(std::move(pipeline)) {}
    bool holdsAll(const DOMElement* subtree) override { return m_pipeline->holdsAll(subtree); }

private:
    std::unique_ptr<Pipeline> m_pipeline;
};

// The URI's node-set through the transforms; false when the pipeline does not
// take the reference.
bool run(Pipeline& pipeline, const DOMElement* reference) {
    const DOMAttr* uri = reference->getAttributeNode(u"URI");
    if (uri == nullptr || !pipeline.dereference(uri->getValue(), reference->getOwnerDocument()))
        return false;
    const DOMElement* transforms = dsigChild(reference, u"Transforms");
    for (const DOMElement* t = transforms != nullptr ? transforms->getFirstElementChild() : nullptr; t != nullptr;
         t = t->getNextElementSibling()) {
        if (!XMLString::equals(t->getLocalName(), u"Transform") || !XMLString::equals(t->getNamespaceURI(), kDsigNamespace))
            return false;
        if (!pipeline.apply(t))
            return false;
    }
    return true;
}

}  // namespace

const EVP_MD* openSslDigest(const XMLCh* uri) {
    const Algorithm* digest = algorithmByURI(AlgorithmKind::DIGEST, uri);
    return digest != nullptr ? shaDigest(digest->methodCode) : nullptr;
}

std::unique_ptr<ReferenceNodeSet> referenceNodeSet(const DOMElement* reference, const DOMElement* signature) {
    auto pipeline = std::make_unique<Pipeline>(signature, OrphanForm::Santuario, true);
    if (!run(*pipeline, reference) || !pipeline->selectsIn(reference->getOwnerDocument()))
        return nullptr;
    return std::make_unique<PipelineNodeSet>(std::move(pipeline));
}

std::optional<ReferenceDigest> digestReference(const DOMElement* reference, const DOMElement* signature,
                                               OrphanForm form) {
    const DOMElement* method = dsigChild(reference, u"DigestMethod");
    std::unique_ptr<Hash> hash = method != nullptr ? hashFor(method->getAttribute(u"Algorithm")) : nullptr;
    Pipeline pipeline(signature, form);
    if (!hash || !run(pipeline, reference))
        return std::nullopt;
    ReferenceDigest out;
    out.value = pipeline.digest(*hash);
    out.formsDiffer = pipeline.formsDiffer();
    return out;
}

ReferenceMatch matchReferenceDigest(const DSIGReference& reference, DOMElement* element, const DOMElement* signature) {
    std::optional<ReferenceDigest> ours = digestReference(element, signature, OrphanForm::Santuario);
    if (!ours) {
        checkEngineXPathCost(element);
        const XPathContextDeclared declared(xpathElements(element));
        return referenceDigestMatches(&reference) ? ReferenceMatch::Plain : ReferenceMatch::None;
    }
    unsigned char stated[EVP_MAX_MD_SIZE];
    const unsigned int statedLen = reference.readHash(stated, sizeof stated);
    const auto matches = [&](const std::optional<ReferenceDigest>& d) {
        return d && d->value.size() == statedLen && CRYPTO_memcmp(d->value.data(), stated, statedLen) == 0;
    };
    if (matches(ours))
        return ours->formsDiffer ? ReferenceMatch::SantuarioForm : ReferenceMatch::Plain;
    if (ours->formsDiffer && matches(digestReference(element, signature, OrphanForm::Literal)))
        return ReferenceMatch::LiteralForm;
    return ReferenceMatch::None;
}

std::vector<DOMElement*> referenceElements(const DOMElement* signature) {
    std::vector<DOMElement*> out;
    const DOMElement* signedInfo = dsigChild(signature, u"SignedInfo");
    for (DOMElement* e = signedInfo != nullptr ? signedInfo->getFirstElementChild() : nullptr; e != nullptr;
         e = e->getNextElementSibling())
        if (XMLString::equals(e->getLocalName(), u"Reference") && XMLString::equals(e->getNamespaceURI(), kDsigNamespace))
            out.push_back(e);
    return out;
}

}  // namespace vqxml
