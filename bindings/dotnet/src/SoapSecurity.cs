using System;
using System.Collections.Generic;

namespace Vqxml
{
    /// <summary>WS-Security for SOAP messages. Securing: Load (the envelope needs a Header) →
    /// signing (SignatureMethod, AddReference, optionally NameIssuerSerial, SetSigner, Sign)
    /// and/or encrypting (SetSymmetricAlgorithm, EncryptElement, AddRecipient, Encrypt); load
    /// each result again for the next operation. Processing: LoadSecured → IsSigned and
    /// NextEncryptedKey with the getters → UnwrapKey → Process. Give each received message a
    /// handle of its own.</summary>
    public class SoapSecurity : KeyInfoHandle
    {
        public SoapSecurity()
            : base(Native.VQTK_SOAPSEC_GetSubjectName, Native.VQTK_SOAPSEC_GetIssuerSerialNum,
                   Native.VQTK_SOAPSEC_GetKeyName, Native.VQTK_SOAPSEC_GetSignCert) { }

        public void Load(byte[] envelope) { Run(h => Native.VQTK_SOAPSEC_SetSOAPDocument(h, envelope, Len(envelope))); }

        public void SignatureMethod(SignatureAlgorithm signature, SoapCanonicalization signedInfo)
        {
            Run(h => Native.VQTK_SOAPSEC_SignatureMethod(h, (int)signature, (int)signedInfo));
        }

        /// <summary>uri null: the SOAP Body.</summary>
        public void AddReference(string uri, Digest digest, Canonicalization transform, string xpath)
        {
            Run(h => Native.VQTK_SOAPSEC_createReference(h, Z(uri), (int)digest, (int)transform, Z(xpath)));
        }

        /// <summary>Names the signer (or the next recipient) by issuer and serial instead of
        /// sending the certificate.</summary>
        public void NameIssuerSerial() { Run(Native.VQTK_SOAPSEC_SetIssuerSerial); }

        public void SetSigner(byte[] certificate, byte[] privateKey)
        {
            Run(h => Native.VQTK_SOAPSEC_SetSigner(h, certificate, Len(certificate), privateKey, Len(privateKey)));
        }

        public void SetHmacKey(byte[] key) { Run(h => Native.VQTK_SOAPSEC_SetHMACKey(h, key, (uint)Len(key))); }
        public void SetSignKeyName(string name) { Run(h => Native.VQTK_SOAPSEC_SetSignKeyName(h, Z(name))); }
        public byte[] Sign() { return RunForDocument(Native.VQTK_SOAPSEC_Sign); }
        public void SetSymmetricAlgorithm(Cipher cipher) { Run(h => Native.VQTK_SOAPSEC_SetSymmAlg(h, (int)cipher)); }

        public void SetSymmetricKey(byte[] key, Cipher cipher)
        {
            Run(h => Native.VQTK_SOAPSEC_SetSymmKey(h, key, Len(key), (int)cipher));
        }

        /// <summary>target null: the Body's content; "#id" or a qualified name.</summary>
        public void EncryptElement(string target, EncryptionTarget what)
        {
            Run(h => Native.VQTK_SOAPSEC_EncryptElement(h, Z(target), (int)what));
        }

        public void SetEncKeyName(string name) { Run(h => Native.VQTK_SOAPSEC_SetEncKeyName(h, Z(name))); }

        public void AddRecipient(byte[] key, KeyTransport transport)
        {
            Run(h => Native.VQTK_SOAPSEC_EncryptKeyWrapKey(h, key, Len(key), (int)transport));
        }

        public byte[] Encrypt() { return RunForDocument(Native.VQTK_SOAPSEC_Encrypt); }

        public void LoadSecured(byte[] message) { Run(h => Native.VQTK_SOAPSEC_SetSOAPSecXMLDocument(h, message, Len(message))); }

        /// <summary>Whether the message is signed; the getters then name the signer.</summary>
        public bool IsSigned()
        {
            int signed = 0;
            Run(h => Native.VQTK_SOAPSEC_GetSignKeyInfo(h, out signed));
            return signed != 0;
        }

        /// <summary>Whether the message is encrypted; the getters then name the next key's recipient.</summary>
        public bool NextEncryptedKey()
        {
            int encrypted = 0;
            Run(h => Native.VQTK_SOAPSEC_GetEncKeyInfo(h, out encrypted));
            return encrypted != 0;
        }

        public void UnwrapKey(byte[] certificate, byte[] privateKey)
        {
            Run(h => Native.VQTK_SOAPSEC_DecryptKeyWrapKey(h, certificate, Len(certificate), privateKey, Len(privateKey)));
        }

        /// <summary>The certificate to verify a signer named only by issuer and serial with.</summary>
        public void SetVerifyCertificate(byte[] certificate)
        {
            Run(h => Native.VQTK_SOAPSEC_SetVerifyCert(h, certificate, Len(certificate)));
        }

        /// <summary>Decrypts and verifies in the sender's order; returns the envelope without the header.</summary>
        public byte[] Process() { return RunForDocument(Native.VQTK_SOAPSEC_ProcessSOAP); }

        /// <summary>After Process: the paths of what the signature covered, one per reference.</summary>
        public IList<string> SignedParts()
        {
            string parts = Utf8(GetText(Native.VQTK_SOAPSEC_GetSignedParts)) ?? "";
            return parts.Split(new[] { '\n' }, StringSplitOptions.RemoveEmptyEntries);
        }
    }
}
