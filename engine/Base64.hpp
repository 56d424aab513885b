// Base64 text of binary values for the XML the engine writes, and back.
#ifndef VQXML_ENGINE_BASE64_HPP
#define VQXML_ENGINE_BASE64_HPP

#include <cstdint>
#include <string>
#include <vector>

#include "core/Transcode.hpp"
#include "engine/korean/SecureBytes.hpp"

namespace vqxml {

// Lines of 76 characters, each ended by a line feed, as the crypto provider's
// coder writes them; a shorter last line has none.
std::string base64Text(const std::vector<unsigned char>& bytes);
// The same as 16-bit text, for the XML the engine writes.
XString base64Encode(const std::vector<unsigned char>& bytes);
// How many characters base64Text makes of n bytes, and the same written at out.
std::size_t base64TextLength(std::size_t n);
void writeBase64Text(const std::uint8_t* bytes, std::size_t n, XMLCh* out);

// The bytes of base64 text read from a document: XML whitespace is skipped,
// anything else malformed gives false (out is then unspecified).
bool base64Decode(const char* text, std::vector<std::uint8_t>& out);
// The same for 16-bit text, into memory that is wiped when freed.
bool base64Decode(const XMLCh* text, korean::SecureBytes& out);

}  // namespace vqxml

#endif
