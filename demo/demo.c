/* The library's story told through its C interface, one capability at a time.
 * Usage: vqxml_demo DATA_DIR (the folder with the sample invoice and test keys). */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vqxml/vqxml.h>

static const char* g_dataDir = ".";

/* Prints one step and returns 1 if its status was not the expected one. */
static int expect(const char* what, int status, int expected) {
    if (status == expected)
        printf("  %-58s ok (%d)\n", what, status);
    else
        printf("  %-58s FAILED: %d, expected %d\n", what, status, expected);
    return status == expected ? 0 : 1;
}

/* Reads DATA_DIR/name into a malloc'ed buffer; NULL if it cannot. */
static char* readData(const char* name, int* len) {
    char path[1024];
    snprintf(path, sizeof path, "%s/%s", g_dataDir, name);
    FILE* f = fopen(path, "rb");
    if (f == NULL)
        return NULL;
    fseek(f, 0, SEEK_END);
    long size = ftell(f);
    rewind(f);
    char* bytes = malloc((size_t)size + 1);
    if (bytes != NULL && fread(bytes, 1, (size_t)size, f) == (size_t)size) {
        bytes[size] = '\0';
        *len = (int)size;
    } else {
        free(bytes);
        bytes = NULL;
    }
    fclose(f);
    return bytes;
}

static int showHandleLife(void) {
    void* handle = NULL;
    void* second = NULL;
    char version[16] = "";
    char error[256] = "";
    int failures = 0;

    printf("Handles and errors\n");
    failures += expect("create a handle (the engines start)", VQTK_XMLAPI_init(&handle), VQXML_OK);
    failures += expect("read the version", VQTK_XMLAPI_GetVersion(handle, (int)sizeof version, version), VQXML_OK);
    printf("    version: %s\n", version);
    failures += expect("a second handle shares the engines", VQTK_XMLAPI_init(&second), VQXML_OK);
    failures += expect("a handle variable in use is refused", VQTK_XMLAPI_init(&handle), VQXML_ERR_HANDLE_IN_USE);
    failures += expect("a null handle reports a fixed text",
                       VQTK_XMLAPI_GetErrInfo(NULL, (int)sizeof error, error), VQXML_ERR_NULL_HANDLE);
    printf("    text: %zu bytes of EUC-KR\n", strlen(error));
    failures += expect("finish the second handle", VQTK_XMLAPI_Finish(&second), VQXML_OK);
    failures += expect("finish the first handle (the engines stop)", VQTK_XMLAPI_Finish(&handle), VQXML_OK);
    return failures;
}

/* Signs the invoice (RSA-SHA256, exclusive C14N, enveloped) and verifies it, then
 * shows that a changed amount no longer verifies. */
static int showTaxInvoiceSignature(void) {
    int docLen = 0, certLen = 0, keyLen = 0, failures = 0;
    char* doc = readData("taxinvoice.xml", &docLen);
    char* cert = readData("signer-cert.der", &certLen);
    char* key = readData("signer-key.pk8.der", &keyLen);
    printf("Tax invoice signature\n");
    if (doc == NULL || cert == NULL || key == NULL) {
        printf("  the sample invoice or keys are missing in %s\n", g_dataDir);
        free(doc), free(cert), free(key);
        return 1;
    }
    void* h = NULL;
    char* signedDoc = NULL;
    int signedLen = 0;
    failures += expect("create a handle", VQTK_XMLAPI_init(&h), VQXML_OK);
    failures += expect("load the invoice", VQTK_XMLDSIG_SetXMLDocument(h, doc, docLen), VQXML_OK);
    failures += expect("choose RSA-SHA256 with exclusive C14N", VQTK_XMLDSIG_SignatureMethod(h, 5, 3), VQXML_OK);
    failures += expect("reference the whole invoice, signature excluded",
                       VQTK_XMLDSIG_createReference(h, NULL, 3, 0, "not(ancestor-or-self::ds:Signature)"), VQXML_OK);
    failures += expect("set the signer's certificate and key",
                       VQTK_XMLDSIG_SetSigner(h, (unsigned char*)cert, certLen, (unsigned char*)key, keyLen), VQXML_OK);
    failures += expect("sign", VQTK_XMLDSIG_sign(h), VQXML_OK);
    VQTK_XMLAPI_GetXMLDocument(h, &signedDoc, &signedLen);
    printf("    signed invoice: %d bytes, Signature placed before TaxInvoiceDocument\n", signedLen);

    void* v = NULL;
    unsigned char* signerCert = NULL;
    int signerCertLen = 0;
    failures += expect("create a second handle to verify", VQTK_XMLAPI_init(&v), VQXML_OK);
    failures += expect("load the signed invoice", VQTK_XMLDSIG_SetSignXMLDocument(v, signedDoc, signedLen), VQXML_OK);
    failures += expect("verify", VQTK_XMLDSIG_Verify(v), VQXML_OK);
    VQTK_XMLDSIG_GetSignCert(v, &signerCert, &signerCertLen);
    printf("    signer's certificate from KeyInfo: %d bytes of DER\n", signerCertLen);

    char* forged = malloc((size_t)signedLen + 1);
    memcpy(forged, signedDoc, (size_t)signedLen + 1);
    char* amount = strstr(forged, "<GrandTotalAmount>1100000");
    if (amount != NULL)
        amount[18] = '9';
    failures += expect("load a copy with a changed amount", VQTK_XMLDSIG_SetSignXMLDocument(v, forged, signedLen), VQXML_OK);
    failures += expect("the changed copy does not verify", VQTK_XMLDSIG_Verify(v), 11213);
    char why[256] = "";
    VQTK_XMLAPI_GetErrInfo(v, (int)sizeof why, why);
    printf("    reason: %s\n", why);
    free(forged);
    VQTK_XMLAPI_Finish(&v);
    VQTK_XMLAPI_Finish(&h);
    free(doc), free(cert), free(key);
    return failures;
}

int main(int argc, char** argv) {
    if (argc > 1)
        g_dataDir = argv[1];
    int failures = showHandleLife();
    failures += showTaxInvoiceSignature();
    if (failures == 0)
        printf("demo passed: every step ok\n");
    else
        printf("demo FAILED: %d step(s) failed\n", failures);
    return failures == 0 ? 0 : 1;
}
