#include <vqxml/mime/MimeCode.h>

#include <algorithm>
#include <cstring>

CMimeCodeBase::~CMimeCodeBase() = default;

int CMimeCodeBase::GetEncodeLength() const {
    return m_nInputLen;
}

int CMimeCodeBase::GetDecodeLength() const {
    return m_nInputLen;
}

int CMimeCodeBase::Encode(unsigned char* out, int maxLen) const {
    int n = std::max(0, std::min(m_nInputLen, maxLen));
    if (n > 0)
        std::memcpy(out, m_pInput, n);
    return n;
}

int CMimeCodeBase::Decode(unsigned char* out, int maxLen) {
    return CMimeCodeBase::Encode(out, maxLen);
}
