// Recording of a failure's code and text in the context.
#include <algorithm>
#include <cstring>

#include "core/Transcode.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

namespace {

constexpr size_t kMaxErrorText = 1023;

}  // namespace

int VQXML_XMLSecurity::ProcessExceptionMessage(int code, const char* prefix, const char* message) {
    m_errorCode = code;
    size_t used = 0;
    for (const char* part : {prefix, message}) {
        if (part == nullptr)
            continue;
        size_t n = std::min(std::strlen(part), kMaxErrorText - used);
        std::memcpy(m_errorMsg + used, part, n);
        used += n;
    }
    // Engine explanations end in line breaks that make no sense in one message.
    while (used > 0 && (m_errorMsg[used - 1] == '\n' || m_errorMsg[used - 1] == '\r'))
        --used;
    m_errorMsg[used] = '\0';
    return m_errorCode;
}

int VQXML_XMLSecurity::ProcessExceptionMessage(int code, const char* prefix, const XMLCh* message) {
    try {
        return ProcessExceptionMessage(code, prefix, vqxml::toEucKr(message).c_str());
    } catch (...) {
        // The failure itself is still reported, without its text.
        return ProcessExceptionMessage(code, prefix, "");
    }
}
