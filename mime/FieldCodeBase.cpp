#include <vqxml/mime/MimeEnvironment.h>
#include <vqxml/mime/MimeFieldCode.h>

#include "MimeLimits.hpp"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

const int kFoldAt = 76;

// Copies pieces of an encoded field value into the output. With folding on it
// keeps the line length and inserts CR LF TAB before the last white space of a
// line that reaches 76 characters.
class FieldWriter {
public:
    FieldWriter(unsigned char* out, int maxLen, bool folding)
        : m_out(out), m_max(maxLen), m_folding(folding) {}

    // False once the output is full.
    bool Put(const unsigned char* p, int n) {
        if (n <= 0)
            return true;
        if (!m_folding) {
            int k = std::min(n, m_max - m_o);
            std::memcpy(m_out + m_o, p, k);
            m_o += k;
            return k == n;
        }
        for (int i = 0; i < n; ++i)
            if (!PutFolding(p[i]))
                return false;
        return true;
    }
    bool PutFoldingBreak() {
        if (m_o + 3 > m_max)
            return false;
        std::memcpy(m_out + m_o, "\r\n\t", 3);
        m_o += 3;
        m_lineLen = 1;
        m_breakAt = -1;
        return true;
    }
    int Written() const { return m_o; }

private:
    bool PutFolding(unsigned char c) {
        bool lineBreak = c == '\r' || c == '\n';
        if (lineBreak) {
            m_lineLen = 0;
            m_breakAt = -1;
        } else if (m_lineLen > 0 && CMimeChar::IsSpace(c)) {
            m_breakAt = m_o;
        }
        if (m_lineLen >= kFoldAt && m_breakAt >= 0 && m_o + 3 <= m_max) {
            int moved = m_o - m_breakAt;
            std::memmove(m_out + m_breakAt + 3, m_out + m_breakAt, moved);
            std::memcpy(m_out + m_breakAt, "\r\n\t", 3);
            m_o += 3;
            m_lineLen = moved + 1;
            m_breakAt = -1;
        }
        if (m_o >= m_max)
            return false;
        m_out[m_o++] = c;
        if (!lineBreak)
            ++m_lineLen;
        return true;
    }

    unsigned char* m_out;
    int m_max;
    bool m_folding;
    int m_o = 0;
    int m_lineLen = 0;
    int m_breakAt = -1;
};

// Q when it is no longer than base64 or when at most one byte in five needs
// escaping; B otherwise.
int ChooseEncoding(int n, int nonAscii) {
    long long qLen = static_cast<long long>(n) + 2LL * nonAscii;
    long long bLen = (static_cast<long long>(n) + 2) / 3 * 4;
    return qLen <= bLen || static_cast<long long>(n) >= 5LL * nonAscii ? 'Q' : 'B';
}

}  // namespace

const std::string& CFieldCodeBase::EffectiveCharset() const {
    static const std::string none;
    const std::string& cs = m_strCharset.empty() ? CMimeEnvironment::GetDefaultCharset()
                                                 : m_strCharset;
    return cs.size() <= CMimeEncodedWord::MAX_CHARSET_LEN ? cs : none;
}

bool CFieldCodeBase::CopiesOnly() const {
    return EffectiveCharset().empty() && !CMimeEnvironment::AutoFolding();
}

bool CFieldCodeBase::IsFoldingChar(char) const {
    return false;
}

int CFieldCodeBase::GetDelimeter() const {
    return 0;
}

int CFieldCodeBase::FindSymbol(const char* p, int len, int& closing, int& nonAscii) const {
    nonAscii = 0;
    for (int i = 0; i < len; ++i) {
        unsigned char c = static_cast<unsigned char>(p[i]);
        if (c >= 128) {
            ++nonAscii;
            continue;
        }
        if (closing != 0) {
            if (c == closing) {
                closing = 0;
                return i;
            }
            continue;
        }
        if (CMimeChar::IsSpace(c) || CMimeChar::IsSpecial(c)) {
            if (c == '(')
                closing = ')';
            else if (c == '<')
                closing = '>';
            else if (c == '"')
                closing = '"';
            return i;
        }
    }
    return len;
}

int CFieldCodeBase::GetEncodeLength() const {
    if (CopiesOnly())
        return m_nInputLen;
    const std::string& charset = EffectiveCharset();
    const char* in = reinterpret_cast<const char*>(m_pInput);
    long long total = 0;
    int closing = GetDelimeter();
    for (int pos = 0; pos < m_nInputLen;) {
        int nonAscii = 0;
        int len = FindSymbol(in + pos, m_nInputLen - pos, closing, nonAscii);
        if (nonAscii > 0 && !charset.empty()) {
            CMimeEncodedWord word;
            word.SetEncoding(ChooseEncoding(len, nonAscii), charset.c_str());
            word.SetInput(in + pos, len, true);
            total += word.GetEncodeLength();
        } else {
            total += len;
        }
        pos += len;
        if (pos < m_nInputLen) {
            total += IsFoldingChar(in[pos]) ? 4 : 1;
            ++pos;
        }
    }
    if (CMimeEnvironment::AutoFolding())
        total += total / kFoldAt * 6;
    return vqmime::ClampToInt(total);
}

int CFieldCodeBase::Encode(unsigned char* out, int maxLen) const {
    if (maxLen <= 0)
        return 0;
    if (CopiesOnly())
        return CMimeCodeBase::Encode(out, maxLen);
    const std::string& charset = EffectiveCharset();
    const unsigned char* in = m_pInput;
    FieldWriter writer(out, maxLen, CMimeEnvironment::AutoFolding());
    std::vector<unsigned char> word;
    int closing = GetDelimeter();
    for (int pos = 0; pos < m_nInputLen;) {
        int nonAscii = 0;
        int len = FindSymbol(reinterpret_cast<const char*>(in + pos), m_nInputLen - pos, closing,
                             nonAscii);
        bool whole;
        if (nonAscii > 0 && !charset.empty()) {
            CMimeEncodedWord coder;
            coder.SetEncoding(ChooseEncoding(len, nonAscii), charset.c_str());
            coder.SetInput(in + pos, len, true);
            word.resize(coder.GetEncodeLength());
            whole = writer.Put(word.data(), coder.Encode(word.data(), static_cast<int>(word.size())));
        } else {
            whole = writer.Put(in + pos, len);
        }
        pos += len;
        if (!whole || pos >= m_nInputLen)
            break;
        unsigned char ending = in[pos++];
        if (!writer.Put(&ending, 1))
            break;
        if (IsFoldingChar(static_cast<char>(ending)) && writer.PutFoldingBreak()) {
            while (pos < m_nInputLen && CMimeChar::IsSpace(in[pos]))
                ++pos;
        }
    }
    return writer.Written();
}

int CFieldCodeBase::Decode(unsigned char* out, int maxLen) {
    CMimeEncodedWord words;
    words.SetInput(m_pInput, m_nInputLen, false);
    std::string text(static_cast<size_t>(m_nInputLen), '\0');
    text.resize(words.Decode(reinterpret_cast<unsigned char*>(&text[0]), m_nInputLen));
    m_strCharset = words.GetCharset();
    if (CMimeEnvironment::AutoFolding())
        UnfoldField(text);
    int n = std::max(0, std::min(static_cast<int>(text.size()), maxLen));
    if (n > 0)
        std::memcpy(out, text.data(), n);
    return n;
}

// One left-to-right pass gives the same result as replacing, from the last to
// the first, each CR LF and the white space after it by a single space: every
// replaced run is itself white space, so it merges into the run before it.
void CFieldCodeBase::UnfoldField(std::string& s) const {
    std::string result;
    result.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) {
        if (s[i] == '\r' && i + 1 < s.size() && s[i + 1] == '\n') {
            i += 2;
            while (i < s.size() && CMimeChar::IsSpace(static_cast<unsigned char>(s[i])))
                ++i;
            result += ' ';
        } else {
            result += s[i++];
        }
    }
    s.swap(result);
}

CFieldCodeBase* CFieldCodeText::CreateObject() {
    return new CFieldCodeText;
}

int CFieldCodeText::GetDelimeter() const {
    return 0xFF;
}

CFieldCodeBase* CFieldCodeAddress::CreateObject() {
    return new CFieldCodeAddress;
}

bool CFieldCodeAddress::IsFoldingChar(char c) const {
    return c == ',' || c == ':';
}

CFieldCodeBase* CFieldCodeParameter::CreateObject() {
    return new CFieldCodeParameter;
}

bool CFieldCodeParameter::IsFoldingChar(char c) const {
    return c == ';';
}
