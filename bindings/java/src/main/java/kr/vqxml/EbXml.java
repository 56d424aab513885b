package kr.vqxml;

import kr.vqxml.Algorithms.Canonicalization;
import kr.vqxml.Algorithms.Digest;
import kr.vqxml.Algorithms.Signature;

/**
 * Signed ebXML messages (MIME multipart/related: the SOAP envelope, then the attachments,
 * each signed by cid:). Signing: {@link #load} → {@link #signatureMethod} →
 * {@link #addReference} for the envelope → optionally the KeyInfo choices →
 * {@link #setSigner} → {@link #sign} (the whole package). Verifying: {@link #loadSigned} →
 * {@link #verify} → the getters.
 */
public class EbXml extends KeyInfoHandle {
    private static final int RELEASE = 10103, NO_PACKAGE = 10104;

    public EbXml() throws VqxmlException {
        super(Native::ebxmlSubject, Native::ebxmlIssuerSerial, Native::ebxmlKeyName, Native::ebxmlCertificate);
    }

    /** A package, or a bare envelope. */
    public void load(byte[] message) throws VqxmlException {
        runQuiet(h -> Native.ebxmlLoad(h, message), RELEASE, NO_PACKAGE);
    }

    public void signatureMethod(Signature signature, Canonicalization signedInfo) throws VqxmlException {
        run(h -> Native.ebxmlSignatureMethod(h, signature.selector, signedInfo.selector));
    }

    /** The envelope's reference; its digest and canonicalization also apply to the attachments. */
    public void addReference(String uri, Digest digest, Canonicalization transform, String xpath)
        throws VqxmlException {
        run(h -> Native.ebxmlReference(h, utf8(uri), digest.selector, transform.selector, utf8(xpath)));
    }

    public void setSignKeyName(String name) throws VqxmlException {
        run(h -> Native.ebxmlSetSignKeyName(h, utf8(name)));
    }

    public void includeKeyValue() throws VqxmlException {
        run(Native::ebxmlIncludeKeyValue);
    }

    public void nameSubject() throws VqxmlException {
        run(Native::ebxmlNameSubject);
    }

    public void nameIssuerSerial() throws VqxmlException {
        run(Native::ebxmlNameIssuerSerial);
    }

    public void setSigner(byte[] certificate, byte[] privateKey) throws VqxmlException {
        run(h -> Native.ebxmlSetSigner(h, certificate, privateKey));
    }

    public byte[] sign() throws VqxmlException {
        return runForDocument(Native::ebxmlSign);
    }

    public void loadSigned(byte[] message) throws VqxmlException {
        runQuiet(h -> Native.ebxmlLoadSigned(h, message), RELEASE, NO_PACKAGE);
    }

    /** Throws {@link VqxmlException#NOT_VERIFIED} if the signature, the envelope or an
     * attachment does not verify. */
    public void verify() throws VqxmlException {
        run(Native::ebxmlVerify);
    }

    /** As {@link XmlSignature#verifySignerCertificate}, for the package's signer. */
    public void verifySignerCertificate(byte[] chain, byte[] crls) throws VqxmlException {
        run(h -> Native.dsigVerifySignerCert(h, chain, crls));
    }
}
