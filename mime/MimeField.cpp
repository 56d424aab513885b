#include <vqxml/mime/MimeEnvironment.h>
#include <vqxml/mime/MimeField.h>
#include <vqxml/mime/MimeFieldCode.h>
#include <vqxml/mime/MimeText.h>

#include "MimeLimits.hpp"

#include <cstring>
#include <memory>
#include <string>

namespace {

bool IsSpaceChar(char c) {
    return CMimeChar::IsSpace(static_cast<unsigned char>(c));
}

// A byte that may appear in an unquoted parameter value.
bool IsTokenChar(char ch) {
    unsigned char c = static_cast<unsigned char>(ch);
    return c >= 128 || !(CMimeChar::IsControl(c) || CMimeChar::IsSpace(c) || CMimeChar::IsSpecial(c));
}

std::string Quoted(const char* value) {
    std::string v = value ? value : "";
    std::string quoted = (!v.empty() && v[0] == '"') ? v : '"' + v;
    if (!(v.size() > 1 && v.back() == '"'))
        quoted += '"';
    return quoted;
}

}  // namespace

void CMimeField::Clear() {
    m_strName.clear();
    m_strValue.clear();
    m_strCharset.clear();
}

void CMimeField::GetValue(std::string& out) const {
    size_t end = m_strValue.find(';');
    if (end == std::string::npos) {
        out = m_strValue;
        return;
    }
    while (end > 0 && IsSpaceChar(m_strValue[end - 1]))
        --end;
    out.assign(m_strValue, 0, end);
}

bool CMimeField::FindParameter(const char* name, int& pos, int& len) const {
    if (!name)
        return false;
    const std::string& v = m_strValue;
    const size_t nameLen = std::strlen(name);
    size_t i = v.find(';');
    if (i == std::string::npos)
        return false;
    while (i < v.size()) {
        while (i < v.size() && (IsSpaceChar(v[i]) || v[i] == ';'))
            ++i;
        size_t eq = v.find('=', i);
        if (eq == std::string::npos)
            return false;
        size_t start = eq + 1;
        size_t end = start;
        if (start < v.size() && v[start] == '"') {
            size_t quote = v.find('"', start + 1);
            end = quote == std::string::npos ? start : quote + 1;
        } else {
            while (end < v.size() && IsTokenChar(v[end]))
                ++end;
        }
        if (i + nameLen < v.size() &&
            vqmime::memicmp(v.data() + i, name, static_cast<int>(nameLen)) == 0 &&
            (IsSpaceChar(v[i + nameLen]) || v[i + nameLen] == '=')) {
            pos = static_cast<int>(start);
            len = static_cast<int>(end - start);
            return true;
        }
        i = end;
    }
    return false;
}

bool CMimeField::GetParameter(const char* name, std::string& out) const {
    out.clear();
    int pos = 0;
    int len = 0;
    if (!FindParameter(name, pos, len))
        return false;
    out.assign(m_strValue, pos, len);
    if (!out.empty() && out.front() == '"')
        out.erase(0, 1);
    if (!out.empty() && out.back() == '"')
        out.pop_back();
    return true;
}

void CMimeField::SetParameter(const char* name, const char* value) {
    if (!name)
        return;
    int pos = 0;
    int len = 0;
    std::string quoted = Quoted(value);
    if (FindParameter(name, pos, len))
        m_strValue.replace(pos, len, quoted);
    else
        m_strValue.append("; ").append(name).append("=").append(quoted);
}

int CMimeField::Load(const char* data, int len, const char* lineBreak, char lineStart) {
    Clear();
    if (!data || len <= 0 || !lineBreak)
        return 0;
    const char* end = data + len;
    const size_t breakLen = std::strlen(lineBreak);
    const char* p = data;

    // White space first: continuation lines of nothing, skipped up to a field.
    if (IsSpaceChar(*p)) {
        if (*p == lineStart)
            return 0;
        while (IsSpaceChar(*p)) {
            const char* br = vqmime::FindString(p, lineBreak, end);
            if (!br || br + breakLen >= end || br[breakLen] == lineStart)
                return 0;
            p = br + breakLen;
        }
    }

    const char* valueStart = p;
    const char* scan = p;
    while (scan < end && *scan != '\0' && *scan != ':' && *scan != '\r' && *scan != '\n')
        ++scan;
    if (scan < end && *scan == ':') {
        const char* nameEnd = scan;
        while (nameEnd > p && IsSpaceChar(nameEnd[-1]))
            --nameEnd;
        m_strName.assign(p, nameEnd);
        valueStart = scan + 1;
    }
    while (valueStart < end && (*valueStart == ' ' || *valueStart == '\t'))
        ++valueStart;

    // The field ends at the first line break not followed by a space or tab.
    const char* fieldEnd = nullptr;
    for (const char* from = valueStart;;) {
        const char* br = vqmime::FindString(from, lineBreak, end);
        if (!br)
            return 0;
        const char* next = br + breakLen;
        if (next >= end || (*next != ' ' && *next != '\t')) {
            fieldEnd = br;
            break;
        }
        from = next;
    }

    std::unique_ptr<CFieldCodeBase> coder(CMimeEnvironment::CreateFieldCoder(m_strName.c_str()));
    coder->SetInput(valueStart, static_cast<int>(fieldEnd - valueStart), false);
    std::string decoded(static_cast<size_t>(coder->GetDecodeLength()), '\0');
    decoded.resize(coder->Decode(reinterpret_cast<unsigned char*>(&decoded[0]),
                                 static_cast<int>(decoded.size())));
    m_strValue.swap(decoded);
    m_strCharset = coder->GetCharset();
    return static_cast<int>(fieldEnd + breakLen - data);
}

int CMimeField::Store(char* out, int maxLen, const char* lineBreak) const {
    const int breakLen = static_cast<int>(std::strlen(lineBreak));
    const long long nameLen = static_cast<long long>(m_strName.size());
    if (!out || nameLen + 2 + breakLen > maxLen)
        return 0;
    std::memcpy(out, m_strName.data(), nameLen);
    std::memcpy(out + nameLen, ": ", 2);
    std::unique_ptr<CFieldCodeBase> coder(CMimeEnvironment::CreateFieldCoder(m_strName.c_str()));
    coder->SetCharset(m_strCharset.c_str());
    coder->SetInput(m_strValue.data(), static_cast<int>(m_strValue.size()), true);
    int valueLen = coder->Encode(reinterpret_cast<unsigned char*>(out + nameLen + 2),
                                 static_cast<int>(maxLen - nameLen - 2 - breakLen));
    char* tail = out + nameLen + 2 + valueLen;
    if (breakLen == 2)
        std::memcpy(tail, "\r\n", 2);
    else
        *tail = '\n';
    return static_cast<int>(nameLen + 2 + valueLen + breakLen);
}

int CMimeField::GetLength(const char* lineBreak) const {
    std::unique_ptr<CFieldCodeBase> coder(CMimeEnvironment::CreateFieldCoder(m_strName.c_str()));
    coder->SetCharset(m_strCharset.c_str());
    coder->SetInput(m_strValue.data(), static_cast<int>(m_strValue.size()), true);
    return vqmime::ClampToInt(static_cast<long long>(m_strName.size()) +
                              static_cast<long long>(std::strlen(lineBreak)) + 2 +
                              coder->GetEncodeLength());
}
