package kr.vqxml;

import java.util.Arrays;
import java.util.List;

import kr.vqxml.Algorithms.Cipher;
import kr.vqxml.Algorithms.Digest;
import kr.vqxml.Algorithms.KeyTransport;
import kr.vqxml.Algorithms.Signature;
import kr.vqxml.Algorithms.SoapCanonicalization;
import kr.vqxml.Algorithms.Canonicalization;
import kr.vqxml.Algorithms.Target;

/**
 * WS-Security for SOAP messages. Securing: {@link #load} (the envelope needs a Header) →
 * signing ({@link #signatureMethod}, {@link #addReference}, optionally
 * {@link #nameIssuerSerial}, {@link #setSigner}, {@link #sign}) and/or encrypting
 * ({@link #setSymmetricAlgorithm}, {@link #encryptElement}, {@link #addRecipient},
 * {@link #encrypt}); load each result again for the next operation. Processing:
 * {@link #loadSecured} → {@link #isSigned} and {@link #nextEncryptedKey} with the getters →
 * {@link #unwrapKey} → {@link #process}. Give each received message a handle of its own.
 */
public class SoapSecurity extends KeyInfoHandle {
    public SoapSecurity() throws VqxmlException {
        super(Native::soapSubject, Native::soapIssuerSerial, Native::soapKeyName, Native::soapCertificate);
    }

    public void load(byte[] envelope) throws VqxmlException {
        run(h -> Native.soapLoad(h, envelope));
    }

    public void signatureMethod(Signature signature, SoapCanonicalization signedInfo) throws VqxmlException {
        run(h -> Native.soapSignatureMethod(h, signature.selector, signedInfo.selector));
    }

    /** uri null: the SOAP Body. */
    public void addReference(String uri, Digest digest, Canonicalization transform, String xpath)
        throws VqxmlException {
        run(h -> Native.soapReference(h, utf8(uri), digest.selector, transform.selector, utf8(xpath)));
    }

    /** Names the signer (or the next recipient) by issuer and serial number instead of sending
     * the certificate. */
    public void nameIssuerSerial() throws VqxmlException {
        run(Native::soapNameIssuerSerial);
    }

    public void setSigner(byte[] certificate, byte[] privateKey) throws VqxmlException {
        run(h -> Native.soapSetSigner(h, certificate, privateKey));
    }

    public void setHmacKey(byte[] key) throws VqxmlException {
        run(h -> Native.soapSetHmacKey(h, key));
    }

    public void setSignKeyName(String name) throws VqxmlException {
        run(h -> Native.soapSetSignKeyName(h, utf8(name)));
    }

    public byte[] sign() throws VqxmlException {
        return runForDocument(Native::soapSign);
    }

    public void setSymmetricAlgorithm(Cipher cipher) throws VqxmlException {
        run(h -> Native.soapSetSymmetricAlgorithm(h, cipher.selector));
    }

    public void setSymmetricKey(byte[] key, Cipher cipher) throws VqxmlException {
        run(h -> Native.soapSetSymmetricKey(h, key, cipher.selector));
    }

    /** target null: the Body's content; "#id" or a qualified name. */
    public void encryptElement(String target, Target what) throws VqxmlException {
        run(h -> Native.soapEncryptElement(h, utf8(target), what.selector));
    }

    public void setEncKeyName(String name) throws VqxmlException {
        run(h -> Native.soapSetEncKeyName(h, utf8(name)));
    }

    public void addRecipient(byte[] key, KeyTransport transport) throws VqxmlException {
        run(h -> Native.soapAddRecipient(h, key, transport.selector));
    }

    public byte[] encrypt() throws VqxmlException {
        return runForDocument(Native::soapEncrypt);
    }

    public void loadSecured(byte[] message) throws VqxmlException {
        run(h -> Native.soapLoadSecured(h, message));
    }

    /** Whether the message is signed; the getters then name the signer. */
    public boolean isSigned() throws VqxmlException {
        int[] out = new int[1];
        run(h -> Native.soapSignKeyInfo(h, out));
        return out[0] != 0;
    }

    /** Whether the message is encrypted; the getters then name the next encrypted key's recipient. */
    public boolean nextEncryptedKey() throws VqxmlException {
        int[] out = new int[1];
        run(h -> Native.soapEncKeyInfo(h, out));
        return out[0] != 0;
    }

    public void unwrapKey(byte[] certificate, byte[] privateKey) throws VqxmlException {
        run(h -> Native.soapUnwrapKey(h, certificate, privateKey));
    }

    /** The certificate to verify a signer named only by issuer and serial with. */
    public void setVerifyCertificate(byte[] certificate) throws VqxmlException {
        run(h -> Native.soapSetVerifyCert(h, certificate));
    }

    /** Decrypts and verifies in the sender's order; returns the envelope without the header. */
    public byte[] process() throws VqxmlException {
        return runForDocument(Native::soapProcess);
    }

    /** After {@link #process}: the paths of what the signature covered, one per reference. */
    public List<String> signedParts() throws VqxmlException {
        byte[][] out = new byte[1][];
        run(h -> Native.soapSignedParts(h, out));
        String parts = out[0] == null ? "" : utf8(out[0]);
        return parts.isEmpty() ? List.of() : Arrays.asList(parts.split("\n"));
    }
}
