#include "engine/Base64.hpp"

#include <cstring>

#include <openssl/evp.h>

namespace vqxml {

std::string base64Encode(const std::uint8_t* data, std::size_t len) {
    std::string out(4 * ((len + 2) / 3), '\0');
    if (len > 0)
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&out[0]), data, int(len));
    return out;
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
