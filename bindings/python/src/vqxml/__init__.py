"""vqxml: XML Signature, XML Encryption, WS-Security and signed ebXML packages with the Korean
algorithms, over libvqxml's C interface. Bytes in, bytes out; failures raise VqxmlError."""
from ._handle import Handle, VqxmlError
from .algorithms import (CanonicalReading, Canonicalization, Cipher, Digest, KeyTransport, Signature,
                         SoapCanonicalization, Target)
from .ebxml import EbXml
from .encryption import XmlEncryption
from .pki import Certificates, PrivateKeys
from .signature import ENVELOPED_XPATH, TAX_INVOICE_XPATH, XmlSignature
from .soap import SoapSecurity

__all__ = ["Handle", "VqxmlError", "CanonicalReading", "Canonicalization", "Cipher", "Digest", "KeyTransport",
           "Signature", "SoapCanonicalization", "Target", "EbXml", "XmlEncryption", "Certificates",
           "PrivateKeys", "ENVELOPED_XPATH", "TAX_INVOICE_XPATH", "XmlSignature", "SoapSecurity"]
