#include "engine/Base64.hpp"

#include <memory>

#include <xsec/enc/XSECCryptoBase64.hpp>
#include <xsec/enc/XSECCryptoProvider.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

namespace vqxml {

XString base64Encode(const std::vector<unsigned char>& bytes) {
    std::unique_ptr<XSECCryptoBase64> coder(XSECPlatformUtils::g_cryptoProvider->base64());
    // Four characters per three bytes, a line break per 48 bytes, and the tail.
    std::vector<unsigned char> out(bytes.size() * 2 + 8);
    coder->encodeInit();
    unsigned int written = bytes.empty() ? 0
                                         : coder->encode(bytes.data(), static_cast<unsigned int>(bytes.size()),
                                                         out.data(), static_cast<unsigned int>(out.size()));
    written += coder->encodeFinish(out.data() + written, static_cast<unsigned int>(out.size() - written));
    return XString(out.begin(), out.begin() + written);
}

}  // namespace vqxml
