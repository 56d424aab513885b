// Signing packages and bare envelopes, and verifying them again.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "EbXmlFixture.hpp"

using namespace ebxmltest;

namespace {

std::string signedPackage(const std::vector<Part>& parts, int digest = 1, int c14n = 1) {
    std::string out;
    EXPECT_EQ(sign(makePackage(parts), &out, digest, c14n), 0) << out;
    return out;
}

// The Reference elements of a signed envelope, one text each.
std::vector<std::string> referencesOf(const std::string& envelopeText) {
    static const std::regex reference("<ds:Reference [^]*?</ds:Reference>");
    std::vector<std::string> out;
    for (std::sregex_iterator it(envelopeText.begin(), envelopeText.end(), reference), end; it != end; ++it)
        out.push_back(it->str());
    return out;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

const char kC14n[] = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
const char kSha1[] = "http://www.w3.org/2000/09/xmldsig#sha1";

TEST(EbXmlSigning, OneReferencePerAttachmentAfterTheCallersOwn) {
    const std::vector<Leaf> leaves = leavesOf(signedPackage(standardParts()));
    ASSERT_EQ(leaves.size(), 3u);
    const std::vector<std::string> refs = referencesOf(leaves[0].content);
    ASSERT_EQ(refs.size(), 3u) << leaves[0].content;
    EXPECT_TRUE(contains(refs[0], "URI=\"\""));
    EXPECT_TRUE(contains(refs[1], "URI=\"cid:order@example.kr\""));
    EXPECT_TRUE(contains(refs[2], "URI=\"cid:scan@example.kr\""));
    for (const std::string& ref : refs)
        EXPECT_TRUE(contains(ref, kSha1)) << ref;
    // Only the XML attachment is canonicalized.
    EXPECT_TRUE(contains(refs[1], kC14n)) << refs[1];
    EXPECT_FALSE(contains(refs[2], "Transform")) << refs[2];
    // The attachments travel unchanged.
    EXPECT_EQ(leaves[1].content, orderDocument());
    EXPECT_EQ(leaves[2].content, binaryPayload());
}

TEST(EbXmlSigning, XmlIsTheContentTypeAndTheFirstByteTogether) {
    std::vector<Part> parts = standardParts();
    parts[2].content = "<looks-like-xml/>";  // but application/octet-stream
    parts.push_back({"Application/Soap+XML", "<data@example.kr>", "not markup", ""});
    parts.push_back({"text/XML", "<late@example.kr>", "<late/>", ""});
    const std::vector<std::string> refs = referencesOf(leavesOf(signedPackage(parts))[0].content);
    ASSERT_EQ(refs.size(), 5u);
    EXPECT_TRUE(contains(refs[1], kC14n));
    EXPECT_FALSE(contains(refs[2], "Transform"));
    EXPECT_FALSE(contains(refs[3], "Transform"));
    EXPECT_TRUE(contains(refs[4], kC14n));
}

TEST(EbXmlSigning, ContentIdsBecomeCidUris) {
    std::vector<Part> parts = standardParts();
    parts[1].contentId = "  <spaced@example.kr>  ";
    parts[2].contentId = "bare%\"@example.kr";
    parts.push_back({"application/octet-stream", "<" + std::string(255, 'y') + ">", "longest", ""});  // 255 is fine
    std::string package;
    ASSERT_EQ(sign(makePackage(parts), &package), 0) << package;
    const std::vector<std::string> refs = referencesOf(leavesOf(package)[0].content);
    ASSERT_EQ(refs.size(), 4u);
    EXPECT_TRUE(contains(refs[1], "URI=\"cid:spaced@example.kr\"")) << refs[1];
    // RFC 2392: what a URI cannot carry is percent-encoded, and decoded to find the part.
    EXPECT_TRUE(contains(refs[2], "URI=\"cid:bare%25%22@example.kr\"")) << refs[2];
    EXPECT_EQ(verify(package, &package), 0) << package;
}

TEST(EbXmlSigning, ThePrefixIsAlwaysDs) {
    const std::string package = makePackage(standardParts());
    ScopedHandle h;
    ASSERT_EQ(VQTK_EBXML_SetSOAPDocument(h, chars(package), static_cast<int>(package.size())), 0);
    ASSERT_EQ(VQTK_XMLDSIG_SetPrefix(h, const_cast<char*>("dsig")), 0);
    ASSERT_EQ(signWithHmac(h), 0) << errorText(h);
    const std::string envelopeText = leavesOf(resultDocument(h))[0].content;
    EXPECT_TRUE(contains(envelopeText, "<ds:Signature xmlns:ds=")) << envelopeText;
    EXPECT_FALSE(contains(envelopeText, "dsig:"));
}

TEST(EbXmlSigning, SigningTwiceAddsTheAttachmentsOnce) {
    const std::string package = makePackage(standardParts());
    ScopedHandle h;
    ASSERT_EQ(VQTK_EBXML_SetSOAPDocument(h, chars(package), static_cast<int>(package.size())), 0);
    ASSERT_EQ(signWithHmac(h), 0) << errorText(h);
    ASSERT_EQ(VQTK_EBXML_Sign(h), 0) << errorText(h);
    EXPECT_EQ(referencesOf(leavesOf(resultDocument(h))[0].content).size(), 3u);
}

// Every canonicalization verifies; without one the XML attachment is signed raw.
TEST(EbXmlRoundTrip, SignedPackagesVerify) {
    for (int c14n : {0, 1, 2, 3, 4, 5, 6}) {
        const std::string package = signedPackage(standardParts(), 3, c14n);
        std::string result;
        EXPECT_EQ(verify(package, &result), 0) << "c14n " << c14n << ": " << result;
        if (c14n == 0) {
            const std::vector<std::string> refs = referencesOf(leavesOf(package)[0].content);
            ASSERT_EQ(refs.size(), 3u);
            EXPECT_FALSE(contains(refs[1], "Transform")) << refs[1];
        }
    }
}

TEST(EbXmlRoundTrip, AttachmentsAreSignedAfterTransferDecoding) {
    std::vector<Part> parts = standardParts();
    parts[2].transferEncoding = "base64";
    parts[1].transferEncoding = "quoted-printable";
    const std::string package = signedPackage(parts);
    ASSERT_TRUE(contains(package, "Content-Transfer-Encoding: base64"));
    std::string result;
    EXPECT_EQ(verify(package, &result), 0) << result;
}

// Changes after signing: to a signed attachment or the envelope they fail; to
// what the next MSH may change, or to the spelling of an XML attachment (only its
// canonical form is signed), they do not.
TEST(EbXmlRoundTrip, ChangesAfterSigning) {
    const std::string package = signedPackage(standardParts());
    const struct {
        std::string from, to;
        int status;
    } edits[] = {
        {"공책", "연필", 11213},
        {"--not-a-boundary", "++not-a-boundary", 11213},  // in the binary attachment
        {"NewOrder", "OldOrder", 11213},
        {"<eb:SyncReply ", "<eb:SyncReply eb:id=\"added-later\" ", 0},
        {"code=\"A-1\"   quantity", "code=\"A-1\" quantity", 0},
    };
    for (const auto& e : edits) {
        std::string why;
        EXPECT_EQ(verify(dsigtest::replaced(package, e.from, e.to), &why), e.status) << e.from << ": " << why;
        if (e.from == "공책") {
            EXPECT_TRUE(contains(why, "XMLDSIG_verify > ")) << why;
            EXPECT_TRUE(contains(why, "cid:order@example.kr")) << why;
        }
    }
}

TEST(EbXmlBareEnvelope, SignsAndVerifiesWithoutAPackage) {
    std::string signedEnvelope;
    ASSERT_EQ(sign(envelope(), &signedEnvelope), 0) << signedEnvelope;
    EXPECT_EQ(signedEnvelope.rfind("<?xml", 0), 0u) << signedEnvelope;
    EXPECT_EQ(referencesOf(signedEnvelope).size(), 1u);
    std::string result;
    EXPECT_EQ(verify(signedEnvelope, &result), 0) << result;
    EXPECT_FALSE(contains(result, "Signature"));
}

// Loading drops the previous document with its package: the earlier package's
// attachments are neither signed nor written around the new document.
TEST(EbXmlPackages, ALoadReplacesThePreviousPackage) {
    const std::string first = makePackage(standardParts());
    const std::string second = makePackage({standardParts()[0], {"text/plain", "<note@example.kr>", "only part", ""}});
    ScopedHandle h;
    ASSERT_EQ(VQTK_EBXML_SetSOAPDocument(h, chars(first), static_cast<int>(first.size())), 0);
    ASSERT_EQ(VQTK_EBXML_SetSOAPDocument(h, chars(second), static_cast<int>(second.size())), 0);
    ASSERT_EQ(signWithHmac(h), 0) << errorText(h);
    const std::vector<Leaf> leaves = leavesOf(resultDocument(h));
    ASSERT_EQ(leaves.size(), 2u);
    const std::vector<std::string> refs = referencesOf(leaves[0].content);
    ASSERT_EQ(refs.size(), 2u);
    EXPECT_TRUE(contains(refs[1], "cid:note@example.kr"));

    std::string bare = "<doc>replaced</doc>";
    ASSERT_EQ(VQTK_EBXML_SetSOAPDocument(h, chars(bare), static_cast<int>(bare.size())), 0);
    ASSERT_EQ(signWithHmac(h, "not(ancestor-or-self::ds:Signature)"), 0) << errorText(h);
    const std::string result = resultDocument(h);
    EXPECT_EQ(result.rfind("<?xml", 0), 0u) << result;
    EXPECT_TRUE(contains(result, "<doc>replaced<ds:Signature")) << result;
    EXPECT_EQ(referencesOf(result).size(), 1u);
}

TEST(EbXmlPackages, AHeaderlessPackageLoads) {
    // The package starts with its first delimiter line: its header went with the
    // transport (HTTP), and the library supplies one.
    const std::string package = makePackage(standardParts());
    const std::string body = package.substr(package.find("------=_ebxml_test_boundary"));
    std::string result;
    ASSERT_EQ(sign(body, &result), 0) << result;
    EXPECT_EQ(verify(result, &result), 0) << result;
}

}  // namespace
