// The selectors of the C interface by name (docs/algorithms.md gives each one's URI).
namespace Vqxml
{
    // algorithms: begin (scripts/binding_algorithms.py)
    /// <summary>Signature algorithms (SignatureMethod).</summary>
    public enum SignatureAlgorithm
    {
        /// <summary>HMAC-SHA1</summary>
        HmacSha1 = 1,
        /// <summary>RSA with SHA-1</summary>
        RsaSha1 = 2,
        /// <summary>KCDSA with SHA-1 (1024/160 keys)</summary>
        KcdsaSha1 = 3,
        /// <summary>KCDSA with HAS-160 (1024/160 keys)</summary>
        KcdsaHas160 = 4,
        /// <summary>RSA with SHA-256</summary>
        RsaSha256 = 5,
        /// <summary>HMAC-SHA224</summary>
        HmacSha224 = 16,
        /// <summary>HMAC-SHA256</summary>
        HmacSha256 = 17,
        /// <summary>HMAC-SHA384</summary>
        HmacSha384 = 18,
        /// <summary>HMAC-SHA512</summary>
        HmacSha512 = 19,
        /// <summary>RSA with SHA-224</summary>
        RsaSha224 = 6,
        /// <summary>RSA with SHA-384</summary>
        RsaSha384 = 7,
        /// <summary>RSA with SHA-512</summary>
        RsaSha512 = 8,
        /// <summary>RSA-PSS with SHA-256, MGF1-SHA256, 32-byte salt</summary>
        RsaPssSha256 = 9,
        /// <summary>RSA-PSS with SHA-384, MGF1-SHA384, 48-byte salt</summary>
        RsaPssSha384 = 10,
        /// <summary>RSA-PSS with SHA-512, MGF1-SHA512, 64-byte salt</summary>
        RsaPssSha512 = 11,
        /// <summary>DSA with SHA-256 (2048/256 and 3072/256 keys)</summary>
        DsaSha256 = 15,
        /// <summary>ECDSA with SHA-256 (P-256, P-384, P-521)</summary>
        EcdsaSha256 = 12,
        /// <summary>ECDSA with SHA-384 (P-256, P-384, P-521)</summary>
        EcdsaSha384 = 13,
        /// <summary>ECDSA with SHA-512 (P-256, P-384, P-521)</summary>
        EcdsaSha512 = 14,
    }

    /// <summary>For SignedInfo of XML Signature and ebXML (NONE means C14N there) and for references.</summary>
    public enum Canonicalization
    {
        /// <summary>no canonicalization transform (C14N for SignedInfo)</summary>
        None = 0,
        /// <summary>Canonical XML 1.0</summary>
        C14n = 1,
        /// <summary>Canonical XML 1.0 with comments</summary>
        C14nComments = 2,
        /// <summary>Exclusive XML Canonicalization 1.0</summary>
        ExcC14n = 3,
        /// <summary>Exclusive XML Canonicalization 1.0 with comments</summary>
        ExcC14nComments = 4,
        /// <summary>Canonical XML 1.1</summary>
        C14n11 = 5,
        /// <summary>Canonical XML 1.1 with comments</summary>
        C14n11Comments = 6,
    }

    /// <summary>SignedInfo of a WS-Security signature, whose selectors differ from the others.</summary>
    public enum SoapCanonicalization
    {
        /// <summary>Exclusive XML Canonicalization 1.0</summary>
        ExcC14n = 0,
        /// <summary>Canonical XML 1.0</summary>
        C14n = 1,
        /// <summary>Canonical XML 1.0 with comments</summary>
        C14nComments = 2,
        /// <summary>Canonical XML 1.1</summary>
        C14n11 = 3,
        /// <summary>Canonical XML 1.1 with comments</summary>
        C14n11Comments = 4,
    }

    /// <summary>Reference digests (DigestMethod).</summary>
    public enum Digest
    {
        /// <summary>SHA-1</summary>
        Sha1 = 1,
        /// <summary>HAS-160</summary>
        Has160 = 2,
        /// <summary>SHA-256</summary>
        Sha256 = 3,
        /// <summary>SHA-224</summary>
        Sha224 = 4,
        /// <summary>SHA-384</summary>
        Sha384 = 5,
        /// <summary>SHA-512</summary>
        Sha512 = 6,
    }

    /// <summary>Data encryption (EncryptionMethod of EncryptedData).</summary>
    public enum Cipher
    {
        /// <summary>Triple DES CBC</summary>
        TripleDes = 1,
        /// <summary>SEED-128 CBC</summary>
        Seed = 2,
        /// <summary>NEAT-128 CBC</summary>
        Neat = 3,
        /// <summary>ARIA-128 CBC</summary>
        Aria = 4,
        /// <summary>AES-128 CBC</summary>
        Aes128Cbc = 5,
        /// <summary>AES-192 CBC</summary>
        Aes192Cbc = 6,
        /// <summary>AES-256 CBC</summary>
        Aes256Cbc = 7,
        /// <summary>AES-128 GCM</summary>
        Aes128Gcm = 8,
        /// <summary>AES-192 GCM</summary>
        Aes192Gcm = 9,
        /// <summary>AES-256 GCM</summary>
        Aes256Gcm = 10,
    }

    /// <summary>Key transport and wrap: a key-encryption key for the key wraps, else the recipient's certificate.</summary>
    public enum KeyTransport
    {
        /// <summary>Triple DES key wrap</summary>
        KwTripleDes = 1,
        /// <summary>RSA PKCS #1 v1.5</summary>
        Rsa15 = 2,
        /// <summary>RSA-OAEP with MGF1</summary>
        RsaOaep = 3,
        /// <summary>RSA-OAEP, SHA-256 and MGF1 with SHA-256</summary>
        RsaOaep11 = 4,
        /// <summary>AES-128 key wrap</summary>
        KwAes128 = 5,
        /// <summary>AES-192 key wrap</summary>
        KwAes192 = 6,
        /// <summary>AES-256 key wrap</summary>
        KwAes256 = 7,
    }
    // algorithms: end

    public enum EncryptionTarget { Content = 1, Element = 2 }

    /// <summary>How the last verification read an XPath node-set's orphan namespaces (vqxml.h).</summary>
    public enum CanonicalReading { Plain = 0, Santuario = 1, Literal = 2 }
}
