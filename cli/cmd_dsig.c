/* sign and verify: XML Signature (VQTK_XMLDSIG_). */
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/cli.h"
#include "cli/commands.h"

#define ENVELOPED_XPATH "not(ancestor-or-self::ds:Signature)"

/* ---- sign ---- */

typedef struct {
    const char* output;
    const char* cert;
    const char* key;
    const char* password;
    const char* passwordFile;
    const char* hmacKey;
    const char* alg;
    const char* c14n;
    const char* digest;
    const char* refC14n;
    const char* xpath;
    const char* prefix;
    const char* enveloping;
    CliList refs;
    CliList keyNames;
} SignArgs;

typedef struct {
    int signature, c14n, digest, refC14n;
} SignSelectors;

static int signSelectors(const SignArgs* a, SignSelectors* s) {
    const char* alg = a->alg ? a->alg : a->hmacKey ? "hmac-sha1" : "rsa-sha256";
    int rc = cliSelector(&cliSignatureAlgorithms, alg, &s->signature);
    rc = rc ? rc : cliSelector(&cliCanonicalizations, a->c14n ? a->c14n : "exc-c14n", &s->c14n);
    rc = rc ? rc : cliSelector(&cliCanonicalizations, a->refC14n ? a->refC14n : "none", &s->refC14n);
    const char* digest = a->digest ? a->digest : cliDefaultDigest(s->signature);
    return rc ? rc : cliSelector(&cliDigests, digest, &s->digest);
}

/* The references: the ones asked for, else the Object of an enveloping signature,
 * else the whole document without its signature. */
static int addReferences(void* h, const SignArgs* a, const SignSelectors* s) {
    if (a->refs.count == 0 && a->enveloping != NULL)
        return VQTK_XMLDSIG_createReference(h, (char*)a->enveloping, s->digest, s->refC14n, NULL);
    if (a->refs.count == 0) {
        const char* xpath = a->xpath ? a->xpath : ENVELOPED_XPATH;
        return VQTK_XMLDSIG_createReference(h, NULL, s->digest, s->refC14n, *xpath ? (char*)xpath : NULL);
    }
    int status = VQXML_OK;
    for (int i = 0; status == VQXML_OK && i < a->refs.count; ++i)
        status = VQTK_XMLDSIG_createReference(h, (char*)a->refs.items[i], s->digest, s->refC14n,
                                              a->xpath && *a->xpath ? (char*)a->xpath : NULL);
    return status;
}

static int setKey(void* h, const SignArgs* a, CliSigner* signer, CliBuffer* hmac) {
    if (a->hmacKey != NULL) {
        int rc = cliReadFile(a->hmacKey, hmac);
        if (rc != 0)
            return rc;
        int status = VQTK_XMLDSIG_SetHMACKey(h, hmac->data, (unsigned int)hmac->len);
        return status ? cliLibraryFailure(h, status) : 0;
    }
    char* password = NULL;
    int rc = cliPassword(a->password, a->passwordFile, &password);
    rc = rc ? rc : cliLoadSigner(h, a->cert, a->key, password, signer);
    cliFreePassword(password);
    if (rc != 0)
        return rc;
    int status = VQTK_XMLDSIG_SetSigner(h, signer->cert.data, (int)signer->cert.len, signer->key, signer->keyLen);
    return status ? cliLibraryFailure(h, status) : 0;
}

/* Loads the document (or the Object content) and builds the Signature. */
static int buildSignature(void* h, const SignArgs* a, const SignSelectors* s, CliBuffer* input) {
    int enveloping = a->enveloping != NULL;
    int status = enveloping ? VQTK_XMLDSIG_SetXMLDocument(h, NULL, 0)
                            : VQTK_XMLDSIG_SetXMLDocument(h, (char*)input->data, (int)input->len);
    if (status == VQXML_OK && a->prefix != NULL)
        status = VQTK_XMLDSIG_SetPrefix(h, (char*)a->prefix);
    if (status == VQXML_OK)
        status = VQTK_XMLDSIG_SignatureMethod(h, s->signature, s->c14n);
    if (status == VQXML_OK && enveloping)
        status = VQTK_XMLDSIG_appendObject(h, (char*)a->enveloping, (char*)input->data, (int)input->len);
    if (status == VQXML_OK)
        status = addReferences(h, a, s);
    for (int i = 0; status == VQXML_OK && i < a->keyNames.count; ++i)
        status = VQTK_XMLDSIG_SetKeyName(h, (char*)a->keyNames.items[i]);
    return status;
}

static const CliAlgorithmTable* const kSignTables[] = {&cliSignatureAlgorithms, &cliCanonicalizations,
                                                      &cliDigests, NULL};

static int runSign(const CliCommand* cmd, int argc, char** argv) {
    SignArgs a = {0};
    const CliOption options[] = {
        {"output", 'o', CLI_VALUE, "FILE", "write the signed document here (default: stdout)", &a.output},
        {"cert", 'c', CLI_VALUE, "FILE", "signer's certificate, DER or PEM", &a.cert},
        {"key", 'k', CLI_VALUE, "FILE", "signer's private key: PKCS #8 or PKCS #1, DER or PEM", &a.key},
        CLI_PASSWORD_OPTIONS("the key is encrypted (PKCS #8, NPKI signPri.key): its password", &a.password,
                             &a.passwordFile),
        {"hmac-key", 0, CLI_VALUE, "FILE", "sign with this HMAC secret instead of a certificate", &a.hmacKey},
        {"alg", 'a', CLI_VALUE, "NAME", "signature algorithm (default rsa-sha256; hmac-sha1 with --hmac-key)", &a.alg},
        {"c14n", 0, CLI_VALUE, "NAME", "SignedInfo canonicalization (default exc-c14n)", &a.c14n},
        {"digest", 0, CLI_VALUE, "NAME", "reference digest (default: the algorithm's hash)", &a.digest},
        {"ref", 'r', CLI_LIST, "URI", "sign this reference (\"#id\" or an Id); repeatable", &a.refs},
        {"ref-c14n", 0, CLI_VALUE, "NAME", "canonicalization transform on each reference (default none)", &a.refC14n},
        {"xpath", 0, CLI_VALUE, "EXPR", "XPath transform (default for the whole document: " ENVELOPED_XPATH
                                        "; \"\" for none)", &a.xpath},
        {"enveloping", 0, CLI_VALUE, "ID", "put IN into an Object with this Id inside the Signature", &a.enveloping},
        {"key-name", 0, CLI_LIST, "NAME", "add a KeyName to KeyInfo; repeatable", &a.keyNames},
        {"prefix", 0, CLI_VALUE, "PREFIX", "namespace prefix of the Signature elements (default ds)", &a.prefix},
    };
    const CliSyntax syntax = {
        "[options] (--cert FILE --key FILE | --hmac-key FILE) [IN]",
        "Signs an XML document (IN, or stdin) with an XML Signature: enveloped over the\n"
        "whole document unless --ref names what to sign, or enveloping IN with\n"
        "--enveloping. The Signature goes into the SOAP Header, before an existing\n"
        "Signature, before TaxInvoiceDocument, or at the end of the root element.",
        kSignTables, CLI_OPTIONS(options), 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    if (a.hmacKey == NULL && (a.cert == NULL || a.key == NULL))
        return cliUsageError("give --cert and --key, or --hmac-key");
    SignSelectors s;
    int rc = signSelectors(&a, &s);
    if (rc != 0)
        return rc;

    CliBuffer input = {0}, hmac = {0};
    CliSigner signer = {0};
    void* h = NULL;
    rc = cliReadFile(args.positional[0], &input);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        int status = buildSignature(h, &a, &s, &input);
        rc = status ? cliLibraryFailure(h, status) : setKey(h, &a, &signer, &hmac);
    }
    if (rc == 0) {
        int status = VQTK_XMLDSIG_sign(h);
        rc = status ? cliLibraryFailure(h, status) : cliWriteResult(h, a.output);
    }
    cliCloseHandle(&h);
    cliFreeSigner(&signer);
    cliFreeBuffer(&hmac);
    cliFreeBuffer(&input);
    return rc;
}

/* ---- verify ---- */

static CliKeyInfo signerInfo(void* h) {
    CliKeyInfo info = {0};
    VQTK_XMLDSIG_GetSubjectName(h, &info.subject);
    VQTK_XMLDSIG_GetIssuerSerialNum(h, &info.issuer, &info.serial);
    VQTK_XMLDSIG_GetKeyName(h, &info.keyName);
    VQTK_XMLDSIG_GetSignCert(h, &info.cert, &info.certLen);
    return info;
}

static int runVerify(const CliCommand* cmd, int argc, char** argv) {
    const char *output = NULL, *signerCert = NULL, *hmacKey = NULL;
    int allowExternal = 0, quiet = 0;
    const CliOption options[] = {
        {"output", 'o', CLI_VALUE, "FILE", "write the document without its Signature (or the Object's content)", &output},
        {"signer-cert", 0, CLI_VALUE, "FILE", "write the signer's certificate from KeyInfo (DER)", &signerCert},
        {"hmac-key", 0, CLI_VALUE, "FILE", "verify an HMAC signature with this secret", &hmacKey},
        {"allow-external", 0, CLI_FLAG, NULL, "let references to files and URLs be fetched", &allowExternal},
        {"quiet", 'q', CLI_FLAG, NULL, "print nothing; the exit code tells", &quiet},
    };
    const CliSyntax syntax = {
        "[options] [IN]",
        "Verifies the first XML Signature of a document (IN, or stdin) with the key in\n"
        "its KeyInfo (or an HMAC secret) and prints who signed. Exit 0: valid; 213\n"
        "(status 11213): the signature does not verify; other codes: it could not be\n"
        "checked. Whether the signer's certificate is trusted is `vqxml cert-verify`'s\n"
        "question.",
        NULL, CLI_OPTIONS(options), 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;

    CliBuffer input = {0}, hmac = {0};
    void* h = NULL;
    int rc = cliReadFile(args.positional[0], &input);
    if (rc == 0 && hmacKey != NULL)
        rc = cliReadFile(hmacKey, &hmac);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        int status = VQTK_XMLDSIG_AllowExternalReferences(h, allowExternal);
        if (status == VQXML_OK)
            status = VQTK_XMLDSIG_SetSignXMLDocument(h, (char*)input.data, (int)input.len);
        if (status == VQXML_OK && hmacKey != NULL)
            status = VQTK_XMLDSIG_SetHMACKey(h, hmac.data, (unsigned int)hmac.len);
        if (status == VQXML_OK)
            status = VQTK_XMLDSIG_Verify(h);
        rc = status ? cliLibraryFailure(h, status) : 0;
    }
    CliKeyInfo info = rc == 0 ? signerInfo(h) : (CliKeyInfo){0};
    if (rc == 0 && !quiet) {
        FILE* report = output != NULL && strcmp(output, "-") == 0 ? stderr : stdout;
        fprintf(report, "valid signature\n");
        cliPrintKeyInfo(report, &info);
    }
    if (rc == 0 && output != NULL)
        rc = cliWriteResult(h, output);
    if (rc == 0 && signerCert != NULL)
        rc = cliWriteCertificate(signerCert, info.cert, info.certLen);
    cliCloseHandle(&h);
    cliFreeBuffer(&hmac);
    cliFreeBuffer(&input);
    return rc;
}

const CliCommand cliSignCommand = {"sign", "sign an XML document (XML Signature)", runSign};
const CliCommand cliVerifyCommand = {"verify", "verify a signed XML document", runVerify};
