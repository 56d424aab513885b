// Every family's loaders give each hostile document its status and text (never
// a crash) and stay usable; documents at the nesting bound still go through
// signing, encryption and verification.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HostileDocuments.hpp"
#include "ScopedHandle.hpp"
#include "ebxml/EbXmlFixture.hpp"
#include "xenc/XencFixture.hpp"

namespace {

using dsigtest::bytes;
using dsigtest::chars;
using dsigtest::errorText;
using vqxml::kMaxElementDepth;

constexpr std::size_t kHuge = 100000;

std::string nested(std::size_t levels) {
    return hostile::nested(levels);
}

// A SOAP envelope whose deepest Body element is at levels.
std::string envelope(std::size_t levels) {
    return "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header/><soap:Body>" +
           nested(levels - 2) + "</soap:Body></soap:Envelope>";
}

using Loader = int (*)(void*, char*, int);

struct Family {
    const char* name;
    Loader load;
    std::string (*document)(std::size_t);
    int refusal;     // the loader's status for a document that does not parse
    int noData;      // for no bytes at all
    int notMarkup;   // for bytes that do not open with '<'
};

bool opensWithMarkup(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string::npos && text[first] == '<';
}

const Family kFamilies[] = {
    // No document at all asks for an enveloping signature.
    {"XMLDSIG_SetXMLDocument", VQTK_XMLDSIG_SetXMLDocument, nested, VQXML_ERR_PARSE, 0, VQXML_ERR_PARSE},
    {"XMLDSIG_SetSignXMLDocument", VQTK_XMLDSIG_SetSignXMLDocument, nested, VQXML_ERR_PARSE, 10212, VQXML_ERR_PARSE},
    {"XMLENC_SetXMLDocument", VQTK_XMLENC_SetXMLDocument, nested, VQXML_ERR_PARSE, 10106, VQXML_ERR_PARSE},
    {"XMLENC_SetEncXMLDocument", VQTK_XMLENC_SetEncXMLDocument, nested, VQXML_ERR_PARSE, 10311, VQXML_ERR_PARSE},
    {"SOAPSEC_SetSOAPDocument", VQTK_SOAPSEC_SetSOAPDocument, envelope, 10401, 10400, 10401},
    {"SOAPSEC_SetSOAPSecXMLDocument", VQTK_SOAPSEC_SetSOAPSecXMLDocument, envelope, VQXML_ERR_PARSE, 10400,
     VQXML_ERR_PARSE},
    // Bytes that are neither a MIME package nor XML are an unusable package.
    {"EBXML_SetSOAPDocument", VQTK_EBXML_SetSOAPDocument, envelope, VQXML_ERR_PARSE, VQXML_ERR_NO_PACKAGE, 10103},
    {"EBXML_SetSOAPSecXMLDocument", VQTK_EBXML_SetSOAPSecXMLDocument, envelope, VQXML_ERR_PARSE,
     VQXML_ERR_NO_PACKAGE, 10103},
};

int load(const Family& f, void* h, std::size_t levels) {
    std::string text = f.document(levels);
    return f.load(h, chars(text), static_cast<int>(text.size()));
}

TEST(HostileDocuments, EveryLoaderGivesItsStatusAndStaysUsable) {
    for (const Family& f : kFamilies)
        for (const hostile::Document& d : hostile::documents()) {
            if (d.status == 0)
                continue;
            int expected = d.status;
            if (d.text.empty())
                expected = f.noData;
            else if (d.status == VQXML_ERR_PARSE)
                expected = opensWithMarkup(d.text) ? f.refusal : f.notMarkup;
            ScopedHandle h;
            EXPECT_EQ(f.load(h, chars(d.text), static_cast<int>(d.text.size())), expected)
                << f.name << ", " << d.name << ": " << errorText(h);
            if (expected == d.status) {
                EXPECT_NE(errorText(h).find(d.says), std::string::npos) << f.name << ", " << d.name;
            }
            // At the bound the document parses; a verifier's loader then misses the signature.
            const int atBound = load(f, h, kMaxElementDepth);
            EXPECT_TRUE(atBound == 0 || atBound == 30) << f.name << ", after " << d.name << ": " << errorText(h);
        }
}

// Documents at the nesting bound sign and verify, encrypt and decrypt.
TEST(HostileDocuments, DocumentsAtTheBoundSignAndEncrypt) {
    dsigtest::Signing s;
    s.c14n = s.referenceC14n = 1;
    const std::string signedText = dsigtest::signedText(nested(kMaxElementDepth), s);
    ASSERT_FALSE(signedText.empty());
    // The signature adds a level under the document element, within the bound.
    EXPECT_EQ(dsigtest::verify(signedText), 0);
    xenctest::Encryption e;
    e.targets = {"e"};
    e.recipients = {{2, "ee-rsa", ""}};
    const std::string encrypted = xenctest::encrypt(nested(kMaxElementDepth - 2), e);
    ASSERT_FALSE(encrypted.empty());
    std::string out;
    EXPECT_EQ(xenctest::decrypt(encrypted, e.recipients[0], &out), 0) << out;
}

TEST(HostileDocuments, ADeepXmlAttachmentIsRefusedBeforeTheEngineParsesIt) {
    using namespace ebxmltest;
    std::string signedPackage;
    ASSERT_EQ(sign(makePackage(standardParts()), &signedPackage), 0) << signedPackage;
    std::vector<Part> parts = standardParts();
    parts[0].content = leavesOf(signedPackage)[0].content;
    for (std::size_t levels : {kMaxElementDepth + 1, kHuge}) {
        parts[1].content = nested(levels);
        std::string result;
        EXPECT_NE(verify(makePackage(parts), &result), 0) << levels;
        EXPECT_NE(result.find("nested deeper than"), std::string::npos) << result;
    }
}

// A loader that fails leaves the handle empty, also when it failed after
// making its engine object: the family's action then finds no document, rather
// than acting on the previous document or on half of the new one.
TEST(HostileDocuments, AFailedLoadLeavesNoDocument) {
    using Action = int (*)(void*);
    struct Case {
        const char* name;
        Loader load;
        std::string good, bad;
        Action action;
        int noDocument;
    };
    const std::string plain = "<a><b>x</b></a>";
    std::string signedDoc;
    {
        ScopedHandle h;
        ASSERT_EQ(VQTK_XMLDSIG_SetXMLDocument(h, chars(plain), static_cast<int>(plain.size())), 0);
        ASSERT_EQ(ebxmltest::signWithHmac(h, "not(ancestor-or-self::ds:Signature)"), 0) << errorText(h);
        signedDoc = dsigtest::resultDocument(h);
    }
    xenctest::Encryption e;
    e.targets = {"b"};
    e.recipients = {{1, "", xenctest::sharedKek()}};
    const std::string encrypted = xenctest::encrypt(plain, e);
    const std::string emptySignature = "<a><ds:Signature xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"/></a>";
    const std::string secured =
        "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Header><wsse:Security "
        "xmlns:wsse=\"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd\">" +
        std::string("</wsse:Security></s:Header><s:Body>x</s:Body></s:Envelope>");
    std::string twoSignatures = secured;
    twoSignatures.insert(twoSignatures.find("</wsse:Security>"), emptySignature.substr(3, emptySignature.size() - 7) +
                                                                     emptySignature.substr(3, emptySignature.size() - 7));
    const std::string package = ebxmltest::makePackage(ebxmltest::standardParts());
    std::string signedPackage;
    ASSERT_EQ(ebxmltest::sign(package, &signedPackage), 0) << signedPackage;
    const Case cases[] = {
        {"XMLDSIG_SetXMLDocument", VQTK_XMLDSIG_SetXMLDocument, plain, "<a>", [](void* h) { return VQTK_XMLDSIG_SignatureMethod(h, 1, 1); }, 10200},
        {"XMLDSIG_SetSignXMLDocument", VQTK_XMLDSIG_SetSignXMLDocument, signedDoc, emptySignature, VQTK_XMLDSIG_Verify, 10200},
        {"XMLENC_SetXMLDocument", VQTK_XMLENC_SetXMLDocument, plain, "<a>", [](void* h) { return VQTK_XMLENC_EncryptElement(h, const_cast<char*>("b"), 2); }, 10106},
        {"XMLENC_SetEncXMLDocument", VQTK_XMLENC_SetEncXMLDocument, encrypted, "<a>", VQTK_XMLENC_GetEncKeyInfo, 10311},
        {"SOAPSEC_SetSOAPDocument", VQTK_SOAPSEC_SetSOAPDocument, secured, "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"/>", [](void* h) { return VQTK_SOAPSEC_SignatureMethod(h, 2, 0); }, 10400},
        {"SOAPSEC_SetSOAPSecXMLDocument", VQTK_SOAPSEC_SetSOAPSecXMLDocument, secured, twoSignatures, VQTK_SOAPSEC_ProcessSOAP, 10400},
        {"EBXML_SetSOAPDocument", VQTK_EBXML_SetSOAPDocument, package, "--b", [](void* h) { return VQTK_EBXML_SignatureMethod(h, 1, 1); }, 10200},
        {"EBXML_SetSOAPSecXMLDocument", VQTK_EBXML_SetSOAPSecXMLDocument, signedPackage, "--b", VQTK_EBXML_Verify, 10200},
    };
    for (const Case& c : cases) {
        ScopedHandle h;
        std::string good = c.good, bad = c.bad;
        ASSERT_EQ(c.load(h, chars(good), static_cast<int>(good.size())), 0) << c.name << ": " << errorText(h);
        EXPECT_NE(c.load(h, chars(bad), static_cast<int>(bad.size())), 0) << c.name;
        EXPECT_EQ(c.action(h), c.noDocument) << c.name << ": " << errorText(h);
        // Nor does another family find anything.
        EXPECT_EQ(VQTK_XMLENC_Decrypt(h), 10311) << c.name;
    }
}

}  // namespace
