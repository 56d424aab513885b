/* Reading inputs and writing outputs: whole files or the standard streams. */
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "cli/cli.h"

static int readStream(FILE* in, CliBuffer* out) {
    size_t cap = 1 << 16, len = 0;
    unsigned char* data = malloc(cap);
    while (data != NULL) {
        len += fread(data + len, 1, cap - len - 1, in);
        if (ferror(in) || feof(in))
            break;
        /* The library takes lengths as int. */
        if (cap > INT_MAX) {
            errno = EFBIG;
            explicit_bzero(data, len);
            free(data);
            return -1;
        }
        unsigned char* grown = realloc(data, cap * 2);
        if (grown == NULL) {
            explicit_bzero(data, len);
            free(data);
        }
        data = grown;
        cap *= 2;
    }
    if (data == NULL || ferror(in)) {
        if (data != NULL)
            explicit_bzero(data, len);
        free(data);
        return -1;
    }
    data[len] = '\0';
    out->data = data;
    out->len = len;
    return 0;
}

int cliReadFile(const char* path, CliBuffer* out) {
    out->data = NULL;
    out->len = 0;
    if (strcmp(path, "-") == 0) {
        if (readStream(stdin, out) == 0)
            return 0;
        cliError("cannot read the standard input: %s", strerror(errno));
        return CLI_EXIT_NO_INPUT;
    }
    FILE* in = fopen(path, "rb");
    int rc = in != NULL ? readStream(in, out) : -1;
    if (rc != 0)
        cliError("cannot read %s: %s", path, strerror(errno));
    if (in != NULL)
        fclose(in);
    return rc == 0 ? 0 : CLI_EXIT_NO_INPUT;
}

int cliReadFiles(const CliList* paths, CliBuffer* out) {
    out->data = NULL;
    out->len = 0;
    for (int i = 0; i < paths->count; ++i) {
        CliBuffer file;
        int rc = cliReadFile(paths->items[i], &file);
        if (rc != 0) {
            cliFreeBuffer(out);
            return rc;
        }
        /* So that the next file's PEM starts on a line of its own. */
        const int text = file.len > 0 && file.data[0] != 0x30 && file.data[file.len - 1] != '\n';
        unsigned char* grown = realloc(out->data, out->len + file.len + (size_t)text + 1);
        if (grown == NULL) {
            cliFreeBuffer(&file);
            cliFreeBuffer(out);
            cliError("out of memory reading %s", paths->items[i]);
            return CLI_EXIT_NO_INPUT;
        }
        out->data = grown;
        memcpy(out->data + out->len, file.data, file.len);
        out->len += file.len;
        if (text)
            out->data[out->len++] = '\n';
        out->data[out->len] = '\0';
        cliFreeBuffer(&file);
    }
    return 0;
}

int cliReadDerOrPem(const char* path, CliBuffer* out) {
    CliBuffer file;
    int rc = cliReadFile(path, &file);
    if (rc != 0)
        return rc;
    size_t start = 0;
    while (start < file.len && (file.data[start] == ' ' || file.data[start] == '\n' || file.data[start] == '\r'))
        ++start;
    if (file.len - start < 5 || memcmp(file.data + start, "-----", 5) != 0) {
        *out = file;
        return 0;
    }
    rc = cliPemToDer(file.data, file.len, out);
    cliFreeBuffer(&file);
    if (rc != 0) {
        cliError("%s is not readable PEM (an encrypted PEM key must be converted to PKCS #8 DER)", path);
        return CLI_EXIT_DATA;
    }
    return 0;
}

void cliFreeBuffer(CliBuffer* buffer) {
    if (buffer->data != NULL)
        explicit_bzero(buffer->data, buffer->len);
    free(buffer->data);
    buffer->data = NULL;
    buffer->len = 0;
}

static int writeAll(int fd, const unsigned char* data, size_t len) {
    while (len > 0) {
        ssize_t n = write(fd, data, len);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return -1;
        data += n;
        len -= (size_t)n;
    }
    return 0;
}

int cliWriteFile(const char* path, const void* data, size_t len, int secret) {
    if (path == NULL || strcmp(path, "-") == 0) {
        fflush(stdout);
        if (writeAll(STDOUT_FILENO, data, len) == 0)
            return 0;
        cliError("cannot write the standard output: %s", strerror(errno));
        return CLI_EXIT_CANT_CREATE;
    }
    int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC, secret ? 0600 : 0644);
    int rc = fd >= 0 ? writeAll(fd, data, len) : -1;
    if (fd >= 0 && close(fd) != 0)
        rc = -1;
    if (rc != 0) {
        cliError("cannot write %s: %s", path, strerror(errno));
        return CLI_EXIT_CANT_CREATE;
    }
    return 0;
}

int cliPassword(const char* given, const char* file, char** password) {
    *password = NULL;
    if (given != NULL) {
        *password = strdup(given);
        return *password != NULL ? 0 : CLI_EXIT_DATA;
    }
    if (file == NULL)
        return 0;
    CliBuffer text;
    int rc = cliReadFile(file, &text);
    if (rc != 0)
        return rc;
    size_t lineLen = strcspn((char*)text.data, "\r\n");
    explicit_bzero(text.data + lineLen, text.len - lineLen);
    *password = (char*)text.data;
    return 0;
}

void cliFreePassword(char* password) {
    if (password != NULL)
        explicit_bzero(password, strlen(password));
    free(password);
}

int cliWriteLine(const char* path, const char* text) {
    size_t len = strlen(text);
    char* line = malloc(len + 2);
    if (line == NULL)
        return CLI_EXIT_CANT_CREATE;
    memcpy(line, text, len);
    line[len] = '\n';
    line[len + 1] = '\0';
    int rc = cliWriteFile(path, line, len + 1, 0);
    free(line);
    return rc;
}
