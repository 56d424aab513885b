/* The vqxml command-line tool: what every command shares.
 *
 * The tool uses nothing but the library's C interface (vqxml/vqxml.h): it reads
 * files, turns names into the library's selector numbers, makes the calls and
 * reports the library's status as its exit code. */
#ifndef VQXML_CLI_CLI_H
#define VQXML_CLI_CLI_H

#include <stddef.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Commands ---- */

typedef struct CliCommand {
    const char* name;
    const char* summary; /* one line for `vqxml --help` */
    int (*run)(const struct CliCommand* self, int argc, char** argv);
} CliCommand;

/* Exit codes of the tool's own failures (the sysexits.h values); the library's
 * statuses map to the other codes (cliExitCode). */
enum {
    CLI_EXIT_USAGE = 64,    /* bad arguments */
    CLI_EXIT_DATA = 65,     /* an input file is not what it should be (e.g. bad PEM) */
    CLI_EXIT_NO_INPUT = 66, /* an input file cannot be read */
    CLI_EXIT_CANT_CREATE = 73 /* the output cannot be written */
};

/* ---- Options ---- */

#define CLI_MAX_LIST 16
#define CLI_MAX_POSITIONAL 4

typedef struct {
    const char* items[CLI_MAX_LIST];
    int count;
} CliList;

typedef enum { CLI_FLAG, CLI_VALUE, CLI_LIST } CliOptionKind;

typedef struct {
    const char* name;      /* long name without "--" */
    char shortName;        /* 0 if none */
    CliOptionKind kind;
    const char* valueName; /* "FILE", "NAME"...; NULL for a flag */
    const char* help;
    void* target;          /* int* (flag), const char** (value) or CliList* (list) */
} CliOption;

/* The options table of a CliSyntax with its length. */
#define CLI_OPTIONS(table) table, (int)(sizeof table / sizeof table[0])
/* The two ways of giving a key's password. */
#define CLI_PASSWORD_OPTIONS(help, given, file)                                         \
    {"password", 0, CLI_VALUE, "TEXT", help, given},                                     \
    {"password-file", 0, CLI_VALUE, "FILE", "as --password, read from the file's first line", file}

typedef struct {
    const char* usage;       /* after "vqxml NAME ", e.g. "[options] [IN]" */
    const char* description; /* printed under the usage line */
    const struct CliAlgorithmTable* const* tables; /* names listed after the options; NULL-terminated or NULL */
    const CliOption* options;
    int optionCount;
    int minPositional, maxPositional;
} CliSyntax;

typedef struct {
    const char* positional[CLI_MAX_POSITIONAL]; /* "-" where none was given */
    int count;
    int exitCode; /* when cliParse returns 0 */
} CliParsed;

/* Parses argv (argv[0] is the command name) into the options' targets and the
 * positional arguments. Returns 1 if the command goes on; 0 if it ends with
 * parsed->exitCode: 0 after printing --help to stdout, CLI_EXIT_USAGE after
 * printing what is wrong to stderr. */
int cliParse(const CliCommand* cmd, const CliSyntax* syntax, int argc, char** argv, CliParsed* parsed);
void cliPrintHelp(const CliCommand* cmd, const CliSyntax* syntax, FILE* out);

/* Names the running command in messages ("vqxml sign: ..."). */
void cliSetCommand(const CliCommand* cmd);
const char* cliCommandName(void);
/* Prints "vqxml NAME: message" and a newline to stderr. */
void cliError(const char* fmt, ...);
/* As cliError, adds a pointer to --help and returns CLI_EXIT_USAGE. */
int cliUsageError(const char* fmt, ...);

/* ---- Files ("-" is stdin or stdout) ---- */

typedef struct {
    unsigned char* data; /* NUL-terminated, the NUL not counted in len */
    size_t len;
} CliBuffer;

/* Reads a whole file; prints the reason and returns CLI_EXIT_NO_INPUT on failure. */
int cliReadFile(const char* path, CliBuffer* out);
/* Reads a certificate or key given as DER or PEM and gives it back as DER. */
int cliReadDerOrPem(const char* path, CliBuffer* out);
/* Reads the files one after the other into one buffer, as the library takes
 * several certificates or CRLs: DER as it is, PEM text ending in a line break.
 * No files give an empty buffer. */
int cliReadFiles(const CliList* paths, CliBuffer* out);
/* Wipes (for secret bytes) and frees the buffer. */
void cliFreeBuffer(CliBuffer* buffer);
/* Writes bytes to a file (created with mode 0600 when secret) or to stdout;
 * prints the reason and returns CLI_EXIT_CANT_CREATE on failure. */
int cliWriteFile(const char* path, const void* data, size_t len, int secret);
/* Writes text and a newline, as cliWriteFile. */
int cliWriteLine(const char* path, const char* text);
/* Decodes PEM armour into DER. Returns 0, or -1 if the text is not PEM. */
int cliPemToDer(const unsigned char* text, size_t len, CliBuffer* der);
/* Reads a password from --password or the first line of --password-file; NULL
 * and 0 when neither is given. */
int cliPassword(const char* given, const char* file, char** password);
void cliFreePassword(char* password);

/* ---- Algorithm names ---- */

/* The kinds of the library's algorithm table (engine/Algorithms.def). */
typedef enum {
    CLI_KIND_SIGNATURE,
    CLI_KIND_DIGEST,
    CLI_KIND_C14N,
    CLI_KIND_SOAP_C14N,
    CLI_KIND_CIPHER,
    CLI_KIND_KEY_TRANSPORT
} CliAlgorithmKind;

typedef struct CliAlgorithmTable {
    const char* what;    /* "signature algorithm", ... */
    const char* heading; /* "Signature algorithms", ... */
    CliAlgorithmKind kind;
} CliAlgorithmTable;

extern const CliAlgorithmTable cliSignatureAlgorithms;
extern const CliAlgorithmTable cliCanonicalizations;
extern const CliAlgorithmTable cliSoapCanonicalizations;
extern const CliAlgorithmTable cliDigests;
extern const CliAlgorithmTable cliSymmetricAlgorithms;
extern const CliAlgorithmTable cliKeyTransports;

/* Finds name in the table; prints the known names and returns CLI_EXIT_USAGE if
 * it is not there. */
int cliSelector(const CliAlgorithmTable* table, const char* name, int* selector);
/* The digest that goes with a signature selector: its own hash. */
const char* cliDefaultDigest(int signatureSelector);
/* "rsa-sha256, kcdsa-sha1, ..." for help texts. */
void cliPrintAlgorithmNames(const CliAlgorithmTable* table, FILE* out);

/* ---- Library statuses, messages and text ---- */

/* Maps a library status to an exit code (0-255); see docs/cli.md. */
int cliExitCode(int status);
/* Makes a handle; on failure reports and returns the exit code. */
int cliOpenHandle(void** handle);
void cliCloseHandle(void** handle);
/* Reports a failed library call: "vqxml NAME: <library text> (status N)" on
 * stderr, the text converted from EUC-KR to the terminal's encoding. Returns
 * cliExitCode(status). */
int cliLibraryFailure(void* handle, int status);
/* Prints text given in the encoding `from` ("EUC-KR", "UTF-8") in the terminal's
 * encoding; bytes that cannot be converted become '?'. */
void cliPrintConverted(FILE* out, const char* text, size_t len, const char* from);
/* The terminal's encoding: the locale's code set, UTF-8 for the C locale. */
const char* cliTerminalEncoding(void);

/* ---- Shared steps of several commands ---- */

/* Loads a signer's certificate and private key. With a password the key is an
 * encrypted PKCS #8 file (such as an NPKI signPri.key) and is opened through the
 * handle, which then owns the plain key; *key points at it. */
typedef struct {
    CliBuffer cert;
    CliBuffer keyFile;
    unsigned char* key;
    int keyLen;
} CliSigner;

int cliLoadSigner(void* handle, const char* certPath, const char* keyPath,
                  const char* password, CliSigner* signer);
void cliFreeSigner(CliSigner* signer);

/* What a verification or decryption read from KeyInfo. The subject is UTF-8;
 * issuer, serial and key name are in the locale's code set already. */
typedef struct {
    char* subject;
    char* issuer;
    char* serial;
    char* keyName;
    unsigned char* cert;
    int certLen;
} CliKeyInfo;

/* A copy the caller owns (the library's own change with its next reading), and
 * its release. */
CliKeyInfo cliCopyKeyInfo(CliKeyInfo info);
void cliFreeKeyInfo(CliKeyInfo* info);
/* How a family reads its encrypted keys one after the other. */
typedef struct {
    int (*unwrap)(void* h, unsigned char* cert, int certLen, unsigned char* key, int keyLen);
    int (*next)(void* h);         /* reads the next encrypted key */
    CliKeyInfo (*read)(void* h);  /* the names the key read last states */
    int otherRecipient[3];        /* statuses of unwrap that mean "another recipient's key" */
} CliRecipientWalk;

/* Unwraps the session key with the first encrypted key, from the one read last
 * on, that the library accepts for this recipient: it refuses the others by
 * their issuer, subject or serial number. The walk ends where reading the next
 * key fails or names the same serial number again. */
int cliUnwrapForRecipient(void* h, const CliRecipientWalk* walk, const CliSigner* recipient);

/* Prints one "label: value" line for each part there is. */
void cliPrintKeyInfo(FILE* out, const CliKeyInfo* info);
/* Writes a certificate the library handed out; an error if there is none. */
int cliWriteCertificate(const char* path, const unsigned char* cert, int certLen);
/* Writes the handle's result document (VQTK_XMLAPI_GetXMLDocument). */
int cliWriteResult(void* handle, const char* path);

#ifdef __cplusplus
}
#endif

#endif
