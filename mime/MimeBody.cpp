#include <vqxml/mime/MimeEntity.h>
#include <vqxml/mime/MimeEnvironment.h>
#include <vqxml/mime/MimeCode.h>
#include <vqxml/mime/MimeText.h>

#include "MimeLimits.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

CMimeBody::CMimeBody() : m_pText(nullptr), m_nTextLen(0), m_itFind(m_listBodies.end()) {}

CMimeBody::~CMimeBody() {
    DeleteAll();
    FreeContent();
}

void CMimeBody::Clear() {
    DeleteAll();
    FreeContent();
    CMimeHeader::Clear();
}

void CMimeBody::FreeContent() {
    std::free(m_pText);
    m_pText = nullptr;
    m_nTextLen = 0;
}

// Content buffers hold 4 bytes more than the content and stay NUL-terminated.
unsigned char* CMimeBody::NewContentBuffer(int len) {
    return static_cast<unsigned char*>(std::malloc(static_cast<size_t>(len) + 4));
}

void CMimeBody::AdoptContent(unsigned char* buffer, int len) {
    std::free(m_pText);
    buffer[len] = '\0';
    m_pText = buffer;
    m_nTextLen = len;
}

int CMimeBody::SetText(const char* text, int len) {
    if (len < 0)
        return -1;
    if (len == 0 && text)
        len = static_cast<int>(std::min<size_t>(std::strlen(text), INT_MAX - 4));
    if (len == 0 || !text) {
        FreeContent();
        return 0;
    }
    unsigned char* buffer = NewContentBuffer(len);
    if (!buffer)
        return -1;
    std::memcpy(buffer, text, len);
    AdoptContent(buffer, len);
    return len;
}

int CMimeBody::GetText(std::string& out) const {
    if (m_pText)
        out.assign(reinterpret_cast<const char*>(m_pText), m_nTextLen);
    else
        out.clear();
    return m_nTextLen;
}

int CMimeBody::GetText(char* out, int maxLen) const {
    return GetText(reinterpret_cast<unsigned char*>(out), maxLen);
}

int CMimeBody::GetText(unsigned char* out, int maxLen) const {
    int n = std::max(0, std::min(m_nTextLen, maxLen));
    if (n > 0)
        std::memcpy(out, m_pText, n);
    return n;
}

int CMimeBody::SetMessage(const CMimeMessage* msg) {
    if (!msg)
        return 0;
    int bound = msg->GetLength();
    unsigned char* buffer = NewContentBuffer(bound);
    if (!buffer)
        return 0;
    int written = msg->Store(reinterpret_cast<char*>(buffer), bound);
    if (written < 0) {
        std::free(buffer);
        return 0;
    }
    AdoptContent(buffer, written);
    const char* type = GetContentType();
    if (!type || vqmime::memicmp(type, "message", 7) != 0 || std::strlen(type) < 7)
        SetContentType("message/rfc822");
    return 1;
}

int CMimeBody::GetMessage(CMimeMessage* msg) const {
    return msg ? msg->Load(reinterpret_cast<const char*>(m_pText), m_nTextLen) : 0;
}

CMimeBody* CMimeBody::CreatePart(const char* mediaType, CMimeBody* where) {
    CMimeBody* part = CMimeEnvironment::CreateBodyPart(mediaType);
    // Appending must not walk the list: a package may hold many thousand parts.
    CBodyList::iterator at = where ? std::find(m_listBodies.begin(), m_listBodies.end(), where)
                                   : m_listBodies.end();
    m_listBodies.insert(at, part);
    return part;
}

void CMimeBody::ErasePart(CMimeBody* part) {
    CBodyList::iterator it = std::find(m_listBodies.begin(), m_listBodies.end(), part);
    if (it == m_listBodies.end())
        return;
    if (m_itFind == it)
        ++m_itFind;
    m_listBodies.erase(it);
    delete part;
}

void CMimeBody::DeleteAll() {
    for (CMimeBody* part : m_listBodies)
        delete part;
    m_listBodies.clear();
    m_itFind = m_listBodies.end();
}

// The cursor points at the part that FindNextPart returns next.
CMimeBody* CMimeBody::FindFirstPart() {
    m_itFind = m_listBodies.begin();
    return FindNextPart();
}

CMimeBody* CMimeBody::FindNextPart() {
    return m_itFind == m_listBodies.end() ? nullptr : *m_itFind++;
}

int CMimeBody::GetBodyPartList(CBodyList& out) const {
    if (GetMediaType() != MEDIA_MULTIPART) {
        out.push_back(const_cast<CMimeBody*>(this));
        return 1;
    }
    int count = 0;
    for (const CMimeBody* part : m_listBodies)
        count += part->GetBodyPartList(out);
    return count;
}

int CMimeBody::GetAttachmentList(CBodyList& out) const {
    CBodyList leaves;
    GetBodyPartList(leaves);
    int count = 0;
    for (CMimeBody* leaf : leaves) {
        if (!leaf->GetName().empty()) {
            out.push_back(leaf);
            ++count;
        }
    }
    return count;
}

int CMimeBody::GetLength() const {
    long long total = CMimeHeader::GetLength();
    std::unique_ptr<CMimeCodeBase> coder(CMimeEnvironment::CreateCoder(GetTransferEncoding()));
    coder->SetInput(m_pText, m_nTextLen, true);
    total += coder->GetEncodeLength();
    if (!m_listBodies.empty()) {
        long long delimiter = 2 * std::strlen(GetLineBreak()) + 2 + GetBoundary().size();
        for (const CMimeBody* part : m_listBodies)
            total += delimiter + part->GetLength();
        total += delimiter + 2;
    }
    return vqmime::ClampToInt(total);
}

int CMimeBody::Store(char* out, int maxLen) const {
    int written = CMimeHeader::Store(out, maxLen);
    if (written < 1)
        return written;
    std::unique_ptr<CMimeCodeBase> coder(CMimeEnvironment::CreateCoder(GetTransferEncoding()));
    coder->SetInput(m_pText, m_nTextLen, true);
    written += coder->Encode(reinterpret_cast<unsigned char*>(out + written), maxLen - written);
    if (m_listBodies.empty())
        return written;
    return StoreParts(out, maxLen, written);
}

int CMimeBody::StoreParts(char* out, int maxLen, int written) const {
    const std::string boundary = GetBoundary();
    if (boundary.empty())
        return -1;
    const std::string lineBreak = GetLineBreak();
    const std::string delimiter = lineBreak + "--" + boundary + lineBreak;
    const int delimLen = static_cast<int>(delimiter.size());
    const int breakLen = static_cast<int>(lineBreak.size());
    bool first = true;
    for (const CMimeBody* part : m_listBodies) {
        if (maxLen - written < delimLen)
            break;
        // The first delimiter's line break doubles as the end of the header.
        if (first && written >= breakLen &&
            std::memcmp(out + written - breakLen, lineBreak.data(), breakLen) == 0)
            written -= breakLen;
        first = false;
        std::memcpy(out + written, delimiter.data(), delimLen);
        written += delimLen;
        int n = part->Store(out + written, maxLen - written);
        if (n < 0)
            return n;
        written += n;
    }
    const std::string closing = lineBreak + "--" + boundary + "--" + lineBreak;
    if (maxLen - written >= delimLen + 2) {
        std::memcpy(out + written, closing.data(), closing.size());
        written += static_cast<int>(closing.size());
    }
    return written;
}
