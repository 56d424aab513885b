// Conversions between the engine's 16-bit text and the byte texts of the C interface.
//
// The "local code page" is the code set of the process locale (nl_langinfo) when
// the application has chosen a locale, and UTF-8 when it runs in the plain "C"
// locale, whose ASCII could not carry Korean names. Error texts are always EUC-KR.
#ifndef VQXML_CORE_TRANSCODE_HPP
#define VQXML_CORE_TRANSCODE_HPP

#include <string>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
XERCES_CPP_NAMESPACE_END

namespace vqxml {

using XString = std::basic_string<XMLCh>;

// Widens ASCII text (the library's own messages) without a transcoder.
XString toXString(const std::string& ascii);

// EUC-KR bytes of text; characters EUC-KR cannot hold become '?'.
std::string toEucKr(const XMLCh* text);

// The local code page's name, as described above.
const char* localCodePage();

// The encoding a document declares, or "" when it declares none.
std::string declaredEncoding(const XERCES_CPP_NAMESPACE::DOMDocument* doc);

// text (NUL-terminated bytes in encoding; the local code page when encoding is
// null or empty) as 16-bit text.
XString XMLT(const char* encoding, const char* text);
inline XString XMLT(const char* text) { return XMLT(nullptr, text); }

// A malloc'ed NUL-terminated copy of text in encoding (the local code page when
// null or empty); null for null text. The context's text fields are made so.
char* transcodeOut(const XMLCh* text, const char* encoding);

}  // namespace vqxml

#endif
