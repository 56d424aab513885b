package kr.vqxml;

/** The selectors of the C interface by name (docs/algorithms.md gives each one's URI). */
public final class Algorithms {
    private Algorithms() {}

    public enum Signature {
        HMAC_SHA1(1), RSA_SHA1(2), KCDSA_SHA1(3), KCDSA_HAS160(4), RSA_SHA256(5);
        final int selector;
        Signature(int selector) { this.selector = selector; }
    }

    /** For SignedInfo of XML Signature and ebXML (NONE means C14N there) and for references. */
    public enum Canonicalization {
        NONE(0), C14N(1), C14N_WITH_COMMENTS(2), EXCLUSIVE(3), EXCLUSIVE_WITH_COMMENTS(4);
        final int selector;
        Canonicalization(int selector) { this.selector = selector; }
    }

    /** SignedInfo of a WS-Security signature, whose selectors differ from the others. */
    public enum SoapCanonicalization {
        EXCLUSIVE(0), C14N(1), C14N_WITH_COMMENTS(2);
        final int selector;
        SoapCanonicalization(int selector) { this.selector = selector; }
    }

    public enum Digest {
        SHA1(1), HAS160(2), SHA256(3);
        final int selector;
        Digest(int selector) { this.selector = selector; }
    }

    /** Data encryption, all in CBC mode. */
    public enum Cipher {
        TRIPLE_DES(1), SEED(2), NEAT(3), ARIA128(4);
        final int selector;
        Cipher(int selector) { this.selector = selector; }
    }

    /** Key transport: a 24-byte key-encryption key for Triple DES, else the recipient's certificate. */
    public enum KeyTransport {
        TRIPLE_DES_KEY_WRAP(1), RSA_PKCS1(2), RSA_OAEP(3);
        final int selector;
        KeyTransport(int selector) { this.selector = selector; }
    }

    /** What an encryption covers. */
    public enum Target {
        CONTENT(1), ELEMENT(2);
        final int selector;
        Target(int selector) { this.selector = selector; }
    }
}
