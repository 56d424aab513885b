// Signs a SOAP envelope's Body with Apache WSS4J's own sender (WSSecSignature),
// naming the signer's certificate only by issuer and serial number; or encrypts
// the Body's content for a recipient (WSSecEncrypt) with the given algorithms,
// the recipient named by issuer and serial number.
//
// Usage: java Wss4jProducer IN OUT CERT KEY [SIGNATURE-URI DIGEST-URI]
//        java Wss4jProducer --encrypt IN OUT CERT CIPHER-URI TRANSPORT-URI
// CERT is DER or PEM, KEY PKCS #8 DER (RSA, EC or DSA). Without URIs WSS4J's
// defaults (RSA-SHA1, SHA-1). Exits 0, or prints the failure and exits 1.
import java.security.KeyStore;

import org.apache.ws.security.WSConstants;
import org.apache.ws.security.WSSConfig;
import org.apache.ws.security.message.WSSecEncrypt;
import org.apache.ws.security.message.WSSecHeader;
import org.apache.ws.security.message.WSSecSignature;
import org.w3c.dom.Document;

public final class Wss4jProducer {
    public static void main(String[] args) {
        if (args.length == 6 && args[0].equals("--encrypt")) {
            encrypt(args);
            return;
        }
        if (args.length != 4 && args.length != 6) {
            System.err.println("usage: Wss4jProducer IN OUT CERT KEY [SIGNATURE-URI DIGEST-URI]");
            System.exit(2);
        }
        try {
            KeyStore keys = Wss4jSupport.newStore();
            Wss4jSupport.addPair(keys, "signer", args[2], args[3]);
            Document doc = Wss4jSupport.parse(args[0]);
            WSSecHeader header = new WSSecHeader();
            header.insertSecurityHeader(doc);
            WSSecSignature signature = new WSSecSignature();
            signature.setUserInfo("signer", Wss4jSupport.PASSWORD);
            signature.setKeyIdentifierType(WSConstants.ISSUER_SERIAL);
            if (args.length == 6) {
                signature.setSignatureAlgorithm(args[4]);
                signature.setDigestAlgo(args[5]);
            }
            signature.build(doc, Wss4jSupport.merlin(keys, Wss4jSupport.newStore()), header);
            Wss4jSupport.write(doc, args[1]);
        } catch (Exception e) {
            System.out.println("FAILED " + e);
            System.exit(1);
        }
    }

    private static void encrypt(String[] args) {
        try {
            WSSConfig.init();
            KeyStore keys = Wss4jSupport.newStore();
            keys.setCertificateEntry("recipient", Wss4jSupport.certificate(args[3]));
            Document doc = Wss4jSupport.parse(args[1]);
            WSSecHeader header = new WSSecHeader();
            header.insertSecurityHeader(doc);
            WSSecEncrypt encrypt = new WSSecEncrypt();
            encrypt.setUserInfo("recipient");
            encrypt.setKeyIdentifierType(WSConstants.ISSUER_SERIAL);
            encrypt.setSymmetricEncAlgorithm(args[4]);
            encrypt.setKeyEnc(args[5]);
            encrypt.build(doc, Wss4jSupport.merlin(keys, Wss4jSupport.newStore()), header);
            Wss4jSupport.write(doc, args[2]);
        } catch (Exception e) {
            System.out.println("FAILED " + e);
            System.exit(1);
        }
    }
}
