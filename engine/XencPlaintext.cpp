#include "engine/XencPlaintext.hpp"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLUniDefs.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/Utf8Output.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml::xenc {

namespace {

const XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";
const XMLCh kXmlNamespace[] = u"http://www.w3.org/XML/1998/namespace";

const XMLCh* orEmpty(const XMLCh* s) {
    return s != nullptr ? s : u"";
}

class Writer {
public:
    Writer(const DOMNode* context, korean::PagedBytes& out) : m_context(context), m_out(out) {}

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
    // What the prefix ("": the default) stands for around the octets, outside
    // what they declare themselves.
    const XMLCh* outside(const XMLCh* prefix) const {
        if (XMLString::equals(prefix, u"xml"))
            return kXmlNamespace;
        if (m_context == nullptr || m_context->getNodeType() != DOMNode::ELEMENT_NODE)
            return u"";
        return orEmpty(m_context->lookupNamespaceURI(*prefix != 0 ? prefix : nullptr));
    }

    // Writes a declaration unless the binding already holds there.
    void bind(const XMLCh* prefix, const XMLCh* uri) {
        bool declaredHere = false;
        for (auto it = m_declared.rbegin(); it != m_declared.rend() && !declaredHere; ++it) {
            if (!XMLString::equals(it->first, prefix))
                continue;
            declaredHere = true;
            if (XMLString::equals(it->second, uri)) {
                // The same text: keeping the element's own (interned) string lets
                // the next elements of the namespace match by address.
                it->second = uri;
                return;
            }
        }
        if (!declaredHere && XMLString::equals(outside(prefix), uri))
            return;
        raw(*prefix == 0 ? " xmlns=\"" : " xmlns:");
        if (*prefix != 0) {
            utf8(prefix);
            raw("=\"");
        }
        escaped(uri, true);
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
                bind(XMLString::equals(a->getLocalName(), u"xmlns") ? u"" : orEmpty(a->getLocalName()),
                     orEmpty(a->getNodeValue()));
        }
        bind(orEmpty(e->getPrefix()), orEmpty(e->getNamespaceURI()));
        for (XMLSize_t i = 0; i < count; ++i) {
            const DOMNode* a = attributes->item(i);
            if (XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace))
                continue;
            if (a->getPrefix() != nullptr && *a->getPrefix() != 0)
                bind(a->getPrefix(), orEmpty(a->getNamespaceURI()));
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
        const XMLCh* from = s;
        for (const XMLCh* c = s; c != nullptr && *c != 0; ++c) {
            if (c[0] == u']' && c[1] == u']' && c[2] == u'>') {
                whole(from, static_cast<std::size_t>(c - from));
                raw("]]]]><![CDATA[>");
                c += 2;
                from = c + 1;
            }
        }
        if (from != nullptr)
            whole(from, XMLString::stringLen(from));
        raw("]]>");
    }

    // Canonical XML's escapes: in attribute values also '"' and the whitespace
    // that attribute-value normalisation would change.
    void escaped(const XMLCh* s, bool attribute) {
        if (s != nullptr && !appendEscapedUtf8(s, XMLString::stringLen(s), m_out, attribute))
            halfAPair();
    }

    void utf8(const XMLCh* s) {
        if (s != nullptr)
            whole(s, XMLString::stringLen(s));
    }

    // Text the DOM holds is whole UTF-16 unless a program put half a surrogate
    // pair into it; such text has no octets to encrypt.
    void whole(const XMLCh* s, std::size_t n) {
        if (!appendUtf8(s, n, m_out))
            halfAPair();
    }

    [[noreturn]] static void halfAPair() {
        throw XSECException(XSECException::CipherError, "The content holds half a surrogate pair");
    }

    void raw(const char* s) {
        const std::size_t at = m_out.size();
        const std::size_t n = std::strlen(s);
        m_out.resize(at + n);
        std::memcpy(&m_out[at], s, n);
    }

    const DOMNode* m_context;
    korean::PagedBytes& m_out;
    std::vector<std::pair<const XMLCh*, const XMLCh*>> m_declared;  // prefix, namespace; the DOM's strings
};

}  // namespace

void appendPlaintext(const DOMNode* node, const DOMNode* context, korean::PagedBytes& out) {
    Writer(context, out).node(node);
}

}  // namespace vqxml::xenc
