package kr.vqxml;

import kr.vqxml.Algorithms.Cipher;
import kr.vqxml.Algorithms.KeyTransport;
import kr.vqxml.Algorithms.Target;

/**
 * XML Encryption. Encrypting: {@link #load} → {@link #setSymmetricAlgorithm} (a random
 * session key) or {@link #setSymmetricKey} → {@link #encryptElement} per target →
 * optionally {@link #nameSubject}, {@link #nameIssuerSerial} → {@link #addRecipient} per
 * recipient → {@link #encrypt}. Decrypting: {@link #loadEncrypted} →
 * {@link #nextEncryptedKey} and the getters (whose key is it?) → {@link #unwrapKey} (or
 * setSymmetricKey) → {@link #decrypt}.
 */
public class XmlEncryption extends KeyInfoHandle {
    /** No EncryptedKey of the document is left to read. */
    public static final int KEYS_VISITED = 10313;

    public XmlEncryption() throws VqxmlException {
        super(Native::encSubject, Native::encIssuerSerial, Native::encKeyName, Native::encCertificate);
    }

    public void load(byte[] xml) throws VqxmlException {
        run(h -> Native.encLoad(h, xml));
    }

    public void setPrefix(String prefix) throws VqxmlException {
        run(h -> Native.encSetPrefix(h, utf8(prefix)));
    }

    public void setSymmetricAlgorithm(Cipher cipher) throws VqxmlException {
        run(h -> Native.encSetSymmetricAlgorithm(h, cipher.selector));
    }

    /** A session key of the cipher's size (24 bytes for Triple DES, else 16). */
    public void setSymmetricKey(byte[] key, Cipher cipher) throws VqxmlException {
        run(h -> Native.encSetSymmetricKey(h, key, cipher.selector));
    }

    public void setKeyName(String name) throws VqxmlException {
        run(h -> Native.encSetKeyName(h, utf8(name)));
    }

    /** target null: the document element; else the first element of that qualified name. */
    public void encryptElement(String target, Target what) throws VqxmlException {
        run(h -> Native.encEncryptElement(h, utf8(target), what.selector));
    }

    /** Names the recipient's subject in the next EncryptedKey. */
    public void nameSubject() throws VqxmlException {
        run(Native::encNameSubject);
    }

    /** Names the recipient's issuer and serial number in the next EncryptedKey. */
    public void nameIssuerSerial() throws VqxmlException {
        run(Native::encNameIssuerSerial);
    }

    /** key: the recipient's certificate for RSA, the key-encryption key for Triple DES. */
    public void addRecipient(byte[] key, KeyTransport transport) throws VqxmlException {
        run(h -> Native.encAddRecipient(h, key, transport.selector));
    }

    public byte[] encrypt() throws VqxmlException {
        return runForDocument(Native::encEncrypt);
    }

    public void loadEncrypted(byte[] xml) throws VqxmlException {
        run(h -> Native.encLoadEncrypted(h, xml));
    }

    /** Reads the next EncryptedKey into the getters; false when every one has been read. */
    public boolean nextEncryptedKey() throws VqxmlException {
        try {
            run(Native::encNextKey);
            return true;
        } catch (VqxmlException e) {
            if (e.status() == KEYS_VISITED)
                return false;
            throw e;
        }
    }

    /** Unwraps the session key: certificate and private key for RSA, or null and the
     * key-encryption key for Triple DES key wrap. */
    public void unwrapKey(byte[] certificate, byte[] privateKey) throws VqxmlException {
        run(h -> Native.encUnwrapKey(h, certificate, privateKey));
    }

    /** Decrypts every EncryptedData and returns the document. */
    public byte[] decrypt() throws VqxmlException {
        return runForDocument(Native::encDecrypt);
    }
}
