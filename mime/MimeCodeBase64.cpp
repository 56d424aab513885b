#include <vqxml/mime/MimeCode.h>

#include "MimeLimits.hpp"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const int kLineChars = 76;

// Decoding table: the six-bit value of each alphabet byte, kSkip for CR and
// LF, kStop for everything else.
enum : unsigned char { kSkip = 64, kStop = 65 };

struct DecodeTable {
    unsigned char value[256];
    constexpr DecodeTable() : value() {
        for (int c = 0; c < 256; ++c)
            value[c] = kStop;
        for (int i = 0; i < 64; ++i)
            value[static_cast<unsigned char>(kAlphabet[i])] = static_cast<unsigned char>(i);
        value[static_cast<unsigned char>('\r')] = kSkip;
        value[static_cast<unsigned char>('\n')] = kSkip;
    }
};

constexpr DecodeTable kDecode;

// Writes base64 characters and, when asked, a line break after every 76.
class Base64Writer {
public:
    Base64Writer(unsigned char* out, int maxLen, bool breakLines)
        : m_out(out), m_max(maxLen), m_breakLines(breakLines) {}

    bool Put(int sixBits) {
        if (m_o >= m_max)
            return false;
        m_out[m_o++] = static_cast<unsigned char>(kAlphabet[sixBits & 63]);
        if (m_breakLines && ++m_column == kLineChars) {
            if (!PutLineBreak())
                return false;
        }
        return true;
    }
    bool PutLineBreak() {
        if (m_o + 2 > m_max)
            return false;
        m_out[m_o++] = '\r';
        m_out[m_o++] = '\n';
        m_column = 0;
        return true;
    }
    void PutPadding(int count) {
        if (m_o + count > m_max)
            return;
        for (int i = 0; i < count; ++i)
            m_out[m_o++] = '=';
    }
    void Finish() {
        if (m_breakLines && m_column != 0)
            PutLineBreak();
    }
    int Written() const { return m_o; }

private:
    unsigned char* m_out;
    int m_max;
    bool m_breakLines;
    int m_o = 0;
    int m_column = 0;
};

}  // namespace

CMimeCodeBase* CMimeCodeBase64::CreateObject() {
    return new CMimeCodeBase64;
}

int CMimeCodeBase64::GetEncodeLength() const {
    long long k = (static_cast<long long>(m_nInputLen) + 2) / 3 * 4;
    if (m_bBreakLines)
        k += (k / kLineChars) * 2 + 2;
    return vqmime::ClampToInt(k);
}

int CMimeCodeBase64::GetDecodeLength() const {
    return vqmime::ClampToInt(static_cast<long long>(m_nInputLen) * 3 / 4 + 2);
}

int CMimeCodeBase64::Encode(unsigned char* out, int maxLen) const {
    if (m_nInputLen <= 0 || maxLen <= 0)
        return 0;
    Base64Writer w(out, maxLen, m_bBreakLines);
    const unsigned char* in = m_pInput;
    int i = 0;
    for (; i + 3 <= m_nInputLen; i += 3) {
        if (!w.Put(in[i] >> 2) || !w.Put(((in[i] & 3) << 4) | (in[i + 1] >> 4)) ||
            !w.Put(((in[i + 1] & 15) << 2) | (in[i + 2] >> 6)) || !w.Put(in[i + 2] & 63))
            return w.Written();
    }
    int rest = m_nInputLen - i;
    if (rest == 1) {
        if (!w.Put(in[i] >> 2) || !w.Put((in[i] & 3) << 4))
            return w.Written();
        w.PutPadding(2);
    } else if (rest == 2) {
        if (!w.Put(in[i] >> 2) || !w.Put(((in[i] & 3) << 4) | (in[i + 1] >> 4)) ||
            !w.Put((in[i + 1] & 15) << 2))
            return w.Written();
        w.PutPadding(1);
    }
    w.Finish();
    return w.Written();
}

int CMimeCodeBase64::Decode(unsigned char* out, int maxLen) {
    int o = 0;
    unsigned bits = 0;
    int nbits = 0;
    for (int i = 0; i < m_nInputLen && o < maxLen; ++i) {
        unsigned char v = kDecode.value[m_pInput[i]];
        if (v == kSkip)
            continue;
        if (v == kStop)
            break;
        bits = ((bits << 6) | v) & 0xFFFFFF;
        nbits += 6;
        if (nbits >= 8) {
            nbits -= 8;
            out[o++] = static_cast<unsigned char>(bits >> nbits);
        }
    }
    return o;
}
