#include <vqxml/mime/MimeText.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>

namespace vqmime {

int memicmp(const char* a, const char* b, int n) {
    for (int i = 0; i < n; ++i) {
        int ca = std::tolower(static_cast<unsigned char>(a[i]));
        int cb = std::tolower(static_cast<unsigned char>(b[i]));
        if (ca != cb)
            return ca - cb;
    }
    return 0;
}

int stricmp(const char* a, const char* b) {
    size_t la = std::strlen(a);
    size_t lb = std::strlen(b);
    if (la != lb) {
        size_t diff = std::min<size_t>(la > lb ? la - lb : lb - la, INT_MAX);
        return la > lb ? static_cast<int>(diff) : -static_cast<int>(diff);
    }
    return memicmp(a, b, static_cast<int>(la));
}

const char* FindString(const char* start, const char* pattern, const char* end) {
    size_t plen = std::strlen(pattern);
    if (!start || !end || end < start || plen > static_cast<size_t>(end - start))
        return nullptr;
    // glibc's memmem is linear (two-way search) even for long, repetitive patterns.
    return static_cast<const char*>(memmem(start, end - start, pattern, plen));
}

}  // namespace vqmime
