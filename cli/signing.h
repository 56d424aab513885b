/* Signing and verifying commands shared by the families whose C functions follow
 * the XML Signature pattern (XML Signature itself, ebXML packages): each family
 * gives its functions, and the options follow from which of them it has. */
#ifndef VQXML_CLI_SIGNING_H
#define VQXML_CLI_SIGNING_H

#include "cli/cli.h"

/* The XPath of an enveloped signature over the whole document. */
#define CLI_ENVELOPED_XPATH "not(ancestor-or-self::ds:Signature)"
/* The national e-tax-invoice recipe's XPath: everything but the TaxInvoice element
 * itself, ExchangedDocument and the Signature. */
#define CLI_TAX_INVOICE_XPATH                                                                  \
    "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | " \
    "ancestor-or-self::ds:Signature)"

typedef struct {
    const char* signUsage;
    const char* signDescription;
    const char* verifyDescription;
    /* The reference made when none is asked for: NULL URI and this XPath (NULL for
     * none) with this canonicalization; and the SignedInfo canonicalizations. */
    const char* defaultXPath;
    const char* defaultReferenceC14n;
    const CliAlgorithmTable* signedInfoCanonicalizations;
    /* Signing; the optional ones are NULL where the family has none. */
    int (*load)(void* h, char* data, int len);
    int (*setPrefix)(void* h, char* prefix);                        /* optional */
    int (*signatureMethod)(void* h, int signatureSelector, int canonicalizationSelector);
    int (*createReference)(void* h, char* uri, int digestSelector, int canonicalizationSelector, char* xpath);
    int (*appendObject)(void* h, char* id, char* content, int len); /* optional: --enveloping */
    int (*setKeyName)(void* h, char* name);
    int (*setSubjectName)(void* h);                                 /* optional */
    int (*setIssuerSerial)(void* h);                                /* optional */
    int (*setKeyValue)(void* h);                                    /* optional */
    int (*setSigner)(void* h, unsigned char* cert, int certLen, unsigned char* key, int keyLen);
    int (*setHMACKey)(void* h, unsigned char* key, unsigned int len); /* optional */
    int (*sign)(void* h);
    /* Verifying. */
    int (*loadSigned)(void* h, char* data, int len);
    int (*allowExternalReferences)(void* h, int allow);             /* optional */
    int (*verify)(void* h);
    int (*getSubjectName)(void* h, char** subject);
    int (*getIssuerSerial)(void* h, char** issuer, char** serial);
    int (*getKeyName)(void* h, char** keyName);
    int (*getSignCert)(void* h, unsigned char** cert, int* certLen);
    int (*getCanonicalReading)(void* h, int* reading);              /* optional */
    int taxInvoice;                                                  /* offers --tax-invoice */
    /* optional: --trust */
    int (*verifySignerCert)(void* h, unsigned char* chain, int chainLen, unsigned char* crls, int crlsLen);
} CliSignatureFamily;

int cliRunSign(const CliCommand* cmd, const CliSignatureFamily* family, int argc, char** argv);
int cliRunVerify(const CliCommand* cmd, const CliSignatureFamily* family, int argc, char** argv);

#endif
