// UTF-16 text from the DOM written out as UTF-8, a run at a time: the room for
// the whole run is made once and the loop only stores, which matters for the
// megabytes of text a large document or a CipherValue holds.
#ifndef VQXML_CORE_UTF8OUTPUT_HPP
#define VQXML_CORE_UTF8OUTPUT_HPP

#include <cstddef>
#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

// Appends the n units at text to out (a std::string, a vector of bytes or a
// GrowingBuffer). Returns false at half a surrogate pair standing alone, which
// UTF-8 cannot write; out then ends with what came before it.
template <class Bytes>
bool appendUtf8(const XMLCh* text, std::size_t n, Bytes& out) {
    using Byte = typename Bytes::value_type;
    // Room is made a run at a time, so that a text of megabytes does not first
    // claim three times its length: an octet a unit while the run is ASCII,
    // then at most three a unit for the rest of it (a pair's two units make four).
    constexpr std::size_t kRun = 16384;
    std::size_t i = 0;
    while (i < n) {
        std::size_t end = n - i > kRun ? i + kRun : n;
        if (end < n && text[end - 1] >= 0xD800 && text[end - 1] <= 0xDBFF)
            ++end;  // a pair stays within one run
        out.resize(out.size() + (end - i));
        Byte* start = &out[0];
        Byte* w = start + out.size() - (end - i);
        bool widened = false;
        for (; i < end; ++i) {
            char32_t c = text[i];
            if (c < 0x80) {
                *w++ = static_cast<Byte>(c);
                continue;
            }
            if (!widened) {
                const std::size_t at = static_cast<std::size_t>(w - start);
                out.resize(at + 3 * (end - i));
                start = &out[0];
                w = start + at;
                widened = true;
            }
            if (c < 0x800) {
                *w++ = static_cast<Byte>(0xC0 | (c >> 6));
            } else if (c < 0xD800 || c > 0xDFFF) {
                *w++ = static_cast<Byte>(0xE0 | (c >> 12));
                *w++ = static_cast<Byte>(0x80 | ((c >> 6) & 0x3F));
            } else {
                if (c > 0xDBFF || i + 1 >= end || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) {
                    out.resize(static_cast<std::size_t>(w - start));
                    return false;
                }
                c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
                *w++ = static_cast<Byte>(0xF0 | (c >> 18));
                *w++ = static_cast<Byte>(0x80 | ((c >> 12) & 0x3F));
                *w++ = static_cast<Byte>(0x80 | ((c >> 6) & 0x3F));
            }
            *w++ = static_cast<Byte>(0x80 | (c & 0x3F));
        }
        out.resize(static_cast<std::size_t>(w - start));
    }
    return true;
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
