// Signed documents that are broken, tricky or reach outside themselves: each gets
// a status and a message, and the handle stays usable.
#include <gtest/gtest.h>

#include <string>

#include <xsec/framework/XSECException.hpp>

#include "SignatureFixture.hpp"

using namespace dsigtest;

namespace {

const char kEnvelopedXPath[] = "not(ancestor-or-self::ds:Signature)";

// An RSA-SHA256 signature over doc with one reference.
std::string signWithReference(const std::string& doc, const char* uri, const char* xpath = nullptr) {
    Signing s;
    s.uri = uri;
    s.xpath = xpath;
    return signedText(doc, s);
}

const std::string& signedInvoice() {
    static const std::string text = signWithReference(invoice(), "", kEnvelopedXPath);
    return text;
}

// The handle that failed still verifies a good document afterwards.
void expectStillUsable(void* h) {
    const std::string& good = signedInvoice();
    EXPECT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, chars(good), static_cast<int>(good.size())), 0);
    EXPECT_EQ(VQTK_XMLDSIG_Verify(h), 0) << errorText(h);
}

int loadAndVerify(void* h, const std::string& text) {
    int rc = VQTK_XMLDSIG_SetSignXMLDocument(h, chars(text), static_cast<int>(text.size()));
    return rc != 0 ? rc : VQTK_XMLDSIG_Verify(h);
}

TEST(HostileSignatures, DocumentsThatAreNotSignaturesOrAreBroken) {
    const std::string& good = signedInvoice();
    const std::string cases[] = {
        "<a/>",
        "<Signature xmlns=\"http://www.w3.org/2000/09/xmldsig#\"/>",
        replaced(good, "<SignedInfo>", "<SignedInfoX>"),
        replaced(good, "http://www.w3.org/2001/04/xmldsig-more#rsa-sha256", "urn:unknown:algorithm"),
        replaced(good, "http://www.w3.org/2001/04/xmlenc#sha256", "urn:unknown:digest"),
        replaced(good, "http://www.w3.org/2001/10/xml-exc-c14n#", "urn:unknown:c14n"),
        good.substr(0, good.size() / 2),
    };
    for (const std::string& text : cases) {
        ScopedHandle h;
        int rc = loadAndVerify(h, text);
        EXPECT_NE(rc, 0) << text.substr(0, 200);
        EXPECT_NE(rc, 11213) << "not an invalid signature but one that cannot be checked: " << errorText(h);
        EXPECT_FALSE(errorText(h).empty());
        expectStillUsable(h);
    }
}

// Broken values, and the inputs the fuzzer found (the sanitizer build checks they
// leave nothing behind).
TEST(HostileSignatures, BrokenValuesDoNotVerify) {
    const std::string& good = signedInvoice();
    size_t value = good.find("<SignatureValue>") + 16;
    const std::string cases[] = {
        good.substr(0, value) + good.substr(value + 40),                      // truncated base64
        replaced(good, "<DigestValue>", "<DigestValue>AAAA"),                    // wrong digest
        good.substr(0, value) + "!!!!" + good.substr(value + 4),               // not base64
        testfiles::read(testfiles::dataPath("dsig/regressions/unreadable-digest-value.xml")),
    };
    for (const std::string& text : cases) {
        ScopedHandle h;
        EXPECT_NE(loadAndVerify(h, text), 0);
        expectStillUsable(h);
    }
}

// A reference to a missing Id names it; duplicate Ids are refused.
TEST(HostileSignatures, MissingAndDuplicateIdsAreRefused) {
    const std::string doc = "<r><a Id=\"x\">1100000</a></r>";
    const std::string signedText = signWithReference(doc, "x");
    ScopedHandle h;
    EXPECT_EQ(loadAndVerify(h, replaced(signedText, "URI=\"#x\"", "URI=\"#missing\"")),
              XSECException::IDNotFoundInDOMDoc);
    EXPECT_NE(errorText(h).find("missing"), std::string::npos) << errorText(h);
    // The signed element moved aside and a forged one put first with the same Id.
    const std::string wrapped = replaced(signedText, "<a Id=\"x\">1100000</a>",
                                         "<a Id=\"x\">9900000</a><hidden><a Id=\"x\">1100000</a></hidden>");
    EXPECT_EQ(loadAndVerify(h, wrapped), XSECException::IDNotFoundInDOMDoc);
    EXPECT_NE(errorText(h).find("More than one element"), std::string::npos) << errorText(h);
    // The XPointer form names the same Id and gets the same check.
    const std::string pointer = signWithReference("<r Id=\"x\"><a>1100000</a></r>", "#xpointer(id('x'))", kEnvelopedXPath);
    EXPECT_EQ(loadAndVerify(h, pointer), 0) << errorText(h);
    EXPECT_EQ(loadAndVerify(h, replaced(pointer, "<a>1100000</a>", "<a>1100000</a><hidden Id=\"x\"/>")),
              XSECException::IDNotFoundInDOMDoc);
}

// A node-set without the document element (the tax-invoice recipe leaves it out)
// crashed the engine's canonicalizer, before any key was looked at: in signing,
// and in verifying a document of a few hundred bytes without key information.
TEST(HostileSignatures, NodeSetsWithoutTheDocumentElement) {
    const char* const filters[] = {
        "not(self::r | ancestor-or-self::ds:Signature)",  // the library's own evaluator
        "not(self::r) and string-length(name()) >= 0 and not(ancestor-or-self::ds:Signature)",  // the engine's
    };
    for (const char* xpath : filters) {
        const std::string signedText =
            signWithReference("<r xmlns:p=\"urn:p\" p:a=\"1\"><!-- c --><a>1100000</a><?pi x?></r>", "", xpath);
        ASSERT_FALSE(signedText.empty()) << xpath;
        ScopedHandle h;
        EXPECT_EQ(loadAndVerify(h, signedText), 0) << xpath << ": " << errorText(h);
        EXPECT_EQ(loadAndVerify(h, replaced(signedText, "1100000", "9900000")), 11213) << xpath;
        const size_t from = signedText.find("<KeyInfo>");
        const size_t to = signedText.find("</KeyInfo>");
        ASSERT_NE(to, std::string::npos);
        const std::string keyless = signedText.substr(0, from) + signedText.substr(to + 10);
        EXPECT_NE(loadAndVerify(h, keyless), 0) << xpath;
        expectStillUsable(h);
    }
}

TEST(HostileSignatures, NothingOutsideTheDocumentIsReadWhenVerifying) {
    const std::string file = testfiles::scratch("external.xml");
    testfiles::write(file, "<external>signed content</external>");
    // Detached: the Signature alone is the document (in <r/>, r would come back unsigned).
    const std::string inR = signWithReference("<r/>", ("file://" + file).c_str());
    const size_t from = inR.find("<Signature");
    ASSERT_NE(from, std::string::npos);
    const std::string signedText = inR.substr(from, inR.rfind("</Signature>") + 12 - from);
    for (const std::string& text :
         {signedText, replaced(signedText, "file://" + file, "external.xml"),
          replaced(signedText, "file://" + file, "http://127.0.0.1:9/never")}) {
        ScopedHandle h;
        EXPECT_EQ(loadAndVerify(h, text), XSECException::ErrorOpeningURI) << errorText(h);
        EXPECT_NE(errorText(h).find("not followed"), std::string::npos) << errorText(h);
    }
    ScopedHandle allowed;
    EXPECT_EQ(VQTK_XMLDSIG_AllowExternalReferences(allowed, 1), 0);
    EXPECT_EQ(loadAndVerify(allowed, signedText), 0) << errorText(allowed);
    std::remove(file.c_str());
}

// Too many transforms or references: HostileMessagesTest, on every entry point.
TEST(HostileSignatures, WhatAStrangerMayNotAskOfTheVerifier) {
    const std::string& good = signedInvoice();
    // The engine reads names in time that grows with the square of their length.
    std::string longName;
    while (longName.size() < 256 * 1024)
        longName += "CN=abcdefgh,";
    const size_t certificate = good.find("<X509Certificate>");
    const std::string longIssuer =
        good.substr(0, certificate) + "<X509IssuerSerial><X509IssuerName>" + longName +
        "C=KR</X509IssuerName><X509SerialNumber>1</X509SerialNumber></X509IssuerSerial>" + good.substr(certificate);
    const size_t keyInfo = good.find("<X509Data>");
    const std::string longKeyName = good.substr(0, keyInfo) + "<KeyName>" + longName + "</KeyName>" + good.substr(keyInfo);

    const struct {
        std::string text;
        const char* why;
    } cases[] = {
        {longIssuer, "X509IssuerName is longer than 4096 characters"},
        {longKeyName, "KeyName is longer than 4096 characters"},
    };
    for (const auto& c : cases) {
        ScopedHandle h;
        EXPECT_NE(loadAndVerify(h, c.text), 0);
        EXPECT_NE(errorText(h).find(c.why), std::string::npos) << errorText(h);
        expectStillUsable(h);
    }
}

// A signature over siblings siblings whose one reference has the transform
// algorithm with expression; its digest is wrong, so a reference that is
// evaluated fails (11213).
std::string withXPath(int siblings, const char* algorithm, const std::string& expression) {
    std::string doc = "<r>";
    for (int i = 0; i < siblings; ++i)
        doc += "<a>x</a>";
    const bool filter = std::string(algorithm).find("filter2") != std::string::npos;
    return doc +
           "<ds:Signature xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"><ds:SignedInfo>"
           "<ds:CanonicalizationMethod Algorithm=\"http://www.w3.org/TR/2001/REC-xml-c14n-20010315\"/>"
           "<ds:SignatureMethod Algorithm=\"http://www.w3.org/2000/09/xmldsig#hmac-sha1\"/>"
           "<ds:Reference URI=\"\"><ds:Transforms><ds:Transform Algorithm=\"" + algorithm + "\">" +
           (filter ? "<f:XPath xmlns:f=\"http://www.w3.org/2002/06/xmldsig-filter2\" Filter=\"intersect\">" + expression +
                         "</f:XPath>"
                   : "<ds:XPath>" + expression + "</ds:XPath>") +
           "</ds:Transform></ds:Transforms><ds:DigestMethod Algorithm=\"http://www.w3.org/2000/09/xmldsig#sha1\"/>"
           "<ds:DigestValue>AAAAAAAAAAAAAAAAAAAAAAAAAAA=</ds:DigestValue></ds:Reference></ds:SignedInfo>"
           "<ds:SignatureValue>AAAA</ds:SignatureValue></ds:Signature></r>";
}

// An XPath transform is evaluated at every node: one that walks the document
// (or a sibling list, or reads an ancestor's text) from each node costs the
// square of its size, and walks
// nested in an XPath Filter 2.0 expression multiply. Such expressions are
// refused (35) on a document of thousands of nodes before anything runs, and
// evaluated on a small one; expressions that look up from the node, ours or
// the engine's, are evaluated on both; over-long ones are refused on both.
TEST(HostileSignatures, XPathIsRefusedWhereItWouldCostTooMuch) {
    const char* xpath = "http://www.w3.org/TR/1999/REC-xpath-19991116";
    const char* filter2 = "http://www.w3.org/2002/06/xmldsig-filter2";
    const int refused = XSECException::UnsupportedFunction;
    const struct {
        const char* algorithm;
        std::string expression;
        int small;  // over 20 siblings
        int large;  // over 5,000
    } cases[] = {
        {xpath, "count(../*) &gt; 0", 11213, refused},
        {xpath, "count(parent::*/*) &gt; 0", 11213, refused},
        {xpath, "count(//*) &gt; 0", 11213, refused},
        {xpath, "not(ancestor-or-self::ds:Signature) and count(descendant :: *) &gt;= 0", 11213, refused},
        {xpath, "count(following-sibling::*) &gt;= 0 or preceding::*", 11213, refused},
        {xpath, "not(id('x'))", 11213, refused},
        {xpath, "string-length(string(/)) &gt; 0", 11213, refused},  // the document's text at every node
        {xpath, "not(ancestor::* = 'x')", 11213, refused},
        {filter2, "//*[//*[//*]]", 11213, refused},
        {filter2, "//*[count(//*[count(//*) &gt; 0]) &gt; 0]", 11213, refused},
        {filter2, "//a | /r/*", 11213, 11213},
        {xpath, "not(ancestor-or-self::ds:Signature) and not(ancestor-or-self::*[@Id='http://x//y/descendant::id()'])",
         11213, 11213},
        {xpath,
         "count(ancestor-or-self::ds:Signature | here()/ancestor::ds:Signature[1]) &gt; "
         "count(ancestor-or-self::ds:Signature)",
         11213, 11213},
        {xpath, "not(ancestor-or-self::ds:Signature) and string-length('" + std::string(1100, 'a') + "') &gt; 0",
         refused, refused},
    };
    for (const auto& c : cases)
        for (const auto& [siblings, status] : {std::pair{20, c.small}, std::pair{5000, c.large}}) {
            ScopedHandle h;
            EXPECT_EQ(loadAndVerify(h, withXPath(siblings, c.algorithm, c.expression)), status)
                << c.expression << " over " << siblings << ": " << errorText(h);
            if (status == refused) {
                EXPECT_NE(errorText(h).find("XPath"), std::string::npos) << errorText(h);
            }
        }
}

// Decoded certificates are shared between handles by their bytes: another
// certificate put in the signer's place must be decoded as itself.
TEST(HostileSignatures, ACertificateSwappedIntoAKnownSignatureIsNotTakenForTheSigners) {
    const std::string& good = signedInvoice();
    ASSERT_EQ(verify(good), 0);
    const size_t from = good.find("X509Certificate>") + 16;
    const size_t to = good.find("<", from);
    std::string other = testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.pem"));
    other = other.substr(other.find('\n') + 1);
    other = other.substr(0, other.find("-----END"));
    std::string swapped = good;
    swapped.replace(from, to - from, other);
    EXPECT_EQ(verify(swapped), 11213);

    const std::string signer = good.substr(from, to - from);
    const std::string unreadable[] = {signer.substr(0, signer.size() / 2), signer + "AAAA", "@@@@"};
    for (const std::string& text : unreadable) {
        std::string broken = good;
        broken.replace(from, to - from, text);
        ScopedHandle h;
        const int rc = loadAndVerify(h, broken);
        EXPECT_NE(rc, 0) << text;
        EXPECT_NE(rc, 11213) << "an unreadable certificate is not a bad signature: " << errorText(h);
        expectStillUsable(h);
    }
}

}  // namespace
