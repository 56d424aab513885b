#include "engine/Base64.hpp"

#include <cstring>
#include <memory>

#include <openssl/evp.h>

#include <xsec/enc/XSECCryptoBase64.hpp>
#include <xsec/enc/XSECCryptoProvider.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

namespace vqxml {

std::string base64Text(const std::vector<unsigned char>& bytes) {
    std::unique_ptr<XSECCryptoBase64> coder(XSECPlatformUtils::g_cryptoProvider->base64());
    // Four characters per three bytes, a line break per 48 bytes, and the tail.
    std::vector<unsigned char> out(bytes.size() * 2 + 8);
    coder->encodeInit();
    unsigned int written = bytes.empty() ? 0
                                         : coder->encode(bytes.data(), static_cast<unsigned int>(bytes.size()),
                                                         out.data(), static_cast<unsigned int>(out.size()));
    written += coder->encodeFinish(out.data() + written, static_cast<unsigned int>(out.size() - written));
    return std::string(out.begin(), out.begin() + written);
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
