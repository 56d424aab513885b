package kr.vqxml;

/** The selectors of the C interface by name (docs/algorithms.md gives each one's URI). */
public final class Algorithms {
    private Algorithms() {}

    // algorithms: begin (scripts/binding_algorithms.py)
    /** Signature algorithms (SignatureMethod). */
    public enum Signature {
        /** HMAC-SHA1 */ HMAC_SHA1(1),
        /** RSA with SHA-1 */ RSA_SHA1(2),
        /** KCDSA with SHA-1 (1024/160 keys) */ KCDSA_SHA1(3),
        /** KCDSA with HAS-160 (1024/160 keys) */ KCDSA_HAS160(4),
        /** RSA with SHA-256 */ RSA_SHA256(5),
        /** HMAC-SHA224 */ HMAC_SHA224(16),
        /** HMAC-SHA256 */ HMAC_SHA256(17),
        /** HMAC-SHA384 */ HMAC_SHA384(18),
        /** HMAC-SHA512 */ HMAC_SHA512(19),
        /** RSA with SHA-224 */ RSA_SHA224(6),
        /** RSA with SHA-384 */ RSA_SHA384(7),
        /** RSA with SHA-512 */ RSA_SHA512(8),
        /** RSA-PSS with SHA-256, MGF1-SHA256, 32-byte salt */ RSA_PSS_SHA256(9),
        /** RSA-PSS with SHA-384, MGF1-SHA384, 48-byte salt */ RSA_PSS_SHA384(10),
        /** RSA-PSS with SHA-512, MGF1-SHA512, 64-byte salt */ RSA_PSS_SHA512(11),
        /** DSA with SHA-256 (2048/256 and 3072/256 keys) */ DSA_SHA256(15),
        /** ECDSA with SHA-256 (P-256, P-384, P-521) */ ECDSA_SHA256(12),
        /** ECDSA with SHA-384 (P-256, P-384, P-521) */ ECDSA_SHA384(13),
        /** ECDSA with SHA-512 (P-256, P-384, P-521) */ ECDSA_SHA512(14);
        final int selector;
        Signature(int selector) { this.selector = selector; }
    }

    /** For SignedInfo of XML Signature and ebXML (NONE means C14N there) and for references. */
    public enum Canonicalization {
        /** no canonicalization transform (C14N for SignedInfo) */ NONE(0),
        /** Canonical XML 1.0 */ C14N(1),
        /** Canonical XML 1.0 with comments */ C14N_COMMENTS(2),
        /** Exclusive XML Canonicalization 1.0 */ EXC_C14N(3),
        /** Exclusive XML Canonicalization 1.0 with comments */ EXC_C14N_COMMENTS(4),
        /** Canonical XML 1.1 */ C14N11(5),
        /** Canonical XML 1.1 with comments */ C14N11_COMMENTS(6);
        final int selector;
        Canonicalization(int selector) { this.selector = selector; }
    }

    /** SignedInfo of a WS-Security signature, whose selectors differ from the others. */
    public enum SoapCanonicalization {
        /** Exclusive XML Canonicalization 1.0 */ EXC_C14N(0),
        /** Canonical XML 1.0 */ C14N(1),
        /** Canonical XML 1.0 with comments */ C14N_COMMENTS(2),
        /** Canonical XML 1.1 */ C14N11(3),
        /** Canonical XML 1.1 with comments */ C14N11_COMMENTS(4);
        final int selector;
        SoapCanonicalization(int selector) { this.selector = selector; }
    }

    /** Reference digests (DigestMethod). */
    public enum Digest {
        /** SHA-1 */ SHA1(1),
        /** HAS-160 */ HAS160(2),
        /** SHA-256 */ SHA256(3),
        /** SHA-224 */ SHA224(4),
        /** SHA-384 */ SHA384(5),
        /** SHA-512 */ SHA512(6);
        final int selector;
        Digest(int selector) { this.selector = selector; }
    }

    /** Data encryption (EncryptionMethod of EncryptedData). */
    public enum Cipher {
        /** Triple DES CBC */ TRIPLE_DES(1),
        /** SEED-128 CBC */ SEED(2),
        /** NEAT-128 CBC */ NEAT(3),
        /** ARIA-128 CBC */ ARIA(4),
        /** AES-128 CBC */ AES128_CBC(5),
        /** AES-192 CBC */ AES192_CBC(6),
        /** AES-256 CBC */ AES256_CBC(7),
        /** AES-128 GCM */ AES128_GCM(8),
        /** AES-192 GCM */ AES192_GCM(9),
        /** AES-256 GCM */ AES256_GCM(10);
        final int selector;
        Cipher(int selector) { this.selector = selector; }
    }

    /** Key transport and wrap: a key-encryption key for the key wraps, else the recipient's certificate. */
    public enum KeyTransport {
        /** Triple DES key wrap */ KW_TRIPLE_DES(1),
        /** RSA PKCS #1 v1.5 */ RSA_1_5(2),
        /** RSA-OAEP with MGF1 */ RSA_OAEP(3),
        /** RSA-OAEP, SHA-256 and MGF1 with SHA-256 */ RSA_OAEP11(4),
        /** AES-128 key wrap */ KW_AES128(5),
        /** AES-192 key wrap */ KW_AES192(6),
        /** AES-256 key wrap */ KW_AES256(7);
        final int selector;
        KeyTransport(int selector) { this.selector = selector; }
    }
    // algorithms: end

    /** What an encryption covers. */
    public enum Target {
        CONTENT(1), ELEMENT(2);
        final int selector;
        Target(int selector) { this.selector = selector; }
    }
}
