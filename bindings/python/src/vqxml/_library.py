"""Finds libvqxml and declares the C functions it uses (include/vqxml/vqxml.h).

Where the library comes from, first found wins: the path in the environment variable
VQXML_LIBRARY; libdir of `pkg-config vqxml` (an installed prefix, PKG_CONFIG_PATH
included); the system's library path (ldconfig, LD_LIBRARY_PATH)."""
import ctypes
import ctypes.util
import os
import subprocess

_p = ctypes.c_void_p
_i = ctypes.c_int
_b = ctypes.c_char_p  # bytes in: texts and byte strings alike
_out = ctypes.POINTER(ctypes.c_void_p)
_iout = ctypes.POINTER(ctypes.c_int)

# The C functions by the shape of their arguments after the handle.
_SIGNATURES = {
    (): "XMLDSIG_sign XMLDSIG_Verify XMLENC_SetSubjectName XMLENC_SetIssuerSerial XMLENC_Encrypt "
        "XMLENC_GetEncKeyInfo XMLENC_Decrypt SOAPSEC_SetIssuerSerial SOAPSEC_Sign SOAPSEC_Encrypt "
        "SOAPSEC_ProcessSOAP EBXML_SetKeyValue EBXML_SetSubjectName EBXML_SetIssuerSerial EBXML_Sign "
        "EBXML_Verify",
    (_b, _i): "XMLDSIG_SetXMLDocument XMLDSIG_SetSignXMLDocument XMLDSIG_SetHMACKey XMLENC_SetXMLDocument "
              "XMLENC_SetEncXMLDocument SOAPSEC_SetSOAPDocument SOAPSEC_SetSOAPSecXMLDocument "
              "SOAPSEC_SetHMACKey SOAPSEC_SetVerifyCert EBXML_SetSOAPDocument EBXML_SetSOAPSecXMLDocument "
              "XMLAPI_VerifyCert",
    (_b,): "XMLDSIG_SetPrefix XMLDSIG_SetKeyName XMLENC_SetPrefix XMLENC_SetKeyName SOAPSEC_SetSignKeyName "
           "SOAPSEC_SetEncKeyName EBXML_SetSignKeyName",
    (_i,): "XMLDSIG_AllowExternalReferences XMLENC_SetSymmAlg SOAPSEC_SetSymmAlg",
    (_i, _i): "XMLDSIG_SignatureMethod SOAPSEC_SignatureMethod EBXML_SignatureMethod",
    (_b, _i, _i, _b): "XMLDSIG_createReference SOAPSEC_createReference EBXML_createReference",
    (_b, _i, _b, _i): "XMLDSIG_SetSigner XMLENC_DecryptKeyWrapKey SOAPSEC_SetSigner SOAPSEC_DecryptKeyWrapKey "
                      "EBXML_SetSigner XMLDSIG_VerifySignerCert",
    (_b, _i, _i): "XMLENC_SetSymmKey XMLENC_EncryptKeyWrapKey SOAPSEC_SetSymmKey SOAPSEC_EncryptKeyWrapKey",
    (_b, _b, _i): "XMLDSIG_appendObject",
    (_b, _i, _b, _i, _b, _i): "XMLAPI_VerifyCertChain",
    (_b, _b, _i, _out, _iout): "XMLAPI_DecryptPriKey",
    (_b, _b, _i, _b, _i, _out): "XMLAPI_GetRandomFromPriKey",
    (_out,): "XMLDSIG_GetSubjectName XMLDSIG_GetKeyName XMLENC_GetSubjectName XMLENC_GetKeyName "
             "SOAPSEC_GetSubjectName SOAPSEC_GetKeyName SOAPSEC_GetSignedParts EBXML_GetSubjectName "
             "EBXML_GetKeyName",
    (_out, _out): "XMLDSIG_GetIssuerSerialNum XMLENC_GetIssuerSerialNum SOAPSEC_GetIssuerSerialNum "
                  "EBXML_GetIssuerSerialNum",
    (_out, _iout): "XMLDSIG_GetSignCert XMLENC_GetEncCert SOAPSEC_GetSignCert EBXML_GetSignCert "
                   "XMLAPI_GetXMLDocument",
    (_iout,): "XMLDSIG_GetCanonicalReading SOAPSEC_GetSignKeyInfo SOAPSEC_GetEncKeyInfo",
    (_i, _b): "XMLAPI_GetVersion XMLAPI_GetErrInfo",
}


def _path():
    path = os.environ.get("VQXML_LIBRARY")
    if path:
        return path
    try:
        libdir = subprocess.run(["pkg-config", "--variable=libdir", "vqxml"], capture_output=True,
                                text=True, check=True).stdout.strip()
        if libdir and os.path.exists(os.path.join(libdir, "libvqxml.so.1")):
            return os.path.join(libdir, "libvqxml.so.1")
    except (OSError, subprocess.CalledProcessError):
        pass
    return ctypes.util.find_library("vqxml") or "libvqxml.so.1"


def _load():
    lib = ctypes.CDLL(_path())
    for args, names in _SIGNATURES.items():
        for name in (names or "").split():
            function = getattr(lib, "VQTK_" + name)
            function.argtypes = (_p,) + args
            function.restype = _i
    lib.VQTK_XMLAPI_init.argtypes = (ctypes.POINTER(_p),)
    lib.VQTK_XMLAPI_init.restype = _i
    lib.VQTK_XMLAPI_Finish.argtypes = (ctypes.POINTER(_p),)
    lib.VQTK_XMLAPI_Finish.restype = _i
    return lib


lib = _load()
