#include <vqxml/mime/MimeFieldCode.h>
#include <vqxml/mime/MimeText.h>

#include "MimeLimits.hpp"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

const char kHexDigits[] = "0123456789ABCDEF";
const int kMaxWordLen = 75;

// Finds a fixed pattern from positions that never decrease. It remembers its
// last hit, so scanning "=?" after "=?" never walks the same bytes twice: a
// decode stays linear in its input however the input is crafted.
class ForwardFinder {
public:
    ForwardFinder(const char* pattern, const char* end) : m_pattern(pattern), m_end(end) {}

    const char* From(const char* from) {
        if (m_exhausted)
            return nullptr;
        if (!m_hit || m_hit < from) {
            m_hit = vqmime::FindString(from, m_pattern, m_end);
            m_exhausted = m_hit == nullptr;
        }
        return m_hit;
    }

private:
    const char* m_pattern;
    const char* m_end;
    const char* m_hit = nullptr;
    bool m_exhausted = false;
};

bool QWritesAsIs(unsigned char c) {
    return c >= '!' && c <= '~' && c != '=' && c != '?' && c != '_';
}

int DecodeB(const char* text, int len, unsigned char* out, int maxLen) {
    CMimeCodeBase64 coder;
    coder.SetInput(text, len, false);
    return coder.Decode(out, maxLen);
}

// Q text is quoted-printable in which "_" stands for a space (RFC 2047 4.2).
int DecodeQ(const char* text, int len, unsigned char* out, int maxLen) {
    std::string spaced(text, len);
    std::replace(spaced.begin(), spaced.end(), '_', ' ');
    CMimeCodeQP coder;
    coder.SetInput(spaced.data(), len, false);
    return coder.Decode(out, maxLen);
}

bool OnlySpaces(const char* p, const char* end) {
    for (; p < end; ++p)
        if (!CMimeChar::IsSpace(static_cast<unsigned char>(*p)))
            return false;
    return true;
}

}  // namespace

int CMimeEncodedWord::GetEncodeLength() const {
    if (m_nInputLen <= 0)
        return 0;
    if (!UsableCharset())
        return m_nInputLen;
    long long e;
    if (IsBase64()) {
        e = (static_cast<long long>(m_nInputLen) + 2) / 3 * 4;
    } else {
        CMimeCodeQP qp;
        qp.SetInput(m_pInput, m_nInputLen, true);
        e = qp.GetEncodeLength();
    }
    long long c = static_cast<long long>(m_strCharset.size());
    return vqmime::ClampToInt((e / (64 - c) + 1) * (c + 11) + e);
}

int CMimeEncodedWord::Encode(unsigned char* out, int maxLen) const {
    if (!UsableCharset())
        return CMimeCodeBase::Encode(out, maxLen);
    if (m_nInputLen <= 0)
        return 0;
    return IsBase64() ? BEncode(out, maxLen) : QEncode(out, maxLen);
}

int CMimeEncodedWord::BEncode(unsigned char* out, int maxLen) const {
    const int c = static_cast<int>(m_strCharset.size());
    const int fixed = c + 7;  // "=?" charset "?B?" ... "?="
    if (!UsableCharset() || maxLen < fixed)
        return 0;
    const int perWord = (kMaxWordLen - fixed) / 4 * 3;  // ((68 - c) / 4) * 3
    int o = 0;
    for (int pos = 0; pos < m_nInputLen;) {
        int separator = o > 0 ? 1 : 0;
        if (maxLen - o < fixed + separator)
            break;
        if (separator)
            out[o++] = ' ';
        std::memcpy(out + o, "=?", 2);
        std::memcpy(out + o + 2, m_strCharset.data(), c);
        std::memcpy(out + o + 2 + c, "?B?", 3);
        o += c + 5;
        int chunk = std::min(perWord, m_nInputLen - pos);
        CMimeCodeBase64 b64;
        b64.SetBreakLines(false);
        b64.SetInput(m_pInput + pos, chunk, true);
        o += b64.Encode(out + o, maxLen - o - 2);
        std::memcpy(out + o, "?=", 2);
        o += 2;
        pos += chunk;
    }
    return o;
}

int CMimeEncodedWord::QEncode(unsigned char* out, int maxLen) const {
    const int c = static_cast<int>(m_strCharset.size());
    const int open = c + 5;  // "=?" charset "?Q?"
    if (!UsableCharset() || maxLen < open + 2)
        return 0;
    const int maxText = kMaxWordLen - open - 2;  // 68 - c
    auto openWord = [&](int at) {
        std::memcpy(out + at, "=?", 2);
        std::memcpy(out + at + 2, m_strCharset.data(), c);
        std::memcpy(out + at + 2 + c, "?Q?", 3);
        return at + open;
    };
    int o = openWord(0);
    int textLen = 0;
    // Room for the closing "?=" is always kept, so every word written is whole.
    for (int i = 0; i < m_nInputLen; ++i) {
        unsigned char b = m_pInput[i];
        int piece = QWritesAsIs(b) ? 1 : 3;
        if (textLen + piece > maxText) {
            if (o + 2 + 1 + open + piece + 2 > maxLen)
                break;
            std::memcpy(out + o, "?= ", 3);
            o = openWord(o + 3);
            textLen = 0;
        }
        if (o + piece + 2 > maxLen)
            break;
        if (piece == 1) {
            out[o++] = b;
        } else {
            out[o++] = '=';
            out[o++] = kHexDigits[b >> 4];
            out[o++] = kHexDigits[b & 15];
        }
        textLen += piece;
    }
    std::memcpy(out + o, "?=", 2);
    return o + 2;
}

int CMimeEncodedWord::Decode(unsigned char* out, int maxLen) {
    m_strCharset.clear();
    const char* in = reinterpret_cast<const char*>(m_pInput);
    const char* end = in + m_nInputLen;
    ForwardFinder wordStart("=?", end);
    ForwardFinder question("?", end);
    ForwardFinder wordEnd("?=", end);
    bool seenWord = false;
    int o = 0;
    const char* p = in;
    while (p < end && o < maxLen) {
        if (end - p >= 2 && p[0] == '=' && p[1] == '?') {
            const char* q = question.From(p + 2);
            if (q && end - q >= 3 && q[2] == '?') {
                const char* text = q + 3;
                const char* close = wordEnd.From(text);
                const char* textEnd = close ? close : end;
                int textLen = static_cast<int>(textEnd - text);
                bool base64 = q[1] == 'B' || q[1] == 'b';
                if (!seenWord) {
                    seenWord = true;
                    m_strCharset.assign(p + 2, q);
                    m_nEncoding = q[1];
                }
                o += base64 ? DecodeB(text, textLen, out + o, maxLen - o)
                            : DecodeQ(text, textLen, out + o, maxLen - o);
                p = close ? close + 2 : end;
                continue;
            }
        }
        // Plain text up to the next "=?"; a "=?" that opens no word is text too.
        bool startsLikeWord = end - p >= 2 && p[0] == '=' && p[1] == '?';
        const char* next = wordStart.From(startsLikeWord ? p + 1 : p);
        const char* runEnd = next ? next : end;
        if (!(p > in && next && OnlySpaces(p, runEnd))) {
            int n = std::min(static_cast<int>(runEnd - p), maxLen - o);
            std::memcpy(out + o, p, n);
            o += n;
        }
        p = runEnd;
    }
    return o;
}
