// C fronts of the ebXML family: package loading, then the XML Signature family.
#include <string>

#include "api/Front.hpp"
#include "vqxml/vqxml.h"

using vqxml::forward;
using Ctx = VQXML_XMLSecurity;

namespace {


// A bare envelope (data starting with "<") goes to loadDocument as it is; a
// package's envelope part goes there through the package loader.
int loadEnvelope(Ctx& c, char* data, int len, int (Ctx::*loadDocument)(char*, int)) {
    if (data == nullptr || data[0] == '\0' || len <= 0)
        return VQXML_ERR_NO_PACKAGE;
    if (data[0] == '<')
        return (c.*loadDocument)(data, len);
    return c.EBXML_loadPackage(data, len, loadDocument);
}

}  // namespace

extern "C" {

int VQTK_EBXML_SetSOAPDocument(void* handle, char* data, int len) {
    return forward(handle, [&](Ctx& c) {
        c.setEbXml();
        return loadEnvelope(c, data, len, &Ctx::XMLDSIG_setXMLDocument);
    });
}

int VQTK_EBXML_SetSOAPSecXMLDocument(void* handle, char* data, int len) {
    return forward(handle, [&](Ctx& c) { return loadEnvelope(c, data, len, &Ctx::XMLDSIG_setSignXMLDocument); });
}

int VQTK_EBXML_SignatureMethod(void* handle, int signatureSelector, int canonicalizationSelector) {
    return forward(handle, [&](Ctx& c) {
        static char prefix[] = "ds";
        const int rc = c.XMLDSIG_setPrefix(prefix);
        return rc != VQXML_OK ? rc : c.XMLDSIG_setSignatureAlg(signatureSelector, canonicalizationSelector);
    });
}

int VQTK_EBXML_createReference(void* handle, char* uri, int digestSelector, int canonicalizationSelector,
                               char* xpath) {
    return VQTK_XMLDSIG_createReference(handle, uri, digestSelector, canonicalizationSelector, xpath);
}

int VQTK_EBXML_SetSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key, int keyLen) {
    return VQTK_XMLDSIG_SetSigner(handle, cert, certLen, key, keyLen);
}

int VQTK_EBXML_SetSignKeyName(void* handle, char* name) {
    return VQTK_XMLDSIG_SetKeyName(handle, name);
}

int VQTK_EBXML_SetKeyValue(void* handle) {
    return forward(handle, [](Ctx& c) { return c.appendKeyValue(); });
}

int VQTK_EBXML_SetSubjectName(void* handle) {
    return forward(handle, [](Ctx& c) { return c.appendX509SubjectName(); });
}

int VQTK_EBXML_SetIssuerSerial(void* handle) {
    return forward(handle, [](Ctx& c) { return c.appendX509IssuerSerialNumber(); });
}

int VQTK_EBXML_Sign(void* handle) {
    return VQTK_XMLDSIG_sign(handle);
}

int VQTK_EBXML_Verify(void* handle) {
    return VQTK_XMLDSIG_Verify(handle);
}

int VQTK_EBXML_GetSubjectName(void* handle, char** subject) {
    return VQTK_XMLDSIG_GetSubjectName(handle, subject);
}

int VQTK_EBXML_GetIssuerSerialNum(void* handle, char** issuer, char** serial) {
    return VQTK_XMLDSIG_GetIssuerSerialNum(handle, issuer, serial);
}

int VQTK_EBXML_GetKeyName(void* handle, char** keyName) {
    return VQTK_XMLDSIG_GetKeyName(handle, keyName);
}

int VQTK_EBXML_GetSignCert(void* handle, unsigned char** cert, int* certLen) {
    return VQTK_XMLDSIG_GetSignCert(handle, cert, certLen);
}

}  // extern "C"
