/*
 * vqtk_toolkit: the cryptographic toolkit under the certificate and private-key
 * operations of vqxml, built on OpenSSL 3.
 *
 * Conventions
 *   - Every operation returns an int status: VQTK_OK (0) or one of VQTK_ERR_*.
 *   - A toolkit handle (VQTK_Toolkit) holds the trust anchors and CRLs added to it,
 *     the verification settings and the text of its last failure. Operations that
 *     take a handle record a text on failure; read it with VQTK_API_GetErrInfo. The
 *     texts are EUC-KR: English in ASCII, with names taken from certificates in
 *     RFC 2253 form converted to EUC-KR, so that Korean names stay readable; a
 *     character EUC-KR lacks is written as the \XX escapes of its UTF-8 bytes.
 *   - Handles are independent: different handles may be used on different threads
 *     at once; one handle is used by one thread at a time.
 *   - Byte buffers travel in VQTK_BINSTR. The toolkit always keeps its own copy;
 *     every buffer it releases or replaces is wiped first (OPENSSL_cleanse), since
 *     strings carry passwords' products, plain keys and identity randoms.
 *   - Inputs are DER unless said otherwise; PEM text where DER is expected is
 *     refused with VQTK_ERR_FORMAT and a text that says so.
 */
#ifndef VQTK_TOOLKIT_H
#define VQTK_TOOLKIT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VQTK_OK 0
#define VQTK_ERR_ARGUMENT 1    /* null handle or pointer, unknown selector or setting */
#define VQTK_ERR_MEMORY 2      /* memory exhausted */
#define VQTK_ERR_FORMAT 3      /* input not in the expected encoding (DER, base64, PKCS #8) */
#define VQTK_ERR_UNSUPPORTED 4 /* well-formed input using an algorithm the toolkit lacks */
#define VQTK_ERR_REFUSED 5     /* the certificate did not pass verification */
#define VQTK_ERR_DECRYPT 6     /* wrong password or damaged encrypted key */
#define VQTK_ERR_NOT_FOUND 7   /* the private key carries no identity-verification random */
#define VQTK_ERR_CRYPTO 8      /* OpenSSL failed where it should not */
#define VQTK_ERR_LIMIT 9       /* a bound below was exceeded */

/* Which check refused a certificate (VQTK_CERT_GetRefusal). */
#define VQTK_CHECK_NONE 0
#define VQTK_CHECK_PATH 1        /* no path to an anchor: unknown issuer, untrusted self-signed */
#define VQTK_CHECK_SIGNATURE 2   /* a signature on the path does not verify */
#define VQTK_CHECK_VALIDITY 3    /* a certificate is outside its validity period */
#define VQTK_CHECK_REVOCATION 4  /* revoked, or no usable CRL to tell (missing, stale, badly signed) */
#define VQTK_CHECK_CONSTRAINTS 5 /* basic constraints, key usage, path length, critical extensions */

/* Bounds, so that hostile input costs little. */
#define VQTK_MAX_PBE_ITERATIONS 2000000  /* PBKDF1/PBKDF2 iteration count, inclusive */
#define VQTK_MAX_ENCRYPTED_KEY 65536     /* bytes of an encrypted private key */
#define VQTK_MAX_SALT 1024               /* bytes of a PBE salt */
#define VQTK_MAX_PASSWORD 4096           /* bytes of a password */

/* Size of the error text a handle keeps, NUL included. */
#define VQTK_ERROR_TEXT_SIZE 1024

typedef struct VQTK_Toolkit VQTK_Toolkit;

/* A byte string: the bytes and their count. Create before use, Delete after. */
typedef struct VQTK_BINSTR {
    unsigned char* data;
    int32_t length;
} VQTK_BINSTR;

/* ---- handle ---- */

/* Opens a handle into *handle (which is overwritten). The text is reserved for a
 * configuration: the toolkit reads no files or settings, and accepts only NULL, ""
 * and "." (all meaning the defaults); anything else gives VQTK_ERR_ARGUMENT.
 * Also makes OpenSSL's legacy provider (SEED) available to the process.
 * Defaults: no anchors; verification settings (1, 2, 0, 0). */
int VQTK_API_Init(VQTK_Toolkit** handle, const char* config);
/* Closes *handle (anchors and texts are released) and sets it to NULL. NULL or an
 * already closed handle is accepted. */
int VQTK_API_Finish(VQTK_Toolkit** handle);
/* Copies the last failure's text into buffer (at most size - 1 bytes and a NUL,
 * never cutting a two-byte EUC-KR character). An empty text if nothing failed.
 * With a NULL handle it writes "The toolkit handle is not open" and returns
 * VQTK_ERR_ARGUMENT; size <= 0 or a NULL buffer gives VQTK_ERR_ARGUMENT. */
int VQTK_API_GetErrInfo(VQTK_Toolkit* handle, int size, char* buffer);

/* ---- byte strings (no handle, so they leave no text) ---- */

/* Makes *str empty. Never call it on a string that holds bytes: they would leak. */
int VQTK_BINSTR_Create(VQTK_BINSTR* str);
/* Replaces the bytes of *str by a copy of data[0..length). A NULL data or a
 * length <= 0 makes the string empty and succeeds, so that the operation that
 * reads it refuses with a text of its own. Fails only for a NULL str
 * (VQTK_ERR_ARGUMENT) or exhausted memory. */
int VQTK_BINSTR_SetData(const unsigned char* data, int length, VQTK_BINSTR* str);
/* Wipes and frees the bytes and makes the string empty. */
int VQTK_BINSTR_Delete(VQTK_BINSTR* str);

/* ---- base64 (RFC 4648 alphabet, '=' padding) ---- */

/* Decodes in into out; in and out may be the same string. Spaces, tabs and line
 * breaks are skipped; any other character outside the alphabet, a misplaced '='
 * or a length that is not a whole number of quads gives VQTK_ERR_FORMAT. */
int VQTK_BASE64_Decode(VQTK_Toolkit* handle, const VQTK_BINSTR* in, VQTK_BINSTR* out);
/* Encodes in into out as one line: no line breaks, no NUL counted in the length.
 * Empty input gives empty output. in and out may be the same string. */
int VQTK_BASE64_Encode(VQTK_Toolkit* handle, const VQTK_BINSTR* in, VQTK_BINSTR* out);

/* ---- certificates ---- */

/* Adds one trust anchor: the DER encoding of a certificate OpenSSL takes for a CA
 * (basic constraints CA:TRUE; or, lacking them, key usage keyCertSign or a
 * self-signed version 1 certificate). An anchor is trusted as it
 * is: its own signature is not checked, its validity dates only with time mode
 * 3, and it need not be self-signed (a path may end at an added intermediate). */
int VQTK_CERT_AddTrustedCert(VQTK_Toolkit* handle, const VQTK_BINSTR* der);

/* Chooses what VQTK_CERT_Verify checks.
 *   pathMode:   1 = a full path from the certificate to an added anchor: every
 *                   signature, basic constraints (CA:TRUE, path length) and key
 *                   usage (keyCertSign, where present) of the issuing
 *                   certificates, and the critical extensions OpenSSL knows;
 *               2 = as 1, plus OpenSSL's strict X.509 profile checks
 *                   (X509_V_FLAG_X509_STRICT; note that it refuses CAs without a
 *                   keyUsage extension, such as KISA RootCA 4).
 *   timeMode:   0 = validity periods are not checked;
 *               1 = only the certificate's own validity period;
 *               2 = the validity period of every certificate on the path except
 *                   the anchor;
 *               3 = the validity period of every certificate on the path, the
 *                   anchor included (an expired root refuses every path under it).
 *               The time is now, or the one given to VQTK_CERT_Verify.
 *   revocation: 0 = none;
 *               1 = against the CRLs added with VQTK_CERT_AddCRLs, nothing
 *                   fetched: a current CRL of the certificate's issuer, signed by
 *                   it, must be among them and must not list the certificate;
 *                   every other certificate on the path except the anchor is
 *                   checked the same way against its issuer's CRL when one was
 *                   added (so an authority revocation list of the root covers
 *                   the intermediates), and passes when none was.
 *               Online revocation (CRL distribution points, OCSP) is not
 *               available: any other value gives VQTK_ERR_UNSUPPORTED.
 *   reserved:   must be 0.
 * (1, 2, 0, 0) is the default. Bad values leave the settings as they were. */
int VQTK_CERT_SetVerifyEnv1(VQTK_Toolkit* handle, int pathMode, int timeMode, int revocation,
                            int reserved);

/* Verifies the DER certificate in cert with the current settings.
 *   intermediates: NULL, or a string holding zero or more DER certificates one
 *                  after the other, offered (untrusted) for building the path.
 *   atTime:        NULL for now, or the time (seconds since 1970 UTC) at which
 *                  validity periods are checked.
 *   reserved3..5:  must be NULL.
 * A certificate whose own key is KCDSA (OID 1.2.410.200004.1.1 or
 * 1.0.14888.3.0.2), which OpenSSL cannot decode, is checked as follows: its
 * signature with its issuer's key directly, its own validity, and the path of the
 * issuer as above. An issuer with a KCDSA key is refused with VQTK_ERR_UNSUPPORTED.
 * With revocation 1 such a leaf is looked up in its issuer's CRLs as above.
 * A refusal is VQTK_ERR_REFUSED with a text naming the reason (expired, not yet
 * valid, unknown issuer, bad signature, not a CA, revoked, ...), the depth on the
 * path (0 = cert) and that certificate's subject; VQTK_CERT_GetRefusal tells
 * which check it was. */
int VQTK_CERT_Verify(VQTK_Toolkit* handle, const VQTK_BINSTR* cert,
                     const VQTK_BINSTR* intermediates, const int64_t* atTime, void* reserved3,
                     void* reserved4, void* reserved5);

/* Adds CRLs for revocation setting 1: der holds one or more DER CRLs one after
 * the other. Any malformed one gives VQTK_ERR_FORMAT and adds none. A CRL is not
 * checked here: VQTK_CERT_Verify uses one only if its issuer signed it and it is
 * current at the verification time. */
int VQTK_CERT_AddCRLs(VQTK_Toolkit* handle, const VQTK_BINSTR* der);

/* After VQTK_CERT_Verify returned VQTK_ERR_REFUSED, which check refused: one of
 * VQTK_CHECK_*, until the next operation on the handle. VQTK_CHECK_NONE after a
 * success or any other failure. */
int VQTK_CERT_GetRefusal(VQTK_Toolkit* handle, int* check);

/* ---- private keys ---- */

/* Decrypts a PKCS #8 EncryptedPrivateKeyInfo (DER) with the password's bytes as
 * given (no character conversion) and writes the DER PrivateKeyInfo, RSA or
 * KCDSA or any other algorithm, attributes kept, into plain.
 * Encryption schemes:
 *   - pbeWithSHA1AndSEED-CBC (1.2.410.200004.1.15), parameters { salt, iterations }:
 *     DK = PBKDF1-SHA1(password, salt, iterations) (20 bytes), key = DK[0..15],
 *     IV = SHA1(DK[16..19])[0..15], SEED-CBC;
 *   - PBES2 (1.2.840.113549.1.5.13) with PBKDF2 (PRF HMAC-SHA1 when none is named,
 *     else HMAC-SHA224/256/384/512) and SEED-CBC (1.2.410.200004.1.4) or
 *     AES-128/192/256-CBC, 16-byte IV in the parameters.
 * Anything else is VQTK_ERR_UNSUPPORTED. A NULL or empty password is refused
 * (VQTK_ERR_ARGUMENT), one over VQTK_MAX_PASSWORD bytes too (VQTK_ERR_LIMIT), and
 * so is an encrypted key over VQTK_MAX_ENCRYPTED_KEY bytes. Iteration counts must lie in 1..VQTK_MAX_PBE_ITERATIONS
 * and salts in 1..VQTK_MAX_SALT bytes (else VQTK_ERR_LIMIT). A wrong password is
 * VQTK_ERR_DECRYPT: the PKCS #7 padding and the result's DER are both checked. */
int VQTK_PRIKEY_Decrypt(VQTK_Toolkit* handle, const char* password, const VQTK_BINSTR* encrypted,
                        VQTK_BINSTR* plain);

/* Writes into random the identity-verification random of a plain DER
 * PrivateKeyInfo: the value of its attribute randomNum (1.2.410.200004.10.1.1.3),
 * a BIT STRING, as its bytes without the unused-bits octet. A key without it is
 * VQTK_ERR_NOT_FOUND. */
int VQTK_VID_GetRandomFromPriKey(VQTK_Toolkit* handle, const VQTK_BINSTR* plainKey,
                                 VQTK_BINSTR* random);

/* Encrypts in for the holder of recipient, the DER X.509 certificate of an RSA
 * key (the certificate itself is not verified here), into out.
 *   selector 1: RSAES-OAEP with SHA-1 and MGF1-SHA-1, empty label;
 *   selector 2: RSAES-PKCS1-v1_5.
 * Other selectors give VQTK_ERR_ARGUMENT; a non-RSA key VQTK_ERR_UNSUPPORTED;
 * empty input or input too long for the key VQTK_ERR_ARGUMENT. */
int VQTK_CRYPT_AsymEncrypt(VQTK_Toolkit* handle, int selector, const VQTK_BINSTR* recipient,
                           const VQTK_BINSTR* in, VQTK_BINSTR* out);

#ifdef __cplusplus
}
#endif

#endif
