/* The signing and verifying commands over a family's functions (signing.h). */
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/signing.h"

#define ADD_OPTION(...) options[count++] = (CliOption){__VA_ARGS__}

/* ---- signing ---- */

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
    int subjectName, issuerSerial, keyValue, taxInvoice;
    CliList refs;
    CliList keyNames;
} SignArgs;

typedef struct {
    int signature, c14n, digest, refC14n;
} SignSelectors;

/* The national e-tax-invoice recipe, as defaults the other options may still change. */
static void applyTaxInvoiceRecipe(SignArgs* a) {
    if (a->c14n == NULL)
        a->c14n = "c14n";
    if (a->refC14n == NULL)
        a->refC14n = "c14n";
    if (a->digest == NULL)
        a->digest = "sha256";
    if (a->xpath == NULL)
        a->xpath = CLI_TAX_INVOICE_XPATH;
    if (a->prefix == NULL)
        a->prefix = "ds";
}

static int signSelectors(const CliSignatureFamily* f, const SignArgs* a, SignSelectors* s) {
    const char* alg = a->alg ? a->alg : a->hmacKey ? "hmac-sha1" : "rsa-sha256";
    int rc = cliSelector(&cliSignatureAlgorithms, alg, &s->signature);
    rc = rc ? rc : cliSelector(f->signedInfoCanonicalizations, a->c14n ? a->c14n : "exc-c14n", &s->c14n);
    rc = rc ? rc : cliSelector(&cliCanonicalizations, a->refC14n ? a->refC14n : f->defaultReferenceC14n, &s->refC14n);
    const char* digest = a->digest ? a->digest : cliDefaultDigest(s->signature);
    return rc ? rc : cliSelector(&cliDigests, digest, &s->digest);
}

/* The references: the ones asked for, else the Object of an enveloping signature,
 * else the family's default (the whole document without its signature, the SOAP
 * Body). --xpath "" asks for no XPath. */
static int addReferences(const CliSignatureFamily* f, void* h, const SignArgs* a, const SignSelectors* s) {
    if (a->refs.count == 0 && a->enveloping != NULL)
        return f->createReference(h, (char*)a->enveloping, s->digest, s->refC14n, NULL);
    if (a->refs.count == 0) {
        const char* xpath = a->xpath ? a->xpath : f->defaultXPath;
        return f->createReference(h, NULL, s->digest, s->refC14n, xpath && *xpath ? (char*)xpath : NULL);
    }
    int status = VQXML_OK;
    for (int i = 0; status == VQXML_OK && i < a->refs.count; ++i)
        status = f->createReference(h, (char*)a->refs.items[i], s->digest, s->refC14n,
                                    a->xpath && *a->xpath ? (char*)a->xpath : NULL);
    return status;
}

/* What KeyInfo carries besides the certificate. */
static int describeKey(const CliSignatureFamily* f, void* h, const SignArgs* a) {
    int status = VQXML_OK;
    for (int i = 0; status == VQXML_OK && i < a->keyNames.count; ++i)
        status = f->setKeyName(h, (char*)a->keyNames.items[i]);
    if (status == VQXML_OK && a->subjectName)
        status = f->setSubjectName(h);
    if (status == VQXML_OK && a->issuerSerial)
        status = f->setIssuerSerial(h);
    if (status == VQXML_OK && a->keyValue)
        status = f->setKeyValue(h);
    return status;
}

static int setKey(const CliSignatureFamily* f, void* h, const SignArgs* a, CliSigner* signer, CliBuffer* hmac) {
    if (a->hmacKey != NULL) {
        int rc = cliReadFile(a->hmacKey, hmac);
        if (rc != 0)
            return rc;
        int status = f->setHMACKey(h, hmac->data, (unsigned int)hmac->len);
        return status ? cliLibraryFailure(h, status) : 0;
    }
    char* password = NULL;
    int rc = cliPassword(a->password, a->passwordFile, &password);
    rc = rc ? rc : cliLoadSigner(h, a->cert, a->key, password, signer);
    cliFreePassword(password);
    if (rc != 0)
        return rc;
    int status = f->setSigner(h, signer->cert.data, (int)signer->cert.len, signer->key, signer->keyLen);
    return status ? cliLibraryFailure(h, status) : 0;
}

/* Loads the document (or, enveloping, an empty one and the Object's content) and
 * builds the Signature. */
static int buildSignature(const CliSignatureFamily* f, void* h, const SignArgs* a, const SignSelectors* s,
                          CliBuffer* input) {
    int enveloping = a->enveloping != NULL;
    int status = enveloping ? f->load(h, NULL, 0) : f->load(h, (char*)input->data, (int)input->len);
    if (status == VQXML_OK && a->prefix != NULL)
        status = f->setPrefix(h, (char*)a->prefix);
    if (status == VQXML_OK)
        status = f->signatureMethod(h, s->signature, s->c14n);
    if (status == VQXML_OK && enveloping)
        status = f->appendObject(h, (char*)a->enveloping, (char*)input->data, (int)input->len);
    if (status == VQXML_OK)
        status = addReferences(f, h, a, s);
    return status == VQXML_OK ? describeKey(f, h, a) : status;
}


int cliRunSign(const CliCommand* cmd, const CliSignatureFamily* f, int argc, char** argv) {
    SignArgs a = {0};
    CliOption options[21];
    int count = 0;
    ADD_OPTION("output", 'o', CLI_VALUE, "FILE", "write the signed result here (default: stdout)", &a.output);
    ADD_OPTION("cert", 'c', CLI_VALUE, "FILE", "signer's certificate, DER or PEM", &a.cert);
    ADD_OPTION("key", 'k', CLI_VALUE, "FILE", "signer's private key: PKCS #8 or PKCS #1, DER or PEM", &a.key);
    ADD_OPTION("password", 0, CLI_VALUE, "TEXT", "the key is encrypted (PKCS #8, NPKI signPri.key): its password",
               &a.password);
    ADD_OPTION("password-file", 0, CLI_VALUE, "FILE", "as --password, read from the file's first line",
               &a.passwordFile);
    if (f->setHMACKey != NULL)
        ADD_OPTION("hmac-key", 0, CLI_VALUE, "FILE", "sign with this HMAC secret instead of a certificate", &a.hmacKey);
    ADD_OPTION("alg", 'a', CLI_VALUE, "NAME",
               f->setHMACKey ? "signature algorithm (default rsa-sha256; hmac-sha1 with --hmac-key)"
                             : "signature algorithm (default rsa-sha256)",
               &a.alg);
    ADD_OPTION("c14n", 0, CLI_VALUE, "NAME", "SignedInfo canonicalization (default exc-c14n)", &a.c14n);
    ADD_OPTION("digest", 0, CLI_VALUE, "NAME", "reference digest (default: the algorithm's hash)", &a.digest);
    ADD_OPTION("ref", 'r', CLI_LIST, "URI", "sign this reference (\"#id\" or an Id); repeatable", &a.refs);
    char refC14nHelp[96], xpathHelp[128];
    snprintf(refC14nHelp, sizeof refC14nHelp, "canonicalization transform on each reference (default %s)",
             f->defaultReferenceC14n);
    snprintf(xpathHelp, sizeof xpathHelp, "XPath transform on the references (default: %s)",
             f->defaultXPath ? f->defaultXPath : "none");
    ADD_OPTION("ref-c14n", 0, CLI_VALUE, "NAME", refC14nHelp, &a.refC14n);
    ADD_OPTION("xpath", 0, CLI_VALUE, "EXPR", xpathHelp, &a.xpath);
    if (f->appendObject != NULL)
        ADD_OPTION("enveloping", 0, CLI_VALUE, "ID", "put IN into an Object with this Id inside the Signature",
                   &a.enveloping);
    if (f->taxInvoice)
        ADD_OPTION("tax-invoice", 0, CLI_FLAG, NULL, "sign by the national e-tax-invoice recipe (see above)",
                   &a.taxInvoice);
    ADD_OPTION("key-name", 0, CLI_LIST, "NAME", "add a KeyName to KeyInfo; repeatable", &a.keyNames);
    if (f->setSubjectName != NULL)
        ADD_OPTION("subject-name", 0, CLI_FLAG, NULL, "add the signer's X509SubjectName to KeyInfo", &a.subjectName);
    if (f->setIssuerSerial != NULL)
        ADD_OPTION("issuer-serial", 0, CLI_FLAG, NULL, "add the signer's X509IssuerSerial to KeyInfo",
                   &a.issuerSerial);
    if (f->setKeyValue != NULL)
        ADD_OPTION("key-value", 0, CLI_FLAG, NULL, "add the signer's KeyValue to KeyInfo", &a.keyValue);
    if (f->setPrefix != NULL)
        ADD_OPTION("prefix", 0, CLI_VALUE, "PREFIX", "namespace prefix of the Signature elements (default ds)",
                   &a.prefix);
    const int ownSignedInfoTable = f->signedInfoCanonicalizations != &cliCanonicalizations;
    const CliAlgorithmTable* const tables[] = {&cliSignatureAlgorithms, f->signedInfoCanonicalizations,
                                               ownSignedInfoTable ? &cliCanonicalizations : &cliDigests,
                                               ownSignedInfoTable ? &cliDigests : NULL, NULL};
    const CliSyntax syntax = {f->signUsage, f->signDescription, tables, options, count, 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    if (a.hmacKey == NULL && (a.cert == NULL || a.key == NULL))
        return cliUsageError(f->setHMACKey ? "give --cert and --key, or --hmac-key" : "give --cert and --key");
    if (a.taxInvoice && (a.hmacKey != NULL || a.enveloping != NULL || a.refs.count != 0))
        return cliUsageError("--tax-invoice signs the whole invoice with a certificate: no --hmac-key, --enveloping or --ref");
    if (a.taxInvoice)
        applyTaxInvoiceRecipe(&a);
    SignSelectors s;
    int rc = signSelectors(f, &a, &s);
    if (rc != 0)
        return rc;

    CliBuffer input = {0}, hmac = {0};
    CliSigner signer = {0};
    void* h = NULL;
    rc = cliReadFile(args.positional[0], &input);
    rc = rc ? rc : cliOpenHandle(&h);
    if (rc == 0) {
        int status = buildSignature(f, h, &a, &s, &input);
        rc = status ? cliLibraryFailure(h, status) : setKey(f, h, &a, &signer, &hmac);
    }
    if (rc == 0) {
        int status = f->sign(h);
        rc = status ? cliLibraryFailure(h, status) : cliWriteResult(h, a.output);
    }
    cliCloseHandle(&h);
    cliFreeSigner(&signer);
    cliFreeBuffer(&hmac);
    cliFreeBuffer(&input);
    return rc;
}

/* ---- verifying ---- */

static CliKeyInfo signerInfo(const CliSignatureFamily* f, void* h) {
    CliKeyInfo info = {0};
    f->getSubjectName(h, &info.subject);
    f->getIssuerSerial(h, &info.issuer, &info.serial);
    f->getKeyName(h, &info.keyName);
    f->getSignCert(h, &info.cert, &info.certLen);
    return info;
}

static int loadAndVerify(const CliSignatureFamily* f, void* h, const CliBuffer* input, const char* hmacKey,
                         int allowExternal) {
    CliBuffer hmac = {0};
    int rc = hmacKey != NULL ? cliReadFile(hmacKey, &hmac) : 0;
    if (rc != 0)
        return rc;
    int status = f->allowExternalReferences ? f->allowExternalReferences(h, allowExternal) : VQXML_OK;
    if (status == VQXML_OK)
        status = f->loadSigned(h, (char*)input->data, (int)input->len);
    if (status == VQXML_OK && hmacKey != NULL)
        status = f->setHMACKey(h, hmac.data, (unsigned int)hmac.len);
    if (status == VQXML_OK)
        status = f->verify(h);
    cliFreeBuffer(&hmac);
    return status ? cliLibraryFailure(h, status) : 0;
}

/* Which canonical form the XPath-filtered references matched in. */
static void printReading(const CliSignatureFamily* f, void* h, FILE* report) {
    int reading = VQXML_READING_PLAIN;
    if (f->getCanonicalReading == NULL || f->getCanonicalReading(h, &reading) != VQXML_OK ||
        reading == VQXML_READING_PLAIN)
        return;
    fprintf(report, "canonical form: %s\n",
            reading == VQXML_READING_SANTUARIO ? "Santuario's (the national test bed's)"
                                               : "the literal reading of C14N (libxmlsec1's)");
}

/* The status of a signature that does not verify. */
enum { STATUS_INVALID_SIGNATURE = 11213 };

/* The signer's certificate against the built-in roots: a line on report (unless
 * NULL), the reason of a refusal on stderr; 0 or the refusal's exit code. */
static int checkSigner(const CliSignatureFamily* f, void* h, const CliList* chainFiles, const CliList* crlFiles,
                       FILE* report) {
    CliBuffer chain = {0}, crls = {0};
    int rc = cliReadFiles(chainFiles, &chain);
    rc = rc ? rc : cliReadFiles(crlFiles, &crls);
    if (rc == 0) {
        int status = f->verifySignerCert(h, chain.data, (int)chain.len, crls.data, (int)crls.len);
        rc = status ? cliLibraryFailure(h, status) : 0;
        if (report != NULL)
            fprintf(report, status ? "untrusted signer (status %d)\n" : "trusted signer\n", status);
    }
    cliFreeBuffer(&crls);
    cliFreeBuffer(&chain);
    return rc;
}

int cliRunVerify(const CliCommand* cmd, const CliSignatureFamily* f, int argc, char** argv) {
    const char *output = NULL, *signerCert = NULL, *hmacKey = NULL;
    int allowExternal = 0, quiet = 0, trust = 0;
    CliList chainFiles = {0}, crlFiles = {0};
    CliOption options[11];
    int count = 0;
    ADD_OPTION("output", 'o', CLI_VALUE, "FILE", "write what was signed, without its Signature", &output);
    ADD_OPTION("signer-cert", 0, CLI_VALUE, "FILE", "write the signer's certificate from KeyInfo (DER)", &signerCert);
    if (f->setHMACKey != NULL)
        ADD_OPTION("hmac-key", 0, CLI_VALUE, "FILE", "verify an HMAC signature with this secret", &hmacKey);
    if (f->allowExternalReferences != NULL)
        ADD_OPTION("allow-external", 0, CLI_FLAG, NULL, "let references to files and URLs be fetched", &allowExternal);
    if (f->verifySignerCert != NULL) {
        ADD_OPTION("trust", 't', CLI_FLAG, NULL, "also verify the signer's certificate against the built-in roots",
                   &trust);
        ADD_OPTION("chain", 0, CLI_LIST, "FILE", "with --trust: more intermediates, DER or PEM; repeatable",
                   &chainFiles);
        ADD_OPTION("crl", 0, CLI_LIST, "FILE", "with --trust: CRLs fetched beforehand, DER or PEM; repeatable",
                   &crlFiles);
    }
    ADD_OPTION("quiet", 'q', CLI_FLAG, NULL, "print nothing; the exit code tells", &quiet);
    const CliSyntax syntax = {"[options] [IN]", f->verifyDescription, NULL, options, count, 0, 1};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    if (!trust && chainFiles.count + crlFiles.count > 0)
        return cliUsageError("--chain and --crl go with --trust");

    CliBuffer input = {0};
    void* h = NULL;
    int rc = cliReadFile(args.positional[0], &input);
    rc = rc ? rc : cliOpenHandle(&h);
    rc = rc ? rc : loadAndVerify(f, h, &input, hmacKey, allowExternal);
    CliKeyInfo info = rc == 0 ? signerInfo(f, h) : (CliKeyInfo){0};
    FILE* report = quiet ? NULL : output != NULL && strcmp(output, "-") == 0 ? stderr : stdout;
    if (rc == 0 && report != NULL) {
        fprintf(report, "valid signature\n");
        cliPrintKeyInfo(report, &info);
        printReading(f, h, report);
    }
    /* The signer's verdict beside the signature's, also for a signature that
     * does not verify; the signature's failure keeps the exit code. */
    if (trust && (rc == 0 || rc == cliExitCode(STATUS_INVALID_SIGNATURE))) {
        const int trustRc = checkSigner(f, h, &chainFiles, &crlFiles, report);
        rc = rc ? rc : trustRc;
    }
    if (rc == 0 && output != NULL)
        rc = cliWriteResult(h, output);
    if (rc == 0 && signerCert != NULL)
        rc = cliWriteCertificate(signerCert, info.cert, info.certLen);
    cliCloseHandle(&h);
    cliFreeBuffer(&input);
    return rc;
}
