// Signatures made by other software: every dsig row of the shared interop
// manifest whose verdict is this library's to give.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <xsec/framework/XSECException.hpp>

#include "InteropManifest.hpp"
#include "SignatureFixture.hpp"

using namespace dsigtest;

namespace {

struct Sample {
    std::string path;
    bool valid;  // cryptographically: some row for the path says valid
    std::string hmacKeyFile;
};

// Rows keyed by a certificate given out of band are not this function's to decide
// (the key must come from outside the document), and neither are the rows that are
// invalid only through certificate trust: a path is taken as valid when any of its
// rows is.
std::vector<Sample> dsigSamples() {
    std::map<std::string, Sample> byPath;
    for (const interop::Row& row : interop::rows("dsig-verify")) {
        if (row.keySource.rfind("cert:", 0) == 0)
            continue;
        Sample& s = byPath[row.path];
        s.path = row.path;
        s.valid = s.valid || row.valid;
        if (row.keySource.rfind("hmac:", 0) == 0)
            s.hmacKeyFile = row.keySource.substr(5);
    }
    std::vector<Sample> out;
    for (auto& entry : byPath)
        out.push_back(entry.second);
    return out;
}

// References to data outside the document are refused when verifying.
bool needsExternalData(const std::string& text) {
    return text.find("URI=\"http") != std::string::npos;
}

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// Invalid only through certificate trust (expired, revoked, no anchor): the
// signatures themselves are sound, and trust is checked by certificate verification.
const char* const kTrustOnly[] = {"signature-x509-crt.xml", "signature-x509-crt-crl.xml",
                                  "enveloping-sha256-rsa-sha256-verify.xml", "enveloping-expired-cert.xml",
                                  "enveloped-x509-missing-cert.xml", "enveloped-x509-same-subj-cert.xml"};

// Signatures over a part of the document (a SOAP Body by its Id): verification
// would hand back the whole document, unsigned parts and all, so it refuses them.
const char* const kPartial[] = {"dtd-hmac-91.xml"};

template <size_t N>
bool listed(const char* const (&names)[N], const std::string& path) {
    for (const char* name : names)
        if (endsWith(path, std::string("/") + name))
            return true;
    return false;
}

TEST(InteropSamples, VerifyAsTheManifestSays) {
    const std::vector<Sample> samples = dsigSamples();
    ASSERT_GT(samples.size(), 15u) << testfiles::dataPath("interop/MANIFEST.tsv") << " not found or changed";
    int checked = 0;
    for (const Sample& s : samples) {
        const std::string text = interop::file(s.path);
        const std::string key = s.hmacKeyFile.empty() ? std::string() : interop::file(s.hmacKeyFile);
        std::string why;
        const int rc = verify(text, &why, key);
        if (needsExternalData(text)) {
            EXPECT_EQ(rc, XSECException::ErrorOpeningURI) << s.path << ": " << why;
            continue;
        }
        if (text.find("HMACOutputLength") != std::string::npos && text.find("hmac-sha256") != std::string::npos) {
            // 80 bits are less than half of HMAC-SHA256: refused (CVE-2009-0217).
            EXPECT_EQ(rc, XSECException::AlgorithmMapperError) << s.path << ": " << why;
            continue;
        }
        if (listed(kPartial, s.path)) {
            EXPECT_EQ(rc, 11213) << s.path << ": " << why;
            EXPECT_NE(why.find("No Reference covers the document element"), std::string::npos) << why;
            continue;
        }
        if (s.valid || listed(kTrustOnly, s.path))
            EXPECT_EQ(rc, 0) << s.path << ": " << why;
        else
            EXPECT_EQ(rc, 11213) << s.path << ": " << why;
        ++checked;
    }
    EXPECT_GE(checked, 12);
}

// WSS4J names an InclusiveNamespaces PrefixList in the SignedInfo's exclusive
// canonicalization; the plain signature functions must honour it too. These
// signatures cover the Body only, so after the SignedInfo verifies, they are
// refused for not covering the document (WS-Security processing takes them).
TEST(InteropSamples, SignedInfoPrefixListIsHonoured) {
    for (const char* name : {"soap11-sign-rsa-sha1.xml", "soap11-sign-rsa-sha256.xml", "soap12-sign-rsa-sha1.xml"}) {
        const std::string text = interop::file(std::string("wss/") + name);
        ASSERT_NE(text.find("PrefixList"), std::string::npos) << name;
        std::string why;
        EXPECT_EQ(verify(text, &why), 11213) << name;
        EXPECT_NE(why.find("No Reference covers the document element"), std::string::npos) << name << ": " << why;
    }
    std::string why;
    EXPECT_EQ(verify(interop::file("wss/soap11-sign-rsa-sha1-tampered.xml"), &why), 11213);
    EXPECT_NE(why.find("failed to verify"), std::string::npos) << why;
}

}  // namespace
