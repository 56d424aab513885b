/* A signer's (or recipient's) certificate and private key from files. */
#include <stdlib.h>
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/cli.h"

int cliLoadSigner(void* handle, const char* certPath, const char* keyPath,
                  const char* password, CliSigner* signer) {
    memset(signer, 0, sizeof *signer);
    int rc = cliReadDerOrPem(certPath, &signer->cert);
    rc = rc ? rc : cliReadDerOrPem(keyPath, &signer->keyFile);
    if (rc != 0)
        return rc;
    if (password == NULL) {
        signer->key = signer->keyFile.data;
        signer->keyLen = (int)signer->keyFile.len;
        return 0;
    }
    /* The handle keeps the opened key (and wipes it when it is finished). */
    int status = VQTK_XMLAPI_DecryptPriKey(handle, (char*)password, signer->keyFile.data, (int)signer->keyFile.len,
                                           &signer->key, &signer->keyLen);
    return status == VQXML_OK ? 0 : cliLibraryFailure(handle, status);
}

void cliFreeSigner(CliSigner* signer) {
    cliFreeBuffer(&signer->cert);
    cliFreeBuffer(&signer->keyFile);
    signer->key = NULL;
    signer->keyLen = 0;
}

static void printField(FILE* out, const char* label, const char* value, const char* encoding) {
    if (value == NULL || *value == '\0')
        return;
    fprintf(out, "%s: ", label);
    cliPrintConverted(out, value, strlen(value), encoding);
    fputc('\n', out);
}

void cliPrintKeyInfo(FILE* out, const CliKeyInfo* info) {
    const char* local = cliTerminalEncoding();
    printField(out, "subject", info->subject, "UTF-8");
    printField(out, "issuer", info->issuer, local);
    printField(out, "serial", info->serial, local);
    printField(out, "key name", info->keyName, local);
    if (info->cert != NULL && info->certLen > 0)
        fprintf(out, "certificate: %d bytes\n", info->certLen);
}

int cliWriteCertificate(const char* path, const unsigned char* cert, int certLen) {
    if (cert != NULL && certLen > 0)
        return cliWriteFile(path, cert, (size_t)certLen, 0);
    cliError("the document carries no certificate");
    return CLI_EXIT_DATA;
}

static char* copyText(const char* text) {
    return text != NULL ? strdup(text) : NULL;
}

CliKeyInfo cliCopyKeyInfo(CliKeyInfo info) {
    CliKeyInfo copy = {copyText(info.subject), copyText(info.issuer), copyText(info.serial), copyText(info.keyName),
                       NULL, 0};
    if (info.cert != NULL && info.certLen > 0 && (copy.cert = malloc((size_t)info.certLen)) != NULL) {
        memcpy(copy.cert, info.cert, (size_t)info.certLen);
        copy.certLen = info.certLen;
    }
    return copy;
}

void cliFreeKeyInfo(CliKeyInfo* info) {
    free(info->subject);
    free(info->issuer);
    free(info->serial);
    free(info->keyName);
    free(info->cert);
    memset(info, 0, sizeof *info);
}
