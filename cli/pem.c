/* PEM armour to DER: the base64 text between the first BEGIN and END lines. */
#include <stdlib.h>
#include <string.h>

#include "cli/cli.h"

static int base64Value(unsigned char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

static const unsigned char* find(const unsigned char* from, const unsigned char* end, const char* text) {
    size_t n = strlen(text);
    for (const unsigned char* p = from; p + n <= end; ++p)
        if (memcmp(p, text, n) == 0)
            return p;
    return NULL;
}

int cliPemToDer(const unsigned char* text, size_t len, CliBuffer* der) {
    const unsigned char* end = text + len;
    const unsigned char* begin = find(text, end, "-----BEGIN ");
    const unsigned char* body = begin ? find(begin + 11, end, "-----") : NULL;
    body = body ? memchr(body, '\n', (size_t)(end - body)) : NULL;
    const unsigned char* stop = body ? find(body, end, "-----END ") : NULL;
    /* Legacy encrypted PEM carries headers ("Proc-Type: ...") we do not decrypt. */
    if (stop == NULL || find(body, stop, ":") != NULL)
        return -1;
    unsigned char* out = malloc((size_t)(stop - body) / 4 * 3 + 3);
    if (out == NULL)
        return -1;
    size_t n = 0;
    unsigned int bits = 0;
    int bitCount = 0, padding = 0;
    for (const unsigned char* p = body; p < stop; ++p) {
        if (*p == '\n' || *p == '\r' || *p == ' ' || *p == '\t')
            continue;
        int v = base64Value(*p);
        if (*p == '=') {
            ++padding;
            continue;
        }
        if (v < 0 || padding > 0) {
            explicit_bzero(out, n);
            free(out);
            return -1;
        }
        bits = (bits << 6) | (unsigned int)v;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            out[n++] = (unsigned char)(bits >> bitCount);
        }
    }
    out[n] = '\0';
    der->data = out;
    der->len = n;
    return 0;
}
