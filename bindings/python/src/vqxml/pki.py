"""Certificates against the built-in Korean roots, and password-protected private keys."""
import ctypes

from ._handle import Handle, _size, _string_at, _text
from ._library import lib


class Certificates(Handle):
    """Certificates against KISA RootCA 4, KISA RootCA 1 and GPKIRootCA1."""

    def verify(self, certificate):
        """Returns if a root issued the certificate and everything holds; raises with the reason."""
        self._call(lib.VQTK_XMLAPI_VerifyCert, certificate, _size(certificate))

    def verify_chain(self, certificate, chain=None, crls=None):
        """Through the intermediates in chain and, given crls, revocation; DER or PEM."""
        self._call(lib.VQTK_XMLAPI_VerifyCertChain, certificate, _size(certificate), chain, _size(chain),
                   crls, _size(crls))


class PrivateKeys(Handle):
    """Password-protected private keys such as an NPKI signPri.key. Passwords travel as UTF-8."""

    def decrypt(self, password, encrypted_key):
        """The unencrypted PKCS #8 PrivateKeyInfo, DER; a wrong password raises (12011)."""
        with self._lock:
            out, size = ctypes.c_void_p(), ctypes.c_int(0)
            self._call(lib.VQTK_XMLAPI_DecryptPriKey, _text(password), encrypted_key, _size(encrypted_key),
                       ctypes.byref(out), ctypes.byref(size))
            return _string_at(out.value, size.value)

    def random(self, password, key, recipient=None):
        """The identity-verification random as base64 text; password None takes key as an
        unencrypted PrivateKeyInfo; with a recipient certificate it comes encrypted for it."""
        with self._lock:
            out = ctypes.c_void_p()
            self._call(lib.VQTK_XMLAPI_GetRandomFromPriKey, _text(password), key, _size(key), recipient,
                       _size(recipient), ctypes.byref(out))
            return _string_at(out.value).decode("ascii")
