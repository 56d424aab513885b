// Base64 text of binary values for the XML the engine writes.
#ifndef VQXML_ENGINE_BASE64_HPP
#define VQXML_ENGINE_BASE64_HPP

#include <vector>

#include "core/Transcode.hpp"

namespace vqxml {

// The crypto provider's encoding (lines of 76 characters), as 16-bit text.
XString base64Encode(const std::vector<unsigned char>& bytes);

}  // namespace vqxml

#endif
