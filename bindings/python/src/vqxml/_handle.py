"""The handle every family works on, and the exception its failures raise."""
import ctypes
import locale
import threading

from ._library import lib


class VqxmlError(Exception):
    """A call of the library failed: `status` is its status code (vqxml.h, docs/status-codes.md),
    `text` the library's text for it ("Method > reason"), decoded from EUC-KR."""

    NOT_VERIFIED = 11213  # the signature does not verify (any other status: it could not be checked)

    def __init__(self, status, text):
        super().__init__(f"{text} (status {status})")
        self.status = status
        self.text = text


def _local_codeset():
    # Issuer, serial and key names come in the process locale's code set, UTF-8 in "C".
    codeset = locale.nl_langinfo(locale.CODESET)
    return "utf-8" if codeset in ("", "ANSI_X3.4-1968") else codeset


def _string_at(pointer, size=-1):
    return None if not pointer else ctypes.string_at(pointer, size)


class Handle:
    """One library handle. Use it as a context manager (or call close()); one only dropped is
    finished when it is collected. As in C, one handle serves one thread at a time; calls on one
    object are serialised by a lock, so misuse cannot corrupt memory, but give each thread its
    own handle. The buffers the library hands out belong to the handle: every getter returns a
    copy, which stays valid after close()."""

    def __init__(self):
        self._lock = threading.RLock()
        self._h = ctypes.c_void_p()
        status = lib.VQTK_XMLAPI_init(ctypes.byref(self._h))
        if status:
            raise VqxmlError(status, "VQTK_XMLAPI_init > the library could not start")

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def close(self):
        with self._lock:
            if self._h.value:
                lib.VQTK_XMLAPI_Finish(ctypes.byref(self._h))
                self._h = ctypes.c_void_p()

    def __del__(self):
        try:
            self.close()
        except Exception:  # the interpreter is shutting down
            pass

    def _live(self):
        if not self._h.value:
            raise ValueError("vqxml: the handle is closed")
        return self._h

    def _copy_text(self, function):
        out = ctypes.create_string_buffer(1024)
        function(self._live(), 1023, out)
        return out.value

    def version(self):
        """The library's version text, e.g. "V1.0.0.7"."""
        with self._lock:
            return self._copy_text(lib.VQTK_XMLAPI_GetVersion).decode("ascii")

    def error_text(self):
        """The last failure's text on this handle (kept after later successes)."""
        with self._lock:
            return self._copy_text(lib.VQTK_XMLAPI_GetErrInfo).decode("euc-kr", "replace")

    def _call(self, function, *args, silent=()):
        """Runs one C function on the handle; a failure raises VqxmlError with the handle's text.
        silent: statuses for which that function leaves no text."""
        with self._lock:
            status = function(self._live(), *args)
            if status == 0:
                return
            if status in (10100, 10102) or status in silent:
                raise VqxmlError(status, "the input cannot be used or a required argument is missing")
            raise VqxmlError(status, self.error_text())

    def _call_for_document(self, function, *args):
        with self._lock:
            self._call(function, *args)
            return self.document()

    def document(self):
        """The last operation's result document, a copy (None when there is none)."""
        with self._lock:
            doc, size = ctypes.c_void_p(), ctypes.c_int(0)
            self._call(lib.VQTK_XMLAPI_GetXMLDocument, ctypes.byref(doc), ctypes.byref(size))
            return _string_at(doc.value, size.value)

    def _get_texts(self, function, count):
        with self._lock:
            outs = [ctypes.c_void_p() for _ in range(count)]
            self._call(function, *(ctypes.byref(o) for o in outs))
            return [_string_at(o.value) for o in outs]

    def _get_int(self, function):
        with self._lock:
            value = ctypes.c_int(0)
            self._call(function, ctypes.byref(value))
            return value.value


def _size(data):
    return 0 if data is None else len(data)


def _text(value):
    """A text as the C functions take it; one with a NUL would be cut short there, so it is refused."""
    if value is not None and "\0" in value:
        raise ValueError("vqxml: a text with a NUL character")
    return None if value is None else value.encode("utf-8")


class KeyInfoHandle(Handle):
    """A family whose loaded document names a key: the signer of a signature or the recipient of
    an encrypted key. The getters report what the last operation read (None where there was none)."""

    _GETTERS = ()  # subject, issuer-serial, key name, certificate

    def subject_name(self):
        """The subject name as the library writes names (most specific first)."""
        value = self._get_texts(self._GETTERS[0], 1)[0]
        return None if value is None else value.decode("utf-8")

    def _issuer_serial(self):
        return [None if v is None else v.decode(_local_codeset()) for v in self._get_texts(self._GETTERS[1], 2)]

    def issuer_name(self):
        return self._issuer_serial()[0]

    def serial_number(self):
        return self._issuer_serial()[1]

    def key_name(self):
        value = self._get_texts(self._GETTERS[2], 1)[0]
        return None if value is None else value.decode(_local_codeset())

    def certificate(self):
        """The certificate, DER."""
        with self._lock:
            data, size = ctypes.c_void_p(), ctypes.c_int(0)
            self._call(self._GETTERS[3], ctypes.byref(data), ctypes.byref(size))
            return _string_at(data.value, size.value)
