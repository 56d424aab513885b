#include <vqxml/mime/MimeCode.h>

#include "MimeLimits.hpp"

#include <cstring>

namespace {

const char kHexDigits[] = "0123456789ABCDEF";
const int kMaxLineLen = 75;  // plus the soft break's "=": 76 characters

int HexValue(unsigned char c) {
    return c < 58 ? c - 48 : c - 55;
}

}  // namespace

CMimeCodeBase* CMimeCodeQP::CreateObject() {
    return new CMimeCodeQP;
}

int CMimeCodeQP::GetEncodeLength() const {
    long long m = m_nInputLen;
    for (int i = 0; i < m_nInputLen; ++i)
        if (!CMimeChar::IsAlnum(m_pInput[i]))
            m += 2;
    return vqmime::ClampToInt(m + (m / 74) * 6);
}

int CMimeCodeQP::Encode(unsigned char* out, int maxLen) const {
    const unsigned char* in = m_pInput;
    const int n = m_nInputLen;
    const bool text = !m_bBreakLines;
    int o = 0;
    int lineLen = 0;
    int spaceAt = -1;  // output position of the last space or tab on this line
    for (int i = 0; i < n && o < maxLen; ++i) {
        unsigned char c = in[i];
        bool quote;
        int cost = 1;
        if (c == ' ' || c == '\t') {
            quote = i == n - 1 || (text && in[i + 1] == '\r');
            if (lineLen > 0)
                spaceAt = o;
        } else if (text && (c == '\r' || c == '\n')) {
            quote = false;
            cost = 0;
            lineLen = 0;
            spaceAt = -1;
        } else if (text && c == '.' && i >= 2 && i + 2 < n && in[i - 2] == '\r' &&
                   in[i - 1] == '\n' && in[i + 1] == '\r' && in[i + 2] == '\n') {
            quote = true;  // a lone "." line would end an SMTP message
        } else {
            quote = c < 33 || c > 126 || c == '=';
        }
        if (quote)
            cost = 3;

        if (lineLen + cost > kMaxLineLen && o + 3 <= maxLen) {
            int at = o;
            lineLen = 0;
            if (spaceAt >= 0 && spaceAt < o) {
                at = spaceAt + 1;
                lineLen = o - at;
                std::memmove(out + at + 3, out + at, lineLen);
            }
            std::memcpy(out + at, "=\r\n", 3);
            o += 3;
            spaceAt = -1;
        }

        if (quote) {
            if (o + 3 > maxLen)
                break;
            out[o++] = '=';
            out[o++] = kHexDigits[c >> 4];
            out[o++] = kHexDigits[c & 15];
        } else {
            if (o >= maxLen)
                break;
            out[o++] = c;
        }
        lineLen += cost;
    }
    return o;
}

int CMimeCodeQP::Decode(unsigned char* out, int maxLen) {
    const unsigned char* in = m_pInput;
    const int n = m_nInputLen;
    int o = 0;
    int i = 0;
    while (i < n && o < maxLen) {
        unsigned char c = in[i];
        if (c != '=') {
            out[o++] = c;
            ++i;
            continue;
        }
        if (n - i - 1 < 2)
            break;
        unsigned char a = in[i + 1];
        unsigned char b = in[i + 2];
        if (CMimeChar::IsHexDigit(a)) {
            out[o++] = static_cast<unsigned char>((HexValue(a) << 4) | (HexValue(b) & 15));
            i += 3;
        } else if (a == '\r' && b == '\n') {
            i += 3;  // soft line break
        } else {
            out[o++] = a;
            i += 2;
        }
    }
    return o;
}
