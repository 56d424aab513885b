#include "engine/XencPlaintext.hpp"

#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLUniDefs.hpp>

XERCES_CPP_NAMESPACE_USE

namespace vqxml::xenc {

namespace {

using XString = std::basic_string<XMLCh>;

const XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";
const XMLCh kXmlNamespace[] = u"http://www.w3.org/XML/1998/namespace";

XString text(const XMLCh* s) {
    return s != nullptr ? XString(s) : XString();
}

class Writer {
public:
    Writer(const DOMNode* context, korean::SecureBytes& out) : m_context(context), m_out(out) {}

    void node(const DOMNode* n) {
        switch (n->getNodeType()) {
        case DOMNode::ELEMENT_NODE:
            element(static_cast<const DOMElement*>(n));
            break;
        case DOMNode::TEXT_NODE:
            escaped(n->getNodeValue(), false);
            break;
        case DOMNode::CDATA_SECTION_NODE:
            cdata(n->getNodeValue());
            break;
        case DOMNode::COMMENT_NODE:
            raw("<!--");
            utf8(n->getNodeValue());
            raw("-->");
            break;
        case DOMNode::PROCESSING_INSTRUCTION_NODE:
            raw("<?");
            utf8(n->getNodeName());
            if (n->getNodeValue() != nullptr && *n->getNodeValue() != 0) {
                raw(" ");
                utf8(n->getNodeValue());
            }
            raw("?>");
            break;
        case DOMNode::ENTITY_REFERENCE_NODE:
            for (const DOMNode* c = n->getFirstChild(); c != nullptr; c = c->getNextSibling())
                node(c);
            break;
        default:
            break;
        }
    }

private:
    // The namespace prefix (empty: the default) stands for where the octets are read.
    XString inScope(const XString& prefix) const {
        for (auto it = m_declared.rbegin(); it != m_declared.rend(); ++it)
            if (it->first == prefix)
                return it->second;
        if (prefix == u"xml")
            return kXmlNamespace;
        if (m_context == nullptr || m_context->getNodeType() != DOMNode::ELEMENT_NODE)
            return XString();
        return text(m_context->lookupNamespaceURI(prefix.empty() ? nullptr : prefix.c_str()));
    }

    // Writes a declaration unless the binding already holds there.
    void bind(const XString& prefix, const XString& uri) {
        if (inScope(prefix) == uri)
            return;
        raw(prefix.empty() ? " xmlns=\"" : " xmlns:");
        if (!prefix.empty()) {
            utf8(prefix.c_str());
            raw("=\"");
        }
        escaped(uri.c_str(), true);
        raw("\"");
        m_declared.emplace_back(prefix, uri);
    }

    void element(const DOMElement* e) {
        const size_t mark = m_declared.size();
        raw("<");
        utf8(e->getNodeName());
        const DOMNamedNodeMap* attributes = e->getAttributes();
        const XMLSize_t count = attributes != nullptr ? attributes->getLength() : 0;
        for (XMLSize_t i = 0; i < count; ++i) {
            const DOMNode* a = attributes->item(i);
            if (XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace))
                bind(XMLString::equals(a->getLocalName(), u"xmlns") ? XString() : text(a->getLocalName()),
                     text(a->getNodeValue()));
        }
        bind(text(e->getPrefix()), text(e->getNamespaceURI()));
        for (XMLSize_t i = 0; i < count; ++i) {
            const DOMNode* a = attributes->item(i);
            if (XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace))
                continue;
            if (a->getPrefix() != nullptr && *a->getPrefix() != 0)
                bind(text(a->getPrefix()), text(a->getNamespaceURI()));
            raw(" ");
            utf8(a->getNodeName());
            raw("=\"");
            escaped(a->getNodeValue(), true);
            raw("\"");
        }
        if (e->getFirstChild() == nullptr) {
            raw("/>");
        } else {
            raw(">");
            for (const DOMNode* c = e->getFirstChild(); c != nullptr; c = c->getNextSibling())
                node(c);
            raw("</");
            utf8(e->getNodeName());
            raw(">");
        }
        m_declared.resize(mark);
    }

    void cdata(const XMLCh* s) {
        // "]]>" cannot stand inside a section: it is split over two.
        raw("<![CDATA[");
        for (const XMLCh* c = s; c != nullptr && *c != 0; ++c) {
            if (c[0] == u']' && c[1] == u']' && c[2] == u'>') {
                raw("]]]]><![CDATA[>");
                c += 2;
            } else {
                codePoint(c);
            }
        }
        raw("]]>");
    }

    // Canonical XML's escapes: in attribute values also '"' and the whitespace
    // that attribute-value normalisation would change.
    void escaped(const XMLCh* s, bool attribute) {
        for (const XMLCh* c = s; c != nullptr && *c != 0; ++c) {
            switch (*c) {
            case u'&': raw("&amp;"); break;
            case u'<': raw("&lt;"); break;
            case u'>': attribute ? raw(">") : raw("&gt;"); break;
            case u'"': attribute ? raw("&quot;") : raw("\""); break;
            case u'\t': attribute ? raw("&#x9;") : raw("\t"); break;
            case u'\n': attribute ? raw("&#xA;") : raw("\n"); break;
            case u'\r': raw("&#xD;"); break;
            default: codePoint(c);
            }
        }
    }

    void utf8(const XMLCh* s) {
        for (const XMLCh* c = s; c != nullptr && *c != 0; ++c)
            codePoint(c);
    }

    // Writes the character at *c (advancing c past a surrogate pair's first half).
    void codePoint(const XMLCh*& c) {
        char32_t cp = *c;
        if (cp >= 0xD800 && cp <= 0xDBFF && c[1] >= 0xDC00 && c[1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (c[1] - 0xDC00);
            ++c;
        }
        if (cp < 0x80) {
            m_out.push_back(static_cast<std::uint8_t>(cp));
        } else if (cp < 0x800) {
            m_out.push_back(static_cast<std::uint8_t>(0xC0 | (cp >> 6)));
            m_out.push_back(static_cast<std::uint8_t>(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            m_out.push_back(static_cast<std::uint8_t>(0xE0 | (cp >> 12)));
            m_out.push_back(static_cast<std::uint8_t>(0x80 | ((cp >> 6) & 0x3F)));
            m_out.push_back(static_cast<std::uint8_t>(0x80 | (cp & 0x3F)));
        } else {
            m_out.push_back(static_cast<std::uint8_t>(0xF0 | (cp >> 18)));
            m_out.push_back(static_cast<std::uint8_t>(0x80 | ((cp >> 12) & 0x3F)));
            m_out.push_back(static_cast<std::uint8_t>(0x80 | ((cp >> 6) & 0x3F)));
            m_out.push_back(static_cast<std::uint8_t>(0x80 | (cp & 0x3F)));
        }
    }

    void raw(const char* s) {
        while (*s != 0)
            m_out.push_back(static_cast<std::uint8_t>(*s++));
    }

    const DOMNode* m_context;
    korean::SecureBytes& m_out;
    std::vector<std::pair<XString, XString>> m_declared;
};

}  // namespace

void appendPlaintext(const DOMNode* node, const DOMNode* context, korean::SecureBytes& out) {
    Writer(context, out).node(node);
}

}  // namespace vqxml::xenc
