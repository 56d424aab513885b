#include "toolkit/EucKrText.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <iconv.h>

namespace {

// The bytes of the UTF-8 character whose first byte is lead, at least 0x80
// (1 for a byte that cannot start one).
std::size_t utf8Width(unsigned char lead) {
    if (lead >= 0xC0 && lead < 0xE0)
        return 2;
    if (lead >= 0xE0 && lead < 0xF0)
        return 3;
    return lead >= 0xF0 && lead < 0xF8 ? 4 : 1;
}

void escape(const char* bytes, std::size_t n, std::string& out) {
    for (std::size_t i = 0; i < n; ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "\\%02X", static_cast<unsigned char>(bytes[i]));
        out += hex;
    }
}

}  // namespace

namespace vqtk {

std::string eucKrFromUtf8(const std::string& utf8) {
    std::string out;
    iconv_t cd = iconv_open("EUC-KR", "UTF-8");
    char* in = const_cast<char*>(utf8.data());
    std::size_t inLeft = utf8.size();
    while (inLeft > 0) {
        char buffer[256];
        char* to = buffer;
        std::size_t toLeft = sizeof buffer;
        const bool converted = cd != reinterpret_cast<iconv_t>(-1) &&
                               iconv(cd, &in, &inLeft, &to, &toLeft) != static_cast<std::size_t>(-1);
        out.append(buffer, static_cast<std::size_t>(to - buffer));
        if (converted || (errno == E2BIG && toLeft < sizeof buffer))
            continue;
        // No EUC-KR form, not UTF-8, or no converter at all: one character as it
        // is when ASCII, else escaped.
        const auto lead = static_cast<unsigned char>(*in);
        std::size_t n = 1;
        if (lead < 0x80) {
            out += *in;
        } else {
            n = std::min(utf8Width(lead), inLeft);
            escape(in, n, out);
        }
        in += n;
        inLeft -= n;
    }
    if (cd != reinterpret_cast<iconv_t>(-1))
        iconv_close(cd);
    return out;
}

}  // namespace vqtk
