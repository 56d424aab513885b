// Every family's loaders refuse documents nested beyond the parser's bound with
// the parse status (never a crash, however deep), and documents at the bound
// still go through signing, encryption and verification.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ScopedHandle.hpp"
#include "core/ParseLimits.hpp"
#include "ebxml/EbXmlFixture.hpp"
#include "xenc/XencFixture.hpp"

namespace {

using dsigtest::bytes;
using dsigtest::chars;
using dsigtest::errorText;
using vqxml::kMaxElementDepth;

constexpr std::size_t kHuge = 100000;

// levels nested elements in total, the document element included.
std::string nested(std::size_t levels, const std::string& outerOpen = "<e>", const std::string& outerClose = "</e>") {
    std::string text = outerOpen;
    for (std::size_t i = 1; i < levels; ++i)
        text += "<e>";
    text += "x";
    for (std::size_t i = 1; i < levels; ++i)
        text += "</e>";
    return text + outerClose;
}

// A SOAP envelope whose deepest Body element is at levels.
std::string envelope(std::size_t levels) {
    return nested(levels - 2,
                  "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Header/>"
                  "<soap:Body><e>",
                  "</e></soap:Body></soap:Envelope>");
}

using Loader = int (*)(void*, char*, int);

struct Family {
    const char* name;
    Loader load;
    std::string (*document)(std::size_t);
    int refusal;  // the loader's status for a document that does not parse
};

std::string plain(std::size_t levels) {
    return nested(levels);
}

const Family kFamilies[] = {
    {"XMLDSIG_SetXMLDocument", VQTK_XMLDSIG_SetXMLDocument, plain, VQXML_ERR_PARSE},
    {"XMLDSIG_SetSignXMLDocument", VQTK_XMLDSIG_SetSignXMLDocument, plain, VQXML_ERR_PARSE},
    {"XMLENC_SetXMLDocument", VQTK_XMLENC_SetXMLDocument, plain, VQXML_ERR_PARSE},
    {"XMLENC_SetEncXMLDocument", VQTK_XMLENC_SetEncXMLDocument, plain, VQXML_ERR_PARSE},
    {"SOAPSEC_SetSOAPDocument", VQTK_SOAPSEC_SetSOAPDocument, envelope, 10401},
    {"SOAPSEC_SetSOAPSecXMLDocument", VQTK_SOAPSEC_SetSOAPSecXMLDocument, envelope, VQXML_ERR_PARSE},
    {"EBXML_SetSOAPDocument", VQTK_EBXML_SetSOAPDocument, envelope, VQXML_ERR_PARSE},
    {"EBXML_SetSOAPSecXMLDocument", VQTK_EBXML_SetSOAPSecXMLDocument, envelope, VQXML_ERR_PARSE},
};

int load(const Family& f, void* h, std::size_t levels) {
    std::string text = f.document(levels);
    return f.load(h, chars(text), static_cast<int>(text.size()));
}

TEST(DeepNesting, EveryLoaderRefusesBeyondTheBoundAndStaysUsable) {
    for (const Family& f : kFamilies) {
        ScopedHandle h;
        EXPECT_EQ(load(f, h, kMaxElementDepth + 1), f.refusal) << f.name;
        if (f.refusal == VQXML_ERR_PARSE) {
            EXPECT_NE(errorText(h).find("nested deeper than"), std::string::npos) << f.name << ": " << errorText(h);
        }
        EXPECT_EQ(load(f, h, kHuge), f.refusal) << f.name;
        // At the bound the document parses; a verifier's loader then misses the signature.
        const int atBound = load(f, h, kMaxElementDepth);
        EXPECT_TRUE(atBound == 0 || atBound == 30) << f.name << ": " << errorText(h);
    }
}

TEST(DeepNesting, ASignatureOverADocumentAtTheBoundVerifies) {
    const std::string text = nested(kMaxElementDepth);
    const std::string& cert = dsigtest::signerCert();
    const std::string& key = dsigtest::signerKey();
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLDSIG_SetXMLDocument(h, chars(text), static_cast<int>(text.size())), 0);
    ASSERT_EQ(VQTK_XMLDSIG_SignatureMethod(h, 5, 1), 0);
    ASSERT_EQ(VQTK_XMLDSIG_createReference(h, const_cast<char*>(""), 3, 1,
                                           const_cast<char*>("not(ancestor-or-self::ds:Signature)")),
              0);
    ASSERT_EQ(VQTK_XMLDSIG_SetSigner(h, bytes(cert), static_cast<int>(cert.size()), bytes(key),
                                     static_cast<int>(key.size())),
              0);
    ASSERT_EQ(VQTK_XMLDSIG_sign(h), 0) << errorText(h);
    // The signature adds a level under the document element, within the bound.
    EXPECT_EQ(dsigtest::verify(dsigtest::resultDocument(h)), 0);
}

TEST(DeepNesting, AnEncryptedDocumentAtTheBoundDecrypts) {
    xenctest::Encryption e;
    e.targets = {"e"};
    e.recipients = {{2, "ee-rsa", ""}};
    const std::string encrypted = xenctest::encrypt(nested(kMaxElementDepth - 2), e);
    ASSERT_FALSE(encrypted.empty());
    std::string out;
    EXPECT_EQ(xenctest::decrypt(encrypted, e.recipients[0], &out), 0) << out;
}

TEST(DeepNesting, ADeepXmlAttachmentIsRefusedBeforeTheEngineParsesIt) {
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

}  // namespace
