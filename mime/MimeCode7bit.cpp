#include <vqxml/mime/MimeCode.h>

#include "MimeLimits.hpp"

#include <cstring>

CMimeCodeBase* CMimeCode7bit::CreateObject() {
    return new CMimeCode7bit;
}

int CMimeCode7bit::GetEncodeLength() const {
    long long n = m_nInputLen;
    return vqmime::ClampToInt(n + (n / 76) * 4 + 4);
}

// Lines longer than 76 characters are broken before their last space-class
// character, which then opens the continuation line.
int CMimeCode7bit::Encode(unsigned char* out, int maxLen) const {
    int o = 0;
    int lineLen = 0;
    int breakAt = -1;
    for (int i = 0; i < m_nInputLen && o < maxLen; ++i) {
        unsigned char c = m_pInput[i];
        if (c == '\r' || c == '\n') {
            breakAt = -1;
            lineLen = 0;
            out[o++] = c;
            continue;
        }
        if (lineLen > 0 && CMimeChar::IsSpace(c))
            breakAt = o;
        if (lineLen > 75 && breakAt >= 0 && o + 2 <= maxLen) {
            int moved = o - breakAt;
            std::memmove(out + breakAt + 2, out + breakAt, moved);
            out[breakAt] = '\r';
            out[breakAt + 1] = '\n';
            o += 2;
            lineLen = moved;
            breakAt = -1;
        }
        if (o >= maxLen)
            break;
        out[o++] = c;
        ++lineLen;
    }
    return o;
}
