#include "core/Transcode.hpp"

#include <memory>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

XERCES_CPP_NAMESPACE_USE

namespace vqxml {

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

}  // namespace vqxml
