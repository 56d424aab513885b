#include "engine/KeyInfoGuard.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/ParseLimits.hpp"
#include "core/Transcode.hpp"
#include "core/adapter/Upstream.hpp"
#include "engine/SameDocumentIds.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

[[noreturn]] void refuse(const char* why) {
    throw XSECException(XSECException::UnsupportedFunction, why);
}

bool isElement(const DOMElement* element, const XMLCh* ns, const XMLCh* localName) {
    return XMLString::equals(element->getLocalName(), localName) && XMLString::equals(element->getNamespaceURI(), ns);
}

bool namesAManifest(const DOMElement* reference) {
    return XMLString::equals(reference->getAttributeNS(nullptr, u"Type"), DSIGConstants::s_unicodeStrURIMANIFEST);
}

// The elements of a subtree (its top included) that the walk looks at, found in one pass.
struct Pointers {
    std::vector<const DOMElement*> retrievalMethods, manifestReferences, cipherReferences, x509Data, transforms,
        names;

    explicit Pointers(const DOMElement* top) {
        const DOMNode* node = top;
        while (node != nullptr) {
            if (node->getNodeType() == DOMNode::ELEMENT_NODE)
                sort(static_cast<const DOMElement*>(node));
            if (node->getFirstChild() != nullptr) {
                node = node->getFirstChild();
                continue;
            }
            while (node != top && node->getNextSibling() == nullptr)
                node = node->getParentNode();
            node = node != top ? node->getNextSibling() : nullptr;
        }
    }

private:
    void sort(const DOMElement* e) {
        const XMLCh* dsig = DSIGConstants::s_unicodeStrURIDSIG;
        if (isElement(e, dsig, u"RetrievalMethod"))
            retrievalMethods.push_back(e);
        else if (isElement(e, dsig, u"Reference") && namesAManifest(e))
            manifestReferences.push_back(e);
        else if (isElement(e, dsig, u"X509Data"))
            x509Data.push_back(e);
        else if (isElement(e, dsig, u"Transform"))
            transforms.push_back(e);
        else if (isElement(e, dsig, u"X509SubjectName") || isElement(e, dsig, u"X509IssuerName") ||
                 isElement(e, dsig, u"KeyName"))
            names.push_back(e);
        else if (isElement(e, DSIGConstants::s_unicodeStrURIXENC, u"CipherReference"))
            cipherReferences.push_back(e);
    }
};

size_t dsigChildren(const DOMNode* parent, const XMLCh* localName) {
    size_t n = 0;
    for (const DOMNode* c = parent->getFirstChild(); c != nullptr; c = c->getNextSibling())
        n += c->getNodeType() == DOMNode::ELEMENT_NODE &&
             isElement(static_cast<const DOMElement*>(c), DSIGConstants::s_unicodeStrURIDSIG, localName);
    return n;
}

// Wherever a transform stands, the engine may run it: when verifying, or when
// signing the loaded signature again (Manifests included).
void checkTransform(const DOMElement* transform) {
    const XMLCh* algorithm = transform->getAttributeNS(nullptr, u"Algorithm");
    if (XMLString::equals(algorithm, DSIGConstants::s_unicodeStrURIXSLT))
        refuse("XSLT transforms are not run");
    if (XMLString::equals(algorithm, DSIGConstants::s_unicodeStrURIBASE64) && transform->getNextElementSibling())
        refuse("A transform after a base64 transform is not run: the engine would parse the octets");
}

// The engine reads these names in time that grows with the square of their length.
void checkNameLength(const DOMElement* name) {
    std::size_t length = 0;
    for (const DOMNode* c = name->getFirstChild(); c != nullptr; c = c->getNextSibling())
        if (c->getNodeType() == DOMNode::TEXT_NODE || c->getNodeType() == DOMNode::CDATA_SECTION_NODE)
            length += XMLString::stringLen(c->getNodeValue());
    if (length > kMaxNameLength)
        refuse(("The " + toEucKr(name->getLocalName()) + " is longer than " + std::to_string(kMaxNameLength) +
                " characters: it is not read")
                   .c_str());
}

// An EncryptedKey's names choose among recipients and are read from the
// document (xenc/RecipientNames.hpp); everywhere else one name of each kind is
// what the signer's key binding reads and checks.
bool namesARecipient(const DOMElement* data) {
    const DOMNode* keyInfo = data->getParentNode();
    const DOMNode* holder = keyInfo != nullptr ? keyInfo->getParentNode() : nullptr;
    return holder != nullptr && holder->getNodeType() == DOMNode::ELEMENT_NODE &&
           isElement(static_cast<const DOMElement*>(keyInfo), DSIGConstants::s_unicodeStrURIDSIG, u"KeyInfo") &&
           isElement(static_cast<const DOMElement*>(holder), DSIGConstants::s_unicodeStrURIXENC, u"EncryptedKey");
}

void checkX509Data(const DOMElement* data) {
    if ((dsigChildren(data, u"X509SubjectName") > 1 || dsigChildren(data, u"X509IssuerSerial") > 1 ||
         dsigChildren(data, u"X509SKI") > 1) &&
        !namesARecipient(data))
        refuse("An X509Data with several X509SubjectName, X509IssuerSerial or X509SKI elements is read only in an "
               "EncryptedKey");
}

bool namesTheDocument(const XMLCh* uri) {
    return uri[0] == 0 || XMLString::equals(uri, u"#xpointer(/)");
}

// The Id a same-document URI names, or nothing when it names the whole document;
// any other URI (or none) is refused with what.
XString sameDocumentId(const DOMElement* pointer, const char* what) {
    const DOMAttr* uri = pointer->getAttributeNodeNS(nullptr, u"URI");
    if (uri == nullptr)
        refuse(what);
    if (namesTheDocument(uri->getValue()))
        return {};
    XString id = referencedId(uri->getValue());
    if (id.empty())
        refuse(what);
    return id;
}

// Transforms would run as the engine loads or decrypts.
void refuseChildren(const DOMElement* element, const char* why) {
    if (element->getFirstElementChild() != nullptr)
        refuse(why);
}

void checkCipherReference(const DOMElement* reference) {
    refuseChildren(reference, "A CipherReference with Transforms is not followed");
    sameDocumentId(reference, "A CipherReference outside the document is not followed");
}

const DOMElement* targetOf(const DOMElement* pointer, const XString& id) {
    if (id.empty())
        return nullptr;
    const std::vector<const DOMElement*> found = elementsWithId(pointer->getOwnerDocument(), id.c_str());
    if (found.size() > 1)
        refuse("A RetrievalMethod or Manifest reference names an Id that more than one element carries");
    return found.empty() ? nullptr : found[0];
}

const DOMElement* retrievedBy(const DOMElement* method) {
    refuseChildren(method, "A RetrievalMethod with Transforms is not followed");
    return targetOf(method, sameDocumentId(method, "A RetrievalMethod outside the document is not followed"));
}

// Other URIs are the resolver's to refuse, as for any Reference.
const DOMElement* manifestOf(const DOMElement* reference) {
    const DOMAttr* uri = reference->getAttributeNodeNS(nullptr, u"URI");
    return uri != nullptr ? targetOf(reference, referencedId(uri->getValue())) : nullptr;
}

// What the engine would follow from one element, depth first.
class Walk {
public:
    void visit(const DOMElement* element) {
        if (std::find(m_path.begin(), m_path.end(), element) != m_path.end())
            refuse("A RetrievalMethod or Manifest reference leads back to itself");
        const Pointers pointers(element);
        for (const DOMElement* data : pointers.x509Data)
            checkX509Data(data);
        for (const DOMElement* name : pointers.names)
            checkNameLength(name);
        for (const DOMElement* reference : pointers.cipherReferences)
            checkCipherReference(reference);
        m_path.push_back(element);
        for (const DOMElement* method : pointers.retrievalMethods)
            follow(retrievedBy(method));
        for (const DOMElement* reference : pointers.manifestReferences)
            follow(manifestOf(reference));
        m_path.pop_back();
        for (const DOMElement* transform : pointers.transforms)
            checkTransform(transform);
    }

private:
    void follow(const DOMElement* target) {
        if (++m_followed > kMaxRetrievals)
            refuse("RetrievalMethods or Manifest references lead too far");
        if (target != nullptr)
            visit(target);
    }

    std::vector<const DOMElement*> m_path;
    unsigned m_followed = 0;
};

}  // namespace

void checkKeyInformation(const DOMElement* element) {
    Walk().visit(element);
}

}  // namespace vqxml
