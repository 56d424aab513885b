// Certificates against the built-in roots through the C interface:
// VQTK_XMLAPI_VerifyCert, and the additions VQTK_XMLAPI_VerifyCertChain and
// VQTK_XMLDSIG_VerifySignerCert with the test hierarchy (root, intermediate,
// leaves) that ends outside them.
#include <gtest/gtest.h>

#include "ScopedHandle.hpp"
#include "dsig/SignatureFixture.hpp"
#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;
using apitest::errorText;

namespace {

int verify(void* h, ByteVector cert) {
    return VQTK_XMLAPI_VerifyCert(h, cert.data(), static_cast<int>(cert.size()));
}

int verifyChain(void* h, ByteVector cert, ByteVector chain = {}, ByteVector crls = {}) {
    return VQTK_XMLAPI_VerifyCertChain(h, cert.data(), static_cast<int>(cert.size()), chain.data(),
                                       static_cast<int>(chain.size()), crls.data(), static_cast<int>(crls.size()));
}

ByteVector root(const std::string& file) {
    const ByteVector b64 = readFile(testfiles::dataPath("roots/" + file));
    return fromBase64(std::string(b64.begin(), b64.end() - 1));
}

ByteVector pem(const ByteVector& der, const std::string& label = "CERTIFICATE") {
    std::string text = "some text before\n-----BEGIN " + label + "-----\n";
    const std::string body = toBase64(der);
    for (size_t at = 0; at < body.size(); at += 64)
        text += body.substr(at, 64) + "\n";
    text += "-----END " + label + "-----\n";
    return ByteVector(text.begin(), text.end());
}

}  // namespace

// Only the last failure is kept, and a success keeps it.
TEST(VerifyCert, ACertificateOutsideTheBuiltInRootsIsRefusedWithTheReason) {
    ScopedHandle h;
    EXPECT_EQ(verify(h, fixture("leaf.der")), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > Certificate refused at depth 0 (CN=vqxml Test Leaf,O=vqxml "
                         "test,C=KR): unknown issuer: the path does not lead to a trusted anchor");
    EXPECT_EQ(verify(h, fixture("root.der")), VQXML_ERR_UNKNOWN);
    EXPECT_NE(errorText(h).find("CN=vqxml Test Root"), std::string::npos) << errorText(h);
    EXPECT_EQ(errorText(h).find("Test Leaf"), std::string::npos) << errorText(h);
    // A KISA root itself chains (to itself); the last failure stays recorded.
    const std::string last = errorText(h);
    EXPECT_EQ(verify(h, root("kisa_rootca4.b64")), VQXML_OK) << errorText(h);
    EXPECT_EQ(errorText(h), last);
}

TEST(VerifyCert, BytesThatAreNotADerCertificateComeBackAs12011) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, nullptr, 1), VQXML_ERR_NULL_ARGUMENT);
    EXPECT_EQ(errorText(h), "");
    unsigned char byte = 0x30;
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, &byte, 0), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > The certificate is empty");
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, &byte, -4), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > The certificate is empty");

    const std::string pem = "-----BEGIN CERTIFICATE-----\nMIIDdTCC\n-----END CERTIFICATE-----\n";
    EXPECT_EQ(verify(h, ByteVector(pem.begin(), pem.end())), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > The certificate is PEM text; DER bytes are expected");
    ByteVector garbage(300, 0x30);
    EXPECT_EQ(verify(h, garbage), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h).rfind("verifyCert > The certificate is not a well-formed", 0), 0u) << errorText(h);
}

TEST(VerifyCertChain, ThePathGoesThroughTheGivenIntermediatesInDerOrPem) {
    ScopedHandle h;
    const ByteVector leaf = fixture("leaf.der"), intermediate = fixture("intermediate.der");
    EXPECT_EQ(verifyChain(h, leaf), VQXML_ERR_CERT_PATH);
    EXPECT_NE(errorText(h).find("path check failed: Certificate refused at depth 0 (CN=vqxml Test Leaf"),
              std::string::npos)
        << errorText(h);
    // DER and PEM mixed, CRLs given: the path reaches the test root, which no built-in root is.
    const ByteVector crl = pem(fixture("intermediate.crl.der"), "X509 CRL");
    EXPECT_EQ(verifyChain(h, pem(leaf), intermediate + pem(fixture("root.der")), crl), VQXML_ERR_CERT_PATH);
    EXPECT_NE(errorText(h).find("depth 2 (CN=vqxml Test Root,O=vqxml test,C=KR): unknown issuer"), std::string::npos)
        << errorText(h);
    // A Korean subject comes back in EUC-KR.
    EXPECT_EQ(verifyChain(h, readFile(testfiles::dataPath("testpki/ee-rsa.crt.pem"))), VQXML_ERR_CERT_PATH);
    EXPECT_NE(errorText(h).find("(CN=\xC8\xAB\xB1\xE6\xB5\xBF()0012345RSA,OU=\xB0\xB3\xB9\xDF\xC6\xC0,"),
              std::string::npos)
        << errorText(h);
}

TEST(VerifyCertChain, InputThatCannotBeReadIsRefusedWithItsOwnStatus) {
    ScopedHandle h;
    const ByteVector leaf = fixture("leaf.der"), crl = fixture("intermediate.crl.der");
    const struct {
        ByteVector cert, chain, crls;
        const char* text;
    } cases[] = {
        {ByteVector(leaf.begin(), leaf.end() - 1), {}, {}, "The certificate is not a well-formed DER"},
        {pem(crl, "X509 CRL"), {}, {}, "a PEM block of type \"X509 CRL\" where \"CERTIFICATE\" is expected"},
        {leaf, pem(leaf) + ByteVector{0x30, 0x84, 0x7f}, {}, "DER that does not say its own length"},
        {leaf, {}, leaf, "The CRLs (CRL 1) is not a well-formed DER X.509 CRL"},
        {leaf, ByteVector(1024 * 1024 + 1, 0x30), {}, "The intermediates: more than 1024 KiB"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(verifyChain(h, c.cert, c.chain, c.crls), VQXML_ERR_CERT_INPUT) << c.text;
        EXPECT_NE(errorText(h).find(c.text), std::string::npos) << errorText(h);
    }
    // Every truncation of a PEM certificate gets a status, none a crash.
    const ByteVector text = pem(leaf);
    for (size_t n = 0; n < text.size(); n += 5)
        EXPECT_NE(verifyChain(h, ByteVector(text.begin(), text.begin() + n)), VQXML_OK) << n;
    unsigned char byte = 0;
    EXPECT_EQ(VQTK_XMLAPI_VerifyCertChain(h, &byte, 0, nullptr, 0, nullptr, 0), VQXML_ERR_CERT_INPUT);
    EXPECT_EQ(errorText(h), "verifyCertChain > The certificate is empty");
    EXPECT_EQ(VQTK_XMLAPI_VerifyCertChain(h, &byte, 1, &byte, -1, nullptr, 0), VQXML_ERR_CERT_INPUT);
    EXPECT_EQ(VQTK_XMLAPI_VerifyCertChain(h, nullptr, 1, nullptr, 0, nullptr, 0), VQXML_ERR_NULL_ARGUMENT);
    EXPECT_EQ(VQTK_XMLAPI_VerifyCertChain(nullptr, &byte, 1, nullptr, 0, nullptr, 0), VQXML_ERR_NULL_HANDLE);
}

namespace {

// The invoice signed by the test leaf, with extra certificates in its X509Data.
std::string signedByTheTestLeaf(const std::vector<ByteVector>& inKeyInfo) {
    dsigtest::Signing s;
    const ByteVector cert = fixture("leaf.der"), key = fixture("leaf.key");
    s.cert.assign(cert.begin(), cert.end());
    s.key.assign(key.begin(), key.end());
    std::string signedText = dsigtest::signedText(dsigtest::invoice(), s);
    const size_t end = signedText.rfind("X509Certificate>") + 16;  // the signer's, in the default namespace
    for (const ByteVector& extra : inKeyInfo)
        signedText.insert(end, "<X509Certificate>" + toBase64(extra) + "</X509Certificate>");
    return signedText;
}

}  // namespace

TEST(VerifySignerCert, TheKeyInfoChainAndTheCallersIntermediatesBuildThePath) {
    const struct {
        std::vector<ByteVector> inKeyInfo;
        ByteVector chain;
        const char* refused;
    } cases[] = {
        {{}, {}, "depth 0 (CN=vqxml Test Leaf"},
        {{fixture("intermediate.der")}, {}, "depth 1 (CN=vqxml Test Intermediate"},
        {{fixture("intermediate.der")}, pem(fixture("root.der")), "depth 2 (CN=vqxml Test Root"},
        {{fixture("root.der")}, fixture("intermediate.der"), "depth 2 (CN=vqxml Test Root"},
    };
    for (const auto& c : cases) {
        const std::string signedText = signedByTheTestLeaf(c.inKeyInfo);
        ScopedHandle h;
        ASSERT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, apitest::chars(signedText), apitest::size(signedText)), 0);
        ASSERT_EQ(VQTK_XMLDSIG_Verify(h), VQXML_OK) << errorText(h);
        ByteVector chain = c.chain;
        EXPECT_EQ(VQTK_XMLDSIG_VerifySignerCert(h, chain.data(), static_cast<int>(chain.size()), nullptr, 0),
                  VQXML_ERR_CERT_PATH);
        EXPECT_EQ(errorText(h).rfind("verifySignerCert > path check failed: Certificate refused at ", 0), 0u)
            << errorText(h);
        EXPECT_NE(errorText(h).find(c.refused), std::string::npos) << errorText(h);
    }
}

TEST(VerifySignerCert, NeedsALoadedSignatureThatCarriesACertificate) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLDSIG_VerifySignerCert(h, nullptr, 0, nullptr, 0), 10200);
    const std::string hmacSigned = testfiles::read(
        testfiles::dataPath("interop/dsig/xmlsec-1.2.37/aleksey-xmldsig-01/enveloping-sha1-hmac-sha1.xml"));
    ASSERT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, apitest::chars(hmacSigned), apitest::size(hmacSigned)), 0);
    EXPECT_EQ(VQTK_XMLDSIG_VerifySignerCert(h, nullptr, 0, nullptr, 0), VQXML_ERR_CERT_NONE);
    EXPECT_EQ(errorText(h), "verifySignerCert > The signature's KeyInfo carries no X509Certificate to verify");
    EXPECT_EQ(VQTK_XMLDSIG_VerifySignerCert(nullptr, nullptr, 0, nullptr, 0), VQXML_ERR_NULL_HANDLE);
}
