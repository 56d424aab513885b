// Apache Santuario as the peer of the XML Signature 1.1 algorithms: signs an
// enveloped signature with any signature method, canonicalization and digest it
// knows (BouncyCastle added for RSA-PSS), verifies the first signature of a
// document, or writes the canonical form of one element's subtree.
//
//   sign <in.xml> <out.xml> <signature URI> <SignedInfo c14n URI> <digest URI> <reference c14n URI> <cert> <PKCS #8 key>
//   verify <signed.xml>                   exit 0 valid, 1 invalid, 3 unreadable
//   c14n <in.xml> <c14n URI> <Id>         the canonical form of the element with that Id, on stdout
import java.io.ByteArrayInputStream;
import java.io.File;
import java.io.FileOutputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.security.KeyFactory;
import java.security.PrivateKey;
import java.security.Security;
import java.security.cert.CertificateFactory;
import java.security.cert.X509Certificate;
import java.security.spec.PKCS8EncodedKeySpec;

import javax.xml.parsers.DocumentBuilderFactory;

import org.apache.xml.security.Init;
import org.apache.xml.security.c14n.Canonicalizer;
import org.apache.xml.security.signature.XMLSignature;
import org.apache.xml.security.transforms.Transforms;
import org.apache.xml.security.utils.XMLUtils;
import org.bouncycastle.jce.provider.BouncyCastleProvider;
import org.w3c.dom.Document;
import org.w3c.dom.Element;
import org.w3c.dom.NodeList;

public final class SignatureSantuario {
    static final String DS = "http://www.w3.org/2000/09/xmldsig#";

    private SignatureSantuario() {}

    public static void main(String[] args) throws Exception {
        Security.addProvider(new BouncyCastleProvider());
        Init.init();
        if (args.length == 9 && args[0].equals("sign")) {
            sign(args);
            return;
        }
        if (args.length == 2 && args[0].equals("verify")) {
            int status;
            try {
                status = verify(args[1]);
            } catch (Exception e) {
                System.err.println("cannot check: " + e);
                status = 3;
            }
            System.exit(status);
        }
        if (args.length == 4 && args[0].equals("c14n")) {
            Document doc = parse(args[1]);
            Element target = byId(doc.getDocumentElement(), args[3]);
            System.out.write(Canonicalizer.getInstance(args[2]).canonicalizeSubtree(target));
            System.out.flush();
            return;
        }
        System.err.println("usage: sign <in> <out> <sig> <c14n> <digest> <ref-c14n> <cert> <pkcs8-key>"
                           + " | verify <in> | c14n <in> <c14n> <id>");
        System.exit(64);
    }

    static Element byId(Element e, String id) {
        if (id.equals(e.getAttribute("Id")))
            return e;
        for (org.w3c.dom.Node n = e.getFirstChild(); n != null; n = n.getNextSibling())
            if (n instanceof Element) {
                Element found = byId((Element) n, id);
                if (found != null)
                    return found;
            }
        return null;
    }

    static Document parse(String path) throws Exception {
        DocumentBuilderFactory factory = DocumentBuilderFactory.newInstance();
        factory.setNamespaceAware(true);
        factory.setFeature("http://apache.org/xml/features/disallow-doctype-decl", true);
        return factory.newDocumentBuilder().parse(new File(path));
    }

    static void sign(String[] a) throws Exception {
        Document doc = parse(a[1]);
        X509Certificate cert = (X509Certificate) CertificateFactory.getInstance("X.509")
            .generateCertificate(new ByteArrayInputStream(Files.readAllBytes(new File(a[7]).toPath())));
        PrivateKey key = KeyFactory.getInstance(cert.getPublicKey().getAlgorithm())
            .generatePrivate(new PKCS8EncodedKeySpec(Files.readAllBytes(new File(a[8]).toPath())));
        XMLSignature signature = new XMLSignature(doc, "", a[3], a[4]);
        doc.getDocumentElement().appendChild(signature.getElement());
        Transforms transforms = new Transforms(doc);
        transforms.addTransform(Transforms.TRANSFORM_ENVELOPED_SIGNATURE);
        transforms.addTransform(a[6]);
        signature.addDocument("", transforms, a[5]);
        signature.addKeyInfo(cert);
        signature.sign(key);
        try (OutputStream os = new FileOutputStream(a[2])) {
            XMLUtils.outputDOM(doc, os);
        }
    }

    static int verify(String path) throws Exception {
        Document doc = parse(path);
        NodeList signatures = doc.getElementsByTagNameNS(DS, "Signature");
        if (signatures.getLength() == 0)
            throw new IllegalArgumentException("no Signature");
        XMLSignature signature = new XMLSignature((Element) signatures.item(0), "", true);
        X509Certificate cert = signature.getKeyInfo().getX509Certificate();
        if (signature.checkSignatureValue(cert))
            return 0;
        System.err.println("invalid");
        return 1;
    }
}
