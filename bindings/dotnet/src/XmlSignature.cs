namespace Vqxml
{
    /// <summary>XML Signature. Signing: Load (null for an enveloping signature) → optionally
    /// SetPrefix → SignatureMethod → AddReference, AppendObject, SetKeyName, SetSigner or
    /// SetHmacKey → Sign. Verifying: LoadSigned → Verify → the getters and Document() (the
    /// document without its signature).</summary>
    public class XmlSignature : KeyInfoHandle
    {
        /// <summary>The national e-tax-invoice recipe's filter: TaxInvoice's own element,
        /// ExchangedDocument and the signature stay out.</summary>
        public const string TaxInvoiceXPath =
            "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | "
            + "ancestor-or-self::ds:Signature)";
        /// <summary>The whole document but its signature, for an enveloped signature.</summary>
        public const string EnvelopedXPath = "not(ancestor-or-self::ds:Signature)";

        public XmlSignature()
            : base(Native.VQTK_XMLDSIG_GetSubjectName, Native.VQTK_XMLDSIG_GetIssuerSerialNum,
                   Native.VQTK_XMLDSIG_GetKeyName, Native.VQTK_XMLDSIG_GetSignCert) { }

        public void Load(byte[] xml) { Run(h => Native.VQTK_XMLDSIG_SetXMLDocument(h, xml, Len(xml))); }
        public void SetPrefix(string prefix) { Run(h => Native.VQTK_XMLDSIG_SetPrefix(h, Z(prefix))); }

        public void SignatureMethod(SignatureAlgorithm signature, Canonicalization signedInfo)
        {
            Run(h => Native.VQTK_XMLDSIG_SignatureMethod(h, (int)signature, (int)signedInfo));
        }

        /// <summary>uri null: the whole document; xpath null: no XPath transform.</summary>
        public void AddReference(string uri, Digest digest, Canonicalization transform, string xpath)
        {
            Run(h => Native.VQTK_XMLDSIG_createReference(h, Z(uri), (int)digest, (int)transform, Z(xpath)));
        }

        public void AppendObject(string id, byte[] content)
        {
            Run(h => Native.VQTK_XMLDSIG_appendObject(h, Z(id), content, Len(content)));
        }

        public void SetKeyName(string name) { Run(h => Native.VQTK_XMLDSIG_SetKeyName(h, Z(name))); }

        /// <summary>The certificate DER or PEM; the key an unencrypted PKCS #8 (or PKCS #1 RSA) key.</summary>
        public void SetSigner(byte[] certificate, byte[] privateKey)
        {
            Run(h => Native.VQTK_XMLDSIG_SetSigner(h, certificate, Len(certificate), privateKey, Len(privateKey)));
        }

        /// <summary>The HMAC secret, for signing or (after LoadSigned) verifying.</summary>
        public void SetHmacKey(byte[] key) { Run(h => Native.VQTK_XMLDSIG_SetHMACKey(h, key, (uint)Len(key))); }

        /// <summary>Signs and returns the signed document.</summary>
        public byte[] Sign() { return RunForDocument(Native.VQTK_XMLDSIG_sign); }

        /// <summary>Signs an e-tax invoice by the National Tax Service's recipe: RSA-SHA256, C14N
        /// for SignedInfo, one reference to the whole document with SHA-256, a C14N transform and
        /// TaxInvoiceXPath, the certificate in KeyInfo.</summary>
        public byte[] SignTaxInvoice(byte[] invoice, byte[] certificate, byte[] privateKey)
        {
            lock (Lock)
            {
                Load(invoice);
                SetPrefix("ds");
                SignatureMethod(SignatureAlgorithm.RsaSha256, Canonicalization.C14n);
                AddReference("", Digest.Sha256, Canonicalization.C14n, TaxInvoiceXPath);
                SetSigner(certificate, privateKey);
                return Sign();
            }
        }

        public void LoadSigned(byte[] xml) { Run(h => Native.VQTK_XMLDSIG_SetSignXMLDocument(h, xml, Len(xml))); }

        /// <summary>Lets references to files or the network be read; off unless asked for.</summary>
        public void AllowExternalReferences(bool allow)
        {
            Run(h => Native.VQTK_XMLDSIG_AllowExternalReferences(h, allow ? 1 : 0));
        }

        /// <summary>Returns if the signature verifies; throws with VqxmlException.NotVerified if
        /// it does not, another status if it could not be checked.</summary>
        public void Verify() { Run(Native.VQTK_XMLDSIG_Verify); }

        public CanonicalReading CanonicalReading
        {
            get
            {
                int reading = 0;
                Run(h => Native.VQTK_XMLDSIG_GetCanonicalReading(h, out reading));
                return (CanonicalReading)reading;
            }
        }

        /// <summary>Whether the signer's certificate (after Verify) leads to a built-in Korean
        /// root, with the certificates of KeyInfo and chain as intermediates and, given crls,
        /// revocation. Either may be null; DER or PEM, one or several.</summary>
        public void VerifySignerCertificate(byte[] chain, byte[] crls)
        {
            Run(h => Native.VQTK_XMLDSIG_VerifySignerCert(h, chain, Len(chain), crls, Len(crls)));
        }
    }
}
