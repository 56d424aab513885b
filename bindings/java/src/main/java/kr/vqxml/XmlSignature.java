package kr.vqxml;

import kr.vqxml.Algorithms.Canonicalization;
import kr.vqxml.Algorithms.Digest;
import kr.vqxml.Algorithms.Signature;

/**
 * XML Signature. Signing: {@link #load} (null for an enveloping signature) → optionally
 * {@link #setPrefix} → {@link #signatureMethod} → {@link #addReference}, {@link #appendObject},
 * {@link #setKeyName}, {@link #setSigner} or {@link #setHmacKey} → {@link #sign}.
 * Verifying: {@link #loadSigned} → {@link #verify} → the getters and {@link #document()}
 * (the document without its signature).
 */
public class XmlSignature extends KeyInfoHandle {
    /** The national e-tax-invoice recipe's reference filter: TaxInvoice's own element,
     * ExchangedDocument and the signature stay out. */
    public static final String TAX_INVOICE_XPATH =
        "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | "
        + "ancestor-or-self::ds:Signature)";
    /** The whole document but its signature, for an enveloped signature. */
    public static final String ENVELOPED_XPATH = "not(ancestor-or-self::ds:Signature)";

    /** How the last verification read an XPath node-set's orphan namespaces (vqxml.h). */
    public enum CanonicalReading { PLAIN, SANTUARIO, LITERAL }

    public XmlSignature() throws VqxmlException {
        super(Native::dsigSubject, Native::dsigIssuerSerial, Native::dsigKeyName, Native::dsigCertificate);
    }

    public void load(byte[] xml) throws VqxmlException {
        run(h -> Native.dsigLoad(h, xml));
    }

    public void setPrefix(String prefix) throws VqxmlException {
        run(h -> Native.dsigSetPrefix(h, utf8(prefix)));
    }

    public void signatureMethod(Signature signature, Canonicalization signedInfo) throws VqxmlException {
        run(h -> Native.dsigSignatureMethod(h, signature.selector, signedInfo.selector));
    }

    /** uri null: the whole document; xpath null: no XPath transform. */
    public void addReference(String uri, Digest digest, Canonicalization transform, String xpath)
        throws VqxmlException {
        run(h -> Native.dsigReference(h, utf8(uri), digest.selector, transform.selector, utf8(xpath)));
    }

    public void appendObject(String id, byte[] content) throws VqxmlException {
        run(h -> Native.dsigAppendObject(h, utf8(id), content));
    }

    public void setKeyName(String name) throws VqxmlException {
        run(h -> Native.dsigSetKeyName(h, utf8(name)));
    }

    /** The certificate DER or PEM; the key an unencrypted PKCS #8 (or PKCS #1 RSA) key. */
    public void setSigner(byte[] certificate, byte[] privateKey) throws VqxmlException {
        run(h -> Native.dsigSetSigner(h, certificate, privateKey));
    }

    /** The HMAC secret, for signing or (after loadSigned) verifying. */
    public void setHmacKey(byte[] key) throws VqxmlException {
        run(h -> Native.dsigSetHmacKey(h, key));
    }

    /** Signs and returns the signed document. */
    public byte[] sign() throws VqxmlException {
        return runForDocument(Native::dsigSign);
    }

    /**
     * Signs an e-tax invoice by the National Tax Service's recipe: RSA-SHA256, C14N for
     * SignedInfo, one reference to the whole document with SHA-256, a C14N transform and
     * {@link #TAX_INVOICE_XPATH}, the certificate in KeyInfo.
     */
    public byte[] signTaxInvoice(byte[] invoice, byte[] certificate, byte[] privateKey) throws VqxmlException {
        synchronized (this) {
            load(invoice);
            setPrefix("ds");
            signatureMethod(Signature.RSA_SHA256, Canonicalization.C14N);
            addReference("", Digest.SHA256, Canonicalization.C14N, TAX_INVOICE_XPATH);
            setSigner(certificate, privateKey);
            return sign();
        }
    }

    public void loadSigned(byte[] xml) throws VqxmlException {
        run(h -> Native.dsigLoadSigned(h, xml));
    }

    /** Lets references to files or the network be read; off unless asked for. */
    public void allowExternalReferences(boolean allow) throws VqxmlException {
        run(h -> Native.dsigAllowExternalReferences(h, allow ? 1 : 0));
    }

    /** Returns if the signature verifies; throws with {@link VqxmlException#NOT_VERIFIED} if it
     * does not, any other status if it could not be checked. */
    public void verify() throws VqxmlException {
        run(Native::dsigVerify);
    }

    public CanonicalReading canonicalReading() throws VqxmlException {
        int[] out = new int[1];
        run(h -> Native.dsigCanonicalReading(h, out));
        return CanonicalReading.values()[out[0]];
    }

    /**
     * Whether the signer's certificate (after {@link #verify}) leads to a built-in Korean root,
     * with the certificates of KeyInfo and chain as intermediates and, if crls is not null,
     * revocation. Either may be null; DER or PEM, one or several.
     */
    public void verifySignerCertificate(byte[] chain, byte[] crls) throws VqxmlException {
        run(h -> Native.dsigVerifySignerCert(h, chain, crls));
    }
}
