/* cert-verify, key-decrypt and key-random: certificates and private keys
 * (VQTK_XMLAPI_VerifyCert or _VerifyCertChain, _DecryptPriKey, _GetRandomFromPriKey). */
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/cli.h"
#include "cli/commands.h"

static int runCertVerify(const CliCommand* cmd, int argc, char** argv) {
    int quiet = 0;
    CliList chainFiles = {0}, crlFiles = {0};
    const CliOption options[] = {
        {"chain", 0, CLI_LIST, "FILE", "intermediate certificates, DER or PEM, one or several; repeatable", &chainFiles},
        {"crl", 0, CLI_LIST, "FILE", "CRLs fetched beforehand, DER or PEM; repeatable", &crlFiles},
        {"quiet", 'q', CLI_FLAG, NULL, "print nothing; the exit code tells", &quiet},
    };
    const CliSyntax syntax = {
        "[options] CERT",
        "Verifies a certificate (DER or PEM) against the built-in roots (KISA RootCA 4,\n"
        "KISA RootCA 1, GPKIRootCA1): the path, signatures, validity now (the root's\n"
        "too), the CAs' constraints. Nothing is fetched.\n"
        "Alone, only certificates a root issued directly chain; exit 0: accepted, 211\n"
        "(status 12011): refused, with the reason. With --chain, the path goes through\n"
        "those intermediates; with --crl, revocation is checked against those CRLs\n"
        "(the certificate's issuer must have one); the exit code then says which check\n"
        "refused: 220 path, 221 signature, 222 validity, 223 revocation, 224\n"
        "constraints, 225 an input that cannot be read.",
        NULL, CLI_OPTIONS(options), 1, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    CliBuffer cert = {0}, chain = {0}, crls = {0};
    void* h = NULL;
    int rc = cliReadDerOrPem(args.positional[0], &cert);
    rc = rc ? rc : cliReadFiles(&chainFiles, &chain);
    rc = rc ? rc : cliReadFiles(&crlFiles, &crls);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        int status = chainFiles.count + crlFiles.count == 0
                         ? VQTK_XMLAPI_VerifyCert(h, cert.data, (int)cert.len)
                         : VQTK_XMLAPI_VerifyCertChain(h, cert.data, (int)cert.len, chain.data, (int)chain.len,
                                                       crls.data, (int)crls.len);
        rc = status ? cliLibraryFailure(h, status) : 0;
    }
    if (rc == 0 && !quiet)
        printf("%s: accepted\n", args.positional[0]);
    cliCloseHandle(&h);
    cliFreeBuffer(&crls);
    cliFreeBuffer(&chain);
    cliFreeBuffer(&cert);
    return rc;
}

/* Reads the positional key file and the password the command needs. */
static int readKeyAndPassword(const char* keyPath, const char* given, const char* file, CliBuffer* key,
                              char** password) {
    int rc = cliPassword(given, file, password);
    return rc ? rc : cliReadDerOrPem(keyPath, key);
}

static int runKeyDecrypt(const CliCommand* cmd, int argc, char** argv) {
    const char *output = NULL, *given = NULL, *file = NULL;
    const CliOption options[] = {
        {"output", 'o', CLI_VALUE, "FILE", "write the plain key here, mode 0600 (default: stdout)", &output},
        CLI_PASSWORD_OPTIONS("the key's password", &given, &file),
    };
    const CliSyntax syntax = {
        "(--password TEXT | --password-file FILE) [options] KEY",
        "Opens a password-protected private key (PKCS #8 DER or PEM: an NPKI signPri.key\n"
        "with pbeWithSHA1AndSEED, or PBES2 with SEED or AES) and writes the plain\n"
        "PKCS #8 PrivateKeyInfo, DER. A wrong password is refused (exit 211).",
        NULL, CLI_OPTIONS(options), 1, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    if (given == NULL && file == NULL)
        return cliUsageError("give --password or --password-file");
    CliBuffer key = {0};
    char* password = NULL;
    void* h = NULL;
    int rc = readKeyAndPassword(args.positional[0], given, file, &key, &password);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        unsigned char* plain = NULL;
        int plainLen = 0;
        int status = VQTK_XMLAPI_DecryptPriKey(h, password, key.data, (int)key.len, &plain, &plainLen);
        rc = status ? cliLibraryFailure(h, status) : cliWriteFile(output, plain, (size_t)plainLen, 1);
    }
    cliCloseHandle(&h);
    cliFreePassword(password);
    cliFreeBuffer(&key);
    return rc;
}

static int runKeyRandom(const CliCommand* cmd, int argc, char** argv) {
    const char *output = NULL, *given = NULL, *file = NULL, *recipient = NULL;
    const CliOption options[] = {
        {"output", 'o', CLI_VALUE, "FILE", "write the random here (default: stdout)", &output},
        CLI_PASSWORD_OPTIONS("the key's password (without one, KEY is a plain PKCS #8 key)", &given, &file),
        {"recipient", 0, CLI_VALUE, "CERT", "encrypt the random for this certificate (RSA PKCS #1 v1.5)", &recipient},
    };
    const CliSyntax syntax = {
        "[options] KEY",
        "Prints the identity-verification random of a private key (an NPKI signPri.key)\n"
        "as base64, or encrypted for a recipient's certificate.",
        NULL, CLI_OPTIONS(options), 1, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    CliBuffer key = {0}, cert = {0};
    char* password = NULL;
    void* h = NULL;
    int rc = readKeyAndPassword(args.positional[0], given, file, &key, &password);
    if (rc == 0 && recipient != NULL)
        rc = cliReadDerOrPem(recipient, &cert);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        unsigned char* random = NULL;
        int status = VQTK_XMLAPI_GetRandomFromPriKey(h, password, key.data, (int)key.len, cert.data, (int)cert.len,
                                                     &random);
        if (status != VQXML_OK)
            rc = cliLibraryFailure(h, status);
        else
            rc = cliWriteLine(output, (const char*)random);
    }
    cliCloseHandle(&h);
    cliFreePassword(password);
    cliFreeBuffer(&cert);
    cliFreeBuffer(&key);
    return rc;
}

const CliCommand cliCertVerifyCommand = {"cert-verify", "verify a certificate against the built-in roots",
                                         runCertVerify};
const CliCommand cliKeyDecryptCommand = {"key-decrypt", "open a password-protected private key", runKeyDecrypt};
const CliCommand cliKeyRandomCommand = {"key-random", "take the identity-verification random of a private key",
                                        runKeyRandom};
