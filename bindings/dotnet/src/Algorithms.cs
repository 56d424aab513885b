// The selectors of the C interface by name (docs/algorithms.md gives each one's URI).
namespace Vqxml
{
    public enum SignatureAlgorithm { HmacSha1 = 1, RsaSha1 = 2, KcdsaSha1 = 3, KcdsaHas160 = 4, RsaSha256 = 5 }

    /// <summary>For SignedInfo of XML Signature and ebXML (None means C14N there) and for references.</summary>
    public enum Canonicalization { None = 0, C14N = 1, C14NWithComments = 2, Exclusive = 3, ExclusiveWithComments = 4 }

    /// <summary>SignedInfo of a WS-Security signature, whose selectors differ from the others.</summary>
    public enum SoapCanonicalization { Exclusive = 0, C14N = 1, C14NWithComments = 2 }

    public enum Digest { Sha1 = 1, Has160 = 2, Sha256 = 3 }

    /// <summary>Data encryption, all in CBC mode.</summary>
    public enum Cipher { TripleDes = 1, Seed = 2, Neat = 3, Aria128 = 4 }

    /// <summary>A 24-byte key-encryption key for Triple DES key wrap, else the recipient's certificate.</summary>
    public enum KeyTransport { TripleDesKeyWrap = 1, RsaPkcs1 = 2, RsaOaep = 3 }

    public enum EncryptionTarget { Content = 1, Element = 2 }

    /// <summary>How the last verification read an XPath node-set's orphan namespaces (vqxml.h).</summary>
    public enum CanonicalReading { Plain = 0, Santuario = 1, Literal = 2 }
}
