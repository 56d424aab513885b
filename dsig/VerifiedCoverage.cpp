#include "dsig/VerifiedCoverage.hpp"

#include <cstdlib>
#include <memory>
#include <vector>

#include "core/Namespaces.hpp"
#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "dsig/IdResolution.hpp"
#include "dsig/ReferenceDigesting.hpp"
#include "vqxml/vqxml.h"
#include "engine/SameDocumentIds.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {


bool isDsig(const DOMNode* node, const XMLCh* localName) {
    return node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE &&
           XMLString::equals(node->getLocalName(), localName) && XMLString::equals(node->getNamespaceURI(), kDsigNamespace);
}

// Whether outer is inner or one of its ancestors (the document holds everything).
bool holds(const DOMNode* outer, const DOMNode* inner) {
    for (const DOMNode* n = inner; n != nullptr; n = n->getParentNode())
        if (n == outer)
            return true;
    return false;
}

bool insideSignature(const DOMNode* node) {
    for (const DOMNode* n = node->getParentNode(); n != nullptr; n = n->getParentNode())
        if (isDsig(n, u"Signature"))
            return true;
    return false;
}

const DOMElement* firstDsigChild(const DOMElement* parent, const XMLCh* localName) {
    for (const DOMElement* e = parent->getFirstElementChild(); e != nullptr; e = e->getNextElementSibling())
        if (isDsig(e, localName))
            return e;
    return nullptr;
}

std::string utf8(const XMLCh* text) {
    char* bytes = transcodeOut(text != nullptr ? text : u"", "UTF-8");
    std::string out = bytes != nullptr ? bytes : "";
    std::free(bytes);
    return out;
}

bool sameName(const DOMElement* a, const DOMElement* b) {
    return XMLString::equals(a->getLocalName(), b->getLocalName()) &&
           XMLString::equals(a->getNamespaceURI(), b->getNamespaceURI());
}

std::string step(const DOMElement* e) {
    std::string out;
    if (e->getNamespaceURI() != nullptr && *e->getNamespaceURI() != 0)
        out = "{" + utf8(e->getNamespaceURI()) + "}";
    out += utf8(e->getLocalName());
    const DOMNode* parent = e->getParentNode();
    if (parent == nullptr || parent->getNodeType() != DOMNode::ELEMENT_NODE)
        return out;
    int position = 0;
    int namesakes = 0;
    for (const DOMElement* s = static_cast<const DOMElement*>(parent)->getFirstElementChild(); s != nullptr;
         s = s->getNextElementSibling()) {
        if (!sameName(s, e))
            continue;
        ++namesakes;
        if (s == e)
            position = namesakes;
    }
    return namesakes > 1 ? out + "[" + std::to_string(position) + "]" : out;
}

std::string path(const DOMElement* e) {
    std::vector<const DOMElement*> chain;
    for (const DOMNode* n = e; n != nullptr && n->getNodeType() == DOMNode::ELEMENT_NODE; n = n->getParentNode())
        chain.push_back(static_cast<const DOMElement*>(n));
    std::string out;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it)
        out += "/" + step(*it);
    return out;
}

// Whether some reference of signature resolved to the document or to an
// element holding subtree, and its node-set holds every node of subtree.
bool someReferenceHoldsAll(const DOMElement* signature, const DOMElement* subtree,
                           std::vector<std::unique_ptr<ReferenceNodeSet>>& cache) {
    const std::vector<DOMElement*> references = referenceElements(signature);
    cache.resize(references.size());
    for (size_t i = 0; i < references.size(); ++i) {
        const DOMNode* target = referenceTarget(references[i]);
        if (target == nullptr || !holds(target, subtree))
            continue;
        if (!cache[i])
            cache[i] = referenceNodeSet(references[i], signature);
        if (cache[i] && cache[i]->holdsAll(subtree))
            return true;
    }
    return false;
}

}  // namespace

const DOMNode* referenceTarget(const DOMElement* reference) {
    const DOMAttr* attr = reference->getAttributeNode(u"URI");
    if (attr == nullptr)
        return nullptr;
    const XMLCh* uri = attr->getValue();
    const DOMDocument* doc = reference->getOwnerDocument();
    if (*uri == 0 || XMLString::equals(uri, u"#xpointer(/)"))
        return doc;
    const XString id = referencedId(uri);
    return id.empty() ? nullptr : elementWithId(doc, id.c_str());
}

void requireCoveredContent(const DOMElement* signature) {
    const DOMDocument* doc = signature->getOwnerDocument();
    const DOMElement* root = doc->getDocumentElement();
    std::vector<const DOMNode*> targets;
    for (const DOMElement* reference : referenceElements(signature))
        if (const DOMNode* target = referenceTarget(reference))
            targets.push_back(target);
    if (root == signature) {
        const DOMElement* object = firstDsigChild(signature, u"Object");
        const DOMElement* content = object != nullptr ? object->getFirstElementChild() : nullptr;
        if (content == nullptr)
            return;
        for (const DOMNode* target : targets)
            if (holds(target, content))
                return;
        throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED,
                                  "No Reference covers the element of the first Object, which verification hands out");
    }
    bool documentCovered = false;
    for (const DOMNode* target : targets) {
        documentCovered = documentCovered || target == doc || target == root;
        if (target != doc && insideSignature(target))
            throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, "A Reference resolves to an element inside a Signature, which "
                                                    "is not in the document verification hands out");
    }
    if (!documentCovered)
        throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, "No Reference covers the document element: the document verification "
                                                "hands out would carry what the signature did not sign");
}

void removeUncoveredSignatures(const DOMElement* signature) {
    DOMDocument* doc = signature->getOwnerDocument();
    DOMNodeList* live = doc->getElementsByTagNameNS(kDsigNamespace, u"Signature");
    std::vector<DOMElement*> others;
    for (XMLSize_t i = 0; i < live->getLength(); ++i) {
        auto* other = static_cast<DOMElement*>(live->item(i));
        if (!holds(other, signature))
            others.push_back(other);
    }
    std::vector<std::unique_ptr<ReferenceNodeSet>> cache;
    std::vector<DOMElement*> removed;
    for (DOMElement* other : others) {
        bool gone = false;
        for (const DOMElement* r : removed)
            gone = gone || holds(r, other);
        if (gone || someReferenceHoldsAll(signature, other, cache))
            continue;
        other->getParentNode()->removeChild(other);
        removed.push_back(other);
    }
}

void requireCoveredBody(const DOMElement* signature, const DOMElement* body) {
    std::vector<std::unique_ptr<ReferenceNodeSet>> cache;
    if (body == nullptr || !someReferenceHoldsAll(signature, body, cache))
        throw VQXML_XSECException(VQXML_ERR_NOT_VERIFIED, "The signature does not cover the SOAP Body of the envelope");
}

std::string signedParts(const DOMElement* signature) {
    std::string out;
    for (const DOMElement* reference : referenceElements(signature)) {
        const DOMNode* target = referenceTarget(reference);
        if (target == nullptr)
            out += utf8(reference->getAttribute(u"URI"));
        else if (target->getNodeType() == DOMNode::DOCUMENT_NODE)
            out += "/";
        else
            out += path(static_cast<const DOMElement*>(target));
        out += "\n";
    }
    return out;
}

}  // namespace vqxml
