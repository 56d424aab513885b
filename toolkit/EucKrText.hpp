// Names from certificates (UTF-8) as the EUC-KR of the handle's texts.
#ifndef VQXML_TOOLKIT_EUCKRTEXT_HPP
#define VQXML_TOOLKIT_EUCKRTEXT_HPP

#include <string>

namespace vqtk {

// utf8 in EUC-KR; a character EUC-KR lacks, and any byte that is not UTF-8, is
// written as \XX escapes of its bytes (as RFC 2253 escapes them).
std::string eucKrFromUtf8(const std::string& utf8);

}  // namespace vqtk

#endif
