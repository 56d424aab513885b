// Signatures the library makes verify with the library and with xmlsec1, the
// same signatures made by xmlsec1 verify with the library, and both stop
// verifying, for both, when a signed byte changes.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <tuple>

#include "SignatureFixture.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

using namespace dsigtest;

namespace {

enum class Shape { Enveloped, Enveloping, ElementId };

struct Case {
    const char* name;
    int signatureSelector;
    int signedInfoC14n;
    int referenceC14n;
    int digestSelector;
    Shape shape;
    const char* keyPrefix = nullptr;  // a test PKI end entity (ee-*), or signerFile's kind
};

void PrintTo(const Case& c, std::ostream* os) {
    *os << c.name;
}

bool isKcdsa(const Case& c) {
    return c.signatureSelector == 3 || c.signatureSelector == 4;
}

bool isHmac(const Case& c) {
    return c.signatureSelector == 1 || (c.signatureSelector >= 16 && c.signatureSelector <= 19);
}

bool isPss(const Case& c) {
    return c.signatureSelector >= 9 && c.signatureSelector <= 11;
}

// The certificate and the PKCS #8 key of a case's signer.
std::pair<std::string, std::string> signerFiles(const Case& c) {
    const std::string prefix = c.keyPrefix != nullptr ? c.keyPrefix : "";
    if (prefix.rfind("ee-", 0) == 0)
        return {testfiles::read(testfiles::dataPath("testpki/" + prefix + ".crt.der")),
                testfiles::read(testfiles::dataPath("testpki/" + prefix + ".key.der"))};
    return {testfiles::read(signerFile(prefix, "crt.der")), testfiles::read(signerFile(prefix, "key.pk8.der"))};
}

// Signed by the Id of its document element: a signature over less than the
// document element is refused (the rest would come back unsigned).
const char kIdDocument[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Envelope xmlns=\"urn:example:gov\" Id=\"doc1\"><Head>수신: 행정안전부</Head>"
    "<Data><Amount>1100000</Amount><Memo>원본 문서</Memo></Data></Envelope>";

std::string sign(const Case& c) {
    Signing s;
    s.method = c.signatureSelector;
    s.c14n = c.signedInfoC14n;
    s.referenceC14n = c.referenceC14n;
    s.digest = c.digestSelector;
    if (c.shape == Shape::ElementId)
        s.uri = "doc1";
    if (c.shape == Shape::Enveloping) {
        s.uri = "obj1";
        s.xpath = nullptr;
        // In no namespace inside a Signature whose default namespace is XML Signature's:
        // the digest must cover the xmlns="" the returned document carries.
        s.object = "<Amount>1100000</Amount>";
    }
    if (isHmac(c)) {
        s.cert.clear();
        s.key = hmacKey();
    } else {
        std::tie(s.cert, s.key) = signerFiles(c);
    }
    return signedText(c.shape == Shape::Enveloped ? invoice() : std::string(kIdDocument), s);
}

// xmlsec1 run on text with the case's keys and ids: "--verify", or "--sign",
// which leaves the signed text in *out.
int xmlsec(const Case& c, const std::string& mode, const std::string& text, std::string* out = nullptr) {
    testfiles::ScratchDir dir;
    testfiles::write(dir("in.xml"), text);
    std::string command = "xmlsec1 " + mode + " ";
    if (isHmac(c)) {
        command += "--hmackey " + testfiles::dataPath("dsig/hmac.bin") + " ";
    } else if (mode == "--verify") {
        command += "--trusted-pem " + testfiles::dataPath("dsig/ca.pem") + " ";
    } else {
        const auto [cert, key] = signerFiles(c);
        testfiles::write(dir("key.der"), key);
        testfiles::write(dir("cert.der"), cert);
        if (testfiles::run("openssl pkey -inform DER -in " + dir("key.der") + " -out " + dir("key.pem") +
                           " && openssl x509 -inform DER -in " + dir("cert.der") + " -out " + dir("cert.pem")) != 0)
            return -1;
        command += "--privkey-pem " + dir("key.pem") + "," + dir("cert.pem") + " ";
    }
    if (mode == "--sign")
        command += "--output " + dir("out.xml") + " ";
    if (c.shape == Shape::ElementId)
        command += "--id-attr:Id urn:example:gov:Envelope ";
    if (c.shape == Shape::Enveloping)
        command += "--id-attr:Id Object ";
    const int rc = testfiles::run(command + dir("in.xml"));
    if (out != nullptr && rc == 0)
        *out = testfiles::read(dir("out.xml"));
    return rc;
}

// The library's signature as a template for another signer: its digests, value
// and certificate emptied, its KeyValue left out (xmlsec1 would sign with it).
std::string asTemplate(const std::string& signedText) {
    static const std::regex kFilled("(<(\\w+:)?(DigestValue|SignatureValue|X509Certificate)>)[^<]*");
    static const std::regex kKeyValue("<(\\w+:)?KeyValue>[^]*</(\\w+:)?KeyValue>");
    return std::regex_replace(std::regex_replace(signedText, kFilled, "$1"), kKeyValue, "");
}

class SignVerify : public testing::TestWithParam<Case> {};

TEST_P(SignVerify, VerifiesAndDetectsTampering) {
    const Case& c = GetParam();
    const std::string signedText = sign(c);
    ASSERT_FALSE(signedText.empty());
    std::string result;
    EXPECT_EQ(verify(signedText, &result, isHmac(c) ? hmacKey() : ""), 0) << result;
    EXPECT_EQ(verify(tampered(signedText), &result, isHmac(c) ? hmacKey() : ""), 11213);
    EXPECT_EQ(result.rfind("XMLDSIG_verify > ", 0), 0u) << result;
    if (isHmac(c)) {
        EXPECT_EQ(verify(signedText, &result, "another secret"), 11213);
    }
}

TEST_P(SignVerify, XmlsecAgrees) {
    const Case& c = GetParam();
    if (isKcdsa(c) || isPss(c))
        GTEST_SKIP() << "xmlsec1 1.2 knows no KCDSA and no RSA-PSS";
    if (!testfiles::haveProgram("xmlsec1"))
        GTEST_SKIP() << "xmlsec1 is not installed";
    const std::string signedText = sign(c);
    EXPECT_EQ(xmlsec(c, "--verify", signedText), 0) << signedText;
    EXPECT_NE(xmlsec(c, "--verify", tampered(signedText)), 0);

    // And the other way: xmlsec1 signs the same template, the library verifies.
    std::string theirs;
    ASSERT_EQ(xmlsec(c, "--sign", asTemplate(signedText), &theirs), 0) << asTemplate(signedText);
    ASSERT_NE(theirs, signedText);
    std::string result;
    EXPECT_EQ(verify(theirs, &result, isHmac(c) ? hmacKey() : ""), 0) << result << "\n" << theirs;
    EXPECT_EQ(verify(tampered(theirs), &result, isHmac(c) ? hmacKey() : ""), 11213);
}

INSTANTIATE_TEST_SUITE_P(
    Signatures, SignVerify,
    testing::Values(Case{"rsa_sha1_enveloped_exc", 2, 3, 0, 1, Shape::Enveloped},
                    Case{"rsa_sha256_enveloped_c14n", 5, 1, 0, 3, Shape::Enveloped},
                    Case{"rsa_sha256_enveloped_exc_transform", 5, 3, 3, 3, Shape::Enveloped},
                    Case{"hmac_sha1_enveloped", 1, 1, 0, 1, Shape::Enveloped},
                    Case{"rsa_sha256_enveloping_object", 5, 3, 3, 3, Shape::Enveloping},
                    Case{"rsa_sha256_element_id_c14n_comments", 5, 2, 2, 3, Shape::ElementId},
                    Case{"rsa_sha1_element_id_exc_comments", 2, 4, 4, 1, Shape::ElementId},
                    Case{"kcdsa_sha1_enveloped", 3, 3, 0, 1, Shape::Enveloped, "ee-kcdsa1024"},
                    Case{"kcdsa_has160_enveloping_has160_digest", 4, 1, 0, 2, Shape::Enveloping, "ee-kcdsa1024"},
                    Case{"rsa_sha256_testpki_signer", 5, 3, 0, 3, Shape::ElementId, "ee-rsa"},
                    // The XML Signature 1.1 algorithms, each with another canonicalization and shape.
                    Case{"rsa_sha224_enveloping_sha224", 6, 3, 3, 4, Shape::Enveloping},
                    Case{"rsa_sha384_element_id_c14n11_comments", 7, 6, 6, 5, Shape::ElementId},
                    Case{"rsa_sha512_enveloped_c14n11", 8, 5, 0, 6, Shape::Enveloped},
                    Case{"rsa_pss_sha256_enveloped_c14n11", 9, 5, 5, 3, Shape::Enveloped},
                    Case{"rsa_pss_sha384_enveloping", 10, 3, 3, 5, Shape::Enveloping},
                    Case{"rsa_pss_sha512_element_id", 11, 1, 0, 6, Shape::ElementId},
                    Case{"ecdsa_sha256_p256_enveloped_c14n11", 12, 5, 0, 3, Shape::Enveloped, "ec256"},
                    Case{"ecdsa_sha384_p384_enveloping", 13, 3, 3, 5, Shape::Enveloping, "ec384"},
                    Case{"ecdsa_sha512_p521_element_id_c14n11", 14, 1, 5, 6, Shape::ElementId, "ec521"},
                    Case{"ecdsa_sha256_p521", 12, 3, 0, 3, Shape::Enveloped, "ec521"},
                    Case{"dsa_sha256_2048_256_enveloped", 15, 1, 0, 3, Shape::Enveloped, "dsa2048"},
                    Case{"hmac_sha224_enveloping", 16, 3, 3, 4, Shape::Enveloping},
                    Case{"hmac_sha256_enveloped", 17, 1, 0, 3, Shape::Enveloped},
                    Case{"hmac_sha384_element_id", 18, 5, 0, 5, Shape::ElementId},
                    Case{"hmac_sha512_enveloped_c14n11", 19, 5, 5, 6, Shape::Enveloped}),
    [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

TEST(Verification, KcdsaSignatureIsReadBackAsKcdsa) {
    const std::string signedText = sign({"x", 4, 1, 0, 2, Shape::Enveloping, "ee-kcdsa1024"});
    EXPECT_NE(signedText.find("urn:vqxml:xmlsec:kcdsa-has160"), std::string::npos);
    EXPECT_NE(signedText.find("urn:vqxml:xmlsec:has160"), std::string::npos);
    EXPECT_EQ(signedText.find("KeyValue"), std::string::npos) << "no KeyValue for KCDSA";
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, chars(signedText), static_cast<int>(signedText.size())), 0);
    EXPECT_EQ(static_cast<VQXML_XMLSecurity*>(h.h)->getSignatureAlg(), 7);
    EXPECT_EQ(VQTK_XMLDSIG_Verify(h), 0) << errorText(h);
}

std::string signEnvelopedText(const std::string& doc) {
    Signing s;
    s.c14n = 1;
    return signedText(doc, s);
}

int count(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

// The enveloped filter leaves out every ds:Signature, not only the one checked:
// the other one was not signed and does not come back either.
TEST(EnvelopedFilter, EverySignatureIsLeftOutAndNoneComesBack) {
    const std::string twice = signEnvelopedText(signEnvelopedText(invoice()));
    ASSERT_EQ(count(twice, "<SignatureValue>"), 2);
    std::string result;
    ASSERT_EQ(verify(twice, &result), 0) << result;
    EXPECT_EQ(count(result, "Signature"), 0) << result;
    EXPECT_NE(result.find("<NameText>테스트상사 주식회사</NameText>"), std::string::npos);

    // A change inside the other signature does not touch what this one signed.
    const size_t second = twice.find("<SignatureValue>", twice.find("<SignatureValue>") + 1);
    std::string changed = twice;
    changed[second + 20] = changed[second + 20] == 'A' ? 'B' : 'A';
    EXPECT_EQ(verify(changed, &result), 0) << result;
}

TEST(EnvelopedFilter, CommentsAreNotSigned) {
    std::string text = signEnvelopedText(invoice());
    text.insert(text.find("<TaxInvoiceDocument>"), "<!-- added after signing -->");
    std::string result;
    EXPECT_EQ(verify(text, &result), 0) << result;
}

}  // namespace
