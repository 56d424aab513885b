// The C functions, declared as vqxml.h gives them. Texts go in as NUL-terminated UTF-8 bytes,
// byte strings as arrays pinned for the call; buffers coming out belong to the handle and are
// copied (Handle.Copy*) before the next call on it.
//
// The library is the file named by the environment variable VQXML_LIBRARY, else the one of the
// installed tree this assembly is in, else libvqxml.so.1 from the system's library path (ldconfig,
// LD_LIBRARY_PATH); the first two are loaded before any call so that the declarations below
// resolve to them by their soname.
using System;
using System.IO;
using System.Runtime.InteropServices;

namespace Vqxml
{
    internal static class Native
    {
        private const string Lib = "libvqxml.so.1";

        [DllImport("libdl.so.2")]
        private static extern IntPtr dlopen(string path, int flags);

        private static bool loaded;

        /// <summary>Loads VQXML_LIBRARY when set, else the library of the installed tree this
        /// assembly is in (lib/cli/vqxml/../../); every Handle calls it before its first function.</summary>
        internal static void LoadLibrary()
        {
            if (loaded)
                return;
            const int RtldNowGlobal = 0x2 | 0x100;
            string path = Environment.GetEnvironmentVariable("VQXML_LIBRARY");
            if (!string.IsNullOrEmpty(path) && dlopen(path, RtldNowGlobal) == IntPtr.Zero)
                throw new DllNotFoundException("vqxml: cannot load VQXML_LIBRARY=" + path);
            string installed = Path.Combine(Path.GetDirectoryName(typeof(Native).Assembly.Location), "../..", Lib);
            if (string.IsNullOrEmpty(path) && File.Exists(installed))
                dlopen(installed, RtldNowGlobal);
            loaded = true;
        }

        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_init(ref IntPtr handle);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_Finish(ref IntPtr handle);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_GetVersion(SafeVqxmlHandle h, int len, byte[] text);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_GetErrInfo(SafeVqxmlHandle h, int len, byte[] text);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_GetXMLDocument(SafeVqxmlHandle h, out IntPtr doc, out int len);

        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SetXMLDocument(SafeVqxmlHandle h, byte[] xml, int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SetPrefix(SafeVqxmlHandle h, byte[] prefix);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SignatureMethod(SafeVqxmlHandle h, int signature, int c14n);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_createReference(SafeVqxmlHandle h, byte[] uri, int digest, int c14n, byte[] xpath);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_appendObject(SafeVqxmlHandle h, byte[] id, byte[] content, int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SetKeyName(SafeVqxmlHandle h, byte[] name);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_sign(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SetSigner(SafeVqxmlHandle h, byte[] cert, int certLen, byte[] key, int keyLen);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SetHMACKey(SafeVqxmlHandle h, byte[] key, uint len);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_SetSignXMLDocument(SafeVqxmlHandle h, byte[] xml, int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_Verify(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_AllowExternalReferences(SafeVqxmlHandle h, int allow);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_GetSubjectName(SafeVqxmlHandle h, out IntPtr subject);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_GetIssuerSerialNum(SafeVqxmlHandle h, out IntPtr issuer, out IntPtr serial);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_GetSignCert(SafeVqxmlHandle h, out IntPtr cert, out int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_GetKeyName(SafeVqxmlHandle h, out IntPtr name);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_GetCanonicalReading(SafeVqxmlHandle h, out int reading);
        [DllImport(Lib)] internal static extern int VQTK_XMLDSIG_VerifySignerCert(SafeVqxmlHandle h, byte[] chain, int chainLen, byte[] crls, int crlsLen);

        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetXMLDocument(SafeVqxmlHandle h, byte[] xml, int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetSymmAlg(SafeVqxmlHandle h, int alg);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetSymmKey(SafeVqxmlHandle h, byte[] key, int len, int alg);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetPrefix(SafeVqxmlHandle h, byte[] prefix);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetKeyName(SafeVqxmlHandle h, byte[] name);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_EncryptElement(SafeVqxmlHandle h, byte[] target, int mode);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetSubjectName(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetIssuerSerial(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_EncryptKeyWrapKey(SafeVqxmlHandle h, byte[] key, int len, int alg);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_Encrypt(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_SetEncXMLDocument(SafeVqxmlHandle h, byte[] xml, int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_GetEncKeyInfo(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_GetSubjectName(SafeVqxmlHandle h, out IntPtr subject);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_GetIssuerSerialNum(SafeVqxmlHandle h, out IntPtr issuer, out IntPtr serial);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_GetEncCert(SafeVqxmlHandle h, out IntPtr cert, out int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_GetKeyName(SafeVqxmlHandle h, out IntPtr name);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_DecryptKeyWrapKey(SafeVqxmlHandle h, byte[] cert, int certLen, byte[] key, int keyLen);
        [DllImport(Lib)] internal static extern int VQTK_XMLENC_Decrypt(SafeVqxmlHandle h);

        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_VerifyCert(SafeVqxmlHandle h, byte[] cert, int len);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_VerifyCertChain(SafeVqxmlHandle h, byte[] cert, int certLen, byte[] chain, int chainLen, byte[] crls, int crlsLen);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_DecryptPriKey(SafeVqxmlHandle h, byte[] password, byte[] key, int keyLen, out IntPtr keyOut, out int keyOutLen);
        [DllImport(Lib)] internal static extern int VQTK_XMLAPI_GetRandomFromPriKey(SafeVqxmlHandle h, byte[] password, byte[] key, int keyLen, byte[] recipient, int recipientLen, out IntPtr random);

        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetSOAPDocument(SafeVqxmlHandle h, byte[] data, int len);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetSOAPSecXMLDocument(SafeVqxmlHandle h, byte[] data, int len);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SignatureMethod(SafeVqxmlHandle h, int signature, int c14n);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_createReference(SafeVqxmlHandle h, byte[] uri, int digest, int c14n, byte[] xpath);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetSigner(SafeVqxmlHandle h, byte[] cert, int certLen, byte[] key, int keyLen);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetSignKeyName(SafeVqxmlHandle h, byte[] name);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetKeyValue(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetSubjectName(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_SetIssuerSerial(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_Sign(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_Verify(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_GetSubjectName(SafeVqxmlHandle h, out IntPtr subject);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_GetIssuerSerialNum(SafeVqxmlHandle h, out IntPtr issuer, out IntPtr serial);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_GetKeyName(SafeVqxmlHandle h, out IntPtr name);
        [DllImport(Lib)] internal static extern int VQTK_EBXML_GetSignCert(SafeVqxmlHandle h, out IntPtr cert, out int len);

        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetSOAPDocument(SafeVqxmlHandle h, byte[] xml, int len);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SignatureMethod(SafeVqxmlHandle h, int signature, int c14n);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_createReference(SafeVqxmlHandle h, byte[] uri, int digest, int c14n, byte[] xpath);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetIssuerSerial(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetSigner(SafeVqxmlHandle h, byte[] cert, int certLen, byte[] key, int keyLen);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetHMACKey(SafeVqxmlHandle h, byte[] key, uint len);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetSignKeyName(SafeVqxmlHandle h, byte[] name);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_Sign(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetSymmAlg(SafeVqxmlHandle h, int alg);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetSymmKey(SafeVqxmlHandle h, byte[] key, int len, int alg);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_EncryptElement(SafeVqxmlHandle h, byte[] target, int type);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetEncKeyName(SafeVqxmlHandle h, byte[] name);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_EncryptKeyWrapKey(SafeVqxmlHandle h, byte[] key, int len, int wrapAlg);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_Encrypt(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetSOAPSecXMLDocument(SafeVqxmlHandle h, byte[] xml, int len);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetSignKeyInfo(SafeVqxmlHandle h, out int isSigned);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetEncKeyInfo(SafeVqxmlHandle h, out int isEncrypted);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_DecryptKeyWrapKey(SafeVqxmlHandle h, byte[] cert, int certLen, byte[] key, int keyLen);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_ProcessSOAP(SafeVqxmlHandle h);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_SetVerifyCert(SafeVqxmlHandle h, byte[] cert, int len);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetSubjectName(SafeVqxmlHandle h, out IntPtr subject);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetIssuerSerialNum(SafeVqxmlHandle h, out IntPtr issuer, out IntPtr serial);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetKeyName(SafeVqxmlHandle h, out IntPtr name);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetSignCert(SafeVqxmlHandle h, out IntPtr cert, out int len);
        [DllImport(Lib)] internal static extern int VQTK_SOAPSEC_GetSignedParts(SafeVqxmlHandle h, out IntPtr parts);

        [DllImport("libc.so.6")] internal static extern IntPtr nl_langinfo(int item);
    }
}
