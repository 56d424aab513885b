"""XML Encryption."""
from ._handle import KeyInfoHandle, VqxmlError, _size, _text
from ._library import lib

KEYS_VISITED = 10313  # every EncryptedKey of the document has been read


class XmlEncryption(KeyInfoHandle):
    """Encrypting: load -> set_symmetric_algorithm (a random session key) or set_symmetric_key ->
    encrypt_element per target -> optionally name_subject, name_issuer_serial -> add_recipient per
    recipient -> encrypt. Decrypting: load_encrypted -> next_encrypted_key and the getters (whose
    key is it?) -> unwrap_key (or set_symmetric_key) -> decrypt."""

    _GETTERS = (lib.VQTK_XMLENC_GetSubjectName, lib.VQTK_XMLENC_GetIssuerSerialNum,
                lib.VQTK_XMLENC_GetKeyName, lib.VQTK_XMLENC_GetEncCert)

    def load(self, xml):
        self._call(lib.VQTK_XMLENC_SetXMLDocument, xml, _size(xml))

    def set_prefix(self, prefix):
        self._call(lib.VQTK_XMLENC_SetPrefix, _text(prefix))

    def set_symmetric_algorithm(self, cipher):
        self._call(lib.VQTK_XMLENC_SetSymmAlg, cipher)

    def set_symmetric_key(self, key, cipher):
        """A session key of the cipher's size (24 bytes for Triple DES, else 16)."""
        self._call(lib.VQTK_XMLENC_SetSymmKey, key, _size(key), cipher)

    def set_key_name(self, name):
        self._call(lib.VQTK_XMLENC_SetKeyName, _text(name))

    def encrypt_element(self, target, what):
        """target None: the document element; else the first element of that qualified name."""
        self._call(lib.VQTK_XMLENC_EncryptElement, _text(target), what)

    def name_subject(self):
        self._call(lib.VQTK_XMLENC_SetSubjectName)

    def name_issuer_serial(self):
        self._call(lib.VQTK_XMLENC_SetIssuerSerial)

    def add_recipient(self, key, transport):
        """key: the recipient's certificate for RSA, the key-encryption key for Triple DES."""
        self._call(lib.VQTK_XMLENC_EncryptKeyWrapKey, key, _size(key), transport)

    def encrypt(self):
        return self._call_for_document(lib.VQTK_XMLENC_Encrypt)

    def load_encrypted(self, xml):
        self._call(lib.VQTK_XMLENC_SetEncXMLDocument, xml, _size(xml))

    def next_encrypted_key(self):
        """Reads the next EncryptedKey into the getters; False when every one has been read."""
        try:
            self._call(lib.VQTK_XMLENC_GetEncKeyInfo)
            return True
        except VqxmlError as e:
            if e.status == KEYS_VISITED:
                return False
            raise

    def unwrap_key(self, certificate, private_key):
        """Certificate and private key for RSA, or None and the key-encryption key for Triple DES."""
        self._call(lib.VQTK_XMLENC_DecryptKeyWrapKey, certificate, _size(certificate),
                   private_key, _size(private_key))

    def decrypt(self):
        """Decrypts every EncryptedData and returns the document."""
        return self._call_for_document(lib.VQTK_XMLENC_Decrypt)
