// C fronts of the XML Encryption family.
#include "api/Front.hpp"

using vqxml::forward;
using Ctx = VQXML_XMLSecurity;

extern "C" {

int VQTK_XMLENC_SetXMLDocument(void* handle, char* xml, int len) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_setXMLDocument(xml, len); });
}

int VQTK_XMLENC_SetSymmAlg(void* handle, int alg) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_setSymmKey(nullptr, 0, alg); });
}

int VQTK_XMLENC_SetSymmKey(void* handle, unsigned char* key, int keyLen, int alg) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_setSymmKey(key, keyLen, alg); });
}

int VQTK_XMLENC_SetPrefix(void* handle, char* prefix) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_setPrefix(prefix); });
}

int VQTK_XMLENC_SetKeyName(void* handle, char* keyName) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_setKeyName(keyName); });
}

int VQTK_XMLENC_EncryptElement(void* handle, char* target, int mode) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_encryptElement(target, mode, true); });
}

int VQTK_XMLENC_SetSubjectName(void* handle) {
    return forward(handle, [](Ctx& c) { return c.appendX509SubjectName(); });
}

int VQTK_XMLENC_SetIssuerSerial(void* handle) {
    return forward(handle, [](Ctx& c) { return c.appendX509IssuerSerialNumber(); });
}

int VQTK_XMLENC_EncryptKeyWrapKey(void* handle, unsigned char* key, int keyLen, int alg) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_encryptKeyWrapKey(key, keyLen, alg); });
}

int VQTK_XMLENC_Encrypt(void* handle) {
    return forward(handle, [](Ctx& c) { return c.XMLENC_encrypt(); });
}

int VQTK_XMLENC_SetEncXMLDocument(void* handle, char* xml, int len) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_setEncXMLDocument(xml, len); });
}

int VQTK_XMLENC_GetEncKeyInfo(void* handle) {
    return forward(handle, [](Ctx& c) { return c.XMLENC_getEncKeyInfo(); });
}

// The recipient data lives in the same fields as the signer data.
int VQTK_XMLENC_GetSubjectName(void* handle, char** subject) {
    return VQTK_XMLDSIG_GetSubjectName(handle, subject);
}

int VQTK_XMLENC_GetIssuerSerialNum(void* handle, char** issuer, char** serial) {
    return VQTK_XMLDSIG_GetIssuerSerialNum(handle, issuer, serial);
}

int VQTK_XMLENC_GetEncCert(void* handle, unsigned char** cert, int* certLen) {
    return VQTK_XMLDSIG_GetSignCert(handle, cert, certLen);
}

int VQTK_XMLENC_GetKeyName(void* handle, char** keyName) {
    return VQTK_XMLDSIG_GetKeyName(handle, keyName);
}

int VQTK_XMLENC_DecryptKeyWrapKey(void* handle, unsigned char* cert, int certLen, unsigned char* priKey,
                                  int priKeyLen) {
    return forward(handle, [&](Ctx& c) { return c.XMLENC_decryptKeyWrapKey(cert, certLen, priKey, priKeyLen); });
}

int VQTK_XMLENC_Decrypt(void* handle) {
    return forward(handle, [](Ctx& c) { return c.XMLENC_decrypt(); });
}

}  // extern "C"
