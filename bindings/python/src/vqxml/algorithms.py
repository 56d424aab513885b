"""The selectors of the C interface by name (docs/algorithms.md gives each one's URI)."""
from enum import IntEnum


class Signature(IntEnum):
    HMAC_SHA1 = 1
    RSA_SHA1 = 2
    KCDSA_SHA1 = 3
    KCDSA_HAS160 = 4
    RSA_SHA256 = 5


class Canonicalization(IntEnum):
    """For SignedInfo of XML Signature and ebXML (NONE means C14N there) and for references."""
    NONE = 0
    C14N = 1
    C14N_WITH_COMMENTS = 2
    EXCLUSIVE = 3
    EXCLUSIVE_WITH_COMMENTS = 4


class SoapCanonicalization(IntEnum):
    """SignedInfo of a WS-Security signature, whose selectors differ from the others."""
    EXCLUSIVE = 0
    C14N = 1
    C14N_WITH_COMMENTS = 2


class Digest(IntEnum):
    SHA1 = 1
    HAS160 = 2
    SHA256 = 3


class Cipher(IntEnum):
    """Data encryption, all in CBC mode."""
    TRIPLE_DES = 1
    SEED = 2
    NEAT = 3
    ARIA128 = 4


class KeyTransport(IntEnum):
    """A 24-byte key-encryption key for Triple DES key wrap, else the recipient's certificate."""
    TRIPLE_DES_KEY_WRAP = 1
    RSA_PKCS1 = 2
    RSA_OAEP = 3


class Target(IntEnum):
    CONTENT = 1
    ELEMENT = 2


class CanonicalReading(IntEnum):
    """How the last verification read an XPath node-set's orphan namespaces (vqxml.h)."""
    PLAIN = 0
    SANTUARIO = 1
    LITERAL = 2
