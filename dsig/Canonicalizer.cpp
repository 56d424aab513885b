#include "dsig/Canonicalizer.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "core/Namespaces.hpp"
#include "core/Utf8Output.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const XMLCh kEmpty[] = u"";
const XMLCh kXml[] = u"xml";
const XMLCh kXmlnsName[] = u"xmlns";

const XMLCh* orEmpty(const XMLCh* s) {
    return s != nullptr ? s : kEmpty;
}

bool same(const XMLCh* a, const XMLCh* b) {
    return XMLString::equals(orEmpty(a), orEmpty(b));
}

// A map from prefixes (or names) to values whose changes are undone an element
// at a time. Keys are found by hash: an element may have hundreds of namespaces
// in scope, and every one of them is looked up at every element.
template <class V>
class ScopedMap {
public:
    void push() { m_marks.push_back({m_undo.size(), m_entries.size()}); }
    void pop() {
        const Mark mark = m_marks.back();
        m_marks.pop_back();
        for (; m_undo.size() > mark.undo; m_undo.pop_back())
            m_entries[m_undo.back().first].second = m_undo.back().second;
        for (size_t i = mark.size; i < m_entries.size(); ++i)
            m_index.erase(key(m_entries[i].first));
        m_entries.resize(mark.size);
    }
    V* find(const XMLCh* k) {
        const auto it = m_index.find(key(k));
        return it != m_index.end() ? &m_entries[it->second].second : nullptr;
    }
    void set(const XMLCh* k, const V& value) {
        const auto it = m_index.find(key(k));
        if (it == m_index.end()) {
            m_index.emplace(key(k), m_entries.size());
            m_entries.push_back({orEmpty(k), value});
            return;
        }
        const size_t i = it->second;
        if (!m_marks.empty() && i < m_marks.back().size)
            m_undo.push_back({i, m_entries[i].second});
        m_entries[i].second = value;
    }
    std::vector<std::pair<const XMLCh*, V>>& entries() { return m_entries; }

private:
    static std::u16string_view key(const XMLCh* k) { return std::u16string_view(orEmpty(k)); }
    struct Mark {
        size_t undo;
        size_t size;
    };
    std::vector<std::pair<const XMLCh*, V>> m_entries;
    std::unordered_map<std::u16string_view, size_t> m_index;
    std::vector<std::pair<size_t, V>> m_undo;
    std::vector<Mark> m_marks;
};

// What Santuario's inclusive canonicalizer knows of a prefix: the namespace it is
// bound to, whether that binding has been written where it is in force, and the
// namespace last written for the prefix.
struct Rendering {
    const XMLCh* uri = kEmpty;
    const XMLCh* lastRendered = nullptr;
    bool rendered = false;
    bool written = true;  // false only for the implicit empty default, which is never written
    bool present = true;
};

class RenderingTable {
public:
    RenderingTable() {
        Rendering implicitDefault;
        implicitDefault.lastRendered = kEmpty;
        implicitDefault.rendered = true;
        implicitDefault.written = false;
        m_map.set(kEmpty, implicitDefault);
    }
    void push() { m_map.push(); }
    void pop() { m_map.pop(); }

    // Binds prefix without writing it.
    void bind(const XMLCh* prefix, const XMLCh* uri) {
        const Rendering* old = current(prefix);
        if (old != nullptr && same(old->uri, uri))
            return;
        Rendering fresh;
        fresh.uri = uri;
        if (old != nullptr) {
            fresh.lastRendered = old->lastRendered;
            fresh.rendered = old->lastRendered != nullptr && same(old->lastRendered, uri);
        }
        m_map.set(prefix, fresh);
    }

    // Binds prefix and marks it written; whether it must be written here.
    bool bindAndRender(const XMLCh* prefix, const XMLCh* uri) {
        const Rendering* old = current(prefix);
        if (old != nullptr && same(old->uri, uri)) {
            if (old->rendered)
                return false;
            Rendering now = *old;
            now.rendered = true;
            now.lastRendered = uri;
            m_map.set(prefix, now);
            return now.written;
        }
        // A binding written here before is in force again without writing it.
        const bool writtenBefore = old != nullptr && old->lastRendered != nullptr && same(old->lastRendered, uri);
        Rendering fresh;
        fresh.uri = uri;
        fresh.lastRendered = uri;
        fresh.rendered = true;
        m_map.set(prefix, fresh);
        return !writtenBefore;
    }

    void unbind(const XMLCh* prefix) {
        if (current(prefix) != nullptr)
            m_map.set(prefix, Rendering{kEmpty, nullptr, false, true, false});
    }

    void unbindIfRendered(const XMLCh* prefix) {
        const Rendering* old = current(prefix);
        if (old != nullptr && old->rendered)
            unbind(prefix);
    }

    // The binding of prefix if it is still to be written; marks it written.
    const XMLCh* takeUnrendered(const XMLCh* prefix) {
        const Rendering* old = current(prefix);
        if (old == nullptr || old->rendered)
            return nullptr;
        Rendering now = *old;
        now.rendered = true;
        now.lastRendered = now.uri;
        m_map.set(prefix, now);
        return now.written ? now.uri : nullptr;
    }

    // Every binding of a non-empty namespace still to be written; marks them written.
    void takeAllUnrendered(std::vector<std::pair<const XMLCh*, const XMLCh*>>& out) {
        std::vector<const XMLCh*> prefixes;
        for (const auto& [prefix, r] : m_map.entries())
            if (r.present && !r.rendered && r.written && *r.uri != 0)
                prefixes.push_back(prefix);
        for (const XMLCh* prefix : prefixes)
            out.push_back({prefix, takeUnrendered(prefix)});
    }

private:
    const Rendering* current(const XMLCh* prefix) {
        const Rendering* r = m_map.find(prefix);
        return r != nullptr && r->present ? r : nullptr;
    }
    ScopedMap<Rendering> m_map;
};

using Declarations = std::vector<std::pair<const XMLCh*, const XMLCh*>>;

class Writer {
public:
    Writer(NodeSelection& selection, const CanonicalOptions& how, ByteSink& sink)
        : m_selection(selection), m_how(how), m_sink(sink) {}

    bool formsDiffer() const { return m_formsDiffer; }

    void run(const DOMNode* root) {
        if (root->getNodeType() == DOMNode::DOCUMENT_NODE) {
            document(static_cast<const DOMDocument*>(root));
        } else {
            std::vector<const DOMElement*> ancestors;
            for (const DOMNode* n = root->getParentNode(); n != nullptr && n->getNodeType() == DOMNode::ELEMENT_NODE;
                 n = n->getParentNode())
                ancestors.push_back(static_cast<const DOMElement*>(n));
            std::vector<bool> shown;
            for (auto it = ancestors.rbegin(); it != ancestors.rend(); ++it)
                shown.push_back(open(*it));
            element(static_cast<const DOMElement*>(root));
            for (const DOMElement* a : ancestors) {
                close(a, shown.back());
                shown.pop_back();
            }
        }
        m_sink.write(m_out.data(), m_out.size());
        m_out.clear();
    }

private:
    void document(const DOMDocument* doc) {
        bool afterRoot = false;
        for (const DOMNode* n = doc->getFirstChild(); n != nullptr; n = n->getNextSibling()) {
            const short type = n->getNodeType();
            if (type == DOMNode::ELEMENT_NODE) {
                element(static_cast<const DOMElement*>(n));
                afterRoot = true;
                continue;
            }
            if ((type != DOMNode::COMMENT_NODE || !m_how.comments) && type != DOMNode::PROCESSING_INSTRUCTION_NODE)
                continue;
            if (!m_selection.leaf(n))
                continue;
            if (afterRoot)
                m_out.push_back('\n');
            leaf(n);
            if (!afterRoot)
                m_out.push_back('\n');
        }
    }

    void element(const DOMElement* e) {
        const bool shown = open(e);
        for (const DOMNode* n = e->getFirstChild(); n != nullptr; n = n->getNextSibling()) {
            if (n->getNodeType() == DOMNode::ELEMENT_NODE)
                element(static_cast<const DOMElement*>(n));
            else if (m_selection.leaf(n))
                leaf(n);
        }
        close(e, shown);
    }

    void leaf(const DOMNode* n) {
        switch (n->getNodeType()) {
        case DOMNode::TEXT_NODE:
        case DOMNode::CDATA_SECTION_NODE:
            escaped(n->getNodeValue(), false);
            break;
        case DOMNode::COMMENT_NODE:
            if (m_how.comments) {
                m_out += "<!--";
                utf8(n->getNodeValue());
                m_out += "-->";
            }
            break;
        case DOMNode::PROCESSING_INSTRUCTION_NODE:
            m_out += "<?";
            utf8(n->getNodeName());
            if (n->getNodeValue() != nullptr && *n->getNodeValue() != 0) {
                m_out.push_back(' ');
                utf8(n->getNodeValue());
            }
            m_out += "?>";
            break;
        default:
            break;
        }
        flushIfFull();
    }

    void flushIfFull() {
        if (m_out.size() >= kFlushAt) {
            m_sink.write(m_out.data(), m_out.size());
            m_out.clear();
        }
    }

    // Enters e and writes its start tag, or its orphans when it is left out;
    // whether it is output.
    bool open(const DOMElement* e) {
        m_selection.enter(e);
        const bool shown = m_selection.element();
        m_inScope.push();
        m_rendering.push();
        m_lastWritten.push();
        m_pendingXml.push();
        m_omittedBases.push_back(m_omittedBases.empty() ? std::vector<const DOMAttr*>() : m_omittedBases.back());
        m_joinedBase.reset();

        m_declared.push();
        m_viewWritten.push();
        ScopedMap<const XMLCh*>& declared = m_how.exclusiveView ? m_declared : m_inScope;
        const DOMNamedNodeMap* attributes = e->getAttributes();
        const XMLSize_t count = attributes != nullptr ? attributes->getLength() : 0;
        std::vector<const DOMAttr*> plain;
        for (XMLSize_t i = 0; i < count; ++i) {
            const auto* a = static_cast<const DOMAttr*>(attributes->item(i));
            if (XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace))
                declared.set(XMLString::equals(a->getLocalName(), kXmlnsName) ? kEmpty : a->getLocalName(),
                             orEmpty(a->getValue()));
            else
                plain.push_back(a);
        }
        if (m_how.exclusiveView)
            declareAsExclusive(e, plain);
        std::vector<const DOMAttr*> written = attributesToWrite(e, shown, plain);
        Declarations declarations;
        if (m_how.exclusive)
            exclusiveNamespaces(e, shown, written, declarations);
        else if (m_how.orphans == OrphanForm::Santuario)
            santuarioNamespaces(shown, declarations);
        else
            literalNamespaces(shown, declarations);

        std::sort(declarations.begin(), declarations.end(), [](const auto& x, const auto& y) {
            return XMLString::compareString(x.first, y.first) < 0;
        });
        std::sort(written.begin(), written.end(), [](const DOMAttr* x, const DOMAttr* y) {
            const int byNamespace = XMLString::compareString(orEmpty(x->getNamespaceURI()), orEmpty(y->getNamespaceURI()));
            if (byNamespace != 0)
                return byNamespace < 0;
            return XMLString::compareString(localName(x), localName(y)) < 0;
        });
        if (shown) {
            m_out.push_back('<');
            utf8(e->getNodeName());
        }
        for (const auto& [prefix, uri] : declarations) {
            m_out += *prefix != 0 ? " xmlns:" : " xmlns";
            utf8(prefix);
            m_out += "=\"";
            escaped(uri, true);
            m_out.push_back('"');
        }
        for (const DOMAttr* a : written) {
            m_out.push_back(' ');
            utf8(a->getNodeName());
            m_out += "=\"";
            escaped(m_joinedBase && m_joinedBase->first == a ? m_joinedBase->second.c_str() : a->getValue(), true);
            m_out.push_back('"');
        }
        if (shown)
            m_out.push_back('>');
        return shown;
    }

    void close(const DOMElement* e, bool shown) {
        if (shown) {
            m_out += "</";
            utf8(e->getNodeName());
            m_out.push_back('>');
            flushIfFull();
        }
        m_viewWritten.pop();
        m_declared.pop();
        m_omittedBases.pop_back();
        m_pendingXml.pop();
        m_lastWritten.pop();
        m_rendering.pop();
        m_inScope.pop();
        m_selection.leave();
    }

    // The namespaces Exclusive C14N of the whole tree would declare on e (those
    // its name and attributes use, and the view's PrefixList, where they differ
    // from what it wrote above), as e's declarations.
    void declareAsExclusive(const DOMElement* e, const std::vector<const DOMAttr*>& attributes) {
        std::vector<const XMLCh*> utilized{orEmpty(e->getPrefix())};
        for (const DOMAttr* a : attributes)
            if (a->getPrefix() != nullptr && *a->getPrefix() != 0 && !XMLString::equals(a->getPrefix(), kXml))
                utilized.push_back(a->getPrefix());
        for (const XString& p : *m_how.exclusiveView)
            utilized.push_back(p.c_str());
        for (const XMLCh* prefix : utilized) {
            const XMLCh* const* bound = m_declared.find(prefix);
            const XMLCh* uri = bound != nullptr ? *bound : kEmpty;
            const XMLCh* const* before = m_viewWritten.find(prefix);
            const XMLCh* last = before != nullptr ? *before : kEmpty;
            if (same(last, uri) || (*prefix != 0 && *uri == 0))
                continue;
            m_viewWritten.set(prefix, uri);
            m_inScope.set(prefix, uri);
        }
    }

    static const XMLCh* localName(const DOMAttr* a) {
        return a->getLocalName() != nullptr ? a->getLocalName() : a->getNodeName();
    }

    // Attributes in the xml namespace of elements left out are inherited by the
    // next output element below them (inclusive canonicalization only).
    std::vector<const DOMAttr*> attributesToWrite(const DOMElement* e, bool shown,
                                                  const std::vector<const DOMAttr*>& plain) {
        const bool inclusive = !m_how.exclusive;
        const bool everyAttribute = inclusive && m_how.orphans == OrphanForm::Santuario;
        std::vector<const DOMAttr*> out;
        for (const DOMAttr* a : plain) {
            const bool xml = XMLString::equals(a->getNamespaceURI(), kXmlNamespace);
            const bool version11 = inclusive && m_how.version11;
            if (version11 && xml && !shown && XMLString::equals(localName(a), u"base")) {
                m_omittedBases.back().push_back(a);
                continue;
            }
            // Under 1.1 xml:id is an ordinary attribute, never inherited.
            if (inclusive && xml && !shown && !(version11 && XMLString::equals(localName(a), u"id"))) {
                m_pendingXml.set(localName(a), a);
                continue;
            }
            const bool selected = m_selection.attribute(a);
            if (inclusive && selected != shown)
                m_formsDiffer = true;
            if (shown ? selected || everyAttribute : inclusive && m_how.orphans == OrphanForm::Literal && selected)
                out.push_back(a);
        }
        if (!shown || !inclusive)
            return out;
        for (auto& [name, a] : m_pendingXml.entries()) {
            if (a != nullptr && e->getAttributeNodeNS(kXmlNamespace, name) == nullptr)
                out.push_back(a);
            m_pendingXml.set(name, nullptr);
        }
        if (m_how.version11)
            joinOmittedBases(out);
        return out;
    }

    // The xml:base of the ancestors left out since the last output element,
    // joined innermost first onto the element's own (or, without one, onto the
    // innermost of them), as the element's xml:base.
    void joinOmittedBases(std::vector<const DOMAttr*>& out) {
        std::vector<const DOMAttr*>& omitted = m_omittedBases.back();
        if (omitted.empty())
            return;
        const auto own = std::find_if(out.begin(), out.end(), [](const DOMAttr* a) {
            return XMLString::equals(a->getNamespaceURI(), kXmlNamespace) && XMLString::equals(localName(a), u"base");
        });
        const DOMAttr* carrier = own != out.end() ? *own : nullptr;
        std::optional<XString> base;
        if (carrier != nullptr)
            base = orEmpty(carrier->getValue());
        for (auto it = omitted.rbegin(); it != omitted.rend(); ++it) {
            if (!base) {
                base = orEmpty((*it)->getValue());
                carrier = *it;
            } else {
                base = joinXmlBase(orEmpty((*it)->getValue()), *base);
            }
        }
        omitted.clear();
        if (base->empty())
            return;
        m_joinedBase.emplace(carrier, *base);
        if (own == out.end())
            out.push_back(carrier);
    }

    void santuarioNamespaces(bool shown, Declarations& out) {
        const auto& bindings = m_inScope.entries();
        for (const auto& [prefix, uri] : bindings) {
            if (XMLString::equals(prefix, kXml))
                continue;
            if (m_selection.namespaceNode(prefix, uri)) {
                m_formsDiffer = m_formsDiffer || !shown;
                if (!shown)
                    m_rendering.unbindIfRendered(prefix);
                if (m_rendering.bindAndRender(prefix, uri))
                    out.push_back({prefix, uri});
            } else if (shown && *prefix != 0) {
                m_rendering.unbind(prefix);
            } else {
                m_rendering.bind(prefix, uri);
            }
        }
        if (!shown)
            return;
        const XMLCh* const* defaultNamespace = m_inScope.find(kEmpty);
        if (defaultNamespace == nullptr) {
            if (const XMLCh* uri = m_rendering.takeUnrendered(kEmpty))
                out.push_back({kEmpty, uri});
        } else if (!m_selection.namespaceNode(kEmpty, *defaultNamespace) && m_rendering.bindAndRender(kEmpty, kEmpty)) {
            out.push_back({kEmpty, kEmpty});
        }
        m_rendering.takeAllUnrendered(out);
    }

    void literalNamespaces(bool shown, Declarations& out) {
        const auto& bindings = m_inScope.entries();
        bool defaultSelected = false;
        for (const auto& [prefix, uri] : bindings) {
            if (XMLString::equals(prefix, kXml) || *uri == 0)
                continue;
            const bool selected = m_selection.namespaceNode(prefix, uri);
            const XMLCh* const* before = m_lastWritten.find(prefix);
            if (selected && (before == nullptr || *before == nullptr || !same(*before, uri)))
                out.push_back({prefix, uri});
            defaultSelected = defaultSelected || (selected && *prefix == 0);
        }
        if (!shown)
            return;
        const XMLCh* const* outerDefault = m_lastWritten.find(kEmpty);
        if (!defaultSelected && outerDefault != nullptr && *outerDefault != nullptr && **outerDefault != 0)
            out.push_back({kEmpty, kEmpty});
        // Descendants compare with this element's namespace nodes.
        for (const auto& [prefix, uri] : bindings)
            m_lastWritten.set(prefix, *uri != 0 && m_selection.namespaceNode(prefix, uri) ? uri : nullptr);
    }

    void exclusiveNamespaces(const DOMElement* e, bool shown, const std::vector<const DOMAttr*>& written,
                             Declarations& out) {
        std::vector<const XMLCh*> utilized;
        for (const XString& p : m_how.inclusivePrefixes)
            utilized.push_back(p.c_str());
        if (shown) {
            utilized.push_back(orEmpty(e->getPrefix()));
            for (const DOMAttr* a : written)
                if (a->getPrefix() != nullptr && *a->getPrefix() != 0 && !XMLString::equals(a->getPrefix(), kXml))
                    utilized.push_back(a->getPrefix());
        }
        for (const XMLCh* prefix : utilized) {
            const XMLCh* const* bound = m_inScope.find(prefix);
            const XMLCh* uri = bound != nullptr ? *bound : kEmpty;
            const XMLCh* const* before = m_lastWritten.find(prefix);
            const XMLCh* last = before != nullptr && *before != nullptr ? *before : kEmpty;
            if (*uri == 0) {
                if (*prefix == 0 && shown && *last != 0) {
                    out.push_back({kEmpty, kEmpty});
                    m_lastWritten.set(kEmpty, kEmpty);
                }
                continue;
            }
            if (!same(last, uri) && m_selection.namespaceNode(prefix, uri)) {
                out.push_back({prefix, uri});
                m_lastWritten.set(prefix, uri);
            }
        }
    }

    void utf8(const XMLCh* text) {
        if (text != nullptr)
            appendUtf8(text, XMLString::stringLen(text), m_out);
    }

    // Text escapes &, <, > and CR; attribute values &, <, ", TAB, LF and CR.
    void escaped(const XMLCh* text, bool attribute) {
        if (text != nullptr)
            appendEscapedUtf8(text, XMLString::stringLen(text), m_out, attribute);
    }

    static constexpr size_t kFlushAt = 1 << 16;

    NodeSelection& m_selection;
    const CanonicalOptions& m_how;
    ByteSink& m_sink;
    std::string m_out;
    bool m_formsDiffer = false;
    ScopedMap<const XMLCh*> m_inScope;      // prefix -> namespace, "" for the default
    RenderingTable m_rendering;             // inclusive, Santuario's form
    ScopedMap<const XMLCh*> m_lastWritten;  // inclusive literal form and exclusive
    ScopedMap<const DOMAttr*> m_pendingXml; // xml: attributes of left-out ancestors
    std::vector<std::vector<const DOMAttr*>> m_omittedBases;  // 1.1: their xml:base, outermost first
    std::optional<std::pair<const DOMAttr*, XString>> m_joinedBase;  // the output element's joined xml:base
    ScopedMap<const XMLCh*> m_declared;     // the tree's own declarations, under an exclusive view
    ScopedMap<const XMLCh*> m_viewWritten;  // what the exclusive view has declared above
};

// RFC 3986 references split into their parts; a part that is absent is nullopt.
struct UriParts {
    std::optional<XString> scheme, authority, query, fragment;
    XString path;
};

UriParts split(const XString& uri) {
    UriParts p;
    size_t at = 0;
    const size_t colon = uri.find(u':');
    const size_t stop = uri.find_first_of(u"/?#");
    if (colon != XString::npos && colon > 0 && (stop == XString::npos || colon < stop)) {
        const bool letters = std::all_of(uri.begin(), uri.begin() + static_cast<std::ptrdiff_t>(colon), [](XMLCh c) {
            return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'+' ||
                   c == u'-' || c == u'.';
        });
        if (letters && ((uri[0] >= u'a' && uri[0] <= u'z') || (uri[0] >= u'A' && uri[0] <= u'Z'))) {
            p.scheme = uri.substr(0, colon);
            at = colon + 1;
        }
    }
    if (uri.compare(at, 2, u"//") == 0) {
        const size_t end = uri.find_first_of(u"/?#", at + 2);
        p.authority = uri.substr(at + 2, end == XString::npos ? XString::npos : end - at - 2);
        at = end == XString::npos ? uri.size() : end;
    }
    const size_t pathEnd = std::min(uri.find_first_of(u"?#", at), uri.size());
    p.path = uri.substr(at, pathEnd - at);
    at = pathEnd;
    if (at < uri.size() && uri[at] == u'?') {
        const size_t end = std::min(uri.find(u'#', at), uri.size());
        p.query = uri.substr(at + 1, end - at - 1);
        at = end;
    }
    if (at < uri.size())
        p.fragment = uri.substr(at + 1);
    return p;
}

bool endsWith(const XString& s, const XString& tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

// A ".." segment: the last segment of output goes, unless output is only ".."
// segments of a relative path (kept, one more added) or the root (stays).
void climb(XString& output, XString& input) {
    if (endsWith(output, u"../")) {
        output += u"..";
        return;
    }
    if (output == u".." || endsWith(output, u"/..")) {
        output += u"/..";
        return;
    }
    const size_t slash = output.rfind(u'/');
    if (slash == XString::npos || slash == 0) {
        output.resize(slash == 0 ? 1 : 0);
        if (!input.empty() && input[0] == u'/')
            input.erase(0, 1);
    } else {
        output.erase(slash);
    }
}

// remove_dot_segments as Canonical XML 1.1 amends it for relative paths.
XString removeDotSegments(XString input) {
    for (size_t at; (at = input.find(u"//")) != XString::npos;)
        input.erase(at, 1);
    XString output;
    if (!input.empty() && input[0] == u'/') {
        output = u"/";
        input.erase(0, 1);
    }
    while (!input.empty()) {
        if (input.compare(0, 2, u"./") == 0) {
            input.erase(0, 2);
        } else if (input.compare(0, 3, u"../") == 0) {
            input.erase(0, 3);
            if (output != u"/")
                output += u"../";
        } else if (input.compare(0, 3, u"/./") == 0) {
            input.erase(0, 2);
        } else if (input == u"/.") {
            input = u"/";
        } else if (input.compare(0, 4, u"/../") == 0) {
            input.erase(0, 3);
            climb(output, input);
        } else if (input == u"/..") {
            input = u"/";
            climb(output, input);
        } else if (input == u".") {
            input.clear();
        } else if (input == u"..") {
            if (output != u"/")
                output += u"..";
            input.clear();
        } else {
            const size_t end = input.find(u'/', input[0] == u'/' ? 1 : 0);
            output += input.substr(0, end);
            input.erase(0, end == XString::npos ? input.size() : end);
        }
    }
    if (endsWith(output, u".."))
        output += u"/";
    return output;
}

}  // namespace

std::vector<XString> prefixListOf(const XMLCh* listText) {
    const XString list = orEmpty(listText);
    std::vector<XString> out;
    size_t at = 0;
    while (at < list.size()) {
        const size_t end = list.find_first_of(u" \t\r\n", at);
        const XString prefix = list.substr(at, end == XString::npos ? XString::npos : end - at);
        if (!prefix.empty())
            out.push_back(prefix == u"#default" ? XString() : prefix);
        at = end == XString::npos ? list.size() : end + 1;
    }
    return out;
}

XString joinXmlBase(const XString& baseText, const XString& reference) {
    const UriParts base = split(endsWith(baseText, u"..") ? baseText + u"/" : baseText);
    UriParts r = split(reference);
    if (r.scheme && base.scheme && *r.scheme == *base.scheme)
        r.scheme.reset();
    UriParts t;
    t.fragment = r.fragment;
    if (r.scheme) {
        t = r;
        t.path = removeDotSegments(r.path);
    } else {
        t.scheme = base.scheme;
        if (r.authority) {
            t.authority = r.authority;
            t.path = removeDotSegments(r.path);
            t.query = r.query;
        } else {
            t.authority = base.authority;
            if (r.path.empty()) {
                t.path = base.path;
                t.query = r.query ? r.query : base.query;
            } else {
                if (r.path[0] == u'/') {
                    t.path = r.path;
                } else if (base.authority && base.path.empty()) {
                    t.path = u"/" + r.path;
                } else {
                    const size_t slash = base.path.rfind(u'/');
                    t.path = slash == XString::npos ? r.path : base.path.substr(0, slash + 1) + r.path;
                }
                t.path = removeDotSegments(t.path);
                t.query = r.query;
            }
        }
    }
    XString out;
    if (t.scheme)
        out += *t.scheme + u":";
    if (t.authority)
        out += u"//" + *t.authority;
    out += t.path;
    if (t.query)
        out += u"?" + *t.query;
    if (t.fragment)
        out += u"#" + *t.fragment;
    return out;
}

bool canonicalize(const DOMNode* root, NodeSelection& selection, const CanonicalOptions& how, ByteSink& out) {
    Writer writer(selection, how, out);
    writer.run(root);
    return writer.formsDiffer();
}

}  // namespace vqxml
