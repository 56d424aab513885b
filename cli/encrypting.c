/* The encrypting command over a family's functions (encrypting.h). */
#include <vqxml/vqxml.h>

#include "cli/encrypting.h"

#define ADD_OPTION(...) options[count++] = (CliOption){__VA_ARGS__}

/* Encryption modes of the families' EncryptElement. */
enum { MODE_CONTENT = 1, MODE_ELEMENT = 2 };

const CliAlgorithmTable* const cliEncryptionTables[] = {&cliSymmetricAlgorithms, &cliKeyTransports, NULL};

typedef struct {
    const char* output;
    const char* symm;
    const char* sessionKey;
    const char* transport;
    const char* kek;
    const char* keyName;
    const char* prefix;
    int content, subjectName, issuerSerial;
    CliList elements;
    CliList recipients;
} EncryptArgs;

/* Wraps the session key with one key file: a certificate or the KEK. */
static int wrapWith(const CliEncryptionFamily* f, void* h, const char* path, int isCertificate, int transport) {
    CliBuffer key = {0};
    int rc = isCertificate ? cliReadDerOrPem(path, &key) : cliReadFile(path, &key);
    int status = rc ? VQXML_OK : f->encryptKeyWrapKey(h, key.data, (int)key.len, transport);
    cliFreeBuffer(&key);
    return rc ? rc : status ? cliLibraryFailure(h, status) : 0;
}

static int wrapKeys(const CliEncryptionFamily* f, void* h, const EncryptArgs* a, int transport) {
    int rc = 0;
    for (int i = 0; rc == 0 && i < a->recipients.count; ++i)
        rc = wrapWith(f, h, a->recipients.items[i], 1, transport);
    if (rc == 0 && a->kek != NULL)
        rc = wrapWith(f, h, a->kek, 0, transport);
    return rc;
}

/* Sets the session key, a random one unless a key file is given. */
static int setSessionKey(const CliEncryptionFamily* f, void* h, const EncryptArgs* a, int symm) {
    if (a->sessionKey == NULL) {
        int status = f->setSymmAlg(h, symm);
        return status ? cliLibraryFailure(h, status) : 0;
    }
    CliBuffer key = {0};
    int rc = cliReadFile(a->sessionKey, &key);
    int status = rc ? VQXML_OK : f->setSymmKey(h, key.data, (int)key.len, symm);
    cliFreeBuffer(&key);
    return rc ? rc : status ? cliLibraryFailure(h, status) : 0;
}

/* The key name names the key that opens the data: the wrapped key's EncryptedKey,
 * or the EncryptedData itself when there is no wrapped key (--session-key). */
static int encryptElements(const CliEncryptionFamily* f, void* h, const EncryptArgs* a) {
    const int mode = a->content ? MODE_CONTENT : MODE_ELEMENT;
    const int nameInData = a->recipients.count == 0 && a->kek == NULL;
    int status = VQXML_OK;
    if (a->keyName != NULL && nameInData)
        status = f->setKeyName(h, (char*)a->keyName);
    if (status == VQXML_OK && a->elements.count == 0)
        status = f->encryptElement(h, NULL, mode);
    for (int i = 0; status == VQXML_OK && i < a->elements.count; ++i)
        status = f->encryptElement(h, (char*)a->elements.items[i], mode);
    if (status == VQXML_OK && a->keyName != NULL && !nameInData)
        status = f->setKeyName(h, (char*)a->keyName);
    if (status == VQXML_OK && a->subjectName)
        status = f->setSubjectName(h);
    if (status == VQXML_OK && a->issuerSerial)
        status = f->setIssuerSerial(h);
    return status ? cliLibraryFailure(h, status) : 0;
}

static int load(const CliEncryptionFamily* f, void* h, const EncryptArgs* a, const CliBuffer* input) {
    int status = f->load(h, (char*)input->data, (int)input->len);
    if (status == VQXML_OK && a->prefix != NULL)
        status = f->setPrefix(h, (char*)a->prefix);
    return status ? cliLibraryFailure(h, status) : 0;
}

int cliRunEncrypt(const CliCommand* cmd, const CliEncryptionFamily* f, int argc, char** argv) {
    EncryptArgs a = {0};
    CliOption options[16];
    int count = 0;
    ADD_OPTION("output", 'o', CLI_VALUE, "FILE", "write the encrypted document here (default: stdout)", &a.output);
    ADD_OPTION("recipient", 'r', CLI_LIST, "CERT", "wrap the session key for this certificate; repeatable",
               &a.recipients);
    ADD_OPTION("kek", 0, CLI_VALUE, "FILE", "wrap the session key with this shared key (24 bytes for kw-3des, 16/24/32 for kw-aes128/192/256)", &a.kek);
    ADD_OPTION("symm", 's', CLI_VALUE, "NAME", "data encryption algorithm (default seed)", &a.symm);
    ADD_OPTION("transport", 't', CLI_VALUE, "NAME", "key transport (default rsa-oaep; kw-3des with --kek)",
               &a.transport);
    ADD_OPTION("session-key", 0, CLI_VALUE, "FILE", "use this session key instead of a random one", &a.sessionKey);
    ADD_OPTION("element", 'e', CLI_LIST, "NAME", f->elementHelp, &a.elements);
    ADD_OPTION("content", 0, CLI_FLAG, NULL, "encrypt the elements' content, not the elements", &a.content);
    ADD_OPTION("key-name", 0, CLI_VALUE, "NAME", "name the key in KeyInfo", &a.keyName);
    if (f->setSubjectName != NULL)
        ADD_OPTION("subject-name", 0, CLI_FLAG, NULL, "put the recipient's subject name into the EncryptedKey",
                   &a.subjectName);
    ADD_OPTION("issuer-serial", 0, CLI_FLAG, NULL, "put the recipient's issuer and serial number into it",
               &a.issuerSerial);
    if (f->setPrefix != NULL)
        ADD_OPTION("prefix", 0, CLI_VALUE, "PREFIX", "namespace prefix of the encryption elements (default xenc)",
                   &a.prefix);
    const CliSyntax syntax = {"[options] (--recipient CERT... | --kek FILE | --session-key FILE) [IN]",
                              f->description, cliEncryptionTables, options, count, 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    if (a.recipients.count == 0 && a.kek == NULL && a.sessionKey == NULL)
        return cliUsageError("give --recipient, --kek or --session-key: else no one could decrypt");
    if (a.recipients.count > 0 && a.kek != NULL)
        return cliUsageError("give --recipient or --kek, not both");
    int symm = 0, transport = 0;
    int rc = cliSelector(&cliSymmetricAlgorithms, a.symm ? a.symm : "seed", &symm);
    const char* transportName = a.transport ? a.transport : a.kek ? "kw-3des" : "rsa-oaep";
    rc = rc ? rc : cliSelector(&cliKeyTransports, transportName, &transport);
    if (rc != 0)
        return rc;

    CliBuffer input = {0};
    void* h = NULL;
    rc = cliReadFile(args.positional[0], &input);
    rc = rc ? rc : cliOpenHandle(&h);
    rc = rc ? rc : load(f, h, &a, &input);
    rc = rc ? rc : setSessionKey(f, h, &a, symm);
    rc = rc ? rc : encryptElements(f, h, &a);
    rc = rc ? rc : wrapKeys(f, h, &a, transport);
    if (rc == 0) {
        int status = f->encrypt(h);
        rc = status ? cliLibraryFailure(h, status) : cliWriteResult(h, a.output);
    }
    cliCloseHandle(&h);
    cliFreeBuffer(&input);
    return rc;
}
