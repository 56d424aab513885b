// Processes SOAP messages' wsse:Security headers with Apache WSS4J's own
// receiver (WSSecurityEngine) and writes the envelopes WSS4J leaves behind.
//
// Usage: java Wss4jConsumer IN OUT [--ca CERT]... [--pair CERT KEY]... [--cert CERT]...
//        java Wss4jConsumer --batch LIST
//   --ca    a trust anchor for the certificates signatures are made with
//   --pair  a certificate and its private key (PKCS #8 DER) to decrypt with
//   --cert  a further known certificate (a signer named only by issuer and serial)
// Certificates are DER or PEM. One run prints a line per header entry WSS4J
// processed, in processing order, and exits 0, or prints the refusal and exits 1
// (2 for a usage error). A batch LIST holds one run's arguments per line,
// separated by tabs; each run's lines go to its OUT plus ".report" (one JVM
// start for many messages), and the exit status is 1 if any run was refused.
import java.io.ByteArrayInputStream;
import java.io.File;
import java.io.PrintStream;
import java.nio.file.Files;
import java.security.KeyFactory;
import java.security.KeyStore;
import java.security.PrivateKey;
import java.security.cert.CertificateFactory;
import java.security.cert.X509Certificate;
import java.security.spec.PKCS8EncodedKeySpec;
import java.util.List;

import javax.security.auth.callback.Callback;
import javax.security.auth.callback.CallbackHandler;
import javax.xml.parsers.DocumentBuilderFactory;
import javax.xml.transform.TransformerFactory;
import javax.xml.transform.dom.DOMSource;
import javax.xml.transform.stream.StreamResult;

import org.apache.ws.security.WSConstants;
import org.apache.ws.security.WSDataRef;
import org.apache.ws.security.WSPasswordCallback;
import org.apache.ws.security.WSSConfig;
import org.apache.ws.security.WSSecurityEngine;
import org.apache.ws.security.WSSecurityEngineResult;
import org.apache.ws.security.components.crypto.Merlin;
import org.w3c.dom.Document;

public final class Wss4jConsumer {
    private static final char[] PASSWORD = "wss4j-test".toCharArray();

    public static void main(String[] args) throws Exception {
        if (args.length == 2 && args[0].equals("--batch")) {
            boolean allAccepted = true;
            for (String line : Files.readAllLines(new File(args[1]).toPath())) {
                if (line.isEmpty())
                    continue;
                String[] run = line.split("\t");
                File reportFile = new File(run.length > 1 ? run[1] + ".report" : "bad.report");
                try (PrintStream report = new PrintStream(reportFile, "UTF-8")) {
                    allAccepted &= run(run, report) == 0;
                }
            }
            System.exit(allAccepted ? 0 : 1);
        }
        System.exit(run(args, System.out));
    }

    private static int run(String[] args, PrintStream out) {
        if (args.length < 2) {
            out.println("usage: Wss4jConsumer IN OUT [--ca CERT]... [--pair CERT KEY]... [--cert CERT]...");
            return 2;
        }
        try {
            Merlin crypto = cryptoFrom(args);
            Document doc = parse(new File(args[0]));
            WSSecurityEngine engine = new WSSecurityEngine();
            engine.setWssConfig(WSSConfig.getNewInstance());
            CallbackHandler passwords = Wss4jConsumer::answerPasswords;
            List<WSSecurityEngineResult> results = engine.processSecurityHeader(doc, null, passwords, crypto, crypto);
            if (results == null || results.isEmpty())
                throw new IllegalStateException("no security header was processed");
            // WSS4J lists the last processed entry first.
            for (int i = results.size() - 1; i >= 0; --i)
                out.println(describe(results.get(i)));
            TransformerFactory.newInstance().newTransformer()
                .transform(new DOMSource(doc), new StreamResult(new File(args[1])));
            return 0;
        } catch (Exception e) {
            out.println("REFUSED " + e);
            for (Throwable cause = e.getCause(); cause != null; cause = cause.getCause())
                out.println("  caused by " + cause);
            return 1;
        }
    }

    // JKS: an in-memory PKCS #12 store gave its keys back garbled ("final block not
    // properly padded") once WSS4J had registered its JCE providers.
    private static Merlin cryptoFrom(String[] args) throws Exception {
        KeyStore keys = KeyStore.getInstance("JKS");
        keys.load(null, null);
        KeyStore trust = KeyStore.getInstance("JKS");
        trust.load(null, null);
        for (int i = 2; i < args.length; ++i) {
            String option = args[i];
            if (option.equals("--ca") && i + 1 < args.length) {
                trust.setCertificateEntry("ca" + i, certificate(args[++i]));
            } else if (option.equals("--cert") && i + 1 < args.length) {
                keys.setCertificateEntry("cert" + i, certificate(args[++i]));
            } else if (option.equals("--pair") && i + 2 < args.length) {
                X509Certificate cert = certificate(args[++i]);
                keys.setKeyEntry("pair" + i, privateKey(args[++i]), PASSWORD, new X509Certificate[] {cert});
            } else {
                throw new IllegalArgumentException("bad argument " + option);
            }
        }
        Merlin crypto = new Merlin();
        crypto.setKeyStore(keys);
        crypto.setTrustStore(trust);
        return crypto;
    }

    private static X509Certificate certificate(String path) throws Exception {
        byte[] bytes = Files.readAllBytes(new File(path).toPath());
        return (X509Certificate) CertificateFactory.getInstance("X.509")
            .generateCertificate(new ByteArrayInputStream(bytes));
    }

    private static PrivateKey privateKey(String path) throws Exception {
        byte[] der = Files.readAllBytes(new File(path).toPath());
        return KeyFactory.getInstance("RSA").generatePrivate(new PKCS8EncodedKeySpec(der));
    }

    private static Document parse(File file) throws Exception {
        DocumentBuilderFactory factory = DocumentBuilderFactory.newInstance();
        factory.setNamespaceAware(true);
        factory.setFeature("http://apache.org/xml/features/disallow-doctype-decl", true);
        return factory.newDocumentBuilder().parse(file);
    }

    // Every private key of the store shares one password.
    private static void answerPasswords(Callback[] callbacks) {
        for (Callback callback : callbacks)
            if (callback instanceof WSPasswordCallback)
                ((WSPasswordCallback) callback).setPassword(new String(PASSWORD));
    }

    private static String describe(WSSecurityEngineResult result) {
        int action = (Integer) result.get(WSSecurityEngineResult.TAG_ACTION);
        X509Certificate cert = (X509Certificate) result.get(WSSecurityEngineResult.TAG_X509_CERTIFICATE);
        String who = cert != null ? " cert=" + cert.getSubjectX500Principal().getName() : "";
        if (action == WSConstants.SIGN)
            return "SIGNATURE verified alg=" + result.get(WSSecurityEngineResult.TAG_SIGNATURE_METHOD)
                + parts(result, false) + " trust-validated=" + result.get(WSSecurityEngineResult.TAG_VALIDATED_TOKEN)
                + who;
        if (action == WSConstants.ENCR)
            return "DECRYPTED transport=" + result.get(WSSecurityEngineResult.TAG_ENCRYPTED_KEY_TRANSPORT_METHOD)
                + parts(result, true) + who;
        if (action == WSConstants.BST)
            return "TOKEN" + who;
        return "ACTION " + action + who;
    }

    // The elements a signature covered or a decryption restored, by local name.
    private static String parts(WSSecurityEngineResult result, boolean withCipher) {
        @SuppressWarnings("unchecked")
        List<WSDataRef> refs = (List<WSDataRef>) result.get(WSSecurityEngineResult.TAG_DATA_REF_URIS);
        StringBuilder text = new StringBuilder(" parts=");
        for (int i = 0; refs != null && i < refs.size(); ++i) {
            WSDataRef ref = refs.get(i);
            text.append(i > 0 ? "," : "").append(ref.getName() != null ? ref.getName().getLocalPart() : "?");
            if (ref.isContent())
                text.append("(content)");
            if (withCipher)
                text.append(" cipher=").append(ref.getAlgorithm());
        }
        return text.toString();
    }
}
