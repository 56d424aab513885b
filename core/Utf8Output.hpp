// UTF-16 text from the DOM written out as UTF-8, a run at a time: the room for
// the whole run is made once and the loop only stores, which matters for the
// megabytes of text a large document or a CipherValue holds.
#ifndef VQXML_CORE_UTF8OUTPUT_HPP
#define VQXML_CORE_UTF8OUTPUT_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

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
constexpr const char* escapeOf(XMLCh c, bool inAttribute) {
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

namespace detail {

constexpr std::array<bool, 128> asciiStandingForItself(bool inAttribute) {
    std::array<bool, 128> stands{};
    for (XMLCh c = 0; c < 128; ++c)
        stands[c] = escapeOf(c, inAttribute) == nullptr;
    return stands;
}

inline constexpr std::array<bool, 128> kStandsInText = asciiStandingForItself(false);
inline constexpr std::array<bool, 128> kStandsInAttribute = asciiStandingForItself(true);

template <class Bytes>
void appendAscii(const char* s, Bytes& out) {
    const std::size_t at = out.size();
    const std::size_t n = std::strlen(s);
    out.resize(at + n);
    std::memcpy(&out[at], s, n);
}

}  // namespace detail

// Appends the n units at text to out as UTF-8 with the escapes of escapeOf(), in
// one pass: ASCII that stands for itself (all of a base64 text, most of a
// document) is stored a run at a time, the rest goes through appendUtf8().
// Returns false at half a surrogate pair standing alone.
template <class Bytes>
bool appendEscapedUtf8(const XMLCh* text, std::size_t n, Bytes& out, bool inAttribute) {
    using Byte = typename Bytes::value_type;
    constexpr std::size_t kRun = 16384;
    const bool* stands = inAttribute ? detail::kStandsInAttribute.data() : detail::kStandsInText.data();
    std::size_t i = 0;
    while (i < n) {
        const std::size_t end = n - i > kRun ? i + kRun : n;
        const std::size_t at = out.size();
        out.resize(at + (end - i));
        Byte* const start = reinterpret_cast<Byte*>(&out[at]);
        Byte* w = start;
        for (; i < end && text[i] < 0x80 && stands[text[i]]; ++i)
            *w++ = static_cast<Byte>(text[i]);
        out.resize(at + static_cast<std::size_t>(w - start));
        if (i == end)
            continue;
        if (text[i] < 0x80) {
            detail::appendAscii(escapeOf(text[i++], inAttribute), out);
            continue;
        }
        std::size_t other = i;
        while (other < n && text[other] >= 0x80)
            ++other;
        if (!appendUtf8(text + i, other - i, out))
            return false;
        i = other;
    }
    return true;
}

}  // namespace vqxml

#endif
