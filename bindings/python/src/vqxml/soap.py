"""WS-Security for SOAP messages."""
from ._handle import KeyInfoHandle, _size, _text
from ._library import lib


class SoapSecurity(KeyInfoHandle):
    """Securing: load (the envelope needs a Header) -> signing (signature_method, add_reference,
    optionally name_issuer_serial, set_signer, sign) and/or encrypting (set_symmetric_algorithm,
    encrypt_element, add_recipient, encrypt); load each result again for the next operation.
    Processing: load_secured -> is_signed and next_encrypted_key with the getters -> unwrap_key
    -> process. Give each received message a handle of its own."""

    _GETTERS = (lib.VQTK_SOAPSEC_GetSubjectName, lib.VQTK_SOAPSEC_GetIssuerSerialNum,
                lib.VQTK_SOAPSEC_GetKeyName, lib.VQTK_SOAPSEC_GetSignCert)

    def load(self, envelope):
        self._call(lib.VQTK_SOAPSEC_SetSOAPDocument, envelope, _size(envelope))

    def signature_method(self, signature, signed_info):
        """signed_info: a SoapCanonicalization."""
        self._call(lib.VQTK_SOAPSEC_SignatureMethod, signature, signed_info)

    def add_reference(self, uri, digest, transform, xpath=None):
        """uri None: the SOAP Body."""
        self._call(lib.VQTK_SOAPSEC_createReference, _text(uri), digest, transform, _text(xpath))

    def name_issuer_serial(self):
        """Names the signer (or the next recipient) by issuer and serial instead of sending the
        certificate."""
        self._call(lib.VQTK_SOAPSEC_SetIssuerSerial)

    def set_signer(self, certificate, private_key):
        self._call(lib.VQTK_SOAPSEC_SetSigner, certificate, _size(certificate), private_key, _size(private_key))

    def set_hmac_key(self, key):
        self._call(lib.VQTK_SOAPSEC_SetHMACKey, key, _size(key))

    def set_sign_key_name(self, name):
        self._call(lib.VQTK_SOAPSEC_SetSignKeyName, _text(name))

    def sign(self):
        return self._call_for_document(lib.VQTK_SOAPSEC_Sign)

    def set_symmetric_algorithm(self, cipher):
        self._call(lib.VQTK_SOAPSEC_SetSymmAlg, cipher)

    def set_symmetric_key(self, key, cipher):
        self._call(lib.VQTK_SOAPSEC_SetSymmKey, key, _size(key), cipher)

    def encrypt_element(self, target, what):
        """target None: the Body's content; "#id" or a qualified name."""
        self._call(lib.VQTK_SOAPSEC_EncryptElement, _text(target), what)

    def set_enc_key_name(self, name):
        self._call(lib.VQTK_SOAPSEC_SetEncKeyName, _text(name))

    def add_recipient(self, key, transport):
        self._call(lib.VQTK_SOAPSEC_EncryptKeyWrapKey, key, _size(key), transport)

    def encrypt(self):
        return self._call_for_document(lib.VQTK_SOAPSEC_Encrypt)

    def load_secured(self, message):
        self._call(lib.VQTK_SOAPSEC_SetSOAPSecXMLDocument, message, _size(message))

    def is_signed(self):
        """Whether the message is signed; the getters then name the signer."""
        return self._get_int(lib.VQTK_SOAPSEC_GetSignKeyInfo) != 0

    def next_encrypted_key(self):
        """Whether the message is encrypted; the getters then name the next key's recipient."""
        return self._get_int(lib.VQTK_SOAPSEC_GetEncKeyInfo) != 0

    def unwrap_key(self, certificate, private_key):
        self._call(lib.VQTK_SOAPSEC_DecryptKeyWrapKey, certificate, _size(certificate),
                   private_key, _size(private_key))

    def set_verify_certificate(self, certificate):
        """The certificate to verify a signer named only by issuer and serial with."""
        self._call(lib.VQTK_SOAPSEC_SetVerifyCert, certificate, _size(certificate))

    def process(self):
        """Decrypts and verifies in the sender's order; returns the envelope without the header."""
        return self._call_for_document(lib.VQTK_SOAPSEC_ProcessSOAP)

    def signed_parts(self):
        """After process: the paths of what the signature covered, one per reference."""
        parts = self._get_texts(lib.VQTK_SOAPSEC_GetSignedParts, 1)[0] or b""
        return parts.decode("utf-8").splitlines()
