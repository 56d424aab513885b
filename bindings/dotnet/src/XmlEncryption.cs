namespace Vqxml
{
    /// <summary>XML Encryption. Encrypting: Load → SetSymmetricAlgorithm (a random session key)
    /// or SetSymmetricKey → EncryptElement per target → optionally NameSubject,
    /// NameIssuerSerial → AddRecipient per recipient → Encrypt. Decrypting: LoadEncrypted →
    /// NextEncryptedKey and the getters (whose key is it?) → UnwrapKey (or SetSymmetricKey) →
    /// Decrypt.</summary>
    public class XmlEncryption : KeyInfoHandle
    {
        /// <summary>Every EncryptedKey of the document has been read.</summary>
        public const int KeysVisited = 10313;

        public XmlEncryption()
            : base(Native.VQTK_XMLENC_GetSubjectName, Native.VQTK_XMLENC_GetIssuerSerialNum,
                   Native.VQTK_XMLENC_GetKeyName, Native.VQTK_XMLENC_GetEncCert) { }

        public void Load(byte[] xml) { Run(h => Native.VQTK_XMLENC_SetXMLDocument(h, xml, Len(xml))); }
        public void SetPrefix(string prefix) { Run(h => Native.VQTK_XMLENC_SetPrefix(h, Z(prefix))); }
        public void SetSymmetricAlgorithm(Cipher cipher) { Run(h => Native.VQTK_XMLENC_SetSymmAlg(h, (int)cipher)); }

        /// <summary>A session key of the cipher's size (24 bytes for Triple DES, else 16).</summary>
        public void SetSymmetricKey(byte[] key, Cipher cipher)
        {
            Run(h => Native.VQTK_XMLENC_SetSymmKey(h, key, Len(key), (int)cipher));
        }

        public void SetKeyName(string name) { Run(h => Native.VQTK_XMLENC_SetKeyName(h, Z(name))); }

        /// <summary>target null: the document element; else the first element of that qualified name.</summary>
        public void EncryptElement(string target, EncryptionTarget what)
        {
            Run(h => Native.VQTK_XMLENC_EncryptElement(h, Z(target), (int)what));
        }

        public void NameSubject() { Run(Native.VQTK_XMLENC_SetSubjectName); }
        public void NameIssuerSerial() { Run(Native.VQTK_XMLENC_SetIssuerSerial); }

        /// <summary>key: the recipient's certificate for RSA, the key-encryption key for Triple DES.</summary>
        public void AddRecipient(byte[] key, KeyTransport transport)
        {
            Run(h => Native.VQTK_XMLENC_EncryptKeyWrapKey(h, key, Len(key), (int)transport));
        }

        public byte[] Encrypt() { return RunForDocument(Native.VQTK_XMLENC_Encrypt); }

        public void LoadEncrypted(byte[] xml) { Run(h => Native.VQTK_XMLENC_SetEncXMLDocument(h, xml, Len(xml))); }

        /// <summary>Reads the next EncryptedKey into the getters; false when every one has been read.</summary>
        public bool NextEncryptedKey()
        {
            try
            {
                Run(Native.VQTK_XMLENC_GetEncKeyInfo);
                return true;
            }
            catch (VqxmlException e)
            {
                if (e.Status == KeysVisited)
                    return false;
                throw;
            }
        }

        /// <summary>Certificate and private key for RSA, or null and the key-encryption key for
        /// Triple DES key wrap.</summary>
        public void UnwrapKey(byte[] certificate, byte[] privateKey)
        {
            Run(h => Native.VQTK_XMLENC_DecryptKeyWrapKey(h, certificate, Len(certificate), privateKey, Len(privateKey)));
        }

        /// <summary>Decrypts every EncryptedData and returns the document.</summary>
        public byte[] Decrypt() { return RunForDocument(Native.VQTK_XMLENC_Decrypt); }
    }
}
