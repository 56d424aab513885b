// C fronts of the XML Signature family.
#include "api/Front.hpp"

using vqxml::forward;
using Ctx = VQXML_XMLSecurity;

extern "C" {

int VQTK_XMLDSIG_SetXMLDocument(void* handle, char* xml, int len) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_setXMLDocument(xml, len); });
}

int VQTK_XMLDSIG_SetPrefix(void* handle, char* prefix) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_setPrefix(prefix); });
}

int VQTK_XMLDSIG_SignatureMethod(void* handle, int signatureSelector, int canonicalizationSelector) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_setSignatureAlg(signatureSelector, canonicalizationSelector); });
}

int VQTK_XMLDSIG_createReference(void* handle, char* uri, int digestSelector, int canonicalizationSelector,
                                 char* xpath) {
    return forward(handle, [&](Ctx& c) {
        return c.XMLDSIG_createReference(uri, digestSelector, canonicalizationSelector, xpath);
    });
}

int VQTK_XMLDSIG_appendObject(void* handle, char* id, char* content, int len) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_appendObject(id, content, len); });
}

int VQTK_XMLDSIG_SetKeyName(void* handle, char* name) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_setKeyName(name); });
}

int VQTK_XMLDSIG_sign(void* handle) {
    return forward(handle, [](Ctx& c) { return c.XMLDSIG_sign(); });
}

int VQTK_XMLDSIG_SetSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key, int keyLen) {
    return forward(handle, [&](Ctx& c) {
        return c.XMLDSIG_setSignCertAndKey(cert, certLen, key, keyLen, nullptr, nullptr, nullptr, nullptr);
    });
}

int VQTK_XMLDSIG_SetTokenSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key, int keyLen,
                                char* token1, char* token2, void* token3, void* token4) {
    return forward(handle, [&](Ctx& c) {
        return c.XMLDSIG_setSignCertAndKey(cert, certLen, key, keyLen, token1, token2, token3, token4);
    });
}

int VQTK_XMLDSIG_SetHMACKey(void* handle, unsigned char* key, unsigned int len) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_setHMACKey(key, len); });
}

int VQTK_XMLDSIG_SetSignXMLDocument(void* handle, char* xml, int len) {
    return forward(handle, [&](Ctx& c) { return c.XMLDSIG_setSignXMLDocument(xml, len); });
}

int VQTK_XMLDSIG_Verify(void* handle) {
    return forward(handle, [](Ctx& c) { return c.XMLDSIG_verify(); });
}

int VQTK_XMLDSIG_AllowExternalReferences(void* handle, int allow) {
    return forward(handle, [&](Ctx& c) {
        c.XMLDSIG_allowExternalReferences(allow != 0);
        return VQXML_OK;
    });
}

// The getters of every family read the same fields (the key information read
// last); a null out-pointer is refused before anything is written.
int VQTK_XMLDSIG_GetSubjectName(void* handle, char** subject) {
    return forward(handle, [&](Ctx& c) {
        if (subject == nullptr)
            return VQXML_ERR_NULL_ARGUMENT;
        *subject = c.getSubjectName();
        return VQXML_OK;
    });
}

int VQTK_XMLDSIG_GetIssuerSerialNum(void* handle, char** issuer, char** serial) {
    return forward(handle, [&](Ctx& c) {
        if (issuer == nullptr || serial == nullptr)
            return VQXML_ERR_NULL_ARGUMENT;
        *issuer = c.getIssuer();
        *serial = c.getSerialNumber();
        return VQXML_OK;
    });
}

int VQTK_XMLDSIG_GetSignCert(void* handle, unsigned char** cert, int* certLen) {
    return forward(handle, [&](Ctx& c) {
        if (cert == nullptr || certLen == nullptr)
            return VQXML_ERR_NULL_ARGUMENT;
        *certLen = c.getCert(cert);
        return VQXML_OK;
    });
}

int VQTK_XMLDSIG_GetKeyName(void* handle, char** keyName) {
    return forward(handle, [&](Ctx& c) {
        if (keyName == nullptr)
            return VQXML_ERR_NULL_ARGUMENT;
        *keyName = c.getKeyName();
        return VQXML_OK;
    });
}

int VQTK_XMLDSIG_GetCanonicalReading(void* handle, int* reading) {
    if (reading == nullptr)
        return handle == nullptr ? VQXML_ERR_NULL_HANDLE : VQXML_ERR_NULL_ARGUMENT;
    return forward(handle, [&](Ctx& c) {
        *reading = c.getCanonicalReading();
        return VQXML_OK;
    });
}

}  // extern "C"
