"""Signed ebXML messages."""
from ._handle import KeyInfoHandle, _size, _text
from ._library import lib

_UNTEXTED_LOAD = (10103, 10104)  # the loaders leave no text for these


class EbXml(KeyInfoHandle):
    """A package is MIME multipart/related: the SOAP envelope, then the attachments, each signed
    by cid:. Signing: load -> signature_method -> add_reference for the envelope -> optionally
    the KeyInfo choices -> set_signer -> sign (the whole package). Verifying: load_signed ->
    verify -> the getters."""

    _GETTERS = (lib.VQTK_EBXML_GetSubjectName, lib.VQTK_EBXML_GetIssuerSerialNum,
                lib.VQTK_EBXML_GetKeyName, lib.VQTK_EBXML_GetSignCert)

    def load(self, message):
        """A package, or a bare envelope."""
        self._call(lib.VQTK_EBXML_SetSOAPDocument, message, _size(message), silent=_UNTEXTED_LOAD)

    def signature_method(self, signature, signed_info):
        self._call(lib.VQTK_EBXML_SignatureMethod, signature, signed_info)

    def add_reference(self, uri, digest, transform, xpath=None):
        """The envelope's reference; its digest and canonicalization also apply to attachments."""
        self._call(lib.VQTK_EBXML_createReference, _text(uri), digest, transform, _text(xpath))

    def set_sign_key_name(self, name):
        self._call(lib.VQTK_EBXML_SetSignKeyName, _text(name))

    def include_key_value(self):
        self._call(lib.VQTK_EBXML_SetKeyValue)

    def name_subject(self):
        self._call(lib.VQTK_EBXML_SetSubjectName)

    def name_issuer_serial(self):
        self._call(lib.VQTK_EBXML_SetIssuerSerial)

    def set_signer(self, certificate, private_key):
        self._call(lib.VQTK_EBXML_SetSigner, certificate, _size(certificate), private_key, _size(private_key))

    def sign(self):
        return self._call_for_document(lib.VQTK_EBXML_Sign)

    def load_signed(self, message):
        self._call(lib.VQTK_EBXML_SetSOAPSecXMLDocument, message, _size(message), silent=_UNTEXTED_LOAD)

    def verify(self):
        """Raises VqxmlError NOT_VERIFIED if the signature, the envelope or an attachment does
        not verify."""
        self._call(lib.VQTK_EBXML_Verify)

    def verify_signer_certificate(self, chain=None, crls=None):
        """As XmlSignature.verify_signer_certificate, for the package's signer."""
        self._call(lib.VQTK_XMLDSIG_VerifySignerCert, chain, _size(chain), crls, _size(crls))
