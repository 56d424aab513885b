#include "engine/XencPlaintext.hpp"

#include <algorithm>
#include <string>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/TransService.hpp>
#include <xsec/transformers/TXFMC14n.hpp>
#include <xsec/transformers/TXFMChain.hpp>
#include <xsec/transformers/TXFMDocObject.hpp>

#include "engine/ChainBytes.hpp"

XERCES_CPP_NAMESPACE_USE

namespace vqxml::xenc {

namespace {

using korean::SecureBytes;

korean::SecureBytes canonical(DOMNode* node) {
    DOMDocument* doc = node->getOwnerDocument();
    auto* source = new TXFMDocObject(doc);
    TXFMChain chain(source);
    source->setInput(doc, node);
    auto* c14n = new TXFMC14n(doc);
    chain.appendTxfm(c14n);
    c14n->activateComments();
    return readAllBytes(&chain);
}

// The namespace a prefix (empty: the default) is bound to at node; "" for none.
std::u16string boundAt(const DOMNode* node, const std::string& prefix) {
    if (node == nullptr || node->getNodeType() != DOMNode::ELEMENT_NODE)
        return std::u16string();
    const std::u16string wide(prefix.begin(), prefix.end());
    const XMLCh* uri = node->lookupNamespaceURI(prefix.empty() ? nullptr : wide.c_str());
    return uri != nullptr ? std::u16string(uri) : std::u16string();
}

// A canonical attribute value (UTF-8, with C14N's escapes) as 16-bit text.
std::u16string unescaped(const std::string& value) {
    static const struct {
        const char* escape;
        char plain;
    } kEscapes[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&quot;", '"'}, {"&#x9;", '\t'}, {"&#xA;", '\n'}, {"&#xD;", '\r'}};
    std::string plain;
    for (size_t i = 0; i < value.size();) {
        bool replaced = false;
        for (const auto& e : kEscapes) {
            if (value.compare(i, std::char_traits<char>::length(e.escape), e.escape) == 0) {
                plain.push_back(e.plain);
                i += std::char_traits<char>::length(e.escape);
                replaced = true;
                break;
            }
        }
        if (!replaced)
            plain.push_back(value[i++]);
    }
    TranscodeFromStr wide(reinterpret_cast<const XMLByte*>(plain.data()), plain.size(), "UTF-8");
    return std::u16string(wide.str(), wide.length());
}

bool startsAt(const SecureBytes& bytes, size_t pos, const char* text) {
    const size_t len = std::char_traits<char>::length(text);
    return pos + len <= bytes.size() && std::equal(text, text + len, bytes.begin() + static_cast<long>(pos));
}

// Rewrites the first start tag of a canonical element: C14N writes the namespace
// declarations first, as ` xmlns="v"` and ` xmlns:p="v"`, with '"' escaped.
void placeInContext(SecureBytes& bytes, const DOMElement* element, const DOMNode* context) {
    size_t pos = 1;
    while (pos < bytes.size() && bytes[pos] != ' ' && bytes[pos] != '>')
        ++pos;
    const size_t nameEnd = pos;
    bool declaresDefault = false;
    while (startsAt(bytes, pos, " xmlns=") || startsAt(bytes, pos, " xmlns:")) {
        const size_t equals = std::find(bytes.begin() + static_cast<long>(pos), bytes.end(), '=') - bytes.begin();
        const size_t close = std::find(bytes.begin() + static_cast<long>(equals) + 2, bytes.end(), '"') - bytes.begin();
        if (close >= bytes.size())
            return;
        const std::string prefix = bytes[pos + 6] == ':' ? std::string(bytes.begin() + pos + 7, bytes.begin() + equals)
                                                         : std::string();
        const std::string value(bytes.begin() + equals + 2, bytes.begin() + close);
        declaresDefault = declaresDefault || prefix.empty();
        if (boundAt(context, prefix) == unescaped(value))
            bytes.erase(bytes.begin() + pos, bytes.begin() + close + 1);
        else
            pos = close + 1;
    }
    if (!declaresDefault && boundAt(element, "").empty() && !boundAt(context, "").empty()) {
        static const char kUndeclare[] = " xmlns=\"\"";
        bytes.insert(bytes.begin() + nameEnd, kUndeclare, kUndeclare + sizeof kUndeclare - 1);
    }
}

}  // namespace

korean::SecureBytes plaintextOf(DOMNode* node, const DOMNode* context) {
    SecureBytes bytes = canonical(node);
    if (node->getNodeType() == DOMNode::ELEMENT_NODE && !bytes.empty())
        placeInContext(bytes, static_cast<const DOMElement*>(node), context);
    return bytes;
}

}  // namespace vqxml::xenc
