// Shared by the WSS4J test programs: certificates and PKCS #8 keys from files,
// held in in-memory stores under one password; reading and writing envelopes.
import java.io.ByteArrayInputStream;
import java.io.File;
import java.nio.file.Files;
import java.security.KeyFactory;
import java.security.KeyStore;
import java.security.PrivateKey;
import java.security.cert.CertificateFactory;
import java.security.cert.X509Certificate;
import java.security.spec.PKCS8EncodedKeySpec;

import javax.security.auth.callback.Callback;
import javax.xml.parsers.DocumentBuilderFactory;
import javax.xml.transform.TransformerFactory;
import javax.xml.transform.dom.DOMSource;
import javax.xml.transform.stream.StreamResult;

import org.apache.ws.security.WSPasswordCallback;
import org.apache.ws.security.components.crypto.Merlin;
import org.w3c.dom.Document;

final class Wss4jSupport {
    static final String PASSWORD = "wss4j-test";

    private Wss4jSupport() {}

    // JKS: an in-memory PKCS #12 store gave its keys back garbled ("final block not
    // properly padded") once WSS4J had registered its JCE providers.
    static KeyStore newStore() throws Exception {
        KeyStore store = KeyStore.getInstance("JKS");
        store.load(null, null);
        return store;
    }

    static void addPair(KeyStore store, String alias, String certPath, String keyPath) throws Exception {
        X509Certificate cert = certificate(certPath);
        store.setKeyEntry(alias, privateKey(keyPath, cert.getPublicKey().getAlgorithm()), PASSWORD.toCharArray(),
                          new X509Certificate[] {cert});
    }

    static Merlin merlin(KeyStore keys, KeyStore trust) {
        Merlin crypto = new Merlin();
        crypto.setKeyStore(keys);
        crypto.setTrustStore(trust);
        return crypto;
    }

    // DER or PEM.
    static X509Certificate certificate(String path) throws Exception {
        byte[] bytes = Files.readAllBytes(new File(path).toPath());
        return (X509Certificate) CertificateFactory.getInstance("X.509")
            .generateCertificate(new ByteArrayInputStream(bytes));
    }

    static PrivateKey privateKey(String path, String algorithm) throws Exception {
        byte[] der = Files.readAllBytes(new File(path).toPath());
        return KeyFactory.getInstance(algorithm).generatePrivate(new PKCS8EncodedKeySpec(der));
    }

    // Every private key of the stores shares one password.
    static void answerPasswords(Callback[] callbacks) {
        for (Callback callback : callbacks)
            if (callback instanceof WSPasswordCallback)
                ((WSPasswordCallback) callback).setPassword(PASSWORD);
    }

    static Document parse(String path) throws Exception {
        DocumentBuilderFactory factory = DocumentBuilderFactory.newInstance();
        factory.setNamespaceAware(true);
        factory.setFeature("http://apache.org/xml/features/disallow-doctype-decl", true);
        return factory.newDocumentBuilder().parse(new File(path));
    }

    static void write(Document doc, String path) throws Exception {
        TransformerFactory.newInstance().newTransformer().transform(new DOMSource(doc), new StreamResult(new File(path)));
    }
}
