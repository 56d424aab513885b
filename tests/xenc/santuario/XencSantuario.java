// Apache Santuario as the other side of XML Encryption.
//
//   encrypt <in.xml> <out.xml> <cert.der> <data URI> <transport URI> <digest URI|-> <MGF URI|-> inline|retrieved
//     encrypts the first element named Card with a new session key wrapped for the
//     certificate's key: in the EncryptedData's KeyInfo (inline), or in an
//     EncryptedKey at the top of the document that a RetrievalMethod names
//     (retrieved, the layout Santuario and .NET use for shared keys)
//   decrypt <in.xml> <out.xml> <PKCS #8 key.der>
//     decrypts the first EncryptedData with the key its EncryptedKey wraps
// Exit 0 done, 1 failed (the reason on stderr).
import java.io.File;
import java.io.FileOutputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.security.Key;
import java.security.KeyFactory;
import java.security.cert.CertificateFactory;
import java.security.cert.X509Certificate;
import java.security.spec.PKCS8EncodedKeySpec;

import javax.crypto.KeyGenerator;
import javax.xml.parsers.DocumentBuilderFactory;

import org.apache.xml.security.Init;
import org.apache.xml.security.encryption.EncryptedData;
import org.apache.xml.security.encryption.EncryptedKey;
import org.apache.xml.security.encryption.XMLCipher;
import org.apache.xml.security.keys.KeyInfo;
import org.apache.xml.security.keys.content.RetrievalMethod;
import org.apache.xml.security.utils.XMLUtils;
import org.w3c.dom.Document;
import org.w3c.dom.Element;

public final class XencSantuario {
    static final String XENC = "http://www.w3.org/2001/04/xmlenc#";

    private XencSantuario() {}

    static Document parse(String path) throws Exception {
        DocumentBuilderFactory factory = DocumentBuilderFactory.newInstance();
        factory.setNamespaceAware(true);
        return factory.newDocumentBuilder().parse(new File(path));
    }

    static void write(Document doc, String path) throws Exception {
        try (OutputStream os = new FileOutputStream(path)) {
            XMLUtils.outputDOM(doc, os);
        }
    }

    static Key sessionKey(String dataUri) throws Exception {
        if (dataUri.endsWith("tripledes-cbc")) {
            return KeyGenerator.getInstance("DESede").generateKey();
        }
        KeyGenerator generator = KeyGenerator.getInstance("AES");
        generator.init(dataUri.contains("128") ? 128 : dataUri.contains("192") ? 192 : 256);
        return generator.generateKey();
    }

    static String orNull(String arg) {
        return arg.equals("-") ? null : arg;
    }

    static void encrypt(String[] a) throws Exception {
        Document doc = parse(a[1]);
        X509Certificate cert = (X509Certificate) CertificateFactory.getInstance("X.509")
            .generateCertificate(new java.io.ByteArrayInputStream(Files.readAllBytes(new File(a[3]).toPath())));
        Key session = sessionKey(a[4]);
        XMLCipher keyCipher = XMLCipher.getInstance(a[5], null, orNull(a[6]));
        keyCipher.init(XMLCipher.WRAP_MODE, cert.getPublicKey());
        EncryptedKey encryptedKey = keyCipher.encryptKey(doc, session, orNull(a[7]), null);
        XMLCipher dataCipher = XMLCipher.getInstance(a[4]);
        dataCipher.init(XMLCipher.ENCRYPT_MODE, session);
        EncryptedData data = dataCipher.getEncryptedData();
        KeyInfo keyInfo = new KeyInfo(doc);
        if (a[8].equals("retrieved")) {
            encryptedKey.setId("EK-1");
            Element root = doc.getDocumentElement();
            root.insertBefore(keyCipher.martial(doc, encryptedKey), root.getFirstChild());
            keyInfo.add(new RetrievalMethod(doc, "#EK-1", null, XENC + "EncryptedKey"));
        } else {
            keyInfo.add(encryptedKey);
        }
        data.setKeyInfo(keyInfo);
        Element card = (Element) doc.getElementsByTagNameNS("*", "Card").item(0);
        dataCipher.doFinal(doc, card, false);
        write(doc, a[2]);
    }

    static void decrypt(String[] a) throws Exception {
        Document doc = parse(a[1]);
        Key key = KeyFactory.getInstance("RSA")
            .generatePrivate(new PKCS8EncodedKeySpec(Files.readAllBytes(new File(a[3]).toPath())));
        Element data = (Element) doc.getElementsByTagNameNS(XENC, "EncryptedData").item(0);
        XMLCipher cipher = XMLCipher.getInstance();
        cipher.init(XMLCipher.DECRYPT_MODE, null);
        cipher.setKEK(key);
        cipher.doFinal(doc, data);
        write(doc, a[2]);
    }

    public static void main(String[] args) {
        Init.init();
        try {
            if (args.length == 9 && args[0].equals("encrypt")) {
                encrypt(args);
            } else if (args.length == 4 && args[0].equals("decrypt")) {
                decrypt(args);
            } else {
                System.err.println("usage: encrypt <in> <out> <cert> <data> <transport> <digest|-> <mgf|-> inline|retrieved"
                                   + " | decrypt <in> <out> <pkcs8-key>");
                System.exit(64);
            }
        } catch (Exception e) {
            System.err.println("failed: " + e);
            System.exit(1);
        }
    }
}
