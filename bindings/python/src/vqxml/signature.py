"""XML Signature."""
from ._handle import KeyInfoHandle, _size, _text
from ._library import lib
from .algorithms import CanonicalReading, Canonicalization, Digest, Signature

#: The national e-tax-invoice recipe's filter: TaxInvoice's own element, ExchangedDocument and
#: the signature stay out.
TAX_INVOICE_XPATH = ("not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | "
                     "ancestor-or-self::ds:Signature)")
#: The whole document but its signature, for an enveloped signature.
ENVELOPED_XPATH = "not(ancestor-or-self::ds:Signature)"


class XmlSignature(KeyInfoHandle):
    """Signing: load (None for an enveloping signature) -> optionally set_prefix ->
    signature_method -> add_reference, append_object, set_key_name, set_signer or set_hmac_key
    -> sign. Verifying: load_signed -> verify -> the getters and document() (the document
    without its signature)."""

    _GETTERS = (lib.VQTK_XMLDSIG_GetSubjectName, lib.VQTK_XMLDSIG_GetIssuerSerialNum,
                lib.VQTK_XMLDSIG_GetKeyName, lib.VQTK_XMLDSIG_GetSignCert)

    def load(self, xml):
        self._call(lib.VQTK_XMLDSIG_SetXMLDocument, xml, _size(xml))

    def set_prefix(self, prefix):
        self._call(lib.VQTK_XMLDSIG_SetPrefix, _text(prefix))

    def signature_method(self, signature, signed_info):
        self._call(lib.VQTK_XMLDSIG_SignatureMethod, signature, signed_info)

    def add_reference(self, uri, digest, transform, xpath=None):
        """uri None: the whole document; xpath None: no XPath transform."""
        self._call(lib.VQTK_XMLDSIG_createReference, _text(uri), digest, transform, _text(xpath))

    def append_object(self, object_id, content):
        self._call(lib.VQTK_XMLDSIG_appendObject, _text(object_id), content, _size(content))

    def set_key_name(self, name):
        self._call(lib.VQTK_XMLDSIG_SetKeyName, _text(name))

    def set_signer(self, certificate, private_key):
        """The certificate DER or PEM; the key an unencrypted PKCS #8 (or PKCS #1 RSA) key."""
        self._call(lib.VQTK_XMLDSIG_SetSigner, certificate, _size(certificate), private_key, _size(private_key))

    def set_hmac_key(self, key):
        """The HMAC secret, for signing or (after load_signed) verifying."""
        self._call(lib.VQTK_XMLDSIG_SetHMACKey, key, _size(key))

    def sign(self):
        """Signs and returns the signed document."""
        return self._call_for_document(lib.VQTK_XMLDSIG_sign)

    def sign_tax_invoice(self, invoice, certificate, private_key):
        """Signs an e-tax invoice by the National Tax Service's recipe: RSA-SHA256, C14N for
        SignedInfo, one reference to the whole document with SHA-256, a C14N transform and
        TAX_INVOICE_XPATH, the certificate in KeyInfo."""
        with self._lock:
            self.load(invoice)
            self.set_prefix("ds")
            self.signature_method(Signature.RSA_SHA256, Canonicalization.C14N)
            self.add_reference("", Digest.SHA256, Canonicalization.C14N, TAX_INVOICE_XPATH)
            self.set_signer(certificate, private_key)
            return self.sign()

    def load_signed(self, xml):
        self._call(lib.VQTK_XMLDSIG_SetSignXMLDocument, xml, _size(xml))

    def allow_external_references(self, allow):
        """Lets references to files or the network be read; off unless asked for."""
        self._call(lib.VQTK_XMLDSIG_AllowExternalReferences, 1 if allow else 0)

    def verify(self):
        """Returns if the signature verifies; raises VqxmlError with status NOT_VERIFIED if it
        does not, another status if it could not be checked."""
        self._call(lib.VQTK_XMLDSIG_Verify)

    def canonical_reading(self):
        return CanonicalReading(self._get_int(lib.VQTK_XMLDSIG_GetCanonicalReading))

    def verify_signer_certificate(self, chain=None, crls=None):
        """Whether the signer's certificate (after verify) leads to a built-in Korean root, with
        the certificates of KeyInfo and chain as intermediates and, given crls, revocation."""
        self._call(lib.VQTK_XMLDSIG_VerifySignerCert, chain, _size(chain), crls, _size(crls))
