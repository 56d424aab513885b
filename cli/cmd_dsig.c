/* sign and verify: XML Signature (VQTK_XMLDSIG_). */
#include <vqxml/vqxml.h>

#include "cli/commands.h"
#include "cli/signing.h"

static const CliSignatureFamily kXmlSignature = {
    .signUsage = "[options] (--cert FILE --key FILE | --hmac-key FILE) [IN]",
    .signDescription =
        "Signs an XML document (IN, or stdin) with an XML Signature: enveloped over the\n"
        "whole document unless --ref names what to sign, or enveloping IN with\n"
        "--enveloping. The Signature goes into the SOAP Header, before an existing\n"
        "Signature, before TaxInvoiceDocument, or at the end of the root element.\n"
        "--tax-invoice applies the national e-tax-invoice recipe: RSA-SHA256, C14N for\n"
        "SignedInfo, one reference URI=\"\" with SHA-256, a C14N transform and then the\n"
        "XPath that leaves out TaxInvoice, ExchangedDocument and the Signature.",
    .verifyDescription =
        "Verifies the first XML Signature of a document (IN, or stdin) with the key in\n"
        "its KeyInfo (or an HMAC secret) and prints who signed. Exit 0: valid; 213\n"
        "(status 11213): the signature does not verify; other codes: it could not be\n"
        "checked. With --trust the signer's certificate is also verified against the\n"
        "built-in roots, through the other certificates of KeyInfo and --chain, with\n"
        "--crl: \"trusted signer\", or \"untrusted signer\" and exit 220-226 as for\n"
        "`vqxml cert-verify --chain`. -o writes the document without its Signature\n"
        "(enveloping: the Object's content).",
    .defaultXPath = CLI_ENVELOPED_XPATH,
    .defaultReferenceC14n = "none",
    .signedInfoCanonicalizations = &cliCanonicalizations,
    .load = VQTK_XMLDSIG_SetXMLDocument,
    .setPrefix = VQTK_XMLDSIG_SetPrefix,
    .signatureMethod = VQTK_XMLDSIG_SignatureMethod,
    .createReference = VQTK_XMLDSIG_createReference,
    .appendObject = VQTK_XMLDSIG_appendObject,
    .setKeyName = VQTK_XMLDSIG_SetKeyName,
    .setSubjectName = VQTK_XMLENC_SetSubjectName,
    .setIssuerSerial = VQTK_XMLENC_SetIssuerSerial,
    .setSigner = VQTK_XMLDSIG_SetSigner,
    .setHMACKey = VQTK_XMLDSIG_SetHMACKey,
    .sign = VQTK_XMLDSIG_sign,
    .loadSigned = VQTK_XMLDSIG_SetSignXMLDocument,
    .allowExternalReferences = VQTK_XMLDSIG_AllowExternalReferences,
    .verify = VQTK_XMLDSIG_Verify,
    .getSubjectName = VQTK_XMLDSIG_GetSubjectName,
    .getIssuerSerial = VQTK_XMLDSIG_GetIssuerSerialNum,
    .getKeyName = VQTK_XMLDSIG_GetKeyName,
    .getSignCert = VQTK_XMLDSIG_GetSignCert,
    .getCanonicalReading = VQTK_XMLDSIG_GetCanonicalReading,
    .taxInvoice = 1,
    .verifySignerCert = VQTK_XMLDSIG_VerifySignerCert,
};

static int runSign(const CliCommand* cmd, int argc, char** argv) {
    return cliRunSign(cmd, &kXmlSignature, argc, argv);
}

static int runVerify(const CliCommand* cmd, int argc, char** argv) {
    return cliRunVerify(cmd, &kXmlSignature, argc, argv);
}

const CliCommand cliSignCommand = {"sign", "sign an XML document (XML Signature)", runSign};
const CliCommand cliVerifyCommand = {"verify", "verify a signed XML document", runVerify};
