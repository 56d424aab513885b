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
import java.io.File;
import java.io.PrintStream;
import java.nio.file.Files;
import java.security.KeyStore;
import java.security.cert.X509Certificate;
import java.util.List;

import javax.security.auth.callback.CallbackHandler;

import org.apache.ws.security.WSConstants;
import org.apache.ws.security.WSDataRef;
import org.apache.ws.security.WSSConfig;
import org.apache.ws.security.WSSecurityEngine;
import org.apache.ws.security.WSSecurityEngineResult;
import org.apache.ws.security.components.crypto.Merlin;
import org.w3c.dom.Document;

public final class Wss4jConsumer {
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
            Document doc = Wss4jSupport.parse(args[0]);
            WSSecurityEngine engine = new WSSecurityEngine();
            engine.setWssConfig(WSSConfig.getNewInstance());
            CallbackHandler passwords = Wss4jSupport::answerPasswords;
            List<WSSecurityEngineResult> results = engine.processSecurityHeader(doc, null, passwords, crypto, crypto);
            if (results == null || results.isEmpty())
                throw new IllegalStateException("no security header was processed");
            // WSS4J lists the last processed entry first.
            for (int i = results.size() - 1; i >= 0; --i)
                out.println(describe(results.get(i)));
            Wss4jSupport.write(doc, args[1]);
            return 0;
        } catch (Exception e) {
            out.println("REFUSED " + e);
            for (Throwable cause = e.getCause(); cause != null; cause = cause.getCause())
                out.println("  caused by " + cause);
            return 1;
        }
    }

    private static Merlin cryptoFrom(String[] args) throws Exception {
        KeyStore keys = Wss4jSupport.newStore();
        KeyStore trust = Wss4jSupport.newStore();
        for (int i = 2; i < args.length; ++i) {
            String option = args[i];
            if (option.equals("--ca") && i + 1 < args.length) {
                trust.setCertificateEntry("ca" + i, Wss4jSupport.certificate(args[++i]));
            } else if (option.equals("--cert") && i + 1 < args.length) {
                keys.setCertificateEntry("cert" + i, Wss4jSupport.certificate(args[++i]));
            } else if (option.equals("--pair") && i + 2 < args.length) {
                Wss4jSupport.addPair(keys, "pair" + i, args[i + 1], args[i + 2]);
                i += 2;
            } else {
                throw new IllegalArgumentException("bad argument " + option);
            }
        }
        return Wss4jSupport.merlin(keys, trust);
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
