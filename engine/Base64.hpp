// Base64 text of binary values for the XML the engine writes.
#ifndef VQXML_ENGINE_BASE64_HPP
#define VQXML_ENGINE_BASE64_HPP

#include <string>
#include <vector>

#include "core/Transcode.hpp"

namespace vqxml {

// The crypto provider's encoding (lines of 64 characters).
std::string base64Text(const std::vector<unsigned char>& bytes);
// The same as 16-bit text, for the XML the engine writes.
XString base64Encode(const std::vector<unsigned char>& bytes);

}  // namespace vqxml

#endif
