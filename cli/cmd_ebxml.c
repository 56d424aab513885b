/* ebxml-sign and ebxml-verify: signed ebXML packages (VQTK_EBXML_). */
#include <vqxml/vqxml.h>

#include "cli/commands.h"
#include "cli/signing.h"

static const CliSignatureFamily kEbXml = {
    .signUsage = "[options] --cert FILE --key FILE [IN]",
    .signDescription =
        "Signs an ebXML message (IN, or stdin): a MIME multipart/related package whose\n"
        "first part is the SOAP envelope, or a bare envelope. The envelope is signed\n"
        "enveloped (by default with the XPath below) and every attachment gets a\n"
        "\"cid:\" reference with the same digest. The result is the whole package.",
    .verifyDescription =
        "Verifies a signed ebXML package or envelope (IN, or stdin): the envelope and\n"
        "every attachment it references. Exit 0: valid; 213 (status 11213): the\n"
        "signature, the envelope or an attachment does not verify. --trust verifies\n"
        "the signer's certificate too, as `vqxml verify --trust` does. -o writes the\n"
        "package with the envelope without its Signature.",
    .defaultXPath = CLI_ENVELOPED_XPATH,
    .defaultReferenceC14n = "none",
    .signedInfoCanonicalizations = &cliCanonicalizations,
    .load = VQTK_EBXML_SetSOAPDocument,
    .signatureMethod = VQTK_EBXML_SignatureMethod,
    .createReference = VQTK_EBXML_createReference,
    .setKeyName = VQTK_EBXML_SetSignKeyName,
    .setSubjectName = VQTK_EBXML_SetSubjectName,
    .setIssuerSerial = VQTK_EBXML_SetIssuerSerial,
    .setKeyValue = VQTK_EBXML_SetKeyValue,
    .setSigner = VQTK_EBXML_SetSigner,
    .sign = VQTK_EBXML_Sign,
    .loadSigned = VQTK_EBXML_SetSOAPSecXMLDocument,
    .verify = VQTK_EBXML_Verify,
    .getSubjectName = VQTK_EBXML_GetSubjectName,
    .getIssuerSerial = VQTK_EBXML_GetIssuerSerialNum,
    .getKeyName = VQTK_EBXML_GetKeyName,
    .getSignCert = VQTK_EBXML_GetSignCert,
    .verifySignerCert = VQTK_XMLDSIG_VerifySignerCert,
};

static int runSign(const CliCommand* cmd, int argc, char** argv) {
    return cliRunSign(cmd, &kEbXml, argc, argv);
}

static int runVerify(const CliCommand* cmd, int argc, char** argv) {
    return cliRunVerify(cmd, &kEbXml, argc, argv);
}

const CliCommand cliEbXmlSignCommand = {"ebxml-sign", "sign an ebXML package (envelope and attachments)", runSign};
const CliCommand cliEbXmlVerifyCommand = {"ebxml-verify", "verify a signed ebXML package", runVerify};
