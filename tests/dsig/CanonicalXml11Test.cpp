// Canonical XML 1.1 against 1.0 where they part ways, byte for byte, and the
// xml:base join on its own.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include <openssl/evp.h>

#include "CanonicalXml11Cases.hpp"
#include "ScopedHandle.hpp"
#include "TestFiles.hpp"
#include "core/ParseLimits.hpp"
#include "dsig/Canonicalizer.hpp"
#include "engine/Base64.hpp"

namespace {

struct Text : vqxml::ByteSink {
    void write(const char* bytes, std::size_t n) override { text.append(bytes, n); }
    std::string text;
};

const XERCES_CPP_NAMESPACE::DOMElement* byId(const XERCES_CPP_NAMESPACE::DOMElement* e, const std::u16string& id) {
    if (id == e->getAttribute(u"Id"))
        return e;
    for (auto* child = e->getFirstElementChild(); child != nullptr; child = child->getNextElementSibling())
        if (const auto* found = byId(child, id))
            return found;
    return nullptr;
}

TEST(CanonicalXml11, SubtreesUnderLeftOutAncestors) {
    ScopedHandle engines;  // Xerces started
    XERCES_CPP_NAMESPACE::DOMDocument* doc = nullptr;
    ASSERT_EQ(vqxml::parseBounded(c14n11::kDocument, sizeof c14n11::kDocument - 1, &doc), 0);
    for (const c14n11::Case& c : c14n11::kCases) {
        const auto* apex = byId(doc->getDocumentElement(), vqxml::toXString(c.id));
        ASSERT_NE(apex, nullptr) << c.id;
        vqxml::CanonicalOptions how;
        how.version11 = std::string(c.algorithm) == c14n11::kC14n11;
        vqxml::SubtreeSelection subtree(apex, false);
        Text out;
        vqxml::canonicalize(apex, subtree, how, out);
        EXPECT_EQ(out.text, c.bytes) << c.id << " " << c.algorithm;
    }
    doc->release();
}

// xmlsec1 writes the same bytes for every case (Santuario's differences are in
// CanonicalXml11Cases.hpp): the digest it signs each subtree with is theirs.
TEST(CanonicalXml11, XmlsecDigestsTheSameBytes) {
    if (!testfiles::haveProgram("xmlsec1"))
        GTEST_SKIP() << "xmlsec1 is not installed";
    testfiles::ScratchDir dir;
    std::string document = c14n11::kDocument;
    for (const c14n11::Case& c : c14n11::kCases) {
        const std::string signature =
            std::string("<ds:Signature xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"><ds:SignedInfo>"
                        "<ds:CanonicalizationMethod Algorithm=\"http://www.w3.org/2001/10/xml-exc-c14n#\"/>"
                        "<ds:SignatureMethod Algorithm=\"http://www.w3.org/2000/09/xmldsig#hmac-sha1\"/>"
                        "<ds:Reference URI=\"#") + c.id + "\"><ds:Transforms><ds:Transform Algorithm=\"" + c.algorithm +
            "\"/></ds:Transforms><ds:DigestMethod Algorithm=\"http://www.w3.org/2000/09/xmldsig#sha1\"/>"
            "<ds:DigestValue/></ds:Reference></ds:SignedInfo><ds:SignatureValue/></ds:Signature>";
        testfiles::write(dir("in.xml"), std::string(document).insert(document.rfind("</a>"), signature));
        ASSERT_EQ(testfiles::run("xmlsec1 --sign --hmackey " + testfiles::dataPath("dsig/hmac.bin") + " --id-attr:Id " +
                                 "urn:a:" + c.id + " --output " + dir("out.xml") + " " + dir("in.xml")),
                  0);
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int len = 0;
        EVP_Digest(c.bytes, std::strlen(c.bytes), digest, &len, EVP_sha1(), nullptr);
        const std::string expected = vqxml::base64Text(std::vector<unsigned char>(digest, digest + len));
        EXPECT_NE(testfiles::read(dir("out.xml")).find("DigestValue>" + expected), std::string::npos)
            << c.id << " " << c.algorithm;
    }
}

TEST(CanonicalXml11, XmlBaseJoin) {
    const struct {
        const char *base, *reference, *joined;
    } kJoins[] = {
        {"http://e.org/x/", "y/z.xml", "http://e.org/x/y/z.xml"},
        {"http://e.org/x/y", "?q", "http://e.org/x/y?q"},
        {"http://e.org", "p", "http://e.org/p"},
        {"http://e.org/a/b/", "../../../c", "http://e.org/c"},
        {"../r/", "./s/../../t/", "../t/"},
        {"a/b/", "../../../c#f", "../c#f"},
        {"x/..", "y", "y"},
        {"http://e.org/", "/a/../../c", "http://e.org/c"},
    };
    for (const auto& j : kJoins) {
        const vqxml::XString joined = vqxml::joinXmlBase(vqxml::toXString(j.base), vqxml::toXString(j.reference));
        EXPECT_EQ(std::string(joined.begin(), joined.end()), j.joined) << j.base << " + " << j.reference;
    }
}

}  // namespace
