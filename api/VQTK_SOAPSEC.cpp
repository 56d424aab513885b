// C fronts of the SOAP message security family.
#include "api/Front.hpp"

using vqxml::forward;
using Ctx = VQXML_XMLSecurity;

extern "C" {

int VQTK_SOAPSEC_SetSOAPDocument(void* handle, char* xml, int len) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSOAPDocument(xml, len); });
}

int VQTK_SOAPSEC_SignatureMethod(void* handle, int signatureAlg, int canonAlg) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSignatureAlg(signatureAlg, canonAlg); });
}

int VQTK_SOAPSEC_createReference(void* handle, char* uri, int digestAlg, int canonAlg, char* xpath) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_createReference(uri, digestAlg, canonAlg, xpath); });
}

int VQTK_SOAPSEC_SetIssuerSerial(void* handle) {
    return forward(handle, [](Ctx& c) { return c.appendX509IssuerSerialNumber(); });
}

int VQTK_SOAPSEC_SetSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key, int keyLen) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSignCertAndKey(cert, certLen, key, keyLen); });
}

int VQTK_SOAPSEC_SetHMACKey(void* handle, unsigned char* key, unsigned int len) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setHMACKey(key, len); });
}

int VQTK_SOAPSEC_SetSignKeyName(void* handle, char* name) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSignKeyName(name); });
}

int VQTK_SOAPSEC_Sign(void* handle) {
    return forward(handle, [](Ctx& c) { return c.SOAPSEC_sign(); });
}

int VQTK_SOAPSEC_SetSymmAlg(void* handle, int alg) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSymmKey(nullptr, 0, alg); });
}

int VQTK_SOAPSEC_SetSymmKey(void* handle, unsigned char* key, int len, int alg) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSymmKey(key, len, alg); });
}

int VQTK_SOAPSEC_EncryptElement(void* handle, char* target, int type) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_encryptElement(target, type, true); });
}

int VQTK_SOAPSEC_SetEncKeyName(void* handle, char* name) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setEncKeyName(name); });
}

int VQTK_SOAPSEC_EncryptKeyWrapKey(void* handle, unsigned char* key, int len, int wrapAlg) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_encryptKeyWrapKey(key, len, wrapAlg); });
}

int VQTK_SOAPSEC_Encrypt(void* handle) {
    return forward(handle, [](Ctx& c) { return c.SOAPSEC_encrypt(); });
}

int VQTK_SOAPSEC_SetSOAPSecXMLDocument(void* handle, char* xml, int len) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setSOAPSecDocument(xml, len); });
}

int VQTK_SOAPSEC_GetSignKeyInfo(void* handle, int* isSigned) {
    return forward(handle, [&](Ctx& c) {
        return isSigned == nullptr ? VQXML_ERR_NULL_ARGUMENT : c.SOAPSEC_getSOAPSignInfo(isSigned);
    });
}

int VQTK_SOAPSEC_GetEncKeyInfo(void* handle, int* isEncrypted) {
    return forward(handle, [&](Ctx& c) {
        return isEncrypted == nullptr ? VQXML_ERR_NULL_ARGUMENT : c.SOAPSEC_getSOAPEncInfo(isEncrypted);
    });
}

int VQTK_SOAPSEC_DecryptKeyWrapKey(void* handle, unsigned char* cert, int certLen, unsigned char* key, int keyLen) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_decryptKeyWrapKey(cert, certLen, key, keyLen); });
}

int VQTK_SOAPSEC_ProcessSOAP(void* handle) {
    return forward(handle, [](Ctx& c) { return c.SOAPSEC_processSOAP(); });
}

int VQTK_SOAPSEC_GetSubjectName(void* handle, char** subject) {
    return VQTK_XMLDSIG_GetSubjectName(handle, subject);
}

int VQTK_SOAPSEC_GetIssuerSerialNum(void* handle, char** issuer, char** serial) {
    return VQTK_XMLDSIG_GetIssuerSerialNum(handle, issuer, serial);
}

int VQTK_SOAPSEC_GetKeyName(void* handle, char** keyName) {
    return VQTK_XMLDSIG_GetKeyName(handle, keyName);
}

int VQTK_SOAPSEC_SetVerifyCert(void* handle, unsigned char* cert, int certLen) {
    return forward(handle, [&](Ctx& c) { return c.SOAPSEC_setVerifyCert(cert, certLen); });
}

int VQTK_SOAPSEC_GetSignCert(void* handle, unsigned char** cert, int* certLen) {
    return VQTK_XMLDSIG_GetSignCert(handle, cert, certLen);
}

int VQTK_SOAPSEC_GetSignedParts(void* handle, char** parts) {
    return forward(handle, [&](Ctx& c) {
        if (parts == nullptr)
            return VQXML_ERR_NULL_ARGUMENT;
        *parts = const_cast<char*>(c.SOAPSEC_getSignedParts());
        return 0;
    });
}

}  // extern "C"
