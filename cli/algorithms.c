/* Algorithm names on the command line and the library's selector numbers
 * (vqxml/vqxml.h; URIs in docs/algorithms.md). */
#include <string.h>

#include "cli/cli.h"

/* The library's algorithm table; the URIs and key types in it are C++ and stay
 * unexpanded here. Rows with a negative selector are no caller's choice. */
typedef struct {
    CliAlgorithmKind kind;
    const char* name;
    int selector;
    int methodCode;
    int hash;
} CliAlgorithm;

static const CliAlgorithm kAlgorithms[] = {
#define VQXML_ALGORITHM(kind, selector, tool, uri, methodCode, hash, keyType, keyBytes, description) \
    {CLI_KIND_##kind, tool, selector, methodCode, hash},
#include "engine/Algorithms.def"
#undef VQXML_ALGORITHM
};
enum { kAlgorithmCount = (int)(sizeof kAlgorithms / sizeof kAlgorithms[0]) };

const CliAlgorithmTable cliSignatureAlgorithms = {"signature algorithm", "Signature algorithms", CLI_KIND_SIGNATURE};
const CliAlgorithmTable cliCanonicalizations = {"canonicalization", "Canonicalizations", CLI_KIND_C14N};
const CliAlgorithmTable cliSoapCanonicalizations = {"SignedInfo canonicalization",
                                                    "SignedInfo canonicalizations (--c14n)", CLI_KIND_SOAP_C14N};
const CliAlgorithmTable cliDigests = {"digest", "Digests", CLI_KIND_DIGEST};
const CliAlgorithmTable cliSymmetricAlgorithms = {"symmetric algorithm", "Symmetric algorithms", CLI_KIND_CIPHER};
const CliAlgorithmTable cliKeyTransports = {"key transport", "Key transports", CLI_KIND_KEY_TRANSPORT};

static int chosen(const CliAlgorithm* a, CliAlgorithmKind kind) {
    return a->kind == kind && a->selector >= 0;
}

void cliPrintAlgorithmNames(const CliAlgorithmTable* table, FILE* out) {
    const char* separator = "";
    for (int i = 0; i < kAlgorithmCount; ++i)
        if (chosen(&kAlgorithms[i], table->kind)) {
            fprintf(out, "%s%s", separator, kAlgorithms[i].name);
            separator = ", ";
        }
}

int cliSelector(const CliAlgorithmTable* table, const char* name, int* selector) {
    for (int i = 0; i < kAlgorithmCount; ++i)
        if (chosen(&kAlgorithms[i], table->kind) && strcmp(kAlgorithms[i].name, name) == 0) {
            *selector = kAlgorithms[i].selector;
            return 0;
        }
    fprintf(stderr, "vqxml %s: unknown %s '%s'; known: ", cliCommandName(), table->what, name);
    cliPrintAlgorithmNames(table, stderr);
    fputc('\n', stderr);
    return CLI_EXIT_USAGE;
}

const char* cliDefaultDigest(int signatureSelector) {
    int hash = 0;
    for (int i = 0; i < kAlgorithmCount; ++i)
        if (chosen(&kAlgorithms[i], CLI_KIND_SIGNATURE) && kAlgorithms[i].selector == signatureSelector)
            hash = kAlgorithms[i].hash;
    for (int i = 0; i < kAlgorithmCount; ++i)
        if (chosen(&kAlgorithms[i], CLI_KIND_DIGEST) && kAlgorithms[i].methodCode == hash)
            return kAlgorithms[i].name;
    return "sha1";
}
