#include <vqxml/mime/MimeEntity.h>
#include <vqxml/mime/MimeText.h>

#include "MimeLimits.hpp"

#include <algorithm>
#include <cstring>

CMimeHeader::~CMimeHeader() = default;

void CMimeHeader::Clear() {
    m_listFields.clear();
}

void CMimeHeader::DetectLineBreakMode(const char* data, int len) {
    if (m_bModePinned)
        return;
    m_nLineBreakMode = 0;
    if (vqmime::FindString(data, "\r\n", data + len))
        m_nLineBreakMode = 1;
    else if (std::memchr(data, '\n', len))
        m_nLineBreakMode = 2;
}

int CMimeHeader::Load(const char* data, int len) {
    m_listFields.clear();
    if (!data || len <= 0)
        return 0;
    const char* lineBreak = GetLineBreak();
    const int breakLen = static_cast<int>(std::strlen(lineBreak));
    int offset = 0;
    CMimeField field;
    while (offset < len && data[offset] != '\0' && data[offset] != lineBreak[0]) {
        int taken = field.Load(data + offset, len - offset, lineBreak, lineBreak[0]);
        if (taken < 1)
            return taken;
        m_listFields.push_back(std::move(field));
        offset += taken;
    }
    return std::min(offset + breakLen, len);
}

int CMimeHeader::Store(char* out, int maxLen) const {
    const char* lineBreak = GetLineBreak();
    const int breakLen = static_cast<int>(std::strlen(lineBreak));
    int written = 0;
    for (const CMimeField& field : m_listFields) {
        int n = field.Store(out + written, maxLen - written, lineBreak);
        if (n < 1)
            return n;
        written += n;
    }
    if (maxLen - written < breakLen)
        return 0;
    std::memcpy(out + written, lineBreak, breakLen);
    return written + breakLen;
}

int CMimeHeader::GetLength() const {
    const char* lineBreak = GetLineBreak();
    long long total = static_cast<long long>(std::strlen(lineBreak));
    for (const CMimeField& field : m_listFields)
        total += field.GetLength(lineBreak);
    return vqmime::ClampToInt(total);
}

CMimeHeader::CFieldList::iterator CMimeHeader::FindField(const char* name) {
    return std::find_if(m_listFields.begin(), m_listFields.end(), [name](const CMimeField& f) {
        return name && vqmime::stricmp(f.GetName(), name) == 0;
    });
}

CMimeHeader::CFieldList::const_iterator CMimeHeader::FindField(const char* name) const {
    return const_cast<CMimeHeader*>(this)->FindField(name);
}

void CMimeHeader::SetFieldValue(const char* name, const char* value, const char* charset) {
    CFieldList::iterator it = FindField(name);
    if (it == m_listFields.end())
        it = m_listFields.emplace(m_listFields.end());
    it->SetName(name);
    it->SetValue(value);
    it->SetCharset(charset);
}

const char* CMimeHeader::GetFieldValue(const char* name) const {
    CFieldList::const_iterator it = FindField(name);
    return it == m_listFields.end() ? nullptr : it->GetValue();
}

const char* CMimeHeader::GetFieldCharset(const char* name) const {
    CFieldList::const_iterator it = FindField(name);
    return it == m_listFields.end() ? nullptr : it->GetCharset();
}

bool CMimeHeader::SetParameter(const char* fieldName, const char* attr, const char* value) {
    CFieldList::iterator it = FindField(fieldName);
    if (it == m_listFields.end())
        return false;
    it->SetParameter(attr, value);
    return true;
}

bool CMimeHeader::GetParameter(const char* fieldName, const char* attr, std::string& out) const {
    out.clear();
    CFieldList::const_iterator it = FindField(fieldName);
    return it != m_listFields.end() && it->GetParameter(attr, out);
}
