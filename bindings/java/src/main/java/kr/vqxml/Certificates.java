package kr.vqxml;

/** Certificates against the built-in Korean roots (KISA RootCA 4, KISA RootCA 1, GPKIRootCA1). */
public class Certificates extends Handle {
    public Certificates() throws VqxmlException {
        super();
    }

    /** Returns if a root issued the certificate and everything holds; throws with the reason. */
    public void verify(byte[] certificate) throws VqxmlException {
        run(h -> Native.verifyCert(h, certificate));
    }

    /** Through the intermediates in chain and, if crls is not null, revocation; DER or PEM. */
    public void verifyChain(byte[] certificate, byte[] chain, byte[] crls) throws VqxmlException {
        run(h -> Native.verifyCertChain(h, certificate, chain, crls));
    }
}
