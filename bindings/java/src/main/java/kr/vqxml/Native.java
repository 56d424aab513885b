package kr.vqxml;

/**
 * The C functions, one native method each (src/main/c/vqxml_jni.c). Byte arrays
 * go in as copies; texts go in as UTF-8 bytes; results come out in the one-slot
 * arrays given. Each returns the C function's status.
 *
 * <p>The JNI library is loaded from the path in the system property
 * {@code vqxml.jni.library} or the environment variable {@code VQXML_JNI_LIBRARY}
 * when set, else as {@code vqxml_jni} from {@code java.library.path}; it finds
 * {@code libvqxml.so.1} by its run path (the folder it was installed into) or
 * the system's library path.
 */
final class Native {
    static {
        String path = System.getProperty("vqxml.jni.library", System.getenv("VQXML_JNI_LIBRARY"));
        if (path != null && !path.isEmpty())
            System.load(path);
        else
            System.loadLibrary("vqxml_jni");
    }

    private Native() {}

    static native int init(long[] handle);
    static native int finish(long h);
    static native byte[] errorText(long h);
    static native byte[] version(long h);
    static native int document(long h, byte[][] out);

    static native int dsigLoad(long h, byte[] xml);
    static native int dsigSetPrefix(long h, byte[] prefix);
    static native int dsigSignatureMethod(long h, int signature, int c14n);
    static native int dsigReference(long h, byte[] uri, int digest, int c14n, byte[] xpath);
    static native int dsigAppendObject(long h, byte[] id, byte[] content);
    static native int dsigSetKeyName(long h, byte[] name);
    static native int dsigSetSigner(long h, byte[] cert, byte[] key);
    static native int dsigSetHmacKey(long h, byte[] key);
    static native int dsigSign(long h);
    static native int dsigLoadSigned(long h, byte[] xml);
    static native int dsigAllowExternalReferences(long h, int allow);
    static native int dsigVerify(long h);
    static native int dsigVerifySignerCert(long h, byte[] chain, byte[] crls);
    static native int dsigCanonicalReading(long h, int[] out);
    static native int dsigSubject(long h, byte[][] out);
    static native int dsigIssuerSerial(long h, byte[][] out);
    static native int dsigKeyName(long h, byte[][] out);
    static native int dsigCertificate(long h, byte[][] out);

    static native int encLoad(long h, byte[] xml);
    static native int encSetSymmetricAlgorithm(long h, int alg);
    static native int encSetSymmetricKey(long h, byte[] key, int alg);
    static native int encSetPrefix(long h, byte[] prefix);
    static native int encSetKeyName(long h, byte[] name);
    static native int encEncryptElement(long h, byte[] target, int mode);
    static native int encNameSubject(long h);
    static native int encNameIssuerSerial(long h);
    static native int encAddRecipient(long h, byte[] key, int transport);
    static native int encEncrypt(long h);
    static native int encLoadEncrypted(long h, byte[] xml);
    static native int encNextKey(long h);
    static native int encUnwrapKey(long h, byte[] cert, byte[] key);
    static native int encDecrypt(long h);
    static native int encSubject(long h, byte[][] out);
    static native int encIssuerSerial(long h, byte[][] out);
    static native int encKeyName(long h, byte[][] out);
    static native int encCertificate(long h, byte[][] out);

    static native int soapLoad(long h, byte[] xml);
    static native int soapSignatureMethod(long h, int signature, int c14n);
    static native int soapReference(long h, byte[] uri, int digest, int c14n, byte[] xpath);
    static native int soapNameIssuerSerial(long h);
    static native int soapSetSigner(long h, byte[] cert, byte[] key);
    static native int soapSetHmacKey(long h, byte[] key);
    static native int soapSetSignKeyName(long h, byte[] name);
    static native int soapSign(long h);
    static native int soapSetSymmetricAlgorithm(long h, int alg);
    static native int soapSetSymmetricKey(long h, byte[] key, int alg);
    static native int soapEncryptElement(long h, byte[] target, int type);
    static native int soapSetEncKeyName(long h, byte[] name);
    static native int soapAddRecipient(long h, byte[] key, int transport);
    static native int soapEncrypt(long h);
    static native int soapLoadSecured(long h, byte[] xml);
    static native int soapSignKeyInfo(long h, int[] isSigned);
    static native int soapEncKeyInfo(long h, int[] isEncrypted);
    static native int soapUnwrapKey(long h, byte[] cert, byte[] key);
    static native int soapSetVerifyCert(long h, byte[] cert);
    static native int soapProcess(long h);
    static native int soapSignedParts(long h, byte[][] out);
    static native int soapSubject(long h, byte[][] out);
    static native int soapIssuerSerial(long h, byte[][] out);
    static native int soapKeyName(long h, byte[][] out);
    static native int soapCertificate(long h, byte[][] out);

    static native int ebxmlLoad(long h, byte[] data);
    static native int ebxmlLoadSigned(long h, byte[] data);
    static native int ebxmlSignatureMethod(long h, int signature, int c14n);
    static native int ebxmlReference(long h, byte[] uri, int digest, int c14n, byte[] xpath);
    static native int ebxmlSetSigner(long h, byte[] cert, byte[] key);
    static native int ebxmlSetSignKeyName(long h, byte[] name);
    static native int ebxmlIncludeKeyValue(long h);
    static native int ebxmlNameSubject(long h);
    static native int ebxmlNameIssuerSerial(long h);
    static native int ebxmlSign(long h);
    static native int ebxmlVerify(long h);
    static native int ebxmlSubject(long h, byte[][] out);
    static native int ebxmlIssuerSerial(long h, byte[][] out);
    static native int ebxmlKeyName(long h, byte[][] out);
    static native int ebxmlCertificate(long h, byte[][] out);

    static native int verifyCert(long h, byte[] cert);
    static native int verifyCertChain(long h, byte[] cert, byte[] chain, byte[] crls);
    static native int decryptPrivateKey(long h, byte[] password, byte[] key, byte[][] out);
    static native int privateKeyRandom(long h, byte[] password, byte[] key, byte[] recipient, byte[][] out);
}
