// Conversions between the engine's 16-bit text and the byte texts of the C interface.
#ifndef VQXML_CORE_TRANSCODE_HPP
#define VQXML_CORE_TRANSCODE_HPP

#include <string>

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

using XString = std::basic_string<XMLCh>;

// Widens ASCII text (the library's own messages) without a transcoder.
XString toXString(const std::string& ascii);

// EUC-KR bytes of text; characters EUC-KR cannot hold become '?'.
std::string toEucKr(const XMLCh* text);

}  // namespace vqxml

#endif
