using System;
using System.Text;

namespace Vqxml
{
    /// <summary>Certificates against the built-in Korean roots (KISA RootCA 4, KISA RootCA 1, GPKIRootCA1).</summary>
    public class Certificates : Handle
    {
        /// <summary>Returns if a root issued the certificate and everything holds; throws with the reason.</summary>
        public void Verify(byte[] certificate)
        {
            Run(h => Native.VQTK_XMLAPI_VerifyCert(h, certificate, Len(certificate)));
        }

        /// <summary>Through the intermediates in chain and, given crls, revocation; DER or PEM.</summary>
        public void VerifyChain(byte[] certificate, byte[] chain, byte[] crls)
        {
            Run(h => Native.VQTK_XMLAPI_VerifyCertChain(h, certificate, Len(certificate), chain, Len(chain), crls, Len(crls)));
        }
    }

    /// <summary>Password-protected private keys such as an NPKI signPri.key. Passwords travel as UTF-8.</summary>
    public class PrivateKeys : Handle
    {
        /// <summary>The unencrypted PKCS #8 PrivateKeyInfo, DER; a wrong password throws (12011).</summary>
        public byte[] Decrypt(string password, byte[] encryptedKey)
        {
            IntPtr key = IntPtr.Zero;
            int len = 0;
            lock (Lock)
            {
                Run(h => Native.VQTK_XMLAPI_DecryptPriKey(h, Z(password), encryptedKey, Len(encryptedKey), out key, out len));
                return CopyBytes(key, len);
            }
        }

        /// <summary>The identity-verification random as base64 text; password null takes key as
        /// an unencrypted PrivateKeyInfo; with a recipient certificate it comes encrypted for it.</summary>
        public string Random(string password, byte[] key, byte[] recipient)
        {
            IntPtr random = IntPtr.Zero;
            lock (Lock)
            {
                Run(h => Native.VQTK_XMLAPI_GetRandomFromPriKey(h, Z(password), key, Len(key), recipient, Len(recipient), out random));
                return Encoding.ASCII.GetString(CopyText(random));
            }
        }
    }
}
