/* soap-sign, soap-encrypt and soap-process: SOAP message security with a
 * WS-Security header (VQTK_SOAPSEC_). */
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/commands.h"
#include "cli/encrypting.h"
#include "cli/signing.h"

static const CliSignatureFamily kSoapSigning = {
    .signUsage = "[options] (--cert FILE --key FILE | --hmac-key FILE) [IN]",
    .signDescription =
        "Signs a SOAP envelope (IN, or stdin; it must have a SOAP Header) into a\n"
        "WS-Security header: a Signature over the Body unless --ref names other parts,\n"
        "with the signer's certificate as a BinarySecurityToken.",
    .defaultReferenceC14n = "exc-c14n",
    .signedInfoCanonicalizations = &cliSoapCanonicalizations,
    .load = VQTK_SOAPSEC_SetSOAPDocument,
    .signatureMethod = VQTK_SOAPSEC_SignatureMethod,
    .createReference = VQTK_SOAPSEC_createReference,
    .setKeyName = VQTK_SOAPSEC_SetSignKeyName,
    .setIssuerSerial = VQTK_SOAPSEC_SetIssuerSerial,
    .setSigner = VQTK_SOAPSEC_SetSigner,
    .setHMACKey = VQTK_SOAPSEC_SetHMACKey,
    .sign = VQTK_SOAPSEC_Sign,
};

static const CliEncryptionFamily kSoapEncryption = {
    .description =
        "Encrypts parts of a SOAP envelope (IN, or stdin; it must have a SOAP Header)\n"
        "and wraps the session key for each recipient in the WS-Security header. An\n"
        "envelope that is to be signed too is signed first, then encrypted.",
    .elementHelp = "encrypt this element (\"#id\" or a qualified name); repeatable (default: the Body's content)",
    .load = VQTK_SOAPSEC_SetSOAPDocument,
    .setSymmAlg = VQTK_SOAPSEC_SetSymmAlg,
    .setSymmKey = VQTK_SOAPSEC_SetSymmKey,
    .setKeyName = VQTK_SOAPSEC_SetEncKeyName,
    .encryptElement = VQTK_SOAPSEC_EncryptElement,
    .setIssuerSerial = VQTK_SOAPSEC_SetIssuerSerial,
    .encryptKeyWrapKey = VQTK_SOAPSEC_EncryptKeyWrapKey,
    .encrypt = VQTK_SOAPSEC_Encrypt,
};

static int runSoapSign(const CliCommand* cmd, int argc, char** argv) {
    return cliRunSign(cmd, &kSoapSigning, argc, argv);
}

static int runSoapEncrypt(const CliCommand* cmd, int argc, char** argv) {
    return cliRunEncrypt(cmd, &kSoapEncryption, argc, argv);
}

/* ---- soap-process ---- */

static CliKeyInfo readKeyInfo(void* h) {
    CliKeyInfo info = {0};
    VQTK_SOAPSEC_GetSubjectName(h, &info.subject);
    VQTK_SOAPSEC_GetIssuerSerialNum(h, &info.issuer, &info.serial);
    VQTK_SOAPSEC_GetKeyName(h, &info.keyName);
    VQTK_SOAPSEC_GetSignCert(h, &info.cert, &info.certLen);
    return info;
}

static int nextEncryptedKey(void* h) {
    int isEncrypted = 0;
    return VQTK_SOAPSEC_GetEncKeyInfo(h, &isEncrypted);
}

/* Issuer, subject and serial number mismatches of VQTK_SOAPSEC_DecryptKeyWrapKey. */
static const CliRecipientWalk kSoapRecipients = {VQTK_SOAPSEC_DecryptKeyWrapKey, nextEncryptedKey, readKeyInfo,
                                                 {10505, 10506, 10507}};

static int unwrapWithKek(void* h, const char* path) {
    CliBuffer kek = {0};
    int rc = cliReadFile(path, &kek);
    int status = rc ? VQXML_OK : VQTK_SOAPSEC_DecryptKeyWrapKey(h, NULL, 0, kek.data, (int)kek.len);
    cliFreeBuffer(&kek);
    return rc ? rc : status ? cliLibraryFailure(h, status) : 0;
}

typedef struct {
    const char *output, *signerCert, *cert, *key, *password, *passwordFile, *kek, *verifyCert;
    int quiet;
} ProcessArgs;

/* A signer named only by issuer and serial is checked with a certificate the
 * receiver already has. */
static int useVerifyCert(void* h, const char* path) {
    CliBuffer cert = {0};
    int rc = cliReadFile(path, &cert);
    if (rc == 0) {
        int status = VQTK_SOAPSEC_SetVerifyCert(h, cert.data, (int)cert.len);
        rc = status ? cliLibraryFailure(h, status) : 0;
    }
    cliFreeBuffer(&cert);
    return rc;
}

/* Reads what the header says, unwraps the session key if the message is
 * encrypted, and keeps a copy of the signer's key information. */
static int openMessage(void* h, const ProcessArgs* a, const char* password, CliSigner* recipient, int* isSigned,
                       int* isEncrypted, CliKeyInfo* signer) {
    int status = VQTK_SOAPSEC_GetSignKeyInfo(h, isSigned);
    if (status == VQXML_OK && *isSigned)
        *signer = cliCopyKeyInfo(readKeyInfo(h));
    if (status == VQXML_OK)
        status = VQTK_SOAPSEC_GetEncKeyInfo(h, isEncrypted);
    if (status != VQXML_OK)
        return cliLibraryFailure(h, status);
    if (!*isEncrypted || (a->kek == NULL && a->cert == NULL))
        return 0;
    if (a->kek != NULL)
        return unwrapWithKek(h, a->kek);
    int rc = cliLoadSigner(h, a->cert, a->key, password, recipient);
    return rc ? rc : cliUnwrapForRecipient(h, &kSoapRecipients, recipient);
}

/* What was decrypted and verified, who signed, and which parts the signature
 * covered: a valid signature says nothing of the parts it left out. */
static void report(void* h, const ProcessArgs* a, int isSigned, int isEncrypted, const CliKeyInfo* signer) {
    if (a->quiet)
        return;
    FILE* out = a->output == NULL || strcmp(a->output, "-") == 0 ? stderr : stdout;
    fprintf(out, "%s%s%s\n", isEncrypted ? "decrypted" : "", isEncrypted && isSigned ? ", " : "",
            isSigned ? "valid signature" : "");
    cliPrintKeyInfo(out, signer);
    char* parts = NULL;
    if (isSigned && VQTK_SOAPSEC_GetSignedParts(h, &parts) == VQXML_OK && parts != NULL)
        for (const char* line = parts; *line != '\0';) {
            const char* end = strchr(line, '\n');
            size_t len = end != NULL ? (size_t)(end - line) : strlen(line);
            fprintf(out, "signed: %.*s\n", (int)len, line);
            line += len + (end != NULL);
        }
}

static int runSoapProcess(const CliCommand* cmd, int argc, char** argv) {
    ProcessArgs a = {0};
    const CliOption options[] = {
        {"output", 'o', CLI_VALUE, "FILE", "write the plain envelope here (default: stdout)", &a.output},
        {"cert", 'c', CLI_VALUE, "FILE", "recipient's certificate, DER or PEM (encrypted messages)", &a.cert},
        {"key", 'k', CLI_VALUE, "FILE", "recipient's private key: PKCS #8 or PKCS #1, DER or PEM", &a.key},
        CLI_PASSWORD_OPTIONS("the key is encrypted (PKCS #8, NPKI key file): its password", &a.password,
                             &a.passwordFile),
        {"kek", 0, CLI_VALUE, "FILE", "unwrap the session key with this shared key (24 bytes Triple DES, 16/24/32 AES)", &a.kek},
        {"verify-cert", 0, CLI_VALUE, "FILE",
         "verify with this signer's certificate, DER or PEM (a signer named by issuer and serial)", &a.verifyCert},
        {"signer-cert", 0, CLI_VALUE, "FILE", "write the signer's certificate (DER)", &a.signerCert},
        {"quiet", 'q', CLI_FLAG, NULL, "print no report; the exit code tells", &a.quiet},
    };
    const CliSyntax syntax = {
        "[options] [--cert CERT --key KEY | --kek FILE] [IN]",
        "Processes a received SOAP message (IN, or stdin) with a WS-Security header:\n"
        "unwraps the session key for the recipient, decrypts and verifies in the\n"
        "sender's order, removes the header and writes the plain envelope. Exit 0:\n"
        "valid; 213 (status 11213): the signature does not verify; 191 (status\n"
        "10511): encrypted, and no key was given. The report names every part the\n"
        "signature covered: \"signed:\" and its path of {namespace}name steps.",
        NULL, CLI_OPTIONS(options), 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    if ((a.cert == NULL) != (a.key == NULL) || (a.cert != NULL && a.kek != NULL))
        return cliUsageError("give --cert with --key, or --kek");

    CliBuffer input = {0};
    CliSigner recipient = {0};
    CliKeyInfo signer = {0};
    char* password = NULL;
    void* h = NULL;
    int isSigned = 0, isEncrypted = 0;
    int rc = cliReadFile(args.positional[0], &input);
    rc = rc ? rc : cliPassword(a.password, a.passwordFile, &password);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        int status = VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, (char*)input.data, (int)input.len);
        rc = status ? cliLibraryFailure(h, status) : 0;
    }
    rc = rc ? rc : openMessage(h, &a, password, &recipient, &isSigned, &isEncrypted, &signer);
    if (rc == 0 && a.verifyCert != NULL)
        rc = useVerifyCert(h, a.verifyCert);
    if (rc == 0) {
        int status = VQTK_SOAPSEC_ProcessSOAP(h);
        rc = status ? cliLibraryFailure(h, status) : cliWriteResult(h, a.output);
    }
    if (rc == 0)
        report(h, &a, isSigned, isEncrypted, &signer);
    if (rc == 0 && a.signerCert != NULL)
        rc = cliWriteCertificate(a.signerCert, signer.cert, signer.certLen);
    cliCloseHandle(&h);
    cliFreeKeyInfo(&signer);
    cliFreeSigner(&recipient);
    cliFreePassword(password);
    cliFreeBuffer(&input);
    return rc;
}

const CliCommand cliSoapSignCommand = {"soap-sign", "sign a SOAP envelope (WS-Security)", runSoapSign};
const CliCommand cliSoapEncryptCommand = {"soap-encrypt", "encrypt parts of a SOAP envelope (WS-Security)",
                                          runSoapEncrypt};
const CliCommand cliSoapProcessCommand = {"soap-process", "decrypt and verify a received SOAP message",
                                          runSoapProcess};
