"""The selectors of the C interface by name (docs/algorithms.md gives each one's URI)."""
from enum import IntEnum


# algorithms: begin (scripts/binding_algorithms.py)
class Signature(IntEnum):
    """Signature algorithms (SignatureMethod)."""
    HMAC_SHA1 = 1  # HMAC-SHA1
    RSA_SHA1 = 2  # RSA with SHA-1
    KCDSA_SHA1 = 3  # KCDSA with SHA-1 (1024/160 keys)
    KCDSA_HAS160 = 4  # KCDSA with HAS-160 (1024/160 keys)
    RSA_SHA256 = 5  # RSA with SHA-256
    HMAC_SHA224 = 16  # HMAC-SHA224
    HMAC_SHA256 = 17  # HMAC-SHA256
    HMAC_SHA384 = 18  # HMAC-SHA384
    HMAC_SHA512 = 19  # HMAC-SHA512
    RSA_SHA224 = 6  # RSA with SHA-224
    RSA_SHA384 = 7  # RSA with SHA-384
    RSA_SHA512 = 8  # RSA with SHA-512
    RSA_PSS_SHA256 = 9  # RSA-PSS with SHA-256, MGF1-SHA256, 32-byte salt
    RSA_PSS_SHA384 = 10  # RSA-PSS with SHA-384, MGF1-SHA384, 48-byte salt
    RSA_PSS_SHA512 = 11  # RSA-PSS with SHA-512, MGF1-SHA512, 64-byte salt
    DSA_SHA256 = 15  # DSA with SHA-256 (2048/256 and 3072/256 keys)
    ECDSA_SHA256 = 12  # ECDSA with SHA-256 (P-256, P-384, P-521)
    ECDSA_SHA384 = 13  # ECDSA with SHA-384 (P-256, P-384, P-521)
    ECDSA_SHA512 = 14  # ECDSA with SHA-512 (P-256, P-384, P-521)


class Canonicalization(IntEnum):
    """For SignedInfo of XML Signature and ebXML (NONE means C14N there) and for references."""
    NONE = 0  # no canonicalization transform (C14N for SignedInfo)
    C14N = 1  # Canonical XML 1.0
    C14N_COMMENTS = 2  # Canonical XML 1.0 with comments
    EXC_C14N = 3  # Exclusive XML Canonicalization 1.0
    EXC_C14N_COMMENTS = 4  # Exclusive XML Canonicalization 1.0 with comments
    C14N11 = 5  # Canonical XML 1.1
    C14N11_COMMENTS = 6  # Canonical XML 1.1 with comments


class SoapCanonicalization(IntEnum):
    """SignedInfo of a WS-Security signature, whose selectors differ from the others."""
    EXC_C14N = 0  # Exclusive XML Canonicalization 1.0
    C14N = 1  # Canonical XML 1.0
    C14N_COMMENTS = 2  # Canonical XML 1.0 with comments
    C14N11 = 3  # Canonical XML 1.1
    C14N11_COMMENTS = 4  # Canonical XML 1.1 with comments


class Digest(IntEnum):
    """Reference digests (DigestMethod)."""
    SHA1 = 1  # SHA-1
    HAS160 = 2  # HAS-160
    SHA256 = 3  # SHA-256
    SHA224 = 4  # SHA-224
    SHA384 = 5  # SHA-384
    SHA512 = 6  # SHA-512


class Cipher(IntEnum):
    """Data encryption (EncryptionMethod of EncryptedData)."""
    TRIPLE_DES = 1  # Triple DES CBC
    SEED = 2  # SEED-128 CBC
    NEAT = 3  # NEAT-128 CBC
    ARIA = 4  # ARIA-128 CBC
    AES128_CBC = 5  # AES-128 CBC
    AES192_CBC = 6  # AES-192 CBC
    AES256_CBC = 7  # AES-256 CBC
    AES128_GCM = 8  # AES-128 GCM
    AES192_GCM = 9  # AES-192 GCM
    AES256_GCM = 10  # AES-256 GCM


class KeyTransport(IntEnum):
    """Key transport and wrap: a key-encryption key for the key wraps, else the recipient's certificate."""
    KW_TRIPLE_DES = 1  # Triple DES key wrap
    RSA_1_5 = 2  # RSA PKCS #1 v1.5
    RSA_OAEP = 3  # RSA-OAEP with MGF1
    RSA_OAEP11 = 4  # RSA-OAEP, SHA-256 and MGF1 with SHA-256
    KW_AES128 = 5  # AES-128 key wrap
    KW_AES192 = 6  # AES-192 key wrap
    KW_AES256 = 7  # AES-256 key wrap
# algorithms: end


class Target(IntEnum):
    CONTENT = 1
    ELEMENT = 2


class CanonicalReading(IntEnum):
    """How the last verification read an XPath node-set's orphan namespaces (vqxml.h)."""
    PLAIN = 0
    SANTUARIO = 1
    LITERAL = 2
