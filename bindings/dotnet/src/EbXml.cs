namespace Vqxml
{
    /// <summary>Signed ebXML messages: MIME multipart/related, the SOAP envelope and then the
    /// attachments, each signed by cid:. Signing: Load → SignatureMethod → AddReference for the
    /// envelope → optionally the KeyInfo choices → SetSigner → Sign (the whole package).
    /// Verifying: LoadSigned → Verify → the getters.</summary>
    public class EbXml : KeyInfoHandle
    {
        private const int Release = 10103, NoPackage = 10104;  // the loaders leave no text for these

        public EbXml()
            : base(Native.VQTK_EBXML_GetSubjectName, Native.VQTK_EBXML_GetIssuerSerialNum,
                   Native.VQTK_EBXML_GetKeyName, Native.VQTK_EBXML_GetSignCert) { }

        /// <summary>A package, or a bare envelope.</summary>
        public void Load(byte[] message)
        {
            Run(h => Native.VQTK_EBXML_SetSOAPDocument(h, message, Len(message)), Release, NoPackage);
        }

        public void SignatureMethod(SignatureAlgorithm signature, Canonicalization signedInfo)
        {
            Run(h => Native.VQTK_EBXML_SignatureMethod(h, (int)signature, (int)signedInfo));
        }

        /// <summary>The envelope's reference; its digest and canonicalization also apply to attachments.</summary>
        public void AddReference(string uri, Digest digest, Canonicalization transform, string xpath)
        {
            Run(h => Native.VQTK_EBXML_createReference(h, Z(uri), (int)digest, (int)transform, Z(xpath)));
        }

        public void SetSignKeyName(string name) { Run(h => Native.VQTK_EBXML_SetSignKeyName(h, Z(name))); }
        public void IncludeKeyValue() { Run(Native.VQTK_EBXML_SetKeyValue); }
        public void NameSubject() { Run(Native.VQTK_EBXML_SetSubjectName); }
        public void NameIssuerSerial() { Run(Native.VQTK_EBXML_SetIssuerSerial); }

        public void SetSigner(byte[] certificate, byte[] privateKey)
        {
            Run(h => Native.VQTK_EBXML_SetSigner(h, certificate, Len(certificate), privateKey, Len(privateKey)));
        }

        public byte[] Sign() { return RunForDocument(Native.VQTK_EBXML_Sign); }

        public void LoadSigned(byte[] message)
        {
            Run(h => Native.VQTK_EBXML_SetSOAPSecXMLDocument(h, message, Len(message)), Release, NoPackage);
        }

        /// <summary>Throws NotVerified if the signature, the envelope or an attachment does not verify.</summary>
        public void Verify() { Run(Native.VQTK_EBXML_Verify); }

        /// <summary>As XmlSignature.VerifySignerCertificate, for the package's signer.</summary>
        public void VerifySignerCertificate(byte[] chain, byte[] crls)
        {
            Run(h => Native.VQTK_XMLDSIG_VerifySignerCert(h, chain, Len(chain), crls, Len(crls)));
        }
    }
}
