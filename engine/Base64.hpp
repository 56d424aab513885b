// Base64 for signature and cipher values: encoding without line breaks;
// decoding that skips XML whitespace and refuses anything else malformed.
#ifndef VQXML_ENGINE_BASE64_HPP
#define VQXML_ENGINE_BASE64_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqxml {

std::string base64Encode(const std::uint8_t* data, std::size_t len);

// False (out unspecified) if text is not valid base64.
bool base64Decode(const char* text, std::vector<std::uint8_t>& out);

}  // namespace vqxml

#endif
