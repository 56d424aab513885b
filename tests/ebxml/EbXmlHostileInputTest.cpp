// Broken and hostile packages get a status, never a crash, and leave the handle
// usable.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "EbXmlFixture.hpp"

using namespace ebxmltest;

namespace {

constexpr int kCannotUse = VQXML_ERR_RELEASE;

int loadForSigning(void* h, const std::string& data) {
    return VQTK_EBXML_SetSOAPDocument(h, chars(data), static_cast<int>(data.size()));
}

int loadForVerifying(void* h, const std::string& data) {
    return VQTK_EBXML_SetSOAPSecXMLDocument(h, chars(data), static_cast<int>(data.size()));
}

std::string signedPackage() {
    std::string out;
    EXPECT_EQ(sign(makePackage(standardParts()), &out), 0) << out;
    return out;
}

TEST(EbXmlArguments, NoData) {
    std::string package = makePackage(standardParts());
    ScopedHandle h;
    EXPECT_EQ(VQTK_EBXML_SetSOAPDocument(h, nullptr, 10), VQXML_ERR_NO_PACKAGE);
    EXPECT_EQ(VQTK_EBXML_SetSOAPDocument(h, chars(package), 0), VQXML_ERR_NO_PACKAGE);
    EXPECT_EQ(VQTK_EBXML_SetSOAPSecXMLDocument(h, const_cast<char*>(""), 5), VQXML_ERR_NO_PACKAGE);
    EXPECT_EQ(errorText(h), "");
}

TEST(EbXmlPackageShape, UnusablePackagesAreRefusedAtLoading) {
    std::vector<Part> longId = standardParts();
    longId[2].contentId = "<" + std::string(298, 'x') + ">";
    std::vector<Part> sharedId = standardParts();
    sharedId[2].contentId = sharedId[1].contentId;
    std::vector<Part> emptyEnvelope = standardParts();
    emptyEnvelope[0].content.clear();
    std::string nested = envelope();  // deeper than MIME nesting may go
    for (int depth = 0; depth < 40; ++depth) {
        const std::string b = "b" + std::to_string(depth);
        nested = "Content-Type: multipart/related; boundary=\"" + b + "\"\r\n\r\n--" + b + "\r\n" +
                 (depth == 0 ? "Content-Type: text/xml\r\n\r\n" : "") + nested + "\r\n--" + b + "--\r\n";
    }
    const std::string refused[] = {
        "Content-Type: multipart/related; boundary=\"b\"\r\n\r\n--b--\r\n",  // no part
        "Content-Type: multipart/related\r\n\r\n<x/>\r\n",                   // no boundary, so no part
        "--b",                                                                // a first line that never ends
        "Content-Type: text/xml",                                             // a header that never ends
        makePackage(longId),
        makePackage(sharedId),
        makePackage(emptyEnvelope),
        nested,
    };
    for (const std::string& data : refused) {
        ScopedHandle h;
        EXPECT_EQ(loadForSigning(h, data), kCannotUse) << data.substr(0, 80);
        EXPECT_EQ(loadForVerifying(h, data), kCannotUse) << data.substr(0, 80);
        EXPECT_EQ(errorText(h), "");
    }
}

// A "cid:" reference names one part exactly (RFC 2392): the Content-ID inside
// its angle brackets, byte for byte, after percent-decoding the URL. A part
// with two Content-ID fields, a Content-ID with white space or a lone bracket, or
// two parts whose Content-IDs differ only in case could be read as another part
// by another reader, and the package is refused.
TEST(EbXmlPackageShape, ContentIdsNameOnePartExactly) {
    const std::string package = signedPackage();
    const std::string id = "Content-ID: <order@example.kr>";
    ASSERT_NE(package.find(id), std::string::npos);
    const auto with = [&](const std::string& field) { return std::string(package).replace(package.find(id), id.size(), field); };
    struct Case {
        std::string data;
        bool loads;  // refused at verification rather than at loading
    };
    const Case refused[] = {
        {with(id + "\r\nContent-ID: <scan2@example.kr>"), false},
        {with("Content-ID: <ORDER@example.kr>"), true},
        {with("Content-ID: <order@Example.kr>"), true},
        {with("Content-ID: < order@example.kr>"), false},
        {with("Content-ID: <order@example.kr >"), false},
        {with("Content-ID: <order @example.kr>"), false},
        {with("Content-ID: <order@example.kr"), false},
        {with("Content-ID: <Scan@example.kr>"), false},  // the scan part's, in another case
    };
    for (const Case& c : refused) {
        ScopedHandle h;
        const int loaded = loadForVerifying(h, c.data);
        const std::string field = c.data.substr(c.data.find("Content-ID", c.data.find("order") - 20), 60);
        EXPECT_EQ(loaded, c.loads ? 0 : kCannotUse) << field;
        if (loaded == 0) {
            EXPECT_NE(VQTK_EBXML_Verify(h), 0) << field;
        }
    }
    ScopedHandle h;
    ASSERT_EQ(loadForVerifying(h, with("Content-ID:   <order@example.kr>  ")), 0);
    EXPECT_EQ(VQTK_EBXML_Verify(h), 0) << errorText(h);
}

TEST(EbXmlPackageShape, AFirstPartThatIsNotXml) {
    std::vector<Part> parts = standardParts();
    std::swap(parts[0], parts[2]);
    const std::string package = makePackage(parts);
    ScopedHandle h;
    EXPECT_EQ(loadForSigning(h, package), VQXML_ERR_PARSE);
    EXPECT_EQ(errorText(h).rfind("XMLDSIG_setXMLDocument > ", 0), 0u) << errorText(h);
    EXPECT_EQ(loadForVerifying(h, package), VQXML_ERR_PARSE);
    EXPECT_EQ(errorText(h).rfind("XMLDSIG_setSignXMLDocument > ", 0), 0u) << errorText(h);
}

TEST(EbXmlPackageShape, AnUnclosedBoundary) {
    // Without its closing delimiter the last part runs to the end of the data: a
    // signed package cut there no longer verifies, and one cut inside its last
    // part neither.
    const std::string package = signedPackage();
    const size_t closing = package.rfind("------=_ebxml_test_boundary--");
    ASSERT_NE(closing, std::string::npos);
    for (size_t cut : {closing, closing - 100}) {
        std::string why;
        EXPECT_EQ(verify(package.substr(0, cut), &why), 11213) << why;
    }
}

TEST(EbXmlPackageShape, AMissingAttachmentCannotBeResolved) {
    std::vector<Leaf> leaves = leavesOf(signedPackage());
    std::vector<Part> parts = standardParts();
    parts[0].content = leaves[0].content;
    parts.pop_back();
    std::string why;
    EXPECT_NE(verify(makePackage(parts), &why), 0);
    EXPECT_NE(why.find("cid:scan@example.kr"), std::string::npos) << why;
}

TEST(EbXmlPackageShape, AnAttachmentCannotTakeAnotherOnesPlace) {
    // Swapping the Content-IDs of the attachments swaps what the references see:
    // the binary one cannot be canonicalized as XML, a processing error rather
    // than a failed check, but never a success.
    std::vector<Leaf> leaves = leavesOf(signedPackage());
    std::vector<Part> parts = standardParts();
    parts[0].content = leaves[0].content;
    std::swap(parts[1].contentId, parts[2].contentId);
    std::string why;
    EXPECT_EQ(verify(makePackage(parts), &why), VQXML_ERR_PARSE) << why;
    // Two XML attachments swapped: both digests are wrong.
    parts = standardParts();
    parts[2] = {"text/xml", "<scan@example.kr>", "<other/>", ""};
    std::string out;
    ASSERT_EQ(sign(makePackage(parts), &out), 0) << out;
    parts[0].content = leavesOf(out)[0].content;
    std::swap(parts[1].content, parts[2].content);
    EXPECT_EQ(verify(makePackage(parts), &why), 11213) << why;
}

TEST(EbXmlPackageShape, XmlAttachmentsNeverReachOutside) {
    // An attachment the engine would parse may not name an external entity: the
    // engine's parser would open it, signing or verifying.
    const std::string secret = testfiles::scratch("ebxml-secret.txt");
    testfiles::write(secret, "secret");
    std::vector<Part> parts = standardParts();
    parts[1].content = "<!DOCTYPE a [<!ENTITY e SYSTEM \"file://" + secret + "\">]><a>&e;</a>";
    std::string why;
    EXPECT_EQ(sign(makePackage(parts), &why), VQXML_ERR_PARSE) << why;
    EXPECT_NE(why.find("<order@example.kr>"), std::string::npos) << why;

    // A signature made over a harmless attachment, which is then swapped.
    parts = standardParts();
    std::string out;
    ASSERT_EQ(sign(makePackage(parts), &out), 0) << out;
    parts[0].content = leavesOf(out)[0].content;
    parts[1].content = "<!DOCTYPE a [<!ENTITY e SYSTEM \"file://" + secret + "\">]><a>&e;</a>";
    EXPECT_EQ(verify(makePackage(parts), &why), VQXML_ERR_PARSE) << why;
    std::remove(secret.c_str());

    // An internal subset is fine.
    parts = standardParts();
    parts[1].content = "<!DOCTYPE a [<!ENTITY e \"inner\">]><a>&e;</a>";
    ASSERT_EQ(sign(makePackage(parts), &out), 0) << out;
    EXPECT_EQ(verify(out, &why), 0) << why;
}

}  // namespace
