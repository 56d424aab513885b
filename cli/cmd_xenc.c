/* encrypt and decrypt: XML Encryption (VQTK_XMLENC_). */
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/commands.h"
#include "cli/encrypting.h"

static const CliEncryptionFamily kXmlEncryption = {
    .description =
        "Encrypts elements of an XML document (IN, or stdin) with a session key and\n"
        "wraps that key for each recipient's certificate (RSA) or with a shared key\n"
        "(Triple DES or AES key wrap).",
    .elementHelp = "encrypt the first element with this qualified name; repeatable (default: the document element)",
    .load = VQTK_XMLENC_SetXMLDocument,
    .setPrefix = VQTK_XMLENC_SetPrefix,
    .setSymmAlg = VQTK_XMLENC_SetSymmAlg,
    .setSymmKey = VQTK_XMLENC_SetSymmKey,
    .setKeyName = VQTK_XMLENC_SetKeyName,
    .encryptElement = VQTK_XMLENC_EncryptElement,
    .setSubjectName = VQTK_XMLENC_SetSubjectName,
    .setIssuerSerial = VQTK_XMLENC_SetIssuerSerial,
    .encryptKeyWrapKey = VQTK_XMLENC_EncryptKeyWrapKey,
    .encrypt = VQTK_XMLENC_Encrypt,
};

static int runEncrypt(const CliCommand* cmd, int argc, char** argv) {
    return cliRunEncrypt(cmd, &kXmlEncryption, argc, argv);
}

/* ---- decrypt ---- */

static CliKeyInfo readKeyInfo(void* h) {
    CliKeyInfo info = {0};
    VQTK_XMLENC_GetSubjectName(h, &info.subject);
    VQTK_XMLENC_GetIssuerSerialNum(h, &info.issuer, &info.serial);
    VQTK_XMLENC_GetKeyName(h, &info.keyName);
    VQTK_XMLENC_GetEncCert(h, &info.cert, &info.certLen);
    return info;
}

/* Issuer, subject and serial number mismatches of VQTK_XMLENC_DecryptKeyWrapKey. */
static const CliRecipientWalk kXencRecipients = {VQTK_XMLENC_DecryptKeyWrapKey, VQTK_XMLENC_GetEncKeyInfo,
                                                 readKeyInfo, {10308, 10309, 10310}};

static int unwrapWithKek(void* h, const char* kekPath) {
    CliBuffer kek = {0};
    int rc = cliReadFile(kekPath, &kek);
    int status = rc ? VQXML_OK : VQTK_XMLENC_DecryptKeyWrapKey(h, NULL, 0, kek.data, (int)kek.len);
    cliFreeBuffer(&kek);
    return rc ? rc : status ? cliLibraryFailure(h, status) : 0;
}

static int useSessionKey(void* h, const char* path, const char* symmName) {
    int symm = 0;
    int rc = cliSelector(&cliSymmetricAlgorithms, symmName ? symmName : "seed", &symm);
    CliBuffer key = {0};
    rc = rc ? rc : cliReadFile(path, &key);
    int status = rc ? VQXML_OK : VQTK_XMLENC_SetSymmKey(h, key.data, (int)key.len, symm);
    cliFreeBuffer(&key);
    return rc ? rc : status ? cliLibraryFailure(h, status) : 0;
}

static int runDecrypt(const CliCommand* cmd, int argc, char** argv) {
    const char *output = NULL, *cert = NULL, *key = NULL, *given = NULL, *file = NULL, *kek = NULL,
               *sessionKey = NULL, *symm = NULL;
    const CliOption options[] = {
        {"output", 'o', CLI_VALUE, "FILE", "write the decrypted document here (default: stdout)", &output},
        {"cert", 'c', CLI_VALUE, "FILE", "recipient's certificate, DER or PEM", &cert},
        {"key", 'k', CLI_VALUE, "FILE", "recipient's private key: PKCS #8 or PKCS #1, DER or PEM", &key},
        CLI_PASSWORD_OPTIONS("the key is encrypted (PKCS #8, NPKI key file): its password", &given, &file),
        {"kek", 0, CLI_VALUE, "FILE", "unwrap the session key with this shared key (24 bytes Triple DES, 16/24/32 AES)", &kek},
        {"session-key", 0, CLI_VALUE, "FILE", "decrypt with this session key (no key transport)", &sessionKey},
        {"symm", 's', CLI_VALUE, "NAME", "with --session-key: its algorithm (default seed)", &symm},
    };
    const CliSyntax syntax = {
        "[options] (--cert CERT --key KEY | --kek FILE | --session-key FILE) [IN]",
        "Decrypts every EncryptedData of a document (IN, or stdin). With a certificate\n"
        "and key, the session key is unwrapped from the EncryptedKey made for that\n"
        "certificate (its issuer, subject and serial number must match).",
        cliEncryptionTables, CLI_OPTIONS(options), 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    const int withCert = cert != NULL && key != NULL;
    if (withCert + (kek != NULL) + (sessionKey != NULL) != 1)
        return cliUsageError("give one of --cert and --key, --kek, or --session-key");

    CliBuffer input = {0};
    CliSigner recipient = {0};
    char* password = NULL;
    void* h = NULL;
    int rc = cliReadFile(args.positional[0], &input);
    rc = rc ? rc : cliPassword(given, file, &password);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        /* Reading the first encrypted key also makes the decryption ready, whatever key opens it. */
        int status = VQTK_XMLENC_SetEncXMLDocument(h, (char*)input.data, (int)input.len);
        if (status == VQXML_OK)
            status = VQTK_XMLENC_GetEncKeyInfo(h);
        rc = status ? cliLibraryFailure(h, status) : 0;
    }
    if (rc == 0 && withCert) {
        rc = cliLoadSigner(h, cert, key, password, &recipient);
        rc = rc ? rc : cliUnwrapForRecipient(h, &kXencRecipients, &recipient);
    } else if (rc == 0) {
        rc = kek != NULL ? unwrapWithKek(h, kek) : useSessionKey(h, sessionKey, symm);
    }
    if (rc == 0) {
        int status = VQTK_XMLENC_Decrypt(h);
        rc = status ? cliLibraryFailure(h, status) : cliWriteResult(h, output);
    }
    cliCloseHandle(&h);
    cliFreeSigner(&recipient);
    cliFreePassword(password);
    cliFreeBuffer(&input);
    return rc;
}

const CliCommand cliEncryptCommand = {"encrypt", "encrypt elements of an XML document (XML Encryption)", runEncrypt};
const CliCommand cliDecryptCommand = {"decrypt", "decrypt an encrypted XML document", runDecrypt};
