#include "engine/Base64.hpp"

#include <algorithm>
#include <array>
#include <type_traits>

#include <openssl/evp.h>

namespace vqxml {

namespace {

// Written here rather than with the provider's coder, whose buffers grow a
// kilobyte at a time and made large CipherValues slow; the lines are the same.
template <class Text>
Text linesOfBase64(const std::vector<unsigned char>& bytes) {
    constexpr std::size_t kLineBytes = 57;  // 76 characters
    Text text;
    text.reserve((bytes.size() + 2) / 3 * 4 + bytes.size() / kLineBytes + 1);
    unsigned char line[77];
    for (std::size_t at = 0; at < bytes.size(); at += kLineBytes) {
        const std::size_t n = std::min(kLineBytes, bytes.size() - at);
        const int written = EVP_EncodeBlock(line, bytes.data() + at, static_cast<int>(n));
        text.append(line, line + written);
        if (n == kLineBytes)
            text.push_back('\n');
    }
    return text;
}

}  // namespace

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
    const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::uint8_t i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(alphabet[i])] = i;
    table[' '] = table['\t'] = table['\r'] = table['\n'] = kSkip;
    table['='] = kPad;
    return table;
}

constexpr std::array<std::uint8_t, 256> kDecoding = decodingTable();

// One pass, no copy of the text: CipherValues run to megabytes.
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
    for (const Char* c = text; *c != 0; ++c) {
        const auto code = static_cast<std::make_unsigned_t<Char>>(*c);
        const std::uint8_t v = code < 256 ? kDecoding[code] : kBad;
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
