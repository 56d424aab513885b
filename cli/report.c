/* The library's statuses as exit codes, its messages on stderr in the terminal's
 * encoding, and the handle every command works on. */
#include <iconv.h>
#include <stdarg.h>
#include <langinfo.h>
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/cli.h"

static const char* g_commandName = NULL;

void cliSetCommand(const CliCommand* cmd) {
    g_commandName = cmd->name;
}

const char* cliCommandName(void) {
    return g_commandName != NULL ? g_commandName : "";
}

static void printPrefix(void) {
    fprintf(stderr, g_commandName ? "vqxml %s: " : "vqxml: ", g_commandName);
}

void cliError(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    printPrefix();
    vfprintf(stderr, fmt, args);
    fputc('\n', stderr);
    va_end(args);
}

int cliUsageError(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    printPrefix();
    vfprintf(stderr, fmt, args);
    fprintf(stderr, "\nTry 'vqxml %s --help'.\n", cliCommandName());
    va_end(args);
    return CLI_EXIT_USAGE;
}

/* Exit codes are one byte, statuses up to 12011. Each status block keeps its last
 * two digits so that a code can be read back (docs/cli.md has the table):
 *   1-63          engine exception types, as they are (1 memory, 33 crypto provider...)
 *   101xx -> 100+xx, 102xx -> 120+xx, 103xx -> 140+xx, 104xx -> 160+xx, 105xx -> 180+xx
 *   11xxx, 12xxx  -> 200 + the last two digits (11213 -> 213, 12011 -> 211)
 *   anything else -> 255
 * The tool's own failures use 64-78 (sysexits.h), which no status maps to. */
int cliExitCode(int status) {
    if (status >= 0 && status < 64)
        return status;
    int block = status / 100, rest = status % 100;
    if (block >= 101 && block <= 105 && rest < 20)
        return 100 + (block - 101) * 20 + rest;
    if ((block / 10 == 11 || block / 10 == 12) && rest < 55)
        return 200 + rest;
    return 255;
}

const char* cliTerminalEncoding(void) {
    const char* codeset = nl_langinfo(CODESET);
    /* The C locale says ASCII; the library then speaks UTF-8, and so do we. */
    if (codeset == NULL || *codeset == '\0' || strcmp(codeset, "ANSI_X3.4-1968") == 0)
        return "UTF-8";
    return codeset;
}

void cliPrintConverted(FILE* out, const char* text, size_t len, const char* from) {
    const char* to = cliTerminalEncoding();
    iconv_t cd = strcmp(to, from) == 0 ? (iconv_t)-1 : iconv_open(to, from);
    if (cd == (iconv_t)-1) {
        fwrite(text, 1, len, out);
        return;
    }
    char* in = (char*)text;
    size_t inLeft = len;
    while (inLeft > 0) {
        char buffer[256];
        char* outPtr = buffer;
        size_t outLeft = sizeof buffer;
        size_t rc = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
        fwrite(buffer, 1, sizeof buffer - outLeft, out);
        if (rc == (size_t)-1 && outLeft == sizeof buffer) {
            /* Neither converted nor room to blame: an unconvertible byte. */
            fputc('?', out);
            ++in;
            --inLeft;
        }
    }
    iconv_close(cd);
}

int cliLibraryFailure(void* handle, int status) {
    char text[1024] = "";
    if (handle != NULL)
        VQTK_XMLAPI_GetErrInfo(handle, (int)sizeof text - 1, text);
    printPrefix();
    if (text[0] != '\0')
        cliPrintConverted(stderr, text, strlen(text), "EUC-KR");
    else
        fprintf(stderr, "failed");
    fprintf(stderr, " (status %d)\n", status);
    return cliExitCode(status);
}

int cliOpenHandle(void** handle) {
    *handle = NULL;
    int status = VQTK_XMLAPI_init(handle);
    if (status == VQXML_OK)
        return 0;
    *handle = NULL;
    cliError("the library could not start (status %d)", status);
    return cliExitCode(status);
}

void cliCloseHandle(void** handle) {
    if (*handle != NULL)
        VQTK_XMLAPI_Finish(handle);
    *handle = NULL;
}

int cliWriteResult(void* handle, const char* path) {
    char* doc = NULL;
    int len = 0;
    int status = VQTK_XMLAPI_GetXMLDocument(handle, &doc, &len);
    if (status != VQXML_OK)
        return cliLibraryFailure(handle, status);
    return cliWriteFile(path, doc, doc != NULL ? (size_t)len : 0, 0);
}
