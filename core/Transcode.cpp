#include "core/Transcode.hpp"

#include <langinfo.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

namespace {

const char* orLocal(const char* encoding) {
    return encoding != nullptr && *encoding != '\0' ? encoding : localCodePage();
}

}  // namespace

XString toXString(const std::string& ascii) {
    return XString(ascii.begin(), ascii.end());
}

std::string toEucKr(const XMLCh* text) {
    std::string out;
    if (text == nullptr)
        return out;
    XMLTransService::Codes code;
    std::unique_ptr<XMLTranscoder> coder(
        XMLPlatformUtils::fgTransService->makeNewTranscoderFor("EUC-KR", code, 1024));
    XMLSize_t remaining = XMLString::stringLen(text);
    if (!coder) {
        // Without a EUC-KR transcoder, ASCII still passes through unchanged.
        for (; *text != 0; ++text)
            out.push_back(*text < 0x80 ? static_cast<char>(*text) : '?');
        return out;
    }
    XMLByte chunk[1024];
    while (remaining > 0) {
        XMLSize_t eaten = 0;
        XMLSize_t written = coder->transcodeTo(text, remaining, chunk, sizeof chunk, eaten,
                                               XMLTranscoder::UnRep_RepChar);
        if (eaten == 0)
            break;
        out.append(reinterpret_cast<const char*>(chunk), written);
        text += eaten;
        remaining -= eaten;
    }
    return out;
}

const char* localCodePage() {
    const char* codeset = nl_langinfo(CODESET);
    if (codeset == nullptr || *codeset == '\0' || std::strcmp(codeset, "ANSI_X3.4-1968") == 0)
        return "UTF-8";
    return codeset;
}

std::string declaredEncoding(const DOMDocument* doc) {
    const XMLCh* encoding = doc != nullptr ? doc->getXmlEncoding() : nullptr;
    std::string out;
    for (; encoding != nullptr && *encoding != 0; ++encoding)
        out.push_back(static_cast<char>(*encoding & 0x7F));
    return out;
}

XString XMLT(const char* encoding, const char* text) {
    if (text == nullptr)
        return XString();
    TranscodeFromStr wide(reinterpret_cast<const XMLByte*>(text), std::strlen(text), orLocal(encoding));
    return XString(wide.str(), wide.length());
}

char* transcodeOut(const XMLCh* text, const char* encoding) {
    if (text == nullptr)
        return nullptr;
    TranscodeToStr narrow(text, orLocal(encoding));
    char* out = static_cast<char*>(std::malloc(narrow.length() + 1));
    if (out == nullptr)
        throw std::bad_alloc();
    std::memcpy(out, narrow.str(), narrow.length());
    out[narrow.length()] = '\0';
    return out;
}

}  // namespace vqxml
