#include "core/adapter/DomWriter.hpp"

#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "core/adapter/Upstream.hpp"
#include "core/Utf8Output.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kEmpty[] = {0};
const XMLCh kXml[] = u"xml";

const XMLCh* orEmpty(const XMLCh* text) {
    return text != nullptr ? text : kEmpty;
}

template <class Out>
class Writer {
public:
    explicit Writer(Out& out) : m_out(out) {}

    // Depth first without recursion: documents may nest deeply.
    bool write(const DOMNode* root) {
        const DOMNode* node = root;
        for (;;) {
            if (!open(node))
                return false;
            if (hasChildren(node)) {
                node = node->getFirstChild();
                continue;
            }
            while (node != root && node->getNextSibling() == nullptr) {
                node = node->getParentNode();
                close(node);
            }
            if (node == root)
                return true;
            node = node->getNextSibling();
        }
    }

private:
    struct Binding {
        const XMLCh* prefix;  // empty for the default namespace
        const XMLCh* uri;     // empty: no default namespace
    };

    static bool hasChildren(const DOMNode* node) {
        const DOMNode::NodeType type = node->getNodeType();
        return (type == DOMNode::ELEMENT_NODE || type == DOMNode::DOCUMENT_NODE) && node->getFirstChild() != nullptr;
    }

    bool open(const DOMNode* node) {
        switch (node->getNodeType()) {
        case DOMNode::DOCUMENT_NODE:
            declaration(static_cast<const DOMDocument*>(node));
            return true;
        case DOMNode::ELEMENT_NODE:
            return startTag(static_cast<const DOMElement*>(node));
        case DOMNode::TEXT_NODE:
            return text(node->getNodeValue(), false);
        case DOMNode::CDATA_SECTION_NODE:
            return cdata(node->getNodeValue());
        case DOMNode::COMMENT_NODE:
            m_out += "<!--";
            if (!utf8(node->getNodeValue()))
                return false;
            m_out += "-->";
            return true;
        case DOMNode::PROCESSING_INSTRUCTION_NODE:
            return processingInstruction(static_cast<const DOMProcessingInstruction*>(node));
        default:
            return false;
        }
    }

    void close(const DOMNode* node) {
        if (node->getNodeType() != DOMNode::ELEMENT_NODE)
            return;
        m_out += "</";
        utf8(node->getNodeName());
        m_out += '>';
        m_bindings.resize(m_scopes.back());
        m_scopes.pop_back();
    }

    void declaration(const DOMDocument* doc) {
        m_out += "<?xml version=\"";
        const XMLCh* version = doc->getXmlVersion();
        if (version != nullptr && *version != 0)
            utf8(version);
        else
            m_out += "1.0";
        m_out += "\" encoding=\"UTF-8\" standalone=\"";
        m_out += doc->getXmlStandalone() ? "yes" : "no";
        m_out += "\" ?>";
    }

    bool startTag(const DOMElement* element) {
        const XMLCh* uri = orEmpty(element->getNamespaceURI());
        const XMLCh* prefix = orEmpty(element->getPrefix());
        if (element->getLocalName() == nullptr)
            return false;
        m_scopes.push_back(m_bindings.size());
        m_out += '<';
        if (!utf8(element->getNodeName()))
            return false;
        if (*uri != 0 || *prefix == 0)
            declareIfUnbound(prefix, uri);
        const DOMNamedNodeMap* attributes = element->getAttributes();
        const XMLSize_t count = attributes != nullptr ? attributes->getLength() : 0;
        for (XMLSize_t i = 0; i < count; ++i) {
            if (!attribute(static_cast<const DOMAttr*>(attributes->item(i))))
                return false;
        }
        if (element->getFirstChild() == nullptr) {
            m_out += "/>";
            m_bindings.resize(m_scopes.back());
            m_scopes.pop_back();
        } else {
            m_out += '>';
        }
        return true;
    }

    bool attribute(const DOMAttr* attribute) {
        if (!attribute->getSpecified())
            return false;
        const XMLCh* uri = attribute->getNamespaceURI();
        if (XMLString::equals(uri, XMLUni::fgXMLNSURIName))
            return namespaceDeclaration(attribute);
        if (uri == nullptr && attribute->getLocalName() == nullptr &&
            XMLString::startsWith(attribute->getName(), XMLUni::fgXMLNSString))
            return false;
        if (uri != nullptr && *uri != 0) {
            const XMLCh* prefix = attribute->getPrefix();
            if (prefix == nullptr || *prefix == 0)
                return false;
            if (!XMLString::equals(prefix, kXml))
                declareIfUnbound(prefix, uri);
        }
        m_out += ' ';
        if (!utf8(attribute->getName()))
            return false;
        m_out += "=\"";
        if (!text(attribute->getValue(), true))
            return false;
        m_out += '"';
        return true;
    }

    // A declaration the element already got by fix-up is not written twice; one
    // that contradicts it is left to Xerces.
    bool namespaceDeclaration(const DOMAttr* declaration) {
        const XMLCh* prefix = declaration->getPrefix() == nullptr ? kEmpty : declaration->getLocalName();
        const XMLCh* uri = orEmpty(declaration->getValue());
        for (std::size_t i = m_scopes.back(); i < m_bindings.size(); ++i)
            if (XMLString::equals(m_bindings[i].prefix, prefix))
                return XMLString::equals(m_bindings[i].uri, uri);
        m_out += ' ';
        if (!utf8(declaration->getName()))
            return false;
        m_out += "=\"";
        if (!text(uri, true))
            return false;
        m_out += '"';
        m_bindings.push_back({prefix, uri});
        return true;
    }

    const XMLCh* boundURI(const XMLCh* prefix) const {
        for (auto it = m_bindings.rbegin(); it != m_bindings.rend(); ++it)
            if (XMLString::equals(it->prefix, prefix))
                return it->uri;
        return kEmpty;
    }

    void declareIfUnbound(const XMLCh* prefix, const XMLCh* uri) {
        if (XMLString::equals(boundURI(prefix), uri))
            return;
        m_out += *prefix == 0 ? " xmlns" : " xmlns:";
        utf8(prefix);
        m_out += "=\"";
        text(uri, true);
        m_out += '"';
        m_bindings.push_back({prefix, uri});
    }

    bool processingInstruction(const DOMProcessingInstruction* pi) {
        m_out += "<?";
        if (!utf8(pi->getTarget()))
            return false;
        const XMLCh* data = pi->getData();
        if (data != nullptr && *data != 0) {
            m_out += ' ';
            if (!utf8(data))
                return false;
        }
        m_out += "?>";
        return true;
    }

    // A "]]>" inside ends one section and starts the next, as Xerces splits it.
    bool cdata(const XMLCh* data) {
        m_out += "<![CDATA[";
        const XMLCh end[] = u"]]>";
        const XMLCh* at = orEmpty(data);
        for (int found; (found = XMLString::patternMatch(at, end)) >= 0; at += found + 3) {
            if (!utf8(at, static_cast<XMLSize_t>(found)))
                return false;
            m_out += "]]]]><![CDATA[>";
        }
        if (!utf8(at))
            return false;
        m_out += "]]>";
        return true;
    }

    // Character data with Xerces' escapes: in text &, <, > and carriage return;
    // in attribute values &, <, the quote, tab, line feed and carriage return.
    bool text(const XMLCh* value, bool inAttribute) {
        const XMLCh* text = orEmpty(value);
        return appendEscapedUtf8(text, XMLString::stringLen(text), m_out, inAttribute);
    }

    bool utf8(const XMLCh* text) {
        return utf8(orEmpty(text), XMLString::stringLen(orEmpty(text)));
    }

    bool utf8(const XMLCh* text, XMLSize_t len) {
        return appendUtf8(text, len, m_out);
    }

    Out& m_out;
    std::vector<Binding> m_bindings;
    std::vector<std::size_t> m_scopes;  // size of m_bindings at each open element
};

}  // namespace

bool writeDom(const DOMNode* node, std::string& out) {
    return node != nullptr && Writer<std::string>(out).write(node);
}

bool writeDom(const DOMNode* node, GrowingBuffer& out) {
    return node != nullptr && Writer<GrowingBuffer>(out).write(node);
}

}  // namespace vqxml
