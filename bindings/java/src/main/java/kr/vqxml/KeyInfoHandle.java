package kr.vqxml;

/**
 * A family whose loaded document names a key: the signer of a signature, or the
 * recipient of an encrypted key. The getters report what the last operation read
 * (null where the document had none); each gives a copy.
 */
public abstract class KeyInfoHandle extends Handle {
    @FunctionalInterface
    interface Getter {
        int apply(long h, byte[][] out);
    }

    private final Getter subject, issuerSerial, keyName, certificate;

    KeyInfoHandle(Getter subject, Getter issuerSerial, Getter keyName, Getter certificate) throws VqxmlException {
        this.subject = subject;
        this.issuerSerial = issuerSerial;
        this.keyName = keyName;
        this.certificate = certificate;
    }

    private byte[][] read(Getter getter, int slots) throws VqxmlException {
        byte[][] out = new byte[slots][];
        run(h -> getter.apply(h, out));
        return out;
    }

    /** The subject name as the library writes names (most specific first). */
    public String subjectName() throws VqxmlException {
        return utf8(read(subject, 1)[0]);
    }

    public String issuerName() throws VqxmlException {
        return local(read(issuerSerial, 2)[0]);
    }

    public String serialNumber() throws VqxmlException {
        return local(read(issuerSerial, 2)[1]);
    }

    public String keyName() throws VqxmlException {
        return local(read(keyName, 1)[0]);
    }

    /** The certificate, DER. */
    public byte[] certificate() throws VqxmlException {
        return read(certificate, 1)[0];
    }
}
