/* Algorithm names on the command line and the library's selector numbers
 * (vqxml/vqxml.h; URIs in docs/algorithms.md). */
#include <string.h>

#include "cli/cli.h"

#define TABLE(var, what, heading, entries) \
    const CliAlgorithmTable var = {what, heading, entries, (int)(sizeof entries / sizeof entries[0])}

static const CliAlgorithm kSignatures[] = {
    {"hmac-sha1", 1, "HMAC-SHA1 (with --hmac-key)"},
    {"rsa-sha1", 2, "RSA with SHA-1"},
    {"kcdsa-sha1", 3, "KCDSA with SHA-1 (1024/160 keys)"},
    {"kcdsa-has160", 4, "KCDSA with HAS-160 (1024/160 keys)"},
    {"rsa-sha256", 5, "RSA with SHA-256"},
};
TABLE(cliSignatureAlgorithms, "signature algorithm", "Signature algorithms", kSignatures);

static const CliAlgorithm kCanonicalizations[] = {
    {"none", 0, "no canonicalization transform (C14N for SignedInfo)"},
    {"c14n", 1, "Canonical XML 1.0"},
    {"c14n-comments", 2, "Canonical XML 1.0 with comments"},
    {"exc-c14n", 3, "Exclusive XML Canonicalization 1.0"},
    {"exc-c14n-comments", 4, "Exclusive XML Canonicalization 1.0 with comments"},
};
TABLE(cliCanonicalizations, "canonicalization", "Canonicalizations", kCanonicalizations);

/* SOAP SignedInfo canonicalization has selectors of its own. */
static const CliAlgorithm kSoapCanonicalizations[] = {
    {"exc-c14n", 0, "Exclusive XML Canonicalization 1.0"},
    {"c14n", 1, "Canonical XML 1.0"},
    {"c14n-comments", 2, "Canonical XML 1.0 with comments"},
};
TABLE(cliSoapCanonicalizations, "SignedInfo canonicalization", "SignedInfo canonicalizations (--c14n)",
      kSoapCanonicalizations);

static const CliAlgorithm kDigests[] = {
    {"sha1", 1, "SHA-1"},
    {"has160", 2, "HAS-160"},
    {"sha256", 3, "SHA-256"},
};
TABLE(cliDigests, "digest", "Digests", kDigests);

static const CliAlgorithm kSymmetric[] = {
    {"3des", 1, "Triple DES CBC"},
    {"seed", 2, "SEED-128 CBC"},
    {"neat", 3, "NEAT-128 CBC"},
    {"aria", 4, "ARIA-128 CBC"},
};
TABLE(cliSymmetricAlgorithms, "symmetric algorithm", "Symmetric algorithms", kSymmetric);

static const CliAlgorithm kKeyTransports[] = {
    {"kw-3des", 1, "Triple DES key wrap (with a shared key)"},
    {"rsa-1_5", 2, "RSA PKCS #1 v1.5 (with a certificate)"},
    {"rsa-oaep", 3, "RSA-OAEP with MGF1 (with a certificate)"},
};
TABLE(cliKeyTransports, "key transport", "Key transports", kKeyTransports);

void cliPrintAlgorithmNames(const CliAlgorithmTable* table, FILE* out) {
    for (int i = 0; i < table->count; ++i)
        fprintf(out, "%s%s", i == 0 ? "" : ", ", table->entries[i].name);
}

int cliSelector(const CliAlgorithmTable* table, const char* name, int* selector) {
    for (int i = 0; i < table->count; ++i)
        if (strcmp(table->entries[i].name, name) == 0) {
            *selector = table->entries[i].selector;
            return 0;
        }
    fprintf(stderr, "vqxml %s: unknown %s '%s'; known: ", cliCommandName(), table->what, name);
    cliPrintAlgorithmNames(table, stderr);
    fputc('\n', stderr);
    return CLI_EXIT_USAGE;
}

const char* cliDefaultDigest(int signatureSelector) {
    switch (signatureSelector) {
    case 4:
        return "has160";
    case 5:
        return "sha256";
    default:
        return "sha1";
    }
}
