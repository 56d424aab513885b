package kr.vqxml;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Base64;
import java.util.HexFormat;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;

import org.junit.jupiter.api.Test;

import kr.vqxml.Algorithms.Canonicalization;
import kr.vqxml.Algorithms.Cipher;
import kr.vqxml.Algorithms.Digest;
import kr.vqxml.Algorithms.KeyTransport;
import kr.vqxml.Algorithms.Signature;
import kr.vqxml.Algorithms.SoapCanonicalization;
import kr.vqxml.Algorithms.Target;

/** Every family through the binding with the test PKI, tampering, threads and many handles. */
class BindingTest {
    static byte[] data(String name) {
        String dir = System.getProperty("vqxml.testdata");
        Path path = Paths.get(dir == null ? "tests/data" : dir, name);
        try {
            return Files.readAllBytes(path);
        } catch (IOException e) {
            throw new AssertionError("test input missing: " + path, e);
        }
    }

    static final byte[] INVOICE = data("taxinvoice/kec-sample-unsigned.xml");
    static final byte[] RSA_CERT = data("testpki/ee-rsa.crt.der"), RSA_KEY = data("testpki/ee-rsa.key.der");
    static final byte[] B_CERT = data("testpki/ee-rsa-b.crt.der"), B_KEY = data("testpki/ee-rsa-b.key.der");

    static byte[] replace(byte[] doc, String from, String to) {
        String text = new String(doc, StandardCharsets.UTF_8);
        assertTrue(text.contains(from), from);
        return text.replace(from, to).getBytes(StandardCharsets.UTF_8);
    }

    static String text(byte[] doc) {
        return new String(doc, StandardCharsets.UTF_8);
    }

    static int status(ThrowingCall call) {
        VqxmlException e = assertThrows(VqxmlException.class, call::run);
        assertTrue(e.getMessage().contains(" > ") || e.status() == 10104, e.getMessage());
        return e.status();
    }

    interface ThrowingCall {
        void run() throws Exception;
    }

    @Test
    void taxInvoiceSignedByTheRecipeVerifiesAndChangesAreCaught() throws Exception {
        byte[] signed;
        try (XmlSignature s = new XmlSignature()) {
            signed = s.signTaxInvoice(INVOICE, RSA_CERT, RSA_KEY);
        }
        // The recipe leaves ExchangedDocument out: changing it still verifies; the amount does not.
        byte[] exchanged = replace(signed, "<IssueDateTime>20090914220351", "<IssueDateTime>20090915000000");
        byte[] forged = replace(signed, "<GrandTotalAmount>110000000", "<GrandTotalAmount>190000000");
        try (XmlSignature v = new XmlSignature()) {
            for (byte[] good : List.of(signed, exchanged)) {
                v.loadSigned(good);
                v.verify();
                assertEquals(XmlSignature.CanonicalReading.SANTUARIO, v.canonicalReading());
                assertArrayEquals(RSA_CERT, v.certificate());
                assertFalse(text(v.document()).contains("Signature"));
            }
            v.loadSigned(forged);
            VqxmlException e = assertThrows(VqxmlException.class, v::verify);
            assertEquals(VqxmlException.NOT_VERIFIED, e.status());
            // A test certificate does not lead to a Korean root.
            v.loadSigned(signed);
            v.verify();
            assertEquals(12020, status(() -> v.verifySignerCertificate(null, null)));
            assertEquals(10105, status(() -> v.loadSigned("<unclosed>".getBytes())));
            assertEquals(10200, status(v::verify));
        }
    }

    @Test
    void kcdsaFromAnNpkiKeyHmacAndCertificates() throws Exception {
        try (PrivateKeys keys = new PrivateKeys(); XmlSignature s = new XmlSignature();
             XmlSignature v = new XmlSignature()) {
            byte[] npki = data("testpki/ee-kcdsa1024.signPri.key");
            byte[] random = Base64.getDecoder().decode(keys.random("vqxml-test", npki, null));
            assertEquals(text(data("testpki/ee-kcdsa1024.random.hex")).trim(), HexFormat.of().formatHex(random));
            assertEquals(12011, status(() -> keys.decrypt("wrong", npki)));
            byte[] key = keys.decrypt("vqxml-test", npki);

            s.load(INVOICE);
            s.signatureMethod(Signature.KCDSA_SHA1, Canonicalization.EXC_C14N);
            s.addReference(null, Digest.SHA1, Canonicalization.NONE, XmlSignature.ENVELOPED_XPATH);
            assertThrows(IllegalArgumentException.class, () -> s.setKeyName("김철수\0cut"));
            s.setKeyName("김철수");
            s.setSigner(data("testpki/ee-kcdsa1024.crt.der"), key);
            v.loadSigned(s.sign());
            v.verify();
            assertEquals("김철수", v.keyName());

            byte[] secret = "a shared secret of 32 bytes!!!!!".getBytes();
            s.load(null);
            s.signatureMethod(Signature.HMAC_SHA1, Canonicalization.C14N);
            s.appendObject("payload", "<Note>enveloping</Note>".getBytes());
            s.addReference("#payload", Digest.SHA256, Canonicalization.NONE, null);
            s.setHmacKey(secret);
            byte[] signed = s.sign();
            v.loadSigned(signed);
            v.setHmacKey(secret);
            v.verify();
            assertTrue(text(v.document()).endsWith(">enveloping</Note>"));
            v.loadSigned(signed);
            v.setHmacKey("another secret of 32 bytes!!!!!!".getBytes());
            assertEquals(VqxmlException.NOT_VERIFIED, status(v::verify));
        }
        try (Certificates c = new Certificates()) {
            // The refusal names the certificate, its Korean name sent in EUC-KR.
            VqxmlException refused = assertThrows(VqxmlException.class, () -> c.verify(RSA_CERT));
            assertEquals(12011, refused.status());
            assertTrue(refused.getMessage().contains("(CN=홍길동()0012345RSA,OU=개발팀"), refused.getMessage());
            assertEquals(12020, status(() -> c.verifyChain(RSA_CERT, data("testpki/ca-rsa.crt.pem"), null)));
        }
    }

    @Test
    void encryptedForOneRecipientOpensForItAlone() throws Exception {
        byte[] encrypted;
        try (XmlEncryption e = new XmlEncryption()) {
            e.load(INVOICE);
            e.setSymmetricAlgorithm(Cipher.SEED);
            e.encryptElement(null, Target.ELEMENT);
            e.nameIssuerSerial();
            e.addRecipient(B_CERT, KeyTransport.RSA_OAEP);
            encrypted = e.encrypt();
        }
        assertFalse(text(encrypted).contains("GrandTotalAmount"));
        try (XmlEncryption d = new XmlEncryption()) {
            d.loadEncrypted(encrypted);
            assertTrue(d.nextEncryptedKey());
            assertEquals("4098", d.serialNumber());
            assertEquals(10310, status(() -> d.unwrapKey(RSA_CERT, RSA_KEY)));
            d.unwrapKey(B_CERT, B_KEY);
            assertTrue(text(d.decrypt()).contains("<GrandTotalAmount>110000000<"));
            d.loadEncrypted(replace(encrypted, "CipherValue>", "CipherValue>AAAA"));
            d.nextEncryptedKey();
            assertTrue(status(() -> {
                d.unwrapKey(B_CERT, B_KEY);
                d.decrypt();
            }) != 0);
        }
    }

    @Test
    void soapMessageSignedEncryptedAndProcessed() throws Exception {
        byte[] envelope = data("ebxml/envelope.xml"), secured;
        try (SoapSecurity s = new SoapSecurity()) {
            s.load(envelope);
            s.signatureMethod(Signature.RSA_SHA256, SoapCanonicalization.EXC_C14N);
            s.addReference(null, Digest.SHA256, Canonicalization.EXC_C14N, null);
            s.setSigner(RSA_CERT, RSA_KEY);
            byte[] signed = s.sign();
            s.load(signed);
            s.setSymmetricAlgorithm(Cipher.ARIA);
            s.encryptElement(null, Target.CONTENT);
            s.nameIssuerSerial();
            s.addRecipient(B_CERT, KeyTransport.RSA_OAEP);
            secured = s.encrypt();
        }
        try (SoapSecurity r = new SoapSecurity()) {
            r.loadSecured(secured);
            assertTrue(r.isSigned());
            assertArrayEquals(RSA_CERT, r.certificate());
            assertTrue(r.nextEncryptedKey());
            r.unwrapKey(B_CERT, B_KEY);
            assertTrue(text(r.process()).contains("cid:order@example.kr"));
            assertEquals(List.of("/{http://schemas.xmlsoap.org/soap/envelope/}Envelope"
                                 + "/{http://schemas.xmlsoap.org/soap/envelope/}Body"), r.signedParts());
        }
        try (SoapSecurity r = new SoapSecurity()) {
            r.loadSecured(secured);
            r.isSigned();
            assertTrue(r.nextEncryptedKey());
            assertEquals(10511, status(r::process));
            assertEquals(10401, status(() -> r.load("<a/>".getBytes())));
        }
    }

    static byte[] ebxmlPackage(byte[] envelope, byte[] invoice) {
        String b = "----=_vqxml_java";
        String head = "Content-Type: multipart/related; type=\"text/xml\"; boundary=\"" + b
            + "\"; start=\"<envelope@vqxml.example>\"\r\nMIME-Version: 1.0\r\n\r\n--" + b
            + "\r\nContent-Type: text/xml; charset=UTF-8\r\nContent-ID: <envelope@vqxml.example>\r\n\r\n";
        String middle = "\r\n--" + b + "\r\nContent-Type: text/xml; charset=UTF-8\r\n"
            + "Content-ID: <order@example.kr>\r\n\r\n";
        return (head + text(envelope) + middle + text(invoice) + "\r\n--" + b + "--\r\n")
            .getBytes(StandardCharsets.UTF_8);
    }

    @Test
    void ebxmlPackageSignedWithItsAttachment() throws Exception {
        byte[] signed;
        try (EbXml s = new EbXml()) {
            s.load(ebxmlPackage(data("ebxml/envelope.xml"), INVOICE));
            s.signatureMethod(Signature.RSA_SHA256, Canonicalization.EXC_C14N);
            s.addReference(null, Digest.SHA256, Canonicalization.NONE, XmlSignature.ENVELOPED_XPATH);
            s.nameSubject();
            s.nameIssuerSerial();
            s.setSigner(RSA_CERT, RSA_KEY);
            signed = s.sign();
        }
        try (EbXml v = new EbXml()) {
            v.loadSigned(signed);
            v.verify();
            assertEquals("4097", v.serialNumber());
            assertTrue(v.subjectName().contains("홍길동"), v.subjectName());
            assertTrue(v.issuerName().contains("VQXML Test Root CA"), v.issuerName());
            assertArrayEquals(RSA_CERT, v.certificate());
            v.loadSigned(replace(signed, "<GrandTotalAmount>110000000", "<GrandTotalAmount>190000000"));
            assertEquals(VqxmlException.NOT_VERIFIED, status(v::verify));
            assertEquals(10104, status(() -> v.loadSigned(new byte[0])));
        }
    }

    static {
        System.load(System.getProperty("vqxml.test.malloc"));
    }

    /** What the process holds from malloc (src/test/c/malloc_bytes.c). */
    static native long mallocBytes();

    /**
     * Every copy across the boundary is freed: over rounds of signing, verifying, encrypting,
     * decrypting, getters and failures, malloc does not grow in every stretch of 50 rounds, as
     * a leak of even one input per round would make it (the JVM's own use comes and goes).
     */
    @Test
    void roundsAcrossTheBoundaryLeaveNothingBehind() throws Exception {
        byte[] forged = null;
        List<Long> marks = new ArrayList<>();
        try (Certificates keeper = new Certificates()) {
            for (int round = 0; round <= 400; ++round) {
                if (round % 50 == 0 && round >= 100)
                    marks.add(mallocBytes());
                try (XmlSignature s = new XmlSignature(); XmlSignature v = new XmlSignature();
                     XmlEncryption e = new XmlEncryption(); XmlEncryption d = new XmlEncryption()) {
                    byte[] signed = s.signTaxInvoice(INVOICE, RSA_CERT, RSA_KEY);
                    forged = forged != null ? forged : replace(signed, "<GrandTotalAmount>1", "<GrandTotalAmount>2");
                    v.loadSigned(signed);
                    v.verify();
                    v.certificate();
                    v.document();
                    v.loadSigned(forged);
                    assertThrows(VqxmlException.class, v::verify);
                    e.load(INVOICE);
                    e.setSymmetricAlgorithm(Cipher.SEED);
                    e.encryptElement(null, Target.ELEMENT);
                    e.addRecipient(RSA_CERT, KeyTransport.RSA_OAEP);
                    d.loadEncrypted(e.encrypt());
                    d.nextEncryptedKey();
                    d.unwrapKey(RSA_CERT, RSA_KEY);
                    d.decrypt();
                }
            }
        }
        long least = Long.MAX_VALUE;
        for (int i = 1; i < marks.size(); ++i)
            least = Math.min(least, marks.get(i) - marks.get(i - 1));
        assertTrue(least < 64 << 10, "malloc grew by at least " + least + " bytes in every 50 rounds");
    }

    @Test
    void handlesOnManyThreadsAndThousandsOfHandles() throws Exception {
        ExecutorService pool = Executors.newFixedThreadPool(8);
        List<Future<Integer>> results = new ArrayList<>();
        for (int t = 0; t < 8; ++t) {
            final int thread = t;
            results.add(pool.submit(() -> {
                int verified = 0;
                for (int i = 0; i < 25; ++i) {
                    try (XmlSignature s = new XmlSignature(); XmlSignature v = new XmlSignature()) {
                        byte[] signed = s.signTaxInvoice(INVOICE, RSA_CERT, RSA_KEY);
                        v.loadSigned((i + thread) % 2 == 0 ? signed
                                     : replace(signed, "<GrandTotalAmount>1", "<GrandTotalAmount>2"));
                        try {
                            v.verify();
                            verified++;
                        } catch (VqxmlException e) {
                            assertEquals(VqxmlException.NOT_VERIFIED, e.status());
                        }
                    }
                }
                return verified;
            }));
        }
        int verified = 0;
        for (Future<Integer> r : results)
            verified += r.get();
        pool.shutdown();
        assertEquals(100, verified);

        // Handles finished by close and by the garbage collector (one kept open, so that the
        // engines stay up), and a closed one refused.
        try (Certificates keeper = new Certificates()) {
            for (int i = 0; i < 5000; ++i) {
                try (XmlEncryption e = new XmlEncryption()) {
                    assertEquals(10106, status(() -> e.encryptElement(null, Target.ELEMENT)));
                }
                new Certificates().version();
            }
        }
        Handle closed = new Certificates();
        assertTrue(closed.version().startsWith("V"));
        closed.close();
        closed.close();
        assertThrows(IllegalStateException.class, closed::version);
        try (XmlSignature s = new XmlSignature()) {
            assertNull(s.document());
        }
    }
}
