// The compiled-in roots: the published certificates, in their order, and each
// accepted as an anchor by the certificate check.
#include <gtest/gtest.h>

#include <openssl/evp.h>
#include <openssl/x509v3.h>

#include "ScopedHandle.hpp"
#include "TestVectors.hpp"
#include "pki/TrustAnchors.hpp"
#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;

namespace {

// The published roots by their SHA-256 fingerprints.
const struct {
    const char* name;
    const char* sha256;
} kExpected[] = {
    {"KISA RootCA 4", "a002ff556c601863b08b9aa33a8e6666e97e72bbe552f66eb9f2395c68c7bc98"},
    {"KISA RootCA 1", "6fdb3f76c8b801a75338d8a50a7c02879f6198b57e594d318d3832900fedcd79"},
    {"GPKIRootCA1", "407c276bead2e4af0661ef6697341dec0a1f9434e4eafb2d3d32a90549d9de4a"},
};

std::string sha256Hex(const ByteVector& data) {
    ByteVector digest(32);
    unsigned int n = 0;
    EVP_Digest(data.data(), data.size(), digest.data(), &n, EVP_sha256(), nullptr);
    return testvectors::toHex(digest);
}

ByteVector decodedAnchor(int index) {
    const vqxml::TrustAnchor& anchor = vqxml::kTrustAnchors[index];
    return fromBase64(std::string(anchor.base64, static_cast<size_t>(anchor.base64Length)));
}

}  // namespace

// The fingerprints pin each root's bytes. Anchors are checked like any
// certificate: a root passes while its own dates say it is valid, and KISA
// RootCA 1 (to 2025-08-24) no longer does.
TEST(TrustAnchors, ThePublishedRootsInTheirOrderPassWhileValid) {
    // GPKIRootCA (2008) belongs fourth and is not available yet.
    ASSERT_EQ(vqxml::kTrustAnchorCount, 3);
    ScopedHandle h;
    for (int i = 0; i < vqxml::kTrustAnchorCount; ++i) {
        const char* name = vqxml::kTrustAnchors[i].name;
        EXPECT_STREQ(name, kExpected[i].name);
        ByteVector der = decodedAnchor(i);
        EXPECT_EQ(sha256Hex(der), kExpected[i].sha256) << name;
        const unsigned char* p = der.data();
        std::unique_ptr<X509, decltype(&X509_free)> cert(d2i_X509(nullptr, &p, static_cast<long>(der.size())),
                                                         X509_free);
        ASSERT_TRUE(cert);
        const bool valid = X509_cmp_current_time(X509_get0_notAfter(cert.get())) > 0;
        EXPECT_EQ(valid, std::string(name) != "KISA RootCA 1");
        EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, der.data(), static_cast<int>(der.size())),
                  valid ? VQXML_OK : VQXML_ERR_UNKNOWN)
            << name << ": " << apitest::errorText(h);
        EXPECT_EQ(VQTK_XMLAPI_VerifyCertChain(h, der.data(), static_cast<int>(der.size()), nullptr, 0, nullptr, 0),
                  valid ? VQXML_OK : VQXML_ERR_CERT_VALIDITY)
            << name << ": " << apitest::errorText(h);
    }
}
