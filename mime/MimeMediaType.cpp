#include <vqxml/mime/MimeEntity.h>
#include <vqxml/mime/MimeText.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

const char kContentType[] = "Content-Type";

// Counter of generated boundaries, 1 to 9: two boundaries made in the same
// second by the same object still differ. Handles on several threads share it.
std::atomic<unsigned> s_nPartNumber{0};

bool StartsWithIgnoringCase(const char* text, const char* prefix) {
    size_t n = std::strlen(prefix);
    return std::strlen(text) >= n && vqmime::memicmp(text, prefix, static_cast<int>(n)) == 0;
}

std::string ContentTypeParameter(const CMimeHeader& header, const char* attr) {
    std::string value;
    header.GetParameter(kContentType, attr, value);
    return value;
}

}  // namespace

const char* const CMimeHeader::m_TypeTable[] = {
    "text", "image", "audio", "vedio", "application", "multipart", "message", nullptr};

const CMimeHeader::MediaTypeCvt CMimeHeader::m_TypeCvtTable[] = {
    {MEDIA_APPLICATION, "xml", "xml"},
    {MEDIA_APPLICATION, "msword", "doc"},
    {MEDIA_APPLICATION, "rtf", "rtf"},
    {MEDIA_APPLICATION, "vnd.ms-excel", "xls"},
    {MEDIA_APPLICATION, "vnd.ms-powerpoint", "ppt"},
    {MEDIA_APPLICATION, "pdf", "pdf"},
    {MEDIA_APPLICATION, "zip", "zip"},
    {MEDIA_IMAGE, "jpeg", "jpeg"},
    {MEDIA_IMAGE, "jpeg", "jpg"},
    {MEDIA_IMAGE, "gif", "gif"},
    {MEDIA_IMAGE, "tiff", "tif"},
    {MEDIA_IMAGE, "tiff", "tiff"},
    {MEDIA_AUDIO, "basic", "wav"},
    {MEDIA_AUDIO, "basic", "mp3"},
    {MEDIA_VIDEO, "mpeg", "mpeg"},
    {MEDIA_VIDEO, "mpeg", "mpg"},
    {MEDIA_UNKNOWN, "", ""},
};

int CMimeHeader::GetMediaType() const {
    const char* type = GetFieldValue(kContentType);
    if (!type)
        return MEDIA_TEXT;
    for (int i = 0; m_TypeTable[i]; ++i)
        if (StartsWithIgnoringCase(type, m_TypeTable[i]))
            return i;
    return MEDIA_UNKNOWN;
}

std::string CMimeHeader::GetMainType() const {
    const char* type = GetFieldValue(kContentType);
    if (!type)
        return "text";
    const char* slash = std::strchr(type, '/');
    return slash ? std::string(type, slash) : std::string(type);
}

std::string CMimeHeader::GetSubType() const {
    CFieldList::const_iterator it = FindField(kContentType);
    if (it == m_listFields.end())
        return "plain";
    std::string type;
    it->GetValue(type);
    size_t slash = type.find('/');
    return slash == std::string::npos ? type : type.substr(slash + 1);
}

void CMimeHeader::SetCharset(const char* charset) {
    if (FindField(kContentType) == m_listFields.end())
        SetFieldValue(kContentType, "text/plain");
    SetParameter(kContentType, "charset", charset);
}

std::string CMimeHeader::GetCharset() const {
    return ContentTypeParameter(*this, "charset");
}

void CMimeHeader::SetName(const char* name) {
    if (!name)
        return;
    if (FindField(kContentType) == m_listFields.end()) {
        std::string type = "application/octet-stream";
        if (const char* dot = std::strrchr(name, '.')) {
            for (const MediaTypeCvt* cvt = m_TypeCvtTable; cvt->nMediaType != MEDIA_UNKNOWN; ++cvt) {
                if (vqmime::stricmp(dot + 1, cvt->pszFileExt) == 0) {
                    type = std::string(m_TypeTable[cvt->nMediaType]) + "/" + cvt->pszSubType;
                    break;
                }
            }
        }
        SetFieldValue(kContentType, type.c_str());
    }
    SetParameter(kContentType, "name", name);
}

std::string CMimeHeader::GetName() const {
    return ContentTypeParameter(*this, "name");
}

void CMimeHeader::SetBoundary(const char* boundary) {
    char generated[80];
    if (!boundary) {
        uint32_t salt = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(this));
        std::srand(static_cast<unsigned>(std::time(nullptr)) ^ salt);
        int r1 = std::rand();
        int r2 = std::rand();
        const unsigned part = s_nPartNumber.fetch_add(1) % 9 + 1;
        std::snprintf(generated, sizeof generated, "__=_Part_Boundary_%03u_%06d.%06d", part, r2, r1);
        boundary = generated;
    }
    CFieldList::iterator it = FindField(kContentType);
    if (it == m_listFields.end()) {
        SetFieldValue(kContentType, "multipart/mixed");
    } else if (!StartsWithIgnoringCase(it->GetValue(), "multipart")) {
        it->SetValue("multipart/mixed");
    }
    SetParameter(kContentType, "boundary", boundary);
}

std::string CMimeHeader::GetBoundary() const {
    return ContentTypeParameter(*this, "boundary");
}
