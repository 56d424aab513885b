// XPath filter transforms as libxmlsec1 evaluates them: xmlsec1 signs the test
// invoice with each expression (prefixes declared only on ds:Signature and on
// the document, as peers do), and the library must verify it, refuse a change to
// a node the expression keeps, and accept a change to a node it leaves out. The
// expressions cover the forms the library evaluates itself (axes up the tree,
// attribute tests, name functions, count, string tests, node types, both
// transform orders) and ones it leaves to the general engine.
#include <gtest/gtest.h>

#include <string>

#include "SignatureFixture.hpp"

namespace {

using namespace dsigtest;

const char kC14n[] = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
const char kExcC14n[] = "http://www.w3.org/2001/10/xml-exc-c14n#";
const char kEnveloped[] = "http://www.w3.org/2000/09/xmldsig#enveloped-signature";

struct Case {
    const char* name;
    const char* expression;
    const char* before;    // a transform before the XPath (C14N output re-parsed), else exclusive C14N after it
    const char* kept;      // text in a node the expression keeps: changed, the signature must fail
    const char* leftOut;   // text in a node it leaves out: changed, the signature still holds ("" for none)
    int reading;           // VQTK_XMLDSIG_GetCanonicalReading after verifying
};

// The invoice with an attribute to test and a Signature template before TaxInvoiceDocument.
std::string templateFor(const Case& c) {
    std::string doc = replaced(invoice(), "<DescriptionText>", "<DescriptionText kind=\"memo\">");
    const std::string xpath = std::string("<ds:Transform Algorithm=\"http://www.w3.org/TR/1999/REC-xpath-19991116\">") +
                              "<ds:XPath xmlns:t=\"urn:kr:or:kec:standard:Tax:ReusableAggregateBusinessInformationEntitySchemaModule:1:0\">" +
                              c.expression + "</ds:XPath></ds:Transform>";
    const std::string c14n = std::string("<ds:Transform Algorithm=\"") + (c.before ? c.before : kExcC14n) + "\"/>";
    const std::string signature =
        std::string("<ds:Signature xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"><ds:SignedInfo>") +
        "<ds:CanonicalizationMethod Algorithm=\"" + kC14n + "\"/>" +
        "<ds:SignatureMethod Algorithm=\"http://www.w3.org/2001/04/xmldsig-more#rsa-sha256\"/>" +
        "<ds:Reference URI=\"\"><ds:Transforms>" + (c.before ? c14n + xpath : xpath + c14n) + "</ds:Transforms>" +
        "<ds:DigestMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#sha256\"/><ds:DigestValue/>" +
        "</ds:Reference></ds:SignedInfo><ds:SignatureValue/><ds:KeyInfo><ds:X509Data>" +
        "<ds:X509Certificate/></ds:X509Data></ds:KeyInfo></ds:Signature>";
    return replaced(doc, "<TaxInvoiceDocument>", signature + "<TaxInvoiceDocument>");
}

class XPathFilter : public testing::TestWithParam<Case> {};

TEST_P(XPathFilter, AgreesWithXmlsec) {
    const Case& c = GetParam();
    if (!testfiles::haveProgram("xmlsec1"))
        GTEST_SKIP() << "xmlsec1 is not installed";
    testfiles::ScratchDir dir;
    testfiles::write(dir("template.xml"), templateFor(c));
    const std::string keys = testfiles::dataPath("dsig/signer-key.pem") + "," + testfiles::dataPath("dsig/signer.pem");
    ASSERT_EQ(testfiles::run("xmlsec1 --sign --privkey-pem " + keys + " --output " + dir("signed.xml") + " " +
                             dir("template.xml")),
              0);
    const std::string signedText = testfiles::read(dir("signed.xml"));

    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, chars(signedText), static_cast<int>(signedText.size())), 0);
    ASSERT_EQ(VQTK_XMLDSIG_Verify(h), 0) << errorText(h);
    int reading = -1;
    EXPECT_EQ(VQTK_XMLDSIG_GetCanonicalReading(h, &reading), 0);
    EXPECT_EQ(reading, c.reading);

    ASSERT_NE(signedText.find(c.kept), std::string::npos);
    EXPECT_EQ(verify(replaced(signedText, c.kept, std::string(c.kept) + "0")), 11213);
    if (*c.leftOut != 0) {
        ASSERT_NE(signedText.find(c.leftOut), std::string::npos);
        std::string result;
        EXPECT_EQ(verify(replaced(signedText, c.leftOut, std::string(c.leftOut) + "0"), &result), 0) << result;
    }
}

constexpr int kPlain = VQXML_READING_PLAIN;
constexpr int kLiteral = VQXML_READING_LITERAL;

INSTANTIATE_TEST_SUITE_P(
    Expressions, XPathFilter,
    testing::Values(
        Case{"enveloped", "not(ancestor-or-self::ds:Signature)", nullptr, "1100000", "", kPlain},
        Case{"tax_invoice_recipe",
             "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | "
             "ancestor-or-self::ds:Signature)",
             kC14n, "1100000", "20261122103000", kLiteral},
        // Exclusive C14N first: the re-parsed invoice no longer declares the unused xsi.
        Case{"exclusive_first", "not(ancestor-or-self::ds:Signature)", kExcC14n, "1100000", "", kPlain},
        Case{"exclusive_first_recipe",
             "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | "
             "ancestor-or-self::ds:Signature)",
             kExcC14n, "1100000", "20261122103000", kLiteral},
        Case{"names_and_union_xpath_first",
             "not(self::*[local-name()='ExchangedDocument'] | ancestor::t:ExchangedDocument | "
             "ancestor-or-self::*[namespace-uri()='http://www.w3.org/2000/09/xmldsig#'])",
             nullptr, "<TypeCode>0101", "20261122103000", kPlain},
        Case{"attribute_test", "not(ancestor-or-self::*[@kind='memo'] | ancestor-or-self::ds:Signature)", nullptr,
             "1100000", "정기 납품분", kPlain},
        Case{"count_and_order", "count(ancestor::*) &lt; 3 and not(ancestor-or-self::ds:Signature)", kC14n,
             "</IssueID>", "20261122-41000010", kLiteral},  // kind="memo" is left out of an output element
        Case{"string_tests",
             "not(ancestor-or-self::*[starts-with(local-name(), 'Specified') or contains(name(), 'Contact')]) "
             "and not(ancestor-or-self::ds:Signature)",
             nullptr, "20261122-41000010", "홍길동", kPlain},
        Case{"node_type_and_parent",
             "not(self::text()[parent::t:DescriptionText]) and not(ancestor-or-self::ds:Signature[true()])", nullptr,
             "<PurposeCode>02", "정기 납품분", kPlain},
        // Beyond the linear subset: the general engine, with the prefixes in scope.
        Case{"general_engine", "string-length(name()) >= 0 and not(ancestor-or-self::ds:Signature)", nullptr,
             "1100000", "", kPlain},
        // After enveloped-signature, which has taken the Signature out already.
        Case{"after_enveloped", "not(ancestor-or-self::t:ExchangedDocument)", kEnveloped, "1100000", "20261122103000",
             kPlain},
        Case{"after_enveloped_general_engine", "string-length(name()) >= 0", kEnveloped, "1100000", "", kPlain}),
    [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

}  // namespace
