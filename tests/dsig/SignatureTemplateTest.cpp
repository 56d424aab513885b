// Where the Signature goes, what the references and KeyInfo look like, and the
// codes for bad arguments.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <xsec/framework/XSECException.hpp>

#include "ContextFixture.hpp"
#include "SignatureFixture.hpp"

using namespace dsigtest;

namespace {

// The unsigned template as it stands in the document.
std::string templateText(InspectableContext& ctx) {
    ctx.storeResultDocument();
    return ctx.getXMLDocument();
}

size_t at(const std::string& text, const std::string& what) {
    size_t pos = text.find(what);
    EXPECT_NE(pos, std::string::npos) << what << " not in " << text;
    return pos;
}

int occurrences(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t pos = text.find(what); pos != std::string::npos; pos = text.find(what, pos + 1))
        ++n;
    return n;
}

int loadAndChoose(InspectableContext& ctx, const std::string& doc, int signatureSelector = 5, int c14n = 3) {
    EXPECT_EQ(ctx.XMLDSIG_setXMLDocument(chars(doc), static_cast<int>(doc.size())), 0) << ctx.getLastErrorMsg();
    return ctx.XMLDSIG_setSignatureAlg(signatureSelector, c14n);
}

// Before TaxInvoiceDocument, last in a SOAP Header, before an existing
// Signature, else at the end; an anchor deeper than the root is a DOM failure.
TEST(SignaturePlacement, WhereTheTemplateGoes) {
    const struct {
        std::string doc;
        std::vector<const char*> order;  // texts in the order the template must leave them
    } cases[] = {
        {invoice(), {"</ExchangedDocument>", "<Signature", "</Signature>", "<TaxInvoiceDocument>"}},
        {"<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Header><h/></s:Header>"
         "<s:Body><TaxInvoiceDocument/></s:Body></s:Envelope>",
         {"<h/>", "<Signature", "</Signature>", "</s:Header>"}},
        {"<r><a/><Signature>old</Signature><b/></r>", {"<Signature xmlns", "<Signature>old"}},
        {"<r><a/><b/></r>", {"<b/>", "<Signature", "</Signature>", "</r>"}},
    };
    for (const auto& c : cases) {
        InspectableContext ctx;
        ASSERT_EQ(loadAndChoose(ctx, c.doc), 0);
        const std::string text = templateText(ctx);
        for (size_t i = 1; i < c.order.size(); ++i)
            EXPECT_LT(at(text, c.order[i - 1]), at(text, c.order[i])) << c.order[i - 1] << " before " << c.order[i];
    }
    InspectableContext ctx;
    EXPECT_EQ(loadAndChoose(ctx, "<r><inner><TaxInvoiceDocument/></inner></r>"), VQXML_ERR_UNKNOWN);
}

TEST(SignatureTemplate, EnvelopingSignatureInADocumentOfItsOwn) {
    InspectableContext ctx;
    ASSERT_EQ(ctx.XMLDSIG_setXMLDocument(nullptr, 0), 0);
    ASSERT_EQ(ctx.XMLDSIG_setSignatureAlg(5, 3), 0);
    char content[] = "<data>x</data>";
    ASSERT_EQ(ctx.XMLDSIG_appendObject(const_cast<char*>("obj1"), content, 14), 0);
    ASSERT_EQ(ctx.XMLDSIG_createReference(const_cast<char*>("obj1"), 3, 0, nullptr), 0);
    const std::string text = templateText(ctx);
    EXPECT_LT(at(text, "<?xml"), at(text, "<Signature xmlns="));
    EXPECT_LT(at(text, "<Object Id=\"obj1\"><data xmlns=\"\">x</data>"), at(text, "</Signature>"));
    at(text, "<Reference URI=\"#obj1\">");
}

// The forms a reference URI may take; an XPath transform declares the ds prefix
// and follows the C14N transform; Object content that is not XML becomes text.
TEST(SignatureTemplate, ReferencesAndObjects) {
    InspectableContext ctx;
    ASSERT_EQ(loadAndChoose(ctx, "<r/>"), 0);
    for (const char* uri : {"body", "#body", "http://example.com/a", "file:///tmp/x", " ", ""})
        ASSERT_EQ(ctx.XMLDSIG_createReference(const_cast<char*>(uri), 1, 0, nullptr), 0);
    ASSERT_EQ(ctx.XMLDSIG_createReference(nullptr, 3, 1, const_cast<char*>("not(ancestor-or-self::ds:Signature)")), 0);
    char content[] = "a < b & 한글";
    ASSERT_EQ(ctx.XMLDSIG_appendObject(const_cast<char*>("o"), content, static_cast<int>(sizeof content - 1)), 0);
    const std::string text = templateText(ctx);
    EXPECT_EQ(occurrences(text, "URI=\"#body\""), 2) << "body and #body";
    EXPECT_EQ(occurrences(text, "URI=\"http://example.com/a\""), 1);
    EXPECT_EQ(occurrences(text, "URI=\"file:///tmp/x\""), 1);
    EXPECT_EQ(occurrences(text, "URI=\"\""), 3) << "a single space, the empty text and none";
    EXPECT_LT(at(text, "REC-xml-c14n-20010315\"/>"), at(text, "REC-xpath-19991116"));
    at(text, "<XPath xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\">not(ancestor-or-self::ds:Signature)</XPath>");
    EXPECT_EQ(text.find("enveloped-signature"), std::string::npos);
    at(text, "<Object Id=\"o\">a &lt; b &amp; 한글</Object>");
}

TEST(SignatureTemplate, PrefixAppliesToTheWholeSignature) {
    InspectableContext ctx;
    const std::string doc = "<r/>";
    ASSERT_EQ(ctx.XMLDSIG_setXMLDocument(chars(doc), 4), 0);
    ASSERT_EQ(ctx.XMLDSIG_setPrefix(const_cast<char*>("ds")), 0);
    ASSERT_EQ(ctx.XMLDSIG_setSignatureAlg(2, 1), 0);
    const std::string text = templateText(ctx);
    at(text, "<ds:Signature xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\">");
    at(text, "<ds:SignedInfo>");
}

TEST(SigningKeys, KeyInfoOrderWithNamesRequested) {
    InspectableContext ctx;
    ASSERT_EQ(loadAndChoose(ctx, "<r/>"), 0);
    ASSERT_EQ(ctx.XMLDSIG_setKeyName(const_cast<char*>("first")), 0);
    ctx.appendX509SubjectName();
    ctx.appendX509IssuerSerialNumber();
    ASSERT_EQ(ctx.XMLDSIG_setSignCertAndKey(bytes(signerCert()), static_cast<int>(signerCert().size()),
                                            bytes(signerKey()), static_cast<int>(signerKey().size()), nullptr, nullptr,
                                            nullptr, nullptr),
              0)
        << ctx.getLastErrorMsg();
    const std::string text = templateText(ctx);
    size_t keyName = at(text, "<KeyName>first</KeyName>");
    size_t subject = at(text, "<X509SubjectName>cn=홍길동,ou=전자세금계산서,o=테스트상사,c=KR</X509SubjectName>");
    size_t issuer = at(text, "<X509IssuerName>cn=vqxml Test Root CA,o=vqxml test,c=KR</X509IssuerName>");
    size_t serial = at(text, "<X509SerialNumber>4660</X509SerialNumber>");
    size_t cert = at(text, "<X509Certificate>");
    size_t keyValue = at(text, "<RSAKeyValue>");
    EXPECT_LT(keyName, subject);
    EXPECT_LT(subject, issuer);
    EXPECT_LT(serial, cert);
    EXPECT_LT(cert, keyValue);
}

TEST(SigningKeys, AcceptedKeyForms) {
    const std::string pkcs1Pem = testfiles::read(testfiles::dataPath("dsig/signer-key.pkcs1.pem"));
    const std::string certPem = testfiles::read(testfiles::dataPath("dsig/signer.pem"));
    const std::string otherKey = testfiles::read(testfiles::dataPath("dsig/ca-key.pem"));
    InspectableContext ctx;
    ASSERT_EQ(loadAndChoose(ctx, "<r/>"), 0);
    EXPECT_EQ(ctx.XMLDSIG_setSignCertAndKey(bytes(certPem), static_cast<int>(certPem.size()), bytes(pkcs1Pem),
                                            static_cast<int>(pkcs1Pem.size()), nullptr, nullptr, nullptr, nullptr),
              0)
        << ctx.getLastErrorMsg();
    EXPECT_EQ(ctx.XMLDSIG_setSignCertAndKey(bytes(signerCert()), static_cast<int>(signerCert().size()),
                                            bytes(otherKey), static_cast<int>(otherKey.size()), nullptr, nullptr,
                                            nullptr, nullptr),
              VQXML_ERR_CRYPTO_PROVIDER);
    EXPECT_NE(std::string(ctx.getLastErrorMsg()).find("does not belong"), std::string::npos);
    const std::string garbage(300, '\x30');
    EXPECT_EQ(ctx.XMLDSIG_setSignCertAndKey(bytes(garbage), 300, nullptr, 0, nullptr, nullptr, nullptr, nullptr),
              VQXML_ERR_CRYPTO_PROVIDER);
    EXPECT_EQ(ctx.XMLDSIG_setSignCertAndKey(bytes(signerCert()), 100, nullptr, 0, nullptr, nullptr, nullptr,
                                            nullptr),
              VQXML_ERR_CRYPTO_PROVIDER)
        << "a truncated certificate";
}

TEST(ArgumentCodes, SelectorsAndMissingPieces) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.XMLDSIG_setSignatureAlg(5, 3), 10200) << "no document loaded yet";
    EXPECT_EQ(ctx.XMLDSIG_setKeyName(const_cast<char*>("k")), 10200);
    const std::string doc = "<r/>";
    ASSERT_EQ(ctx.XMLDSIG_setXMLDocument(chars(doc), 4), 0);
    // Before the template exists, that is before the algorithm is chosen.
    EXPECT_EQ(ctx.XMLDSIG_createReference(nullptr, 1, 0, nullptr), 10200);
    EXPECT_EQ(ctx.XMLDSIG_appendObject(const_cast<char*>("o"), const_cast<char*>("<a/>"), 4), 10200);
    EXPECT_EQ(ctx.XMLDSIG_setKeyName(const_cast<char*>("k")), 10200);
    EXPECT_EQ(ctx.XMLDSIG_sign(), 10200);
    EXPECT_EQ(ctx.XMLDSIG_setSignCertAndKey(bytes(signerCert()), static_cast<int>(signerCert().size()), nullptr, 0,
                                            nullptr, nullptr, nullptr, nullptr),
              10205);
    EXPECT_EQ(ctx.XMLDSIG_setSignatureAlg(20, 0), 10201);
    EXPECT_EQ(ctx.XMLDSIG_setSignatureAlg(5, 7), 10202);
    EXPECT_EQ(ctx.XMLDSIG_setSignatureAlg(5, 3), 0);
    EXPECT_EQ(ctx.XMLDSIG_createReference(nullptr, 0, 0, nullptr), 10203);
    EXPECT_EQ(ctx.XMLDSIG_createReference(nullptr, 1, 9, nullptr), 10202);
    EXPECT_EQ(ctx.XMLDSIG_setKeyName(const_cast<char*>("")), 10208);
    EXPECT_EQ(std::string(ctx.getLastErrorMsg()), "XMLDSIG_setKeyName > No key name was given");
    EXPECT_EQ(ctx.XMLDSIG_setPrefix(const_cast<char*>("")), 10207);
    EXPECT_EQ(ctx.XMLDSIG_appendObject(const_cast<char*>("i"), const_cast<char*>(" "), 1), 10209);
    EXPECT_EQ(ctx.XMLDSIG_appendObject(nullptr, const_cast<char*>("<a/>"), 4), 10210);
    EXPECT_EQ(ctx.XMLDSIG_appendObject(const_cast<char*>("#i"), const_cast<char*>("<a/>"), 4), 10211);
    EXPECT_EQ(ctx.XMLDSIG_setSignCertAndKey(nullptr, 0, nullptr, 0, nullptr, nullptr, nullptr, nullptr), 10204);
    unsigned char zeroFirst[] = {0, 1, 2};
    EXPECT_EQ(ctx.XMLDSIG_setHMACKey(zeroFirst, 3), 10206);
    unsigned char secret[] = {1, 2, 3};
    EXPECT_EQ(ctx.XMLDSIG_setHMACKey(secret, 3), 10206) << "the chosen method is RSA";
    EXPECT_EQ(ctx.XMLDSIG_sign(), XSECException::SigVfyError);
    EXPECT_NE(std::string(ctx.getLastErrorMsg()).find("key"), std::string::npos) << ctx.getLastErrorMsg();
}

}  // namespace
