// Packages signed by xmlsec1 (the shared interop set) verify, or fail as the
// manifest says; packages this library signs verify with xmlsec1.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <xsec/framework/XSECException.hpp>

#include "EbXmlFixture.hpp"
#include "InteropManifest.hpp"

using namespace ebxmltest;

namespace {

using interop::file;

TEST(EbXmlInterop, XmlsecPackagesVerifyAsTheManifestSays) {
    const std::vector<interop::Row> rows = interop::rows("ebxml-verify");
    ASSERT_GE(rows.size(), 5u) << testfiles::dataPath("interop/MANIFEST.tsv") << " not found or changed";
    for (const interop::Row& row : rows) {
        std::string why;
        const int rc = verify(file(row.path), &why);
        EXPECT_EQ(rc, row.valid ? 0 : 11213) << row.path << ": " << why;
    }
}

TEST(EbXmlInterop, SignerAndResultOfAVerifiedPackage) {
    const std::string package = file("ebxml/ebms2-signed.mime");
    ScopedHandle h;
    ASSERT_EQ(VQTK_EBXML_SetSOAPSecXMLDocument(h, chars(package), static_cast<int>(package.size())), 0)
        << errorText(h);
    ASSERT_EQ(VQTK_EBXML_Verify(h), 0) << errorText(h);

    unsigned char* cert = nullptr;
    int certLen = 0;
    ASSERT_EQ(VQTK_EBXML_GetSignCert(h, &cert, &certLen), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(cert), certLen), file("ebxml/keys/signer-cert.der"));

    // The package comes back with the envelope less its signature; the
    // attachments are the same bytes.
    const std::vector<Leaf> leaves = leavesOf(resultDocument(h));
    ASSERT_EQ(leaves.size(), 3u);
    EXPECT_EQ(leaves[0].content.find("Signature"), std::string::npos);
    EXPECT_NE(leaves[0].content.find("<eb:Action>NewOrder</eb:Action>"), std::string::npos);
    EXPECT_EQ(leaves[1].content, file("ebxml/parts/ebms2-signed/payload-1.xml"));
    EXPECT_EQ(leaves[2].content, file("ebxml/parts/ebms2-signed/payload-2.bin"));
}

TEST(EbXmlInterop, ABareEnvelopeCannotReachItsAttachments) {
    const std::string envelopeOnly = file("ebxml/parts/ebms2-signed/soap-envelope.xml");
    std::string why;
    EXPECT_EQ(verify(envelopeOnly, &why), XSECException::ErrorOpeningURI) << why;
    EXPECT_NE(why.find("cid:payload-1@interop.example"), std::string::npos) << why;
}

// xmlsec1 verifies the signed envelope with each attachment mapped to its file.
int xmlsecVerify(const std::string& package) {
    const std::vector<Leaf> leaves = leavesOf(package);
    const testfiles::ScratchDir dir;
    std::string command = "xmlsec1 --verify --trusted-pem " + testfiles::dataPath("dsig/ca.pem");
    for (size_t i = 1; i < leaves.size(); ++i) {
        const std::string& cid = leaves[i].contentId;
        testfiles::write(dir(std::to_string(i)), leaves[i].content);
        command += " --url-map:cid:" + cid.substr(1, cid.size() - 2) + " " + dir(std::to_string(i));
    }
    testfiles::write(dir("envelope"), leaves.front().content);
    return testfiles::run(command + " " + dir("envelope"));
}

class XmlsecPeer : public testing::Test {
protected:
    void SetUp() override {
        if (!testfiles::haveProgram("xmlsec1"))
            GTEST_SKIP() << "xmlsec1 is not installed";
    }
};

TEST_F(XmlsecPeer, AcceptsWhatWeSign) {
    // The prefixes declared on the XPath element must leave SignedInfo's canonical
    // form alone under inclusive and exclusive canonicalization.
    for (int signedInfoC14n : {1, 3, 5})
        for (int c14n : {0, 1, 3, 5}) {
            std::string signedPackage;
            ASSERT_EQ(sign(makePackage(standardParts()), &signedPackage, 3, c14n, kEnvelopeXPath, signedInfoC14n), 0)
                << signedPackage;
            EXPECT_EQ(xmlsecVerify(signedPackage), 0)
                << "canonicalization " << signedInfoC14n << "/" << c14n << "\n" << signedPackage;
        }
    // The XML Signature 1.1 signatures, each verified here too and refused by both once changed.
    for (const Signer& signer : {Signer{8, ""}, Signer{13, "ec384"}, Signer{15, "dsa2048"}}) {
        std::string signedPackage;
        ASSERT_EQ(sign(makePackage(standardParts()), &signedPackage, 5, 5, kEnvelopeXPath, 6, signer), 0)
            << signedPackage;
        EXPECT_EQ(xmlsecVerify(signedPackage), 0) << signer.selector << "\n" << signedPackage;
        EXPECT_EQ(verify(signedPackage), 0) << signer.selector;
        const size_t at = signedPackage.find("공책");
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(verify(signedPackage.replace(at, std::string("공책").size(), "연필")), 11213) << signer.selector;
        EXPECT_NE(xmlsecVerify(signedPackage), 0) << "xmlsec1 too refuses the changed attachment";
    }
}

TEST_F(XmlsecPeer, ItsXPathMayUsePrefixesBoundOnTheSignature) {
    // xmlsec1 binds ds only on ds:Signature, where the engine alone would not see it.
    const testfiles::ScratchDir dir;
    const std::string out = dir("signed.xml");
    ASSERT_EQ(testfiles::run("xmlsec1 --sign --privkey-pem " + testfiles::dataPath("dsig/signer-key.pem") + "," +
                             testfiles::dataPath("dsig/signer.pem") + " --url-map:cid:order@example.kr " +
                             testfiles::dataPath("ebxml/order.xml") + " --output " + out + " " +
                             testfiles::dataPath("ebxml/xmlsec-template.xml")),
              0);
    std::vector<Part> parts = standardParts();
    parts[0].content = testfiles::read(out);
    parts.pop_back();
    ASSERT_NE(parts[0].content.find("<ds:XPath>not(ancestor-or-self::ds:Signature"), std::string::npos);
    std::string why;
    EXPECT_EQ(verify(makePackage(parts), &why), 0) << why;
    parts[1].content.replace(parts[1].content.find("3"), 1, "4");
    EXPECT_EQ(verify(makePackage(parts), &why), 11213) << why;
}

}  // namespace
