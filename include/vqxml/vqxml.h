/*
 * vqxml: XML Signature, XML Encryption, WS-Security and ebXML for C callers.
 *
 * Every call works on an opaque handle made by VQTK_XMLAPI_init and destroyed by
 * VQTK_XMLAPI_Finish. Every function returns an int status: 0 is success; a null
 * handle gives VQXML_ERR_NULL_HANDLE and a null required pointer
 * VQXML_ERR_NULL_ARGUMENT, neither of which touches the handle. Any other failure
 * leaves a text in the handle, read with VQTK_XMLAPI_GetErrInfo (EUC-KR bytes: the
 * failing method's name, " > ", then the reason).
 *
 * Buffers handed out by the library (result documents, certificates, names) belong
 * to the handle: they stay valid until the next operation that produces the same
 * kind of result or until the handle is finished. Never free them.
 *
 * Threads: a handle must be used by one thread at a time; different handles may be
 * used on different threads at once. Handles may be created and finished on any
 * thread at any time.
 */
#ifndef VQXML_VQXML_H
#define VQXML_VQXML_H

#if defined(VQXML_BUILDING)
#define VQXML_EXPORT __attribute__((visibility("default")))
#else
#define VQXML_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* statuses: begin */
/* Status codes: 0 is success, anything else a failure (docs/status-codes.md).
 * Written from core/Statuses.def by scripts/statuses.py. */
#define VQXML_OK 0
#define VQXML_ERR_MEMORY 1                        /* Memory could not be allocated */
#define VQXML_ERR_CRYPTO_PROVIDER 33              /* The crypto provider failed while building an object */
#define VQXML_ERR_NULL_HANDLE 10100               /* Null handle */
#define VQXML_ERR_HANDLE_IN_USE 10101             /* The handle variable already holds a handle */
#define VQXML_ERR_NULL_ARGUMENT 10102             /* A required argument is null, or the handle could not be created */
#define VQXML_ERR_RELEASE 10103                   /* The previous document or engine objects could not be released */
#define VQXML_ERR_NO_PACKAGE 10104                /* No package bytes were given */
#define VQXML_ERR_PARSE 10105                     /* The document is not well-formed XML or has no root element */
#define VQXML_ERR_NO_DOCUMENT 10106               /* No document was given */
#define VQXML_ERR_ENCODING 10107                  /* The document's declared encoding is not UTF-8 */
#define VQXML_ERR_DSIG_NO_SIGNATURE 10200         /* No signature object: load a document first */
#define VQXML_ERR_DSIG_SIGNATURE_SELECTOR 10201   /* Unknown signature algorithm selector */
#define VQXML_ERR_DSIG_C14N_SELECTOR 10202        /* Unknown canonicalization selector */
#define VQXML_ERR_DSIG_DIGEST_SELECTOR 10203      /* Unknown digest selector */
#define VQXML_ERR_DSIG_NO_KEY 10204               /* Neither a certificate nor a private key was given */
#define VQXML_ERR_DSIG_NOT_ASYMMETRIC 10205       /* The chosen signature method takes no certificate or private key */
#define VQXML_ERR_DSIG_HMAC_KEY 10206             /* Empty HMAC secret, or the chosen signature method is not HMAC */
#define VQXML_ERR_DSIG_NO_PREFIX 10207            /* No prefix was given */
#define VQXML_ERR_DSIG_NO_KEY_NAME 10208          /* No key name was given */
#define VQXML_ERR_DSIG_NO_OBJECT 10209            /* No Object content was given */
#define VQXML_ERR_DSIG_NO_OBJECT_ID 10210         /* No Object Id was given */
#define VQXML_ERR_DSIG_OBJECT_ID_HASH 10211       /* An Object Id must not begin with '#' */
#define VQXML_ERR_DSIG_NO_SIGNED_DOCUMENT 10212   /* No signed document was given */
#define VQXML_ERR_ENC_NO_PREFIX 10300             /* No prefix was given */
#define VQXML_ERR_ENC_CIPHER_SELECTOR 10301       /* Unknown or unsupported symmetric algorithm */
#define VQXML_ERR_ENC_NO_ELEMENT 10302            /* No element with the given name */
#define VQXML_ERR_ENC_MODE 10303                  /* Encryption mode must be 1 (content) or 2 (element) */
#define VQXML_ERR_ENC_TRANSPORT_SELECTOR 10304    /* Unknown key transport algorithm */
#define VQXML_ERR_ENC_NO_KEY_NAME 10305           /* No key name was given */
#define VQXML_ERR_ENC_NO_KEY 10306                /* The key or certificate is empty */
#define VQXML_ERR_ENC_NO_SESSION_KEY 10307        /* No session key is set */
#define VQXML_ERR_ENC_RECIPIENT_ISSUER 10308      /* The certificate's issuer differs from the encrypted key's recipient */
#define VQXML_ERR_ENC_RECIPIENT_SUBJECT 10309     /* The certificate's subject differs from the encrypted key's recipient */
#define VQXML_ERR_ENC_RECIPIENT_SERIAL 10310      /* The certificate's serial number differs from the encrypted key's recipient */
#define VQXML_ERR_ENC_NO_ENCRYPTED_DOCUMENT 10311 /* No encrypted document was given */
#define VQXML_ERR_ENC_NO_ENCRYPTED_DATA 10312     /* The document has no EncryptedData */
#define VQXML_ERR_ENC_KEYS_VISITED 10313          /* Every EncryptedKey of the document has been visited */
#define VQXML_ERR_DEC_NO_SESSION_KEY 10314        /* No session key is set */
#define VQXML_ERR_SOAP_NO_DOCUMENT 10400          /* No SOAP document */
#define VQXML_ERR_SOAP_NO_HEADER 10401            /* The SOAP document does not parse or has no SOAP Header */
#define VQXML_ERR_SOAP_SIGNATURE_SELECTOR 10402   /* Unknown signature algorithm selector */
#define VQXML_ERR_SOAP_C14N_SELECTOR 10403        /* Unknown canonicalization selector */
#define VQXML_ERR_SOAP_DIGEST_SELECTOR 10404      /* Unknown digest selector */
#define VQXML_ERR_SOAP_NO_KEY 10405               /* Neither a certificate nor a private key was given */
#define VQXML_ERR_SOAP_NOT_ASYMMETRIC 10406       /* The chosen signature method takes no certificate or private key */
#define VQXML_ERR_SOAP_NO_KEY_NAME 10407          /* No key name was given */
#define VQXML_ERR_SOAP_HMAC_KEY 10408             /* Empty HMAC key, or the chosen signature method is not HMAC */
#define VQXML_ERR_SOAP_CIPHER_SELECTOR 10500      /* Unknown or unsupported symmetric algorithm */
#define VQXML_ERR_SOAP_TARGET 10501               /* Encryption type must be 1 (content) or 2 (element) */
#define VQXML_ERR_SOAP_TRANSPORT_SELECTOR 10502   /* Unknown key transport algorithm */
#define VQXML_ERR_SOAP_NO_KEY_DATA 10503          /* The key or certificate is empty */
#define VQXML_ERR_SOAP_NO_SESSION_KEY 10504       /* No session key is set */
#define VQXML_ERR_SOAP_RECIPIENT_ISSUER 10505     /* The certificate's issuer differs from the encrypted key's recipient */
#define VQXML_ERR_SOAP_RECIPIENT_SUBJECT 10506    /* The certificate's subject differs from the encrypted key's recipient */
#define VQXML_ERR_SOAP_RECIPIENT_SERIAL 10507     /* The certificate's serial number differs from the encrypted key's recipient */
#define VQXML_ERR_SOAP_BAD_HEADER 10508           /* The security header or one of its tokens cannot be used */
#define VQXML_ERR_SOAP_NOT_SECURED 10509          /* The message is neither signed nor encrypted */
#define VQXML_ERR_SOAP_ENC_NO_KEY_NAME 10510      /* No key name was given */
#define VQXML_ERR_SOAP_ENCRYPTED_NO_KEY 10511     /* The message is encrypted and no session key is set */
#define VQXML_ERR_PROVIDER_KEY_TYPE 11102         /* The crypto provider cannot make a key of that type */
#define VQXML_ERR_NOT_VERIFIED 11213              /* The signature does not verify */
#define VQXML_ERR_TRANSPORT_UNKNOWN 11304         /* Unknown key transport algorithm in the EncryptedKey */
#define VQXML_ERR_UNKNOWN 12011                   /* Unknown error */
#define VQXML_ERR_CERT_PATH 12020                 /* No path to a built-in root */
#define VQXML_ERR_CERT_SIGNATURE 12021            /* A signature on the path does not verify or cannot be checked */
#define VQXML_ERR_CERT_VALIDITY 12022             /* A certificate on the path is not valid now */
#define VQXML_ERR_CERT_REVOKED 12023              /* Revoked, or no usable CRL of its issuer */
#define VQXML_ERR_CERT_CONSTRAINTS 12024          /* A CA constraint, key usage or critical extension refuses the path */
#define VQXML_ERR_CERT_INPUT 12025                /* A certificate or CRL cannot be read, or is over its bound */
#define VQXML_ERR_CERT_NONE 12026                 /* The signature carries no certificate to verify */
/* statuses: end */

/* ---- Handle, version, errors, result document ---- */

/* Makes a handle into *handle, which must hold NULL (else 10101). 10102 if the
 * library could not start. */
VQXML_EXPORT int VQTK_XMLAPI_init(void** handle);
/* As VQTK_XMLAPI_init; the locale is accepted and ignored. */
VQXML_EXPORT int VQTK_XMLAPI_initSetlocale(void** handle, char* locale);
/* Destroys the handle in *handle. The variable is not cleared: set it to NULL
 * before passing it to VQTK_XMLAPI_init again. */
VQXML_EXPORT int VQTK_XMLAPI_Finish(void** handle);
/* Copies the version text ("V1.0.0.7"). If len is at most the text's length,
 * exactly len bytes are copied with no NUL; otherwise the text and its NUL. */
VQXML_EXPORT int VQTK_XMLAPI_GetVersion(void* handle, int len, char* out);
/* Copies the last failure's text by the same rule as VQTK_XMLAPI_GetVersion. With
 * a null handle it writes "VQTKXML API initialisation failed" (in Korean, EUC-KR,
 * 24 bytes with the NUL) into out and returns 10100. */
VQXML_EXPORT int VQTK_XMLAPI_GetErrInfo(void* handle, int len, char* out);
/* Hands out the last result document (NUL-terminated; len excludes the NUL). With
 * no result yet, returns 0 and writes neither doc nor len. */
VQXML_EXPORT int VQTK_XMLAPI_GetXMLDocument(void* handle, char** doc, int* len);
/* Releases with free() a buffer the caller owns and sets the pointer to NULL; does
 * nothing for NULL. Never pass a buffer the handle owns. */
VQXML_EXPORT void VQTK_XMLAPI_Free(void** buffer);

/* ---- XML Signature ----
 *
 * Signing: SetXMLDocument (or NULL/0 for an enveloping signature in a document of
 * its own) -> optionally SetPrefix -> SignatureMethod -> createReference,
 * appendObject, SetKeyName, SetSigner/SetHMACKey in any order -> sign ->
 * VQTK_XMLAPI_GetXMLDocument.
 *
 * Signature selectors: 1 HMAC-SHA1, 2 RSA-SHA1, 3 KCDSA-SHA1, 4 KCDSA-HAS160,
 * 5 RSA-SHA256. Canonicalization selectors: 0 none, 1 C14N, 2 C14N with comments,
 * 3 exclusive C14N, 4 exclusive C14N with comments (for SignedInfo, 0 means C14N).
 * Digest selectors: 1 SHA-1, 2 HAS-160, 3 SHA-256.
 * Additions (XML Signature 1.1; the same numbers for EBXML and SOAPSEC):
 * signature 6 RSA-SHA224, 7 RSA-SHA384, 8 RSA-SHA512, 9 RSA-PSS-SHA256,
 * 10 RSA-PSS-SHA384, 11 RSA-PSS-SHA512 (RFC 6931: MGF1 with the same hash, salt as
 * long as the hash), 12 ECDSA-SHA256, 13 ECDSA-SHA384, 14 ECDSA-SHA512 (r||s),
 * 15 DSA-SHA256, 16 HMAC-SHA224, 17 HMAC-SHA256, 18 HMAC-SHA384, 19 HMAC-SHA512;
 * canonicalization 5 C14N 1.1, 6 C14N 1.1 with comments; digest 4 SHA-224,
 * 5 SHA-384, 6 SHA-512. docs/algorithms.md gives every URI.
 *
 * Reference URIs: NULL, "" or " " sign the whole document; a URI beginning with
 * "#", "http:", "https:" or "file:" stands as given; anything else names the
 * element with that Id ("body" becomes "#body"). For an enveloped signature over
 * the whole document pass the XPath "not(ancestor-or-self::ds:Signature)".
 *
 * Keys: the certificate is DER or PEM; the private key an unencrypted PKCS#8 or
 * PKCS#1 RSA key, DER or PEM (RSA and RSA-PSS), or, an addition, an unencrypted
 * PKCS#8 (or SEC1, traditional DSA) EC or DSA key for ECDSA and DSA-SHA256. KeyInfo gets X509Data (X509SubjectName and
 * X509IssuerSerial when VQTK_XMLENC_SetSubjectName / VQTK_XMLENC_SetIssuerSerial were
 * called, then X509Certificate) followed by the RSA KeyValue. The four token values
 * of SetTokenSigner are accepted and not used.
 *
 * Verifying: SetSignXMLDocument -> optionally SetHMACKey -> Verify (11213: the
 * signature does not verify; any other code: it could not be checked) -> the
 * getters -> VQTK_XMLAPI_GetXMLDocument gives the document without its first
 * Signature, or the content of an enveloping signature's first Object. What comes
 * back must be what a Reference covered, else 11213: the document element (URI "",
 * "#xpointer(/)" or its "#id"; no "#id" Reference may resolve inside a Signature),
 * or the Object's element; other Signatures the References' transforms left out
 * are removed from the result. The getters report what KeyInfo says only when all
 * its items name and carry one key (else they report nothing and Verify gives
 * 11213); a KeyValue-only signature reports no certificate and no names.
 * Verification never reads anything outside the document unless
 * VQTK_XMLDSIG_AllowExternalReferences(handle, 1) was called. */
VQXML_EXPORT int VQTK_XMLDSIG_SetXMLDocument(void* handle, char* xml, int len);
VQXML_EXPORT int VQTK_XMLDSIG_SetPrefix(void* handle, char* prefix);
VQXML_EXPORT int VQTK_XMLDSIG_SignatureMethod(void* handle, int signatureSelector, int canonicalizationSelector);
VQXML_EXPORT int VQTK_XMLDSIG_createReference(void* handle, char* uri, int digestSelector,
                                              int canonicalizationSelector, char* xpath);
VQXML_EXPORT int VQTK_XMLDSIG_appendObject(void* handle, char* id, char* content, int len);
VQXML_EXPORT int VQTK_XMLDSIG_SetKeyName(void* handle, char* name);
VQXML_EXPORT int VQTK_XMLDSIG_sign(void* handle);
VQXML_EXPORT int VQTK_XMLDSIG_SetSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key,
                                        int keyLen);
VQXML_EXPORT int VQTK_XMLDSIG_SetTokenSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key,
                                             int keyLen, char* token1, char* token2, void* token3, void* token4);
VQXML_EXPORT int VQTK_XMLDSIG_SetHMACKey(void* handle, unsigned char* key, unsigned int len);
VQXML_EXPORT int VQTK_XMLDSIG_SetSignXMLDocument(void* handle, char* xml, int len);
VQXML_EXPORT int VQTK_XMLDSIG_Verify(void* handle);
VQXML_EXPORT int VQTK_XMLDSIG_AllowExternalReferences(void* handle, int allow);
/* Signer data read from the loaded signature's KeyInfo; NULL where it had none.
 * The subject is UTF-8; issuer, serial and key name are in the local code page
 * (the process locale's code set, UTF-8 in the "C" locale). The certificate is DER. */
VQXML_EXPORT int VQTK_XMLDSIG_GetSubjectName(void* handle, char** subject);
VQXML_EXPORT int VQTK_XMLDSIG_GetIssuerSerialNum(void* handle, char** issuer, char** serial);
VQXML_EXPORT int VQTK_XMLDSIG_GetSignCert(void* handle, unsigned char** cert, int* certLen);
VQXML_EXPORT int VQTK_XMLDSIG_GetKeyName(void* handle, char** keyName);
/* Addition: how the last VQTK_XMLDSIG_Verify or VQTK_EBXML_Verify on the handle read
 * the data of its references. Where an XPath transform leaves an element out but
 * keeps its namespace nodes (the national tax-invoice recipe leaves out TaxInvoice),
 * Santuario and libxmlsec1 write the canonical form differently; the library
 * accepts both for such node-sets, and says here which one the signer used:
 * VQXML_READING_PLAIN (no reference's node-set is one the two forms write
 * differently), VQXML_READING_SANTUARIO (one is, and it matched in Santuario's form,
 * the national test bed's), VQXML_READING_LITERAL (it matched only in the
 * canonicalization text read literally, as libxmlsec1 writes it). */
#define VQXML_READING_PLAIN 0
#define VQXML_READING_SANTUARIO 1
#define VQXML_READING_LITERAL 2
VQXML_EXPORT int VQTK_XMLDSIG_GetCanonicalReading(void* handle, int* reading);

/* ---- XML Encryption ----
 *
 * Encrypting: SetXMLDocument -> optionally SetPrefix -> SetSymmAlg (a random
 * session key) or SetSymmKey -> optionally SetKeyName -> EncryptElement once per
 * target -> optionally SetSubjectName / SetIssuerSerial -> EncryptKeyWrapKey once
 * per recipient -> Encrypt -> VQTK_XMLAPI_GetXMLDocument.
 *
 * Symmetric selectors (alg): 1 Triple DES (24 key bytes), 2 SEED, 3 NEAT, 4 ARIA-128
 * (16 key bytes), all in CBC mode (AES: additions below); 10301 for any other. SetSymmKey takes that many
 * bytes from key whatever keyLen says. Targets: NULL, "" or " " is the document
 * element; any other text names the first element with that qualified name
 * (prefix included), 10302 if none. Modes: 1 encrypts the element's content,
 * 2 the element itself (10303 for any other).
 *
 * Transport selectors: 1 Triple DES key wrap, key = the 24-byte key-encryption key;
 * 2 RSA PKCS #1 v1.5 and 3 RSA-OAEP (MGF1, SHA-1), key = the recipient's DER (or
 * PEM) certificate, which goes into the EncryptedKey's X509Data after the
 * subject name and issuer-serial asked for. With one encrypted element the
 * EncryptedKey goes into its EncryptedData's KeyInfo; with several it becomes the
 * first child of the document element and refers to each EncryptedData by Id
 * (generated "EncDataId-1", "EncDataId-2"... where the element has none). A key
 * name set before the elements goes into every EncryptedData, otherwise into the
 * next EncryptedKey only. 10306: empty key; 10307: no session key.
 *
 * Decrypting: SetEncXMLDocument -> GetEncKeyInfo -> the getters, to see whether
 * the key was wrapped for you (if not, GetEncKeyInfo again moves on to the next
 * document-level EncryptedKey; 10313 when none is left) -> DecryptKeyWrapKey ->
 * Decrypt -> VQTK_XMLAPI_GetXMLDocument. DecryptKeyWrapKey takes your certificate
 * and unencrypted private key (as VQTK_XMLDSIG_SetSigner does) for RSA, or NULL/0
 * and the 24-byte key-encryption key for Triple DES key wrap; the certificate's
 * issuer, subject and serial number must match those the document names (10308,
 * 10309, 10310). Holding the session key already, call SetSymmKey instead of
 * DecryptKeyWrapKey. Decrypt opens every EncryptedData of the document and drops
 * its EncryptedKeys; when the whole document is one EncryptedData of non-XML data,
 * the result is that data's octets. The getters are those of the signature
 * family: subject UTF-8, issuer, serial and key name in the local code page,
 * certificate DER. */
/* Additions (XML Encryption 1.1; the same selectors for VQTK_SOAPSEC_SetSymmAlg,
 * SetSymmKey and EncryptKeyWrapKey). Symmetric selectors: 5 AES-128-CBC,
 * 6 AES-192-CBC, 7 AES-256-CBC, 8 AES-128-GCM, 9 AES-192-GCM, 10 AES-256-GCM
 * (SetSymmKey takes 16, 24 or 32 key bytes). Transport selectors: 4 RSA-OAEP of
 * XML Encryption 1.1 (written with SHA-256 and MGF1 with SHA-256; key = the
 * recipient's certificate); 5, 6, 7 AES-128/192/256 key wrap, key = the 16, 24 or
 * 32-byte key-encryption key. A key-encryption key of another length than its
 * transport's (Triple DES: 24 bytes) is refused: 10306 (SOAP 10503), also by
 * DecryptKeyWrapKey(NULL, 0, kek, len). Decrypting reads every RSA-OAEP
 * DigestMethod (SHA-1 to SHA-512), xenc11:MGF and OAEPparams, an EncryptedKey
 * encrypted with AES-CBC, and an EncryptedKey at the top of the document named by a
 * ds:RetrievalMethod. DecryptKeyWrapKey with a NULL certificate skips the
 * recipient-name check. Every ciphertext that does not decrypt (padding, GCM tag,
 * length, key) gives status 46 with one text. */
VQXML_EXPORT int VQTK_XMLENC_SetXMLDocument(void* handle, char* xml, int len);
VQXML_EXPORT int VQTK_XMLENC_SetSymmAlg(void* handle, int alg);
VQXML_EXPORT int VQTK_XMLENC_SetSymmKey(void* handle, unsigned char* key, int keyLen, int alg);
VQXML_EXPORT int VQTK_XMLENC_SetPrefix(void* handle, char* prefix);
VQXML_EXPORT int VQTK_XMLENC_SetKeyName(void* handle, char* keyName);
VQXML_EXPORT int VQTK_XMLENC_EncryptElement(void* handle, char* target, int mode);
VQXML_EXPORT int VQTK_XMLENC_SetSubjectName(void* handle);
VQXML_EXPORT int VQTK_XMLENC_SetIssuerSerial(void* handle);
VQXML_EXPORT int VQTK_XMLENC_EncryptKeyWrapKey(void* handle, unsigned char* key, int keyLen, int alg);
VQXML_EXPORT int VQTK_XMLENC_Encrypt(void* handle);
VQXML_EXPORT int VQTK_XMLENC_SetEncXMLDocument(void* handle, char* xml, int len);
VQXML_EXPORT int VQTK_XMLENC_GetEncKeyInfo(void* handle);
VQXML_EXPORT int VQTK_XMLENC_GetSubjectName(void* handle, char** subject);
VQXML_EXPORT int VQTK_XMLENC_GetIssuerSerialNum(void* handle, char** issuer, char** serial);
VQXML_EXPORT int VQTK_XMLENC_GetEncCert(void* handle, unsigned char** cert, int* certLen);
VQXML_EXPORT int VQTK_XMLENC_GetKeyName(void* handle, char** keyName);
VQXML_EXPORT int VQTK_XMLENC_DecryptKeyWrapKey(void* handle, unsigned char* cert, int certLen,
                                               unsigned char* priKey, int priKeyLen);
VQXML_EXPORT int VQTK_XMLENC_Decrypt(void* handle);

/* ---- Certificates and private keys ---- */

/* Verifies a DER X.509 certificate against the built-in roots (KISA RootCA 4,
 * KISA RootCA 1, GPKIRootCA1): the path to a root, every signature, validity at
 * the current time of every certificate on the path, the root included (KISA
 * RootCA 1 expired on 2025-08-24), basic constraints and key usage of the CAs; no
 * revocation. The path is built from the certificate and the roots alone, so a
 * certificate chains only if a root issued it. 0 if accepted; 12011 with the
 * reason (expired, unknown issuer, bad signature, not a CA...) in the error text. */
VQXML_EXPORT int VQTK_XMLAPI_VerifyCert(void* handle, unsigned char* cert, int certLen);

/* Additions: certificate paths through intermediates, with CRLs.
 *
 * The two functions below verify a certificate as VQTK_XMLAPI_VerifyCert does,
 * through intermediates the caller gives and, when CRLs are given, revocation.
 * The path ends at a built-in root only; every certificate on it, the root
 * included, must be valid now. Nothing is fetched: not the intermediates, not
 * the CRLs (AIA and CRL distribution points are ignored), no OCSP.
 *
 * Inputs are DER or PEM, one item or several: DER items one after the other,
 * PEM blocks ("CERTIFICATE", "X509 CRL"; text around them is skipped), or both.
 * A NULL chain or CRL list, or a length of 0, gives none. Bounds: the certificate
 * 64 KiB, the intermediates 1 MiB, the CRLs 64 MiB.
 *
 * Revocation, when CRLs are given: the certificate's issuer must have a CRL among
 * them that it signed and that is current (nextUpdate not passed), and the
 * certificate must not be on it; every intermediate is checked against its
 * issuer's CRL when one is given (the root's authority revocation list covers the
 * licensed CAs) and passes when none is. Roots are not checked for revocation.
 *
 * A refusal returns the check that failed, with the reason, the depth on the path
 * (0 = the certificate) and that certificate's subject (Korean names in EUC-KR)
 * in the error text, after "<check> check failed: ". */

/* Addition. Verifies cert (DER or PEM) with the intermediates in chain and,
 * when crlsLen > 0, the CRLs in crls. 0 if accepted, else one of the statuses
 * above (a null cert gives 10102). */
VQXML_EXPORT int VQTK_XMLAPI_VerifyCertChain(void* handle, unsigned char* cert, int certLen,
                                             unsigned char* chain, int chainLen, unsigned char* crls,
                                             int crlsLen);
/* Addition. Verifies the signer's certificate of the signature loaded on the
 * handle (the one VQTK_XMLDSIG_GetSignCert gives) with the other certificates
 * its KeyInfo carries (X509Data, in any order) and those in chain as
 * intermediates, and the CRLs in crls, as VQTK_XMLAPI_VerifyCertChain does. Call
 * it after VQTK_XMLDSIG_Verify (or VQTK_EBXML_Verify): whether the signature is
 * valid is Verify's answer, whether its signer is trusted this one's. 10200
 * without a loaded signature; 12026 when the KeyInfo carries no certificate
 * (a KeyName, a KeyValue or an HMAC signature). */
VQXML_EXPORT int VQTK_XMLDSIG_VerifySignerCert(void* handle, unsigned char* chain, int chainLen,
                                               unsigned char* crls, int crlsLen);
/* Decrypts a password-protected PKCS #8 private key (pbeWithSHA1AndSEED-CBC, or
 * PBES2 with SEED-CBC or AES-CBC) and hands out the DER PrivateKeyInfo in *keyOut
 * (owned by the handle, with one zero byte after *keyOutLen bytes). *keyOut is
 * set whatever the status: on failure to the key of the last success, or NULL.
 * A wrong password gives 12011. */
VQXML_EXPORT int VQTK_XMLAPI_DecryptPriKey(void* handle, char* password, unsigned char* key,
                                           int keyLen, unsigned char** keyOut, int* keyOutLen);
/* Hands out in *randomOut the identity-verification random of a private key as
 * base64 text (owned by the handle). With a NULL password key is taken as a plain
 * PrivateKeyInfo (as VQTK_XMLAPI_DecryptPriKey gives it). With a recipient (a DER
 * certificate, recipientKeyLen > 0) the random is first encrypted for it with RSA
 * PKCS #1 v1.5. *randomOut is set whatever the status, as above. */
VQXML_EXPORT int VQTK_XMLAPI_GetRandomFromPriKey(void* handle, char* password, unsigned char* key,
                                                 int keyLen, unsigned char* recipientKey,
                                                 int recipientKeyLen, unsigned char** randomOut);

/* ---- ebXML messages ----
 *
 * A package is MIME multipart/related: the first part is the SOAP envelope, every
 * further part an attachment, referenced from the signature as "cid:" plus its
 * Content-ID without the angle brackets. Data starting with "<" is a bare
 * envelope; data starting with "-" a package whose header travels elsewhere (its
 * first line is the first boundary); anything else a package with its header.
 *
 * Signing: SetSOAPDocument -> SignatureMethod (the prefix is always "ds") ->
 * createReference for the envelope -> optionally SetIssuerSerial, SetSubjectName,
 * SetKeyValue, SetSignKeyName -> SetSigner -> Sign -> VQTK_XMLAPI_GetXMLDocument
 * gives the whole package with the signed envelope. Sign adds one reference per
 * attachment with the digest of the last createReference; its canonicalization
 * applies to attachments whose Content-Type mentions "xml" and whose content
 * begins with "<". No enveloped-signature transform is added: exclude the
 * signature with the XPath, e.g. "not(ancestor-or-self::ds:Signature)"; XPath
 * prefixes in scope at the XPath element (ds, and SOAP from the envelope) may be
 * used.
 *
 * Verifying: SetSOAPSecXMLDocument -> Verify (11213: the signature, the envelope
 * or an attachment does not verify) -> the getters -> VQTK_XMLAPI_GetXMLDocument
 * gives the package with the envelope without its signature.
 *
 * The attachments are signed as their content after transfer decoding. While a
 * package is held, every result of the handle is that package; a further package
 * replaces it. The two loaders return 10104 for no data and 10103 for a package
 * that cannot be used (no part, an empty envelope part, a Content-ID longer than
 * 255 bytes or one that two attachments share); neither touches the error text.
 * The other functions are those of the XML Signature family with the same
 * arguments. */
VQXML_EXPORT int VQTK_EBXML_SetSOAPDocument(void* handle, char* data, int len);
VQXML_EXPORT int VQTK_EBXML_SetSOAPSecXMLDocument(void* handle, char* data, int len);
VQXML_EXPORT int VQTK_EBXML_SignatureMethod(void* handle, int signatureSelector, int canonicalizationSelector);
VQXML_EXPORT int VQTK_EBXML_createReference(void* handle, char* uri, int digestSelector,
                                            int canonicalizationSelector, char* xpath);
VQXML_EXPORT int VQTK_EBXML_SetSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key,
                                      int keyLen);
VQXML_EXPORT int VQTK_EBXML_SetSignKeyName(void* handle, char* name);
VQXML_EXPORT int VQTK_EBXML_SetKeyValue(void* handle);
VQXML_EXPORT int VQTK_EBXML_SetSubjectName(void* handle);
VQXML_EXPORT int VQTK_EBXML_SetIssuerSerial(void* handle);
VQXML_EXPORT int VQTK_EBXML_Sign(void* handle);
VQXML_EXPORT int VQTK_EBXML_Verify(void* handle);
VQXML_EXPORT int VQTK_EBXML_GetSubjectName(void* handle, char** subject);
VQXML_EXPORT int VQTK_EBXML_GetIssuerSerialNum(void* handle, char** issuer, char** serial);
VQXML_EXPORT int VQTK_EBXML_GetKeyName(void* handle, char** keyName);
VQXML_EXPORT int VQTK_EBXML_GetSignCert(void* handle, unsigned char** cert, int* certLen);

/* ---- SOAP message security (WS-Security 1.0/1.1 header, X.509 token profile) ----
 * Securing: SetSOAPDocument (the envelope must have a SOAP Header) ->
 * SignatureMethod (1 HMAC-SHA1, 2 RSA-SHA1, 3 KCDSA-SHA1, 4 KCDSA-HAS160,
 * 5 RSA-SHA256 and the XML Signature additions 6 to 19; canonicalization 0 exclusive
 * C14N, 1 C14N, 2 C14N with comments, additions 3 C14N 1.1, 4 C14N 1.1 with
 * comments) -> createReference (null uri: the SOAP Body; digest 1 SHA-1, 2 HAS-160,
 * 3 SHA-256, additions 4 SHA-224, 5 SHA-384, 6 SHA-512) -> [SetIssuerSerial] ->
 * SetSigner / SetHMACKey -> Sign.
 * Encrypting: SetSymmAlg / SetSymmKey (1 Triple DES, 2 SEED, 3 NEAT, 4 ARIA) ->
 * EncryptElement (null target: the Body's content; "#id" or a qualified name;
 * type 1 content, 2 element) -> [SetIssuerSerial] -> EncryptKeyWrapKey per
 * recipient (1 Triple DES key wrap, 2 RSA 1.5, 3 RSA-OAEP; an RSA key is the
 * recipient's certificate) -> Encrypt. Each operation's header entries go first.
 * Processing: SetSOAPSecXMLDocument -> GetSignKeyInfo and the getters ->
 * GetEncKeyInfo (once per encrypted key) and the getters -> DecryptKeyWrapKey ->
 * ProcessSOAP (decrypts and verifies in the sender's order, removes the header).
 * SetVerifyCert gives the signer's certificate (DER or PEM) to verify with, ahead
 * of any the message carries, for a signer it names only by issuer and serial:
 * 10405 no certificate, 10406 the message's signature takes no certificate (HMAC);
 * a certificate of another key makes ProcessSOAP fail with 11213. */
VQXML_EXPORT int VQTK_SOAPSEC_SetSOAPDocument(void* handle, char* xml, int len);
VQXML_EXPORT int VQTK_SOAPSEC_SignatureMethod(void* handle, int signatureAlg, int canonAlg);
VQXML_EXPORT int VQTK_SOAPSEC_createReference(void* handle, char* uri, int digestAlg, int canonAlg, char* xpath);
VQXML_EXPORT int VQTK_SOAPSEC_SetIssuerSerial(void* handle);
VQXML_EXPORT int VQTK_SOAPSEC_SetSigner(void* handle, unsigned char* cert, int certLen, unsigned char* key,
                                        int keyLen);
VQXML_EXPORT int VQTK_SOAPSEC_SetHMACKey(void* handle, unsigned char* key, unsigned int len);
VQXML_EXPORT int VQTK_SOAPSEC_SetSignKeyName(void* handle, char* name);
VQXML_EXPORT int VQTK_SOAPSEC_Sign(void* handle);
VQXML_EXPORT int VQTK_SOAPSEC_SetSymmAlg(void* handle, int alg);
VQXML_EXPORT int VQTK_SOAPSEC_SetSymmKey(void* handle, unsigned char* key, int len, int alg);
VQXML_EXPORT int VQTK_SOAPSEC_EncryptElement(void* handle, char* target, int type);
VQXML_EXPORT int VQTK_SOAPSEC_SetEncKeyName(void* handle, char* name);
VQXML_EXPORT int VQTK_SOAPSEC_EncryptKeyWrapKey(void* handle, unsigned char* key, int len, int wrapAlg);
VQXML_EXPORT int VQTK_SOAPSEC_Encrypt(void* handle);
VQXML_EXPORT int VQTK_SOAPSEC_SetSOAPSecXMLDocument(void* handle, char* xml, int len);
VQXML_EXPORT int VQTK_SOAPSEC_GetSignKeyInfo(void* handle, int* isSigned);
VQXML_EXPORT int VQTK_SOAPSEC_GetEncKeyInfo(void* handle, int* isEncrypted);
VQXML_EXPORT int VQTK_SOAPSEC_DecryptKeyWrapKey(void* handle, unsigned char* cert, int certLen, unsigned char* key,
                                                int keyLen);
VQXML_EXPORT int VQTK_SOAPSEC_ProcessSOAP(void* handle);
VQXML_EXPORT int VQTK_SOAPSEC_SetVerifyCert(void* handle, unsigned char* cert, int certLen);
VQXML_EXPORT int VQTK_SOAPSEC_GetSubjectName(void* handle, char** subject);
VQXML_EXPORT int VQTK_SOAPSEC_GetIssuerSerialNum(void* handle, char** issuer, char** serial);
VQXML_EXPORT int VQTK_SOAPSEC_GetKeyName(void* handle, char** keyName);
VQXML_EXPORT int VQTK_SOAPSEC_GetSignCert(void* handle, unsigned char** cert, int* certLen);
/* Addition. ProcessSOAP refuses (11213) a signed message whose signature does not
 * cover the Envelope's one Body with a reference whose node-set holds all of it.
 * After a successful ProcessSOAP, *parts is what the signature's references
 * covered, one line each in their order, every line ended by "\n" (UTF-8): the
 * element's path from the document element, each step "{namespace}name" with
 * "[n]" after it when its parent has several child elements of that name, e.g.
 * "/{http://schemas.xmlsoap.org/soap/envelope/}Envelope/{http://schemas.xmlsoap.org/soap/envelope/}Body";
 * "/" for the whole document. Paths are those of the message as verified (an
 * element encrypted after signing is named as the EncryptedData it was). Empty
 * ("") before a successful ProcessSOAP or for a message without a signature.
 * Owned by the handle until the next load. */
VQXML_EXPORT int VQTK_SOAPSEC_GetSignedParts(void* handle, char** parts);

/* Returns at once; exported for the busy waits of start-up. */
VQXML_EXPORT void VQXML_Sleep(int unused);

#ifdef __cplusplus
}
#endif

#endif
