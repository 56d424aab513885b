// Every family through the binding with the test PKI, tampering, threads and many handles.
using System;
using System.IO;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using NUnit.Framework;
using Vqxml;

[TestFixture]
public class BindingTests
{
    static readonly string DataDir = Environment.GetEnvironmentVariable("VQXML_TEST_DATA") ?? "tests/data";

    static byte[] Data(string name)
    {
        string path = Path.Combine(DataDir, name);
        if (!File.Exists(path))
            Assert.Fail("test input missing: " + path);
        return File.ReadAllBytes(path);
    }

    static readonly byte[] Invoice = Data("taxinvoice/kec-sample-unsigned.xml");
    static readonly byte[] RsaCert = Data("testpki/ee-rsa.crt.der"), RsaKey = Data("testpki/ee-rsa.key.der");
    static readonly byte[] BCert = Data("testpki/ee-rsa-b.crt.der"), BKey = Data("testpki/ee-rsa-b.key.der");
    const string Amount = "<GrandTotalAmount>110000000", ForgedAmount = "<GrandTotalAmount>190000000";

    static string Text(byte[] doc) { return Encoding.UTF8.GetString(doc); }

    static byte[] Replace(byte[] doc, string from, string to)
    {
        StringAssert.Contains(from, Text(doc));
        return Encoding.UTF8.GetBytes(Text(doc).Replace(from, to));
    }

    static int Status(TestDelegate call)
    {
        var e = Assert.Throws<VqxmlException>(call);
        Assert.IsTrue(e.Status == 10104 || e.Text.Contains(" > "), e.Message);
        return e.Status;
    }

    [Test]
    public void TaxInvoiceSignedByTheRecipeVerifiesAndChangesAreCaught()
    {
        byte[] signed;
        using (var s = new XmlSignature())
            signed = s.SignTaxInvoice(Invoice, RsaCert, RsaKey);
        // The recipe leaves ExchangedDocument out: changing it still verifies; the amount does not.
        byte[] exchanged = Replace(signed, "<IssueDateTime>20090914220351", "<IssueDateTime>20090915000000");
        using (var v = new XmlSignature())
        {
            foreach (byte[] good in new[] { signed, exchanged })
            {
                v.LoadSigned(good);
                v.Verify();
                Assert.AreEqual(CanonicalReading.Santuario, v.CanonicalReading);
                Assert.AreEqual(RsaCert, v.Certificate);
                StringAssert.DoesNotContain("Signature", Text(v.Document()));
            }
            v.LoadSigned(Replace(signed, Amount, ForgedAmount));
            Assert.AreEqual(VqxmlException.NotVerified, Status(v.Verify));
            v.LoadSigned(signed);
            v.Verify();
            Assert.AreEqual(12020, Status(() => v.VerifySignerCertificate(null, null)));  // a test certificate
            Assert.AreEqual(10105, Status(() => v.LoadSigned(Encoding.ASCII.GetBytes("<unclosed>"))));
            Assert.AreEqual(10200, Status(v.Verify));
        }
    }

    [Test]
    public void KcdsaFromAnNpkiKeyHmacAndCertificates()
    {
        byte[] npki = Data("testpki/ee-kcdsa1024.signPri.key");
        using (var keys = new PrivateKeys())
        using (var s = new XmlSignature())
        using (var v = new XmlSignature())
        {
            byte[] random = Convert.FromBase64String(keys.Random("vqxml-test", npki, null));
            Assert.AreEqual(Text(Data("testpki/ee-kcdsa1024.random.hex")).Trim(),
                            BitConverter.ToString(random).Replace("-", "").ToLowerInvariant());
            Assert.AreEqual(12011, Status(() => keys.Decrypt("wrong", npki)));
            byte[] key = keys.Decrypt("vqxml-test", npki);

            s.Load(Invoice);
            s.SignatureMethod(SignatureAlgorithm.KcdsaSha1, Canonicalization.ExcC14n);
            s.AddReference(null, Digest.Sha1, Canonicalization.None, XmlSignature.EnvelopedXPath);
            Assert.Throws<ArgumentException>(() => s.SetKeyName("김철수\0cut"));
            s.SetKeyName("김철수");
            s.SetSigner(Data("testpki/ee-kcdsa1024.crt.der"), key);
            v.LoadSigned(s.Sign());
            v.Verify();
            Assert.AreEqual("김철수", v.KeyName);

            byte[] secret = Encoding.ASCII.GetBytes("a shared secret of 32 bytes!!!!!");
            s.Load(null);
            s.SignatureMethod(SignatureAlgorithm.HmacSha1, Canonicalization.C14n);
            s.AppendObject("payload", Encoding.ASCII.GetBytes("<Note>enveloping</Note>"));
            s.AddReference("#payload", Digest.Sha256, Canonicalization.None, null);
            s.SetHmacKey(secret);
            byte[] signedHmac = s.Sign();
            v.LoadSigned(signedHmac);
            v.SetHmacKey(secret);
            v.Verify();
            StringAssert.EndsWith(">enveloping</Note>", Text(v.Document()));
            v.LoadSigned(signedHmac);
            v.SetHmacKey(Encoding.ASCII.GetBytes("another secret of 32 bytes!!!!!!"));
            Assert.AreEqual(VqxmlException.NotVerified, Status(v.Verify));
        }
        using (var c = new Certificates())
        {
            // The refusal names the certificate, its Korean name sent in EUC-KR.
            var refused = Assert.Throws<VqxmlException>(() => c.Verify(RsaCert));
            Assert.AreEqual(12011, refused.Status);
            StringAssert.Contains("(CN=홍길동()0012345RSA,OU=개발팀", refused.Text);
            Assert.AreEqual(12020, Status(() => c.VerifyChain(RsaCert, Data("testpki/ca-rsa.crt.pem"), null)));
        }
    }

    [Test]
    public void EncryptedForOneRecipientOpensForItAlone()
    {
        byte[] encrypted;
        using (var e = new XmlEncryption())
        {
            e.Load(Invoice);
            e.SetSymmetricAlgorithm(Cipher.Seed);
            e.EncryptElement(null, EncryptionTarget.Element);
            e.NameIssuerSerial();
            e.AddRecipient(BCert, KeyTransport.RsaOaep);
            encrypted = e.Encrypt();
        }
        StringAssert.DoesNotContain("GrandTotalAmount", Text(encrypted));
        using (var d = new XmlEncryption())
        {
            d.LoadEncrypted(encrypted);
            Assert.IsTrue(d.NextEncryptedKey());
            Assert.AreEqual("4098", d.SerialNumber);
            Assert.AreEqual(10310, Status(() => d.UnwrapKey(RsaCert, RsaKey)));
            d.UnwrapKey(BCert, BKey);
            StringAssert.Contains(Amount + "<", Text(d.Decrypt()));
            d.LoadEncrypted(Replace(encrypted, "CipherValue>", "CipherValue>AAAA"));
            d.NextEncryptedKey();
            Assert.Throws<VqxmlException>(() => { d.UnwrapKey(BCert, BKey); d.Decrypt(); });
        }
    }

    [Test]
    public void SoapMessageSignedEncryptedAndProcessed()
    {
        byte[] secured;
        using (var s = new SoapSecurity())
        {
            s.Load(Data("ebxml/envelope.xml"));
            s.SignatureMethod(SignatureAlgorithm.RsaSha256, SoapCanonicalization.ExcC14n);
            s.AddReference(null, Digest.Sha256, Canonicalization.ExcC14n, null);
            s.SetSigner(RsaCert, RsaKey);
            s.Load(s.Sign());
            s.SetSymmetricAlgorithm(Cipher.Aria);
            s.EncryptElement(null, EncryptionTarget.Content);
            s.NameIssuerSerial();
            s.AddRecipient(BCert, KeyTransport.RsaOaep);
            secured = s.Encrypt();
        }
        using (var r = new SoapSecurity())
        {
            r.LoadSecured(secured);
            Assert.IsTrue(r.IsSigned());
            Assert.AreEqual(RsaCert, r.Certificate);
            Assert.IsTrue(r.NextEncryptedKey());
            r.UnwrapKey(BCert, BKey);
            StringAssert.Contains("cid:order@example.kr", Text(r.Process()));
            const string soap = "{http://schemas.xmlsoap.org/soap/envelope/}";
            Assert.AreEqual(new[] { "/" + soap + "Envelope/" + soap + "Body" }, r.SignedParts());
        }
        using (var r = new SoapSecurity())
        {
            r.LoadSecured(secured);
            r.IsSigned();
            Assert.IsTrue(r.NextEncryptedKey());
            Assert.AreEqual(10511, Status(() => r.Process()));
            Assert.AreEqual(10401, Status(() => r.Load(Encoding.ASCII.GetBytes("<a/>"))));
        }
    }

    static byte[] EbXmlPackage(byte[] envelope, byte[] attachment)
    {
        const string b = "----=_vqxml_dotnet";
        string package = "Content-Type: multipart/related; type=\"text/xml\"; boundary=\"" + b
            + "\"; start=\"<envelope@vqxml.example>\"\r\nMIME-Version: 1.0\r\n\r\n--" + b
            + "\r\nContent-Type: text/xml; charset=UTF-8\r\nContent-ID: <envelope@vqxml.example>\r\n\r\n"
            + Text(envelope) + "\r\n--" + b + "\r\nContent-Type: text/xml; charset=UTF-8\r\n"
            + "Content-ID: <order@example.kr>\r\n\r\n" + Text(attachment) + "\r\n--" + b + "--\r\n";
        return Encoding.UTF8.GetBytes(package);
    }

    [Test]
    public void EbXmlPackageSignedWithItsAttachment()
    {
        byte[] signed;
        using (var s = new EbXml())
        {
            s.Load(EbXmlPackage(Data("ebxml/envelope.xml"), Invoice));
            s.SignatureMethod(SignatureAlgorithm.RsaSha256, Canonicalization.ExcC14n);
            s.AddReference(null, Digest.Sha256, Canonicalization.None, XmlSignature.EnvelopedXPath);
            s.NameSubject();
            s.NameIssuerSerial();
            s.SetSigner(RsaCert, RsaKey);
            signed = s.Sign();
        }
        using (var v = new EbXml())
        {
            v.LoadSigned(signed);
            v.Verify();
            Assert.AreEqual("4097", v.SerialNumber);
            StringAssert.Contains("홍길동", v.SubjectName);
            StringAssert.Contains("VQXML Test Root CA", v.IssuerName);
            Assert.AreEqual(RsaCert, v.Certificate);
            v.LoadSigned(Replace(signed, Amount, ForgedAmount));
            Assert.AreEqual(VqxmlException.NotVerified, Status(v.Verify));
            Assert.AreEqual(10104, Status(() => v.LoadSigned(new byte[0])));
        }
    }

    [StructLayout(LayoutKind.Sequential)]
    struct MallInfo2
    {
        public UIntPtr Arena, Ordblks, Smblks, Hblks, Hblkhd, Usmblks, Fsmblks, Uordblks, Fordblks, Keepcost;
    }

    [DllImport("libc.so.6")]
    static extern MallInfo2 mallinfo2();

    static long MallocBytes()
    {
        MallInfo2 info = mallinfo2();
        return (long)info.Uordblks.ToUInt64() + (long)info.Hblkhd.ToUInt64();
    }

    /// Handles are finished and results copied, not kept: over rounds of signing, verifying,
    /// encrypting, decrypting, getters and failures, malloc does not grow in every stretch of 50
    /// rounds, as a handle or result left behind each round would make it.
    [Test]
    public void RoundsAcrossTheBoundaryLeaveNothingBehind()
    {
        byte[] forged = null;
        var marks = new List<long>();
        using (new Certificates())
            for (int round = 0; round <= 400; ++round)
            {
                if (round % 50 == 0 && round >= 100)
                    marks.Add(MallocBytes());
                using (var s = new XmlSignature())
                using (var v = new XmlSignature())
                using (var e = new XmlEncryption())
                using (var d = new XmlEncryption())
                {
                    byte[] signed = s.SignTaxInvoice(Invoice, RsaCert, RsaKey);
                    forged = forged ?? Replace(signed, Amount, ForgedAmount);
                    v.LoadSigned(signed);
                    v.Verify();
                    Assert.IsNotNull(v.Certificate);
                    Assert.IsNotNull(v.Document());
                    v.LoadSigned(forged);
                    Assert.AreEqual(VqxmlException.NotVerified, Status(v.Verify));
                    e.Load(Invoice);
                    e.SetSymmetricAlgorithm(Cipher.Seed);
                    e.EncryptElement(null, EncryptionTarget.Element);
                    e.AddRecipient(RsaCert, KeyTransport.RsaOaep);
                    d.LoadEncrypted(e.Encrypt());
                    d.NextEncryptedKey();
                    d.UnwrapKey(RsaCert, RsaKey);
                    d.Decrypt();
                }
            }
        long least = marks.Zip(marks.Skip(1), (a, b) => b - a).Min();
        Assert.Less(least, 64 << 10, "malloc grew by at least " + least + " bytes in every 50 rounds");
    }

    [Test]
    public void HandlesOnManyThreadsAndThousandsOfHandles()
    {
        int verified = 0;
        Exception failure = null;
        var threads = Enumerable.Range(0, 8).Select(thread => new Thread(() =>
        {
            try
            {
                for (int i = 0; i < 25; ++i)
                    using (var s = new XmlSignature())
                    using (var v = new XmlSignature())
                    {
                        byte[] signed = s.SignTaxInvoice(Invoice, RsaCert, RsaKey);
                        v.LoadSigned((i + thread) % 2 == 0 ? signed : Replace(signed, Amount, ForgedAmount));
                        try
                        {
                            v.Verify();
                            Interlocked.Increment(ref verified);
                        }
                        catch (VqxmlException e)
                        {
                            Assert.AreEqual(VqxmlException.NotVerified, e.Status);
                        }
                    }
            }
            catch (Exception e)
            {
                failure = e;
            }
        })).ToList();
        threads.ForEach(t => t.Start());
        threads.ForEach(t => t.Join());
        Assert.IsNull(failure, failure == null ? "" : failure.ToString());
        Assert.AreEqual(100, verified);

        // Handles finished by Dispose and by the finalizer (one kept open, so that the engines
        // stay up), and a disposed one refused.
        using (new Certificates())
            for (int i = 0; i < 5000; ++i)
            {
                using (var e = new XmlEncryption())
                    Assert.AreEqual(10106, Status(() => e.EncryptElement(null, EncryptionTarget.Element)));
                Assert.IsTrue(new Certificates().Version.StartsWith("V"));
            }
        GC.Collect();
        GC.WaitForPendingFinalizers();
        var closed = new Certificates();
        closed.Dispose();
        closed.Dispose();
        Assert.Throws<ObjectDisposedException>(() => { string unused = closed.Version; });
        using (var s = new XmlSignature())
            Assert.IsNull(s.Document());
    }
}
