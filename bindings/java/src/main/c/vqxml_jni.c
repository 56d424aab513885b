/* The JNI side of kr.vqxml.Native: one function per C function, nothing else.
 *
 * Every byte[] going in is copied (GetByteArrayRegion) into a NUL-terminated
 * buffer of our own that lives for the call only, so no Java array stays pinned
 * while the library works and texts and byte strings travel alike (Java turns
 * String into UTF-8 bytes first). Every buffer coming out belongs to the handle
 * (see vqxml.h) and is copied into a new Java array before the call returns; the
 * library hands out no buffer the caller must free. Each native creates at most a
 * few local references and returns, so loops on the Java side never pile them up.
 * A copy that cannot be allocated throws OutOfMemoryError. */
#include <jni.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <vqxml/vqxml.h>

#define H(h) ((void*)(intptr_t)(h))
#define NATIVE(name) JNIEXPORT jint JNICALL Java_kr_vqxml_Native_##name

typedef struct {
    char* data;
    int len;
} In;

static void outOfMemory(JNIEnv* env) {
    jclass oom = (*env)->FindClass(env, "java/lang/OutOfMemoryError");
    if (oom != NULL)
        (*env)->ThrowNew(env, oom, "vqxml: no memory for a copy of an argument");
}

/* Copies a Java array into *in; 0 if it could not (an exception is pending). A
 * null array gives a null pointer and length 0. */
static int copyIn(JNIEnv* env, jbyteArray array, In* in) {
    in->data = NULL;
    in->len = 0;
    if (array == NULL)
        return 1;
    jsize n = (*env)->GetArrayLength(env, array);
    in->data = malloc((size_t)n + 1);
    if (in->data == NULL) {
        outOfMemory(env);
        return 0;
    }
    (*env)->GetByteArrayRegion(env, array, 0, n, (jbyte*)in->data);
    in->data[n] = '\0';
    in->len = (int)n;
    return 1;
}

/* Copies len bytes out of the library into slot `index` of out; NULL stays null. */
static int copyOut(JNIEnv* env, jobjectArray out, jsize index, const void* data, int len) {
    if (data == NULL)
        return 1;
    jbyteArray array = (*env)->NewByteArray(env, len);
    if (array == NULL)
        return 0;
    (*env)->SetByteArrayRegion(env, array, 0, len, (const jbyte*)data);
    (*env)->SetObjectArrayElement(env, out, index, array);
    (*env)->DeleteLocalRef(env, array);
    return 1;
}

static int copyText(JNIEnv* env, jobjectArray out, jsize index, const char* text) {
    return copyOut(env, out, index, text, text != NULL ? (int)strlen(text) : 0);
}

/* ---- handle, version, errors, result document ---- */

NATIVE(init)(JNIEnv* env, jclass cls, jlongArray out) {
    (void)cls;
    void* handle = NULL;
    int status = VQTK_XMLAPI_init(&handle);
    jlong value = (jlong)(intptr_t)handle;
    (*env)->SetLongArrayRegion(env, out, 0, 1, &value);
    return status;
}

NATIVE(finish)(JNIEnv* env, jclass cls, jlong h) {
    (void)env, (void)cls;
    void* handle = H(h);
    return VQTK_XMLAPI_Finish(&handle);
}

/* The last failure's text (EUC-KR; Java decodes it) or the version, without the NUL. */
static jbyteArray copyText1024(JNIEnv* env, jlong h, int (*get)(void*, int, char*)) {
    char text[1024] = "";
    get(H(h), (int)sizeof text - 1, text);
    text[sizeof text - 1] = '\0';
    jsize len = (jsize)strlen(text);
    jbyteArray array = (*env)->NewByteArray(env, len);
    if (array != NULL)
        (*env)->SetByteArrayRegion(env, array, 0, len, (const jbyte*)text);
    return array;
}

JNIEXPORT jbyteArray JNICALL Java_kr_vqxml_Native_errorText(JNIEnv* env, jclass cls, jlong h) {
    (void)cls;
    return copyText1024(env, h, VQTK_XMLAPI_GetErrInfo);
}

JNIEXPORT jbyteArray JNICALL Java_kr_vqxml_Native_version(JNIEnv* env, jclass cls, jlong h) {
    (void)cls;
    return copyText1024(env, h, VQTK_XMLAPI_GetVersion);
}

NATIVE(document)(JNIEnv* env, jclass cls, jlong h, jobjectArray out) {
    (void)cls;
    char* doc = NULL;
    int len = 0;
    int status = VQTK_XMLAPI_GetXMLDocument(H(h), &doc, &len);
    return copyOut(env, out, 0, doc, len) ? status : VQXML_ERR_MEMORY;
}

/* ---- the calls, by the shape of their arguments ---- */

#define CALL(name, fn)                                     \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h) {      \
        (void)env, (void)cls;                              \
        return fn(H(h));                                   \
    }
#define CALL_INT(name, fn)                                       \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jint a) {    \
        (void)env, (void)cls;                                    \
        return fn(H(h), a);                                      \
    }
#define CALL_INT_INT(name, fn)                                           \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jint a, jint b) {    \
        (void)env, (void)cls;                                            \
        return fn(H(h), a, b);                                           \
    }
/* One byte string or text, with its length where the C function takes one. */
#define CALL_BYTES(name, fn, ...)                                         \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jbyteArray array) {   \
        (void)cls;                                                        \
        In a;                                                             \
        if (!copyIn(env, array, &a))                                      \
            return VQXML_ERR_MEMORY;                                      \
        int status = fn(H(h), (void*)a.data __VA_ARGS__);                 \
        free(a.data);                                                     \
        return status;                                                    \
    }
#define WITH_LEN , a.len
#define CALL_BYTES_INT(name, fn, ...)                                               \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jbyteArray array, jint value) { \
        (void)cls;                                                                  \
        In a;                                                                       \
        if (!copyIn(env, array, &a))                                                \
            return VQXML_ERR_MEMORY;                                                \
        int status = fn(H(h), (void*)a.data __VA_ARGS__, value);                    \
        free(a.data);                                                               \
        return status;                                                              \
    }
/* A certificate and a key, each with its length. */
#define CALL_PAIR(name, fn)                                                                \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jbyteArray first, jbyteArray second) { \
        (void)cls;                                                                         \
        In a, b = {NULL, 0};                                                               \
        int status = VQXML_ERR_MEMORY;                                                     \
        if (copyIn(env, first, &a) && copyIn(env, second, &b))                             \
            status = fn(H(h), (void*)a.data, a.len, (void*)b.data, b.len);                 \
        free(a.data);                                                                      \
        free(b.data);                                                                      \
        return status;                                                                     \
    }
#define CALL_REFERENCE(name, fn)                                                                      \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jbyteArray uri, jint digest, jint c14n, jbyteArray xpath) { \
        (void)cls;                                                                                    \
        In u, x = {NULL, 0};                                                                          \
        int status = VQXML_ERR_MEMORY;                                                                \
        if (copyIn(env, uri, &u) && copyIn(env, xpath, &x))                                           \
            status = fn(H(h), u.data, digest, c14n, x.data);                                          \
        free(u.data);                                                                                 \
        free(x.data);                                                                                 \
        return status;                                                                                \
    }
/* Getters: a text, two texts, bytes with a length, or an int. */
#define GET_TEXT(name, fn)                                                   \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jobjectArray out) {      \
        (void)cls;                                                           \
        char* text = NULL;                                                   \
        int status = fn(H(h), &text);                                        \
        return copyText(env, out, 0, text) ? status : VQXML_ERR_MEMORY;      \
    }
#define GET_TWO_TEXTS(name, fn)                                                                     \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jobjectArray out) {                             \
        (void)cls;                                                                                  \
        char *first = NULL, *second = NULL;                                                         \
        int status = fn(H(h), &first, &second);                                                     \
        return copyText(env, out, 0, first) && copyText(env, out, 1, second) ? status : VQXML_ERR_MEMORY; \
    }
#define GET_BYTES(name, fn)                                                  \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jobjectArray out) {      \
        (void)cls;                                                           \
        unsigned char* data = NULL;                                          \
        int len = 0;                                                         \
        int status = fn(H(h), &data, &len);                                  \
        return copyOut(env, out, 0, data, len) ? status : VQXML_ERR_MEMORY;  \
    }
#define GET_INT(name, fn)                                                 \
    NATIVE(name)(JNIEnv * env, jclass cls, jlong h, jintArray out) {      \
        (void)cls;                                                        \
        int value = 0;                                                    \
        int status = fn(H(h), &value);                                    \
        jint copy = value;                                                \
        (*env)->SetIntArrayRegion(env, out, 0, 1, &copy);                 \
        return status;                                                    \
    }

/* XML Signature */
CALL_BYTES(dsigLoad, VQTK_XMLDSIG_SetXMLDocument, WITH_LEN)
CALL_BYTES(dsigSetPrefix, VQTK_XMLDSIG_SetPrefix)
CALL_INT_INT(dsigSignatureMethod, VQTK_XMLDSIG_SignatureMethod)
CALL_REFERENCE(dsigReference, VQTK_XMLDSIG_createReference)
CALL_BYTES(dsigSetKeyName, VQTK_XMLDSIG_SetKeyName)
CALL_PAIR(dsigSetSigner, VQTK_XMLDSIG_SetSigner)
CALL_BYTES(dsigSetHmacKey, VQTK_XMLDSIG_SetHMACKey, , (unsigned int)a.len)
CALL(dsigSign, VQTK_XMLDSIG_sign)
CALL_BYTES(dsigLoadSigned, VQTK_XMLDSIG_SetSignXMLDocument, WITH_LEN)
CALL_INT(dsigAllowExternalReferences, VQTK_XMLDSIG_AllowExternalReferences)
CALL(dsigVerify, VQTK_XMLDSIG_Verify)
CALL_PAIR(dsigVerifySignerCert, VQTK_XMLDSIG_VerifySignerCert)
GET_INT(dsigCanonicalReading, VQTK_XMLDSIG_GetCanonicalReading)
GET_TEXT(dsigSubject, VQTK_XMLDSIG_GetSubjectName)
GET_TWO_TEXTS(dsigIssuerSerial, VQTK_XMLDSIG_GetIssuerSerialNum)
GET_TEXT(dsigKeyName, VQTK_XMLDSIG_GetKeyName)
GET_BYTES(dsigCertificate, VQTK_XMLDSIG_GetSignCert)

NATIVE(dsigAppendObject)(JNIEnv* env, jclass cls, jlong h, jbyteArray id, jbyteArray content) {
    (void)cls;
    In i, c = {NULL, 0};
    int status = VQXML_ERR_MEMORY;
    if (copyIn(env, id, &i) && copyIn(env, content, &c))
        status = VQTK_XMLDSIG_appendObject(H(h), i.data, c.data, c.len);
    free(i.data);
    free(c.data);
    return status;
}

/* XML Encryption */
CALL_BYTES(encLoad, VQTK_XMLENC_SetXMLDocument, WITH_LEN)
CALL_INT(encSetSymmetricAlgorithm, VQTK_XMLENC_SetSymmAlg)
CALL_BYTES_INT(encSetSymmetricKey, VQTK_XMLENC_SetSymmKey, WITH_LEN)
CALL_BYTES(encSetPrefix, VQTK_XMLENC_SetPrefix)
CALL_BYTES(encSetKeyName, VQTK_XMLENC_SetKeyName)
CALL_BYTES_INT(encEncryptElement, VQTK_XMLENC_EncryptElement)
CALL(encNameSubject, VQTK_XMLENC_SetSubjectName)
CALL(encNameIssuerSerial, VQTK_XMLENC_SetIssuerSerial)
CALL_BYTES_INT(encAddRecipient, VQTK_XMLENC_EncryptKeyWrapKey, WITH_LEN)
CALL(encEncrypt, VQTK_XMLENC_Encrypt)
CALL_BYTES(encLoadEncrypted, VQTK_XMLENC_SetEncXMLDocument, WITH_LEN)
CALL(encNextKey, VQTK_XMLENC_GetEncKeyInfo)
CALL_PAIR(encUnwrapKey, VQTK_XMLENC_DecryptKeyWrapKey)
CALL(encDecrypt, VQTK_XMLENC_Decrypt)
GET_TEXT(encSubject, VQTK_XMLENC_GetSubjectName)
GET_TWO_TEXTS(encIssuerSerial, VQTK_XMLENC_GetIssuerSerialNum)
GET_TEXT(encKeyName, VQTK_XMLENC_GetKeyName)
GET_BYTES(encCertificate, VQTK_XMLENC_GetEncCert)

/* SOAP message security */
CALL_BYTES(soapLoad, VQTK_SOAPSEC_SetSOAPDocument, WITH_LEN)
CALL_INT_INT(soapSignatureMethod, VQTK_SOAPSEC_SignatureMethod)
CALL_REFERENCE(soapReference, VQTK_SOAPSEC_createReference)
CALL(soapNameIssuerSerial, VQTK_SOAPSEC_SetIssuerSerial)
CALL_PAIR(soapSetSigner, VQTK_SOAPSEC_SetSigner)
CALL_BYTES(soapSetHmacKey, VQTK_SOAPSEC_SetHMACKey, , (unsigned int)a.len)
CALL_BYTES(soapSetSignKeyName, VQTK_SOAPSEC_SetSignKeyName)
CALL(soapSign, VQTK_SOAPSEC_Sign)
CALL_INT(soapSetSymmetricAlgorithm, VQTK_SOAPSEC_SetSymmAlg)
CALL_BYTES_INT(soapSetSymmetricKey, VQTK_SOAPSEC_SetSymmKey, WITH_LEN)
CALL_BYTES_INT(soapEncryptElement, VQTK_SOAPSEC_EncryptElement)
CALL_BYTES(soapSetEncKeyName, VQTK_SOAPSEC_SetEncKeyName)
CALL_BYTES_INT(soapAddRecipient, VQTK_SOAPSEC_EncryptKeyWrapKey, WITH_LEN)
CALL(soapEncrypt, VQTK_SOAPSEC_Encrypt)
CALL_BYTES(soapLoadSecured, VQTK_SOAPSEC_SetSOAPSecXMLDocument, WITH_LEN)
GET_INT(soapSignKeyInfo, VQTK_SOAPSEC_GetSignKeyInfo)
GET_INT(soapEncKeyInfo, VQTK_SOAPSEC_GetEncKeyInfo)
CALL_PAIR(soapUnwrapKey, VQTK_SOAPSEC_DecryptKeyWrapKey)
CALL_BYTES(soapSetVerifyCert, VQTK_SOAPSEC_SetVerifyCert, WITH_LEN)
CALL(soapProcess, VQTK_SOAPSEC_ProcessSOAP)
GET_TEXT(soapSignedParts, VQTK_SOAPSEC_GetSignedParts)
GET_TEXT(soapSubject, VQTK_SOAPSEC_GetSubjectName)
GET_TWO_TEXTS(soapIssuerSerial, VQTK_SOAPSEC_GetIssuerSerialNum)
GET_TEXT(soapKeyName, VQTK_SOAPSEC_GetKeyName)
GET_BYTES(soapCertificate, VQTK_SOAPSEC_GetSignCert)

/* ebXML messages */
CALL_BYTES(ebxmlLoad, VQTK_EBXML_SetSOAPDocument, WITH_LEN)
CALL_BYTES(ebxmlLoadSigned, VQTK_EBXML_SetSOAPSecXMLDocument, WITH_LEN)
CALL_INT_INT(ebxmlSignatureMethod, VQTK_EBXML_SignatureMethod)
CALL_REFERENCE(ebxmlReference, VQTK_EBXML_createReference)
CALL_PAIR(ebxmlSetSigner, VQTK_EBXML_SetSigner)
CALL_BYTES(ebxmlSetSignKeyName, VQTK_EBXML_SetSignKeyName)
CALL(ebxmlIncludeKeyValue, VQTK_EBXML_SetKeyValue)
CALL(ebxmlNameSubject, VQTK_EBXML_SetSubjectName)
CALL(ebxmlNameIssuerSerial, VQTK_EBXML_SetIssuerSerial)
CALL(ebxmlSign, VQTK_EBXML_Sign)
CALL(ebxmlVerify, VQTK_EBXML_Verify)
GET_TEXT(ebxmlSubject, VQTK_EBXML_GetSubjectName)
GET_TWO_TEXTS(ebxmlIssuerSerial, VQTK_EBXML_GetIssuerSerialNum)
GET_TEXT(ebxmlKeyName, VQTK_EBXML_GetKeyName)
GET_BYTES(ebxmlCertificate, VQTK_EBXML_GetSignCert)

/* Certificates and private keys */
CALL_BYTES(verifyCert, VQTK_XMLAPI_VerifyCert, WITH_LEN)

NATIVE(verifyCertChain)(JNIEnv* env, jclass cls, jlong h, jbyteArray cert, jbyteArray chain, jbyteArray crls) {
    (void)cls;
    In c, i = {NULL, 0}, r = {NULL, 0};
    int status = VQXML_ERR_MEMORY;
    if (copyIn(env, cert, &c) && copyIn(env, chain, &i) && copyIn(env, crls, &r))
        status = VQTK_XMLAPI_VerifyCertChain(H(h), (unsigned char*)c.data, c.len, (unsigned char*)i.data, i.len,
                                             (unsigned char*)r.data, r.len);
    free(c.data);
    free(i.data);
    free(r.data);
    return status;
}

NATIVE(decryptPrivateKey)(JNIEnv* env, jclass cls, jlong h, jbyteArray password, jbyteArray key, jobjectArray out) {
    (void)cls;
    In p, k = {NULL, 0};
    int status = VQXML_ERR_MEMORY;
    if (copyIn(env, password, &p) && copyIn(env, key, &k)) {
        unsigned char* plain = NULL;
        int plainLen = 0;
        status = VQTK_XMLAPI_DecryptPriKey(H(h), p.data, (unsigned char*)k.data, k.len, &plain, &plainLen);
        if (status == VQXML_OK && !copyOut(env, out, 0, plain, plainLen))
            status = VQXML_ERR_MEMORY;
    }
    if (p.data != NULL)
        memset(p.data, 0, (size_t)p.len);
    free(p.data);
    free(k.data);
    return status;
}

NATIVE(privateKeyRandom)(JNIEnv* env, jclass cls, jlong h, jbyteArray password, jbyteArray key,
                         jbyteArray recipient, jobjectArray out) {
    (void)cls;
    In p, k = {NULL, 0}, r = {NULL, 0};
    int status = VQXML_ERR_MEMORY;
    if (copyIn(env, password, &p) && copyIn(env, key, &k) && copyIn(env, recipient, &r)) {
        unsigned char* random = NULL;
        status = VQTK_XMLAPI_GetRandomFromPriKey(H(h), p.data, (unsigned char*)k.data, k.len,
                                                 (unsigned char*)r.data, r.len, &random);
        if (status == VQXML_OK && !copyText(env, out, 0, (const char*)random))
            status = VQXML_ERR_MEMORY;
    }
    if (p.data != NULL)
        memset(p.data, 0, (size_t)p.len);
    free(p.data);
    free(k.data);
    free(r.data);
    return status;
}
