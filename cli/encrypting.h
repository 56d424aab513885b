/* The encrypting command shared by the families whose C functions follow the
 * XML Encryption pattern (XML Encryption itself, SOAP message security). */
#ifndef VQXML_CLI_ENCRYPTING_H
#define VQXML_CLI_ENCRYPTING_H

#include "cli/cli.h"

typedef struct {
    const char* description;
    const char* elementHelp; /* what --element names, and the default target */
    int (*load)(void* h, char* xml, int len);
    int (*setPrefix)(void* h, char* prefix); /* optional */
    int (*setSymmAlg)(void* h, int alg);
    int (*setSymmKey)(void* h, unsigned char* key, int len, int alg);
    int (*setKeyName)(void* h, char* name);
    int (*encryptElement)(void* h, char* target, int mode);
    int (*setSubjectName)(void* h); /* optional */
    int (*setIssuerSerial)(void* h);
    int (*encryptKeyWrapKey)(void* h, unsigned char* key, int len, int alg);
    int (*encrypt)(void* h);
} CliEncryptionFamily;

int cliRunEncrypt(const CliCommand* cmd, const CliEncryptionFamily* family, int argc, char** argv);

/* Algorithm tables for the help of commands that encrypt or decrypt. */
extern const CliAlgorithmTable* const cliEncryptionTables[];

#endif
