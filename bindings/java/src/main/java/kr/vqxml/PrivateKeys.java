package kr.vqxml;

import java.nio.charset.StandardCharsets;

/** Password-protected private keys, such as an NPKI signPri.key. Passwords travel as UTF-8. */
public class PrivateKeys extends Handle {
    public PrivateKeys() throws VqxmlException {
        super();
    }

    /** The unencrypted PKCS #8 PrivateKeyInfo, DER; a wrong password throws (12011). */
    public byte[] decrypt(String password, byte[] encryptedKey) throws VqxmlException {
        byte[][] out = new byte[1][];
        run(h -> Native.decryptPrivateKey(h, utf8(password), encryptedKey, out));
        return out[0];
    }

    /**
     * The identity-verification random as base64 text; password null takes the key as an
     * unencrypted PrivateKeyInfo; with a recipient certificate the random comes encrypted for it.
     */
    public String random(String password, byte[] key, byte[] recipient) throws VqxmlException {
        byte[][] out = new byte[1][];
        run(h -> Native.privateKeyRandom(h, utf8(password), key, recipient, out));
        return new String(out[0], StandardCharsets.US_ASCII);
    }
}
