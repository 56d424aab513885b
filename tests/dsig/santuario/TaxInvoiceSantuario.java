// Apache Santuario as the e-tax-invoice peer: signs an invoice the way the national
// recipe prescribes, or verifies one against that recipe.
//
//   sign <unsigned.xml> <signed.xml> <cert> <PKCS #8 key>
//   verify <signed.xml>   exit 0 valid, 1 signature or digest wrong, 2 not the recipe, 3 unreadable
import java.io.ByteArrayInputStream;
import java.io.File;
import java.io.FileOutputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.security.KeyFactory;
import java.security.PrivateKey;
import java.security.cert.CertificateFactory;
import java.security.cert.X509Certificate;
import java.security.interfaces.RSAPublicKey;
import java.security.spec.PKCS8EncodedKeySpec;
import java.util.Arrays;
import java.util.List;

import javax.xml.parsers.DocumentBuilderFactory;

import org.apache.xml.security.Init;
import org.apache.xml.security.c14n.Canonicalizer;
import org.apache.xml.security.signature.Reference;
import org.apache.xml.security.signature.SignedInfo;
import org.apache.xml.security.signature.XMLSignature;
import org.apache.xml.security.transforms.Transforms;
import org.apache.xml.security.utils.XMLUtils;
import org.w3c.dom.Document;
import org.w3c.dom.Element;
import org.w3c.dom.Node;
import org.w3c.dom.NodeList;

public final class TaxInvoiceSantuario {
    static final String TAX = "urn:kr:or:kec:standard:Tax:ReusableAggregateBusinessInformationEntitySchemaModule:1:0";
    static final String DS = "http://www.w3.org/2000/09/xmldsig#";
    static final String SHA256 = "http://www.w3.org/2001/04/xmlenc#sha256";
    static final String EXPRESSION = "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument']"
                                     + " | ancestor-or-self::ds:Signature)";

    private TaxInvoiceSantuario() {}

    public static void main(String[] args) throws Exception {
        Init.init();
        if (args.length == 5 && args[0].equals("sign")) {
            sign(args[1], args[2], args[3], args[4]);
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
        System.err.println("usage: sign <in> <out> <cert> <pkcs8-key> | verify <in>");
        System.exit(64);
    }

    static Document parse(String path) throws Exception {
        DocumentBuilderFactory factory = DocumentBuilderFactory.newInstance();
        factory.setNamespaceAware(true);
        factory.setFeature("http://apache.org/xml/features/disallow-doctype-decl", true);
        return factory.newDocumentBuilder().parse(new File(path));
    }

    // The ds:XPath element carries no xmlns:ds of its own: "ds" comes from ds:Signature,
    // as in the invoices Santuario users send.
    static void sign(String in, String out, String certPath, String keyPath) throws Exception {
        Document doc = parse(in);
        X509Certificate cert = (X509Certificate) CertificateFactory.getInstance("X.509")
            .generateCertificate(new ByteArrayInputStream(Files.readAllBytes(new File(certPath).toPath())));
        PrivateKey key = KeyFactory.getInstance("RSA")
            .generatePrivate(new PKCS8EncodedKeySpec(Files.readAllBytes(new File(keyPath).toPath())));

        XMLSignature signature = new XMLSignature(doc, "", XMLSignature.ALGO_ID_SIGNATURE_RSA_SHA256,
                                                  Canonicalizer.ALGO_ID_C14N_OMIT_COMMENTS);
        Node anchor = doc.getElementsByTagNameNS(TAX, "TaxInvoiceDocument").item(0);
        anchor.getParentNode().insertBefore(signature.getElement(), anchor);

        Transforms transforms = new Transforms(doc);
        transforms.addTransform(Transforms.TRANSFORM_C14N_OMIT_COMMENTS);
        Element xpath = doc.createElementNS(DS, "ds:XPath");
        xpath.appendChild(doc.createTextNode(EXPRESSION));
        transforms.addTransform(Transforms.TRANSFORM_XPATH, xpath);
        signature.addDocument("", transforms, SHA256);
        signature.addKeyInfo(cert);
        signature.sign(key);

        try (OutputStream os = new FileOutputStream(out)) {
            XMLUtils.outputDOMc14nWithComments(doc, os);
        }
    }

    static int verify(String path) throws Exception {
        Document doc = parse(path);
        NodeList signatures = doc.getElementsByTagNameNS(DS, "Signature");
        if (signatures.getLength() != 1)
            return notRecipe(signatures.getLength() + " Signature elements");
        XMLSignature signature = new XMLSignature((Element) signatures.item(0), "", true);
        X509Certificate cert = signature.getKeyInfo() == null ? null : signature.getKeyInfo().getX509Certificate();
        String shape = recipeMismatch(signature, cert);
        if (shape != null)
            return notRecipe(shape);
        // checkSignatureValue checks the reference digests after SignedInfo.
        boolean signatureValid = signature.checkSignatureValue(cert);
        boolean digestValid = signature.getSignedInfo().getVerificationResult(0);
        if (signatureValid && digestValid)
            return 0;
        System.err.println("invalid: signature value " + signatureValid + ", reference digest " + digestValid);
        return 1;
    }

    static int notRecipe(String why) {
        System.err.println("not the recipe: " + why);
        return 2;
    }

    // What the national recipe fixes, beyond the signature verifying; null when all holds.
    static String recipeMismatch(XMLSignature signature, X509Certificate cert) throws Exception {
        if (cert == null)
            return "no X509Certificate in KeyInfo";
        if (((RSAPublicKey) cert.getPublicKey()).getModulus().bitLength() != 2048)
            return "the key is not RSA-2048";
        Element element = signature.getElement();
        Node parent = element.getParentNode();
        if (!(parent instanceof Element) || !TAX.equals(parent.getNamespaceURI())
            || !"TaxInvoice".equals(parent.getLocalName()) || parent != element.getOwnerDocument().getDocumentElement())
            return "Signature is not a child of the TaxInvoice root";
        Node next = element.getNextSibling();
        while (next != null && next.getNodeType() != Node.ELEMENT_NODE)
            next = next.getNextSibling();
        if (next == null || !"TaxInvoiceDocument".equals(next.getLocalName()))
            return "Signature is not directly before TaxInvoiceDocument";
        SignedInfo info = signature.getSignedInfo();
        if (!Canonicalizer.ALGO_ID_C14N_OMIT_COMMENTS.equals(info.getCanonicalizationMethodURI()))
            return "SignedInfo canonicalization " + info.getCanonicalizationMethodURI();
        if (!XMLSignature.ALGO_ID_SIGNATURE_RSA_SHA256.equals(info.getSignatureMethodURI()))
            return "signature method " + info.getSignatureMethodURI();
        if (info.getLength() != 1)
            return info.getLength() + " references";
        Reference reference = info.item(0);
        if (!"".equals(reference.getURI()))
            return "reference URI \"" + reference.getURI() + "\"";
        if (!SHA256.equals(reference.getMessageDigestAlgorithm().getAlgorithmURI()))
            return "digest " + reference.getMessageDigestAlgorithm().getAlgorithmURI();
        Transforms transforms = reference.getTransforms();
        String[] uris = new String[transforms == null ? 0 : transforms.getLength()];
        for (int i = 0; i < uris.length; i++)
            uris[i] = transforms.item(i).getURI();
        List<String> expected = Arrays.asList(Transforms.TRANSFORM_C14N_OMIT_COMMENTS, Transforms.TRANSFORM_XPATH);
        if (!expected.equals(Arrays.asList(uris)))
            return "transforms " + Arrays.toString(uris);
        NodeList xpath = transforms.item(1).getElement().getElementsByTagNameNS(DS, "XPath");
        if (xpath.getLength() != 1 || !EXPRESSION.equals(xpath.item(0).getTextContent()))
            return "XPath expression differs";
        return null;
    }
}
