// The XML Signature 1.1 algorithms against Apache Santuario (with BouncyCastle for
// RSA-PSS), both ways: the library signs and Santuario verifies, Santuario signs
// and the library verifies, each also after a signed byte changed. And Canonical
// XML 1.1 byte for byte where it parts from 1.0.
#include <gtest/gtest.h>

#include <string>

#include "CanonicalXml11Cases.hpp"
#include "SignatureFixture.hpp"

using namespace dsigtest;

namespace {

#ifdef VQXML_SANTUARIO_JAVA
const std::string kSantuario = VQXML_SANTUARIO_JAVA " SignatureSantuario ";
#else
const std::string kSantuario;
#endif

const char kDocument[] = "<Invoice xmlns=\"urn:example:gov\" xml:lang=\"ko\"><Amount>1100000</Amount></Invoice>";
const char kExcC14n[] = "http://www.w3.org/2001/10/xml-exc-c14n#";

struct Algorithm {
    const char* name;
    int selector;        // the library's signature selector
    const char* uri;     // its SignatureMethod
    const char* signer;  // signerFile's kind
    int c14n;            // the library's SignedInfo and reference canonicalization selector
    const char* c14nURI;
    int digest;          // the library's digest selector
    const char* digestURI;
};

const Algorithm kAlgorithms[] = {
    {"rsa_sha384", 7, "http://www.w3.org/2001/04/xmldsig-more#rsa-sha384", "", 3, kExcC14n, 5,
     "http://www.w3.org/2001/04/xmldsig-more#sha384"},
    {"rsa_pss_sha256", 9, "http://www.w3.org/2007/05/xmldsig-more#sha256-rsa-MGF1", "", 5, c14n11::kC14n11, 3,
     "http://www.w3.org/2001/04/xmlenc#sha256"},
    {"rsa_pss_sha384", 10, "http://www.w3.org/2007/05/xmldsig-more#sha384-rsa-MGF1", "", 3, kExcC14n, 5,
     "http://www.w3.org/2001/04/xmldsig-more#sha384"},
    {"rsa_pss_sha512", 11, "http://www.w3.org/2007/05/xmldsig-more#sha512-rsa-MGF1", "", 1, c14n11::kC14n10, 6,
     "http://www.w3.org/2001/04/xmlenc#sha512"},
    {"ecdsa_sha256_p256", 12, "http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha256", "ec256", 5,
     c14n11::kC14n11, 3, "http://www.w3.org/2001/04/xmlenc#sha256"},
    {"ecdsa_sha384_p384", 13, "http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha384", "ec384", 3, kExcC14n, 5,
     "http://www.w3.org/2001/04/xmldsig-more#sha384"},
    {"ecdsa_sha512_p521", 14, "http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha512", "ec521", 5,
     c14n11::kC14n11, 6, "http://www.w3.org/2001/04/xmlenc#sha512"},
    {"dsa_sha256_2048", 15, "http://www.w3.org/2009/xmldsig11#dsa-sha256", "dsa2048", 1, c14n11::kC14n10, 3,
     "http://www.w3.org/2001/04/xmlenc#sha256"},
};

std::string librarySigned(const Algorithm& a) {
    Signing s;
    s.method = a.selector;
    s.c14n = s.referenceC14n = a.c14n;
    s.digest = a.digest;
    s.cert = testfiles::read(signerFile(a.signer, "crt.der"));
    s.key = testfiles::read(signerFile(a.signer, "key.pk8.der"));
    return signedText(kDocument, s);
}

class SantuarioPeer : public testing::TestWithParam<Algorithm> {
protected:
    void SetUp() override {
        if (kSantuario.empty())
            GTEST_SKIP() << "no JDK, Santuario or BouncyCastle (scripts/setup.sh installs them)";
    }
    int santuario(const std::string& args, std::string* why = nullptr) {
        const int rc = testfiles::run("{ " + kSantuario + args + " 2>'" + dir("errors.txt") + "'; }");
        if (why != nullptr)
            *why = testfiles::read(dir("errors.txt"));
        return rc;
    }
    testfiles::ScratchDir dir;
};

TEST_P(SantuarioPeer, VerifiesWhatTheLibrarySigns) {
    const Algorithm& a = GetParam();
    const std::string signedText = librarySigned(a);
    testfiles::write(dir("ours.xml"), signedText);
    testfiles::write(dir("tampered.xml"), tampered(signedText));
    std::string why;
    EXPECT_EQ(santuario("verify " + dir("ours.xml"), &why), 0) << why << signedText;
    EXPECT_EQ(santuario("verify " + dir("tampered.xml"), &why), 1) << why;
}

TEST_P(SantuarioPeer, TheLibraryVerifiesWhatSantuarioSigns) {
    const Algorithm& a = GetParam();
    testfiles::write(dir("in.xml"), kDocument);
    std::string why;
    ASSERT_EQ(santuario("sign " + dir("in.xml") + " " + dir("theirs.xml") + " " + a.uri + " " + a.c14nURI + " " +
                            a.digestURI + " " + a.c14nURI + " " + signerFile(a.signer, "crt.der") + " " + signerFile(a.signer, "key.pk8.der"),
                        &why),
              0)
        << why;
    const std::string theirs = testfiles::read(dir("theirs.xml"));
    std::string result;
    const int status = verify(theirs, &result);
    // Santuario 2.1 often writes a P-521 SignatureValue of 2 x 65 bytes: it
    // verifies too.
    EXPECT_EQ(status, 0) << result << "\n" << theirs;
    EXPECT_EQ(verify(tampered(theirs), &result), 11213) << result;
}

INSTANTIATE_TEST_SUITE_P(Algorithms, SantuarioPeer, testing::ValuesIn(kAlgorithms),
                         [](const testing::TestParamInfo<Algorithm>& info) { return std::string(info.param.name); });

// Santuario writes the library's bytes, except where it reads several left-out
// ancestors' xml: attributes outermost first (CanonicalXml11Cases.hpp).
TEST(CanonicalXml11Peer, SantuarioWritesTheSameBytes) {
    if (kSantuario.empty())
        GTEST_SKIP() << "no JDK or Santuario";
    testfiles::ScratchDir dir;
    testfiles::write(dir("doc.xml"), c14n11::kDocument);
    for (const c14n11::Case& c : c14n11::kCases) {
        const std::string out = dir(std::string(c.id) + ".c14n");
        ASSERT_EQ(testfiles::run("{ " + kSantuario + "c14n " + dir("doc.xml") + " " + c.algorithm + " " + c.id + " > " + out + "; }"), 0);
        if (c.santuarioAgrees)
            EXPECT_EQ(testfiles::read(out), c.bytes) << c.id << " " << c.algorithm;
        else
            EXPECT_NE(testfiles::read(out), c.bytes) << c.id << " " << c.algorithm << ": Santuario now agrees";
    }
}

}  // namespace
