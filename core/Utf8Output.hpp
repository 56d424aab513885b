// UTF-16 text from the DOM written out as UTF-8, a run at a time: the room for
// the whole run is made once and the loop only stores, which matters for the
// megabytes of text a large document or a CipherValue holds.
#ifndef VQXML_CORE_UTF8OUTPUT_HPP
#define VQXML_CORE_UTF8OUTPUT_HPP

#include <cstddef>
#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

// Appends the n units at text to out (a std::string or a vector of bytes).
// Returns false at half a surrogate pair standing alone, which UTF-8 cannot
// write; out then ends with what came before it.
template <class Bytes>
bool appendUtf8(const XMLCh* text, std::size_t n, Bytes& out) {
    using Byte = typename Bytes::value_type;
    const std::size_t old = out.size();
    // At most three octets a unit: a pair's two units make four.
    out.resize(old + 3 * n);
    Byte* const start = &out[0];
    Byte* w = start + old;
    bool whole = true;
    for (std::size_t i = 0; i < n; ++i) {
        char32_t c = text[i];
        if (c < 0x80) {
            *w++ = static_cast<Byte>(c);
            continue;
        }
        if (c < 0x800) {
            *w++ = static_cast<Byte>(0xC0 | (c >> 6));
        } else if (c < 0xD800 || c > 0xDFFF) {
            *w++ = static_cast<Byte>(0xE0 | (c >> 12));
            *w++ = static_cast<Byte>(0x80 | ((c >> 6) & 0x3F));
        } else {
            if (c > 0xDBFF || i + 1 >= n || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) {
                whole = false;
                break;
            }
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
            *w++ = static_cast<Byte>(0xF0 | (c >> 18));
            *w++ = static_cast<Byte>(0x80 | ((c >> 12) & 0x3F));
            *w++ = static_cast<Byte>(0x80 | ((c >> 6) & 0x3F));
        }
        *w++ = static_cast<Byte>(0x80 | (c & 0x3F));
    }
    out.resize(static_cast<std::size_t>(w - start));
    return whole;
}

// How c is written in character data (&, <, > and carriage return escaped) or in
// an attribute value (&, <, the quote, tab, line feed and carriage return), as
// canonical XML has it; null where c stands for itself.
inline const char* escapeOf(XMLCh c, bool inAttribute) {
    switch (c) {
    case u'&': return "&amp;";
    case u'<': return "&lt;";
    case u'>': return inAttribute ? nullptr : "&gt;";
    case u'"': return inAttribute ? "&quot;" : nullptr;
    case u'\t': return inAttribute ? "&#x9;" : nullptr;
    case u'\n': return inAttribute ? "&#xA;" : nullptr;
    case u'\r': return "&#xD;";
    default: return nullptr;
    }
}

}  // namespace vqxml

#endif
