#include "engine/Base64.hpp"

#include <algorithm>
#include <array>
#include <type_traits>

namespace vqxml {

namespace {

constexpr std::size_t kLineBytes = 57;  // 76 characters
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Lines of 76 characters, each but the last ended by a line feed, as the
// provider's coder writes them. Written here, straight into the text's own
// characters: the provider's coder grows its buffers a kilobyte at a time and
// writes octets that would then be widened one by one.
template <class Char>
void writeLines(const std::uint8_t* bytes, std::size_t n, Char* out) {
    for (std::size_t at = 0; at < n; at += kLineBytes) {
        const std::size_t take = std::min(kLineBytes, n - at);
        const std::uint8_t* p = bytes + at;
        const std::uint8_t* const whole = p + take / 3 * 3;
        for (; p < whole; p += 3, out += 4) {
            const std::uint32_t group = std::uint32_t(p[0]) << 16 | std::uint32_t(p[1]) << 8 | p[2];
            out[0] = static_cast<Char>(kAlphabet[group >> 18]);
            out[1] = static_cast<Char>(kAlphabet[(group >> 12) & 63]);
            out[2] = static_cast<Char>(kAlphabet[(group >> 6) & 63]);
            out[3] = static_cast<Char>(kAlphabet[group & 63]);
        }
        if (take % 3 != 0) {
            const std::uint32_t group = std::uint32_t(p[0]) << 16 | (take % 3 == 2 ? std::uint32_t(p[1]) << 8 : 0);
            *out++ = static_cast<Char>(kAlphabet[group >> 18]);
            *out++ = static_cast<Char>(kAlphabet[(group >> 12) & 63]);
            *out++ = static_cast<Char>(take % 3 == 2 ? kAlphabet[(group >> 6) & 63] : '=');
            *out++ = static_cast<Char>('=');
        }
        if (take == kLineBytes)
            *out++ = '\n';
    }
}

template <class Text>
Text linesOfBase64(const std::vector<unsigned char>& bytes) {
    Text text(base64TextLength(bytes.size()), 0);
    writeLines(bytes.data(), bytes.size(), &text[0]);
    return text;
}

}  // namespace

std::size_t base64TextLength(std::size_t bytes) {
    const std::size_t rest = bytes % kLineBytes;
    return bytes / kLineBytes * 77 + (rest + 2) / 3 * 4;
}

void writeBase64Text(const std::uint8_t* bytes, std::size_t n, XMLCh* out) {
    writeLines(bytes, n, out);
}

std::string base64Text(const std::vector<unsigned char>& bytes) {
    return linesOfBase64<std::string>(bytes);
}

// Made directly: a CipherValue's text is megabytes, and every copy counts.
XString base64Encode(const std::vector<unsigned char>& bytes) {
    return linesOfBase64<XString>(bytes);
}

namespace {

constexpr std::uint8_t kSkip = 64;
constexpr std::uint8_t kPad = 65;
constexpr std::uint8_t kBad = 255;

constexpr std::array<std::uint8_t, 256> decodingTable() {
    std::array<std::uint8_t, 256> table{};
    for (auto& v : table)
        v = kBad;
    for (std::uint8_t i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(kAlphabet[i])] = i;
    table[' '] = table['\t'] = table['\r'] = table['\n'] = kSkip;
    table['='] = kPad;
    return table;
}

constexpr std::array<std::uint8_t, 256> kDecoding = decodingTable();

template <class Char>
std::uint8_t codeOf(Char c) {
    const auto code = static_cast<std::make_unsigned_t<Char>>(c);
    return code < 256 ? kDecoding[code] : kBad;
}

// One pass, no copy of the text: CipherValues run to megabytes. Whole groups
// of four are decoded at once while no whitespace or padding comes between.
template <class Char, class Bytes>
bool decodeInto(const Char* text, Bytes& out) {
    if (text == nullptr)
        return false;
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    out.resize(length / 4 * 3);
    std::uint8_t* to = out.data();
    std::uint32_t group = 0;
    int held = 0;
    int padding = 0;
    const Char* const end = text + length;
    for (const Char* c = text; c < end; ++c) {
        while (held == 0 && padding == 0 && end - c >= 4) {
            const std::uint8_t a = codeOf(c[0]), b = codeOf(c[1]), d = codeOf(c[2]), e = codeOf(c[3]);
            if ((a | b | d | e) >= 64)  // whitespace, padding or not base64
                break;
            const std::uint32_t whole = std::uint32_t(a) << 18 | std::uint32_t(b) << 12 | std::uint32_t(d) << 6 | e;
            to[0] = static_cast<std::uint8_t>(whole >> 16);
            to[1] = static_cast<std::uint8_t>(whole >> 8);
            to[2] = static_cast<std::uint8_t>(whole);
            to += 3;
            c += 4;
        }
        if (c == end)
            break;
        const std::uint8_t v = codeOf(*c);
        if (v == kSkip)
            continue;
        if (v == kBad || (v == kPad && held < 2) || (v != kPad && padding > 0))
            return false;
        padding += v == kPad;
        group = group << 6 | (v == kPad ? 0 : v);
        if (++held < 4)
            continue;
        *to++ = static_cast<std::uint8_t>(group >> 16);
        if (padding < 2)
            *to++ = static_cast<std::uint8_t>(group >> 8);
        if (padding < 1)
            *to++ = static_cast<std::uint8_t>(group);
        group = 0;
        held = 0;
    }
    if (held != 0)
        return false;
    out.resize(static_cast<std::size_t>(to - out.data()));
    return true;
}

}  // namespace

bool base64Decode(const char* text, std::vector<std::uint8_t>& out) {
    return decodeInto(text, out);
}

bool base64Decode(const XMLCh* text, korean::SecureBytes& out) {
    return decodeInto(text, out);
}

}  // namespace vqxml
