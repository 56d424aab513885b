#include <vqxml/mime/MimeCode.h>
#include <vqxml/mime/MimeEntity.h>
#include <vqxml/mime/MimeEnvironment.h>
#include <vqxml/mime/MimeText.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

namespace {

// Multipart levels being loaded on this thread: hostile nesting must not
// exhaust the stack.
thread_local int t_loadDepth = 0;

class DepthGuard {
public:
    DepthGuard() { ++t_loadDepth; }
    ~DepthGuard() { --t_loadDepth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;
};

}  // namespace

int CMimeBody::Load(const char* data, int len) {
    if (t_loadDepth > MAX_NESTING_DEPTH)
        return -1;
    DepthGuard depth;
    Clear();
    if (!data || len <= 0)
        return 0;
    const char* end = data + len;
    DetectLineBreakMode(data, len);
    const std::string lineBreak = GetLineBreak();
    const int breakLen = static_cast<int>(lineBreak.size());

    // A package may start with its first delimiter line, its header given
    // elsewhere: it is multipart/related and that line names the boundary.
    const bool headerless = data[0] == '-';
    int bodyStart = 0;
    if (headerless) {
        const char* lineEnd = vqmime::FindString(data, lineBreak.c_str(), end);
        if (!lineEnd)
            return 0;
        std::string boundary = lineEnd - data > 2 ? std::string(data + 2, lineEnd) : std::string();
        std::string header = "Content-Type: multipart/related; type=\"text/xml\"; boundary=\"" +
                             boundary + "\"" + lineBreak + lineBreak;
        int taken = CMimeHeader::Load(header.data(), static_cast<int>(header.size()));
        if (taken < 1)
            return taken;
    } else {
        bodyStart = CMimeHeader::Load(data, len);
        if (bodyStart < 1)
            return bodyStart;
    }

    std::string delimiter;
    const char* firstDelimiter = nullptr;
    int contentEnd = len;
    if (GetMediaType() == MEDIA_MULTIPART) {
        std::string boundary = GetBoundary();
        if (!boundary.empty()) {
            delimiter = (headerless ? "--" : lineBreak + "--") + boundary;
            // From two bytes back: the delimiter's line break may be the
            // header's empty line.
            firstDelimiter = vqmime::FindString(data + std::max(bodyStart - 2, 0),
                                                delimiter.c_str(), end);
            if (firstDelimiter)
                contentEnd = static_cast<int>(firstDelimiter - data) + (headerless ? 0 : breakLen);
        }
    }
    contentEnd = std::max(contentEnd, bodyStart);

    if (contentEnd > bodyStart) {
        std::unique_ptr<CMimeCodeBase> coder(CMimeEnvironment::CreateCoder(GetTransferEncoding()));
        coder->SetInput(data + bodyStart, contentEnd - bodyStart, false);
        int bound = coder->GetDecodeLength();
        unsigned char* buffer = NewContentBuffer(bound);
        if (!buffer)
            return -1;
        AdoptContent(buffer, coder->Decode(buffer, bound));
    }
    if (!firstDelimiter)
        return len;
    return LoadParts(data, len, static_cast<int>(firstDelimiter - data), delimiter);
}

int CMimeBody::LoadParts(const char* data, int len, int pos, const std::string& delimiter) {
    const char* end = data + len;
    const std::string lineBreak = GetLineBreak();
    const int breakLen = static_cast<int>(lineBreak.size());
    const char* at = vqmime::FindString(data + pos, delimiter.c_str(), end);
    while (at) {
        const char* afterDelimiter = at + delimiter.size();
        const char* lineEnd = vqmime::FindString(afterDelimiter, lineBreak.c_str(), end);
        if (!lineEnd)
            break;
        if (end - afterDelimiter >= 2 && afterDelimiter[0] == '-' && afterDelimiter[1] == '-')
            return static_cast<int>(lineEnd - data) + breakLen;

        const char* partStart = lineEnd + breakLen;
        const char* next = vqmime::FindString(partStart, delimiter.c_str(), end);
        const int partLen = static_cast<int>((next ? next : end) - partStart);
        CMimeHeader scratch;
        scratch.SetLineBreakMode(m_nLineBreakMode);
        scratch.Load(partStart, partLen);
        CMimeBody* part = CreatePart(scratch.GetMainType().c_str());
        int taken = part->Load(partStart, partLen);
        if (taken < 0) {
            ErasePart(part);
            return taken;
        }
        at = next;
    }
    return len;
}
