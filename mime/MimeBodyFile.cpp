#include <vqxml/mime/MimeEntity.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

const int kChunk = 512;

class FileCloser {
public:
    explicit FileCloser(int fd) : m_fd(fd) {}
    ~FileCloser() { ::close(m_fd); }
    FileCloser(const FileCloser&) = delete;
    FileCloser& operator=(const FileCloser&) = delete;

private:
    int m_fd;
};

const char* BaseName(const char* path) {
    const char* name = path;
    for (const char* p = path; *p; ++p)
        if (*p == '/' || *p == '\\')
            name = p + 1;
    return name;
}

}  // namespace

int CMimeBody::ReadFromFile(const char* path) {
    if (!path)
        return 0;
    int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return 0;
    FileCloser closer(fd);
    off_t size = ::lseek(fd, 0, SEEK_END);
    if (size < 0 || size > INT_MAX - 4 || ::lseek(fd, 0, SEEK_SET) != 0)
        return 0;
    FreeContent();
    if (size > 0) {
        unsigned char* buffer = NewContentBuffer(static_cast<int>(size));
        if (!buffer)
            return 0;
        // Never more than the size found: a file growing meanwhile cannot
        // overrun the buffer.
        int total = 0;
        while (total < size) {
            ssize_t n = ::read(fd, buffer + total, std::min<off_t>(kChunk, size - total));
            if (n < 0) {
                std::free(buffer);
                return 0;
            }
            if (n == 0)
                break;
            total += static_cast<int>(n);
        }
        AdoptContent(buffer, total);
    }
    SetName(BaseName(path));
    return 1;
}

int CMimeBody::WriteToFile(const char* path) const {
    if (m_nTextLen <= 0)
        return 1;
    if (!path)
        return 0;
    int fd = ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return 0;
    FileCloser closer(fd);
    for (int done = 0; done < m_nTextLen;) {
        ssize_t n = ::write(fd, m_pText + done, std::min(kChunk, m_nTextLen - done));
        if (n < 1)
            return 0;
        done += static_cast<int>(n);
    }
    return 1;
}
