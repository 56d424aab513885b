#include "engine/Base64.hpp"

#include <algorithm>
#include <cstring>

#include <openssl/evp.h>

namespace vqxml {

// Written here rather than with the provider's coder, whose buffers grow a
// kilobyte at a time and made large CipherValues slow; the lines are the same.
std::string base64Text(const std::vector<unsigned char>& bytes) {
    constexpr std::size_t kLineBytes = 57;  // 76 characters
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4 + bytes.size() / kLineBytes + 1);
    unsigned char line[77];
    for (std::size_t at = 0; at < bytes.size(); at += kLineBytes) {
        const std::size_t n = std::min(kLineBytes, bytes.size() - at);
        const int written = EVP_EncodeBlock(line, bytes.data() + at, static_cast<int>(n));
        text.append(reinterpret_cast<const char*>(line), static_cast<std::size_t>(written));
        if (n == kLineBytes)
            text.push_back('\n');
    }
    return text;
}

XString base64Encode(const std::vector<unsigned char>& bytes) {
    return toXString(base64Text(bytes));
}

bool base64Decode(const char* text, std::vector<std::uint8_t>& out) {
    if (text == nullptr)
        return false;
    std::string packed;
    for (const char* c = text; *c != '\0'; ++c)
        if (std::strchr(" \t\r\n", *c) == nullptr)
            packed += *c;
    if (packed.size() % 4 != 0)
        return false;
    out.assign(packed.size() / 4 * 3, 0);
    if (packed.empty())
        return true;
    int n = EVP_DecodeBlock(out.data(), reinterpret_cast<const unsigned char*>(packed.data()),
                            int(packed.size()));
    if (n < 0)
        return false;
    std::size_t padding = packed[packed.size() - 1] == '=' ? packed[packed.size() - 2] == '=' ? 2 : 1 : 0;
    out.resize(std::size_t(n) - padding);
    return true;
}

}  // namespace vqxml
