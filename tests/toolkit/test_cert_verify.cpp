// Certificate paths through the toolkit, on the RSA test PKI and KCDSA leaves.
#include <gtest/gtest.h>

#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;

namespace {

const int64_t kJune2001 = 991353600;  // 2001-06-01, inside leaf_expired's period

class CertVerify : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(tk.addAnchor(fixture("root.der")), VQTK_OK); }

    int verify(const ByteVector& cert, const ByteVector& intermediates = {},
               const int64_t* atTime = nullptr) {
        String c(cert), i(intermediates);
        return VQTK_CERT_Verify(tk.get(), c.get(), i.get(), atTime, nullptr, nullptr, nullptr);
    }
    void expectRefused(int status, const std::string& reason, const std::string& subject) {
        EXPECT_EQ(status, VQTK_ERR_REFUSED);
        EXPECT_NE(tk.error().find(reason), std::string::npos) << tk.error();
        EXPECT_NE(tk.error().find(subject), std::string::npos) << tk.error();
    }

    Toolkit tk;
    const ByteVector intermediate = fixture("intermediate.der");
};

ByteVector operator+(ByteVector a, const ByteVector& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

}  // namespace

TEST_F(CertVerify, AcceptsAFullPathBuiltWithTheOfferedIntermediate) {
    EXPECT_EQ(verify(fixture("leaf.der"), intermediate), VQTK_OK) << tk.error();
    EXPECT_EQ(verify(intermediate), VQTK_OK) << tk.error();
    EXPECT_EQ(verify(fixture("root.der")), VQTK_OK) << tk.error();
    // Unrelated certificates among the intermediates do no harm.
    EXPECT_EQ(verify(fixture("leaf.der"), fixture("other_root.der") + intermediate), VQTK_OK);
}

TEST_F(CertVerify, RefusesAnUnknownIssuer) {
    expectRefused(verify(fixture("leaf.der")), "unknown issuer", "CN=vqxml Test Leaf");
    expectRefused(verify(fixture("other_root.der")), "unknown issuer", "CN=vqxml Other Root");
}

TEST_F(CertVerify, RefusesAnExpiredCertificateUnlessTimeIsNotChecked) {
    expectRefused(verify(fixture("leaf_expired.der"), intermediate), "expired", "Expired Leaf");
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 0, 0, 0), VQTK_OK);
    EXPECT_EQ(verify(fixture("leaf_expired.der"), intermediate), VQTK_OK) << tk.error();
}

TEST_F(CertVerify, TimeModeOneChecksTheCertificateAlone) {
    // In 2001 the leaf was valid but its issuer (2020-2099) was not yet.
    expectRefused(verify(fixture("leaf_expired.der"), intermediate, &kJune2001), "not yet valid",
                  "CN=vqxml Test Intermediate");
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 1, 0, 0), VQTK_OK);
    EXPECT_EQ(verify(fixture("leaf_expired.der"), intermediate, &kJune2001), VQTK_OK) << tk.error();
    expectRefused(verify(fixture("leaf_expired.der"), intermediate), "expired", "Expired Leaf");
}

TEST_F(CertVerify, RefusesAPathThroughACertificateThatIsNotACa) {
    expectRefused(verify(fixture("under_not_ca.der"), fixture("not_ca.der") + intermediate),
                  "not a CA", "CN=vqxml Not A CA");
}

TEST_F(CertVerify, RefusesABadSignature) {
    ByteVector leaf = fixture("leaf.der");
    leaf[leaf.size() - 10] ^= 0x01;  // inside the signature value
    expectRefused(verify(leaf, intermediate), "bad signature", "CN=vqxml Test Leaf");
}

TEST_F(CertVerify, AnAddedIntermediateEndsAPathOnItsOwn) {
    Toolkit only;
    ASSERT_EQ(only.addAnchor(intermediate), VQTK_OK);
    String leaf(fixture("leaf.der")), none;
    EXPECT_EQ(VQTK_CERT_Verify(only.get(), leaf.get(), none.get(), nullptr, nullptr, nullptr, nullptr),
              VQTK_OK)
        << only.error();
}

TEST_F(CertVerify, RefusesMalformedInputWithAReason) {
    const ByteVector leaf = fixture("leaf.der");
    const std::string pem = "-----BEGIN CERTIFICATE-----\nMIIB\n-----END CERTIFICATE-----\n";
    struct Case {
        ByteVector bytes;
        const char* reason;
    } cases[] = {
        {{}, "is empty"},
        {ByteVector(pem.begin(), pem.end()), "PEM"},
        {ByteVector{'M', 'I', 'I', 'B'}, "not DER"},
        {ByteVector(leaf.begin(), leaf.begin() + 100), "not a well-formed"},
        {leaf + ByteVector{0}, "bytes after the certificate"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(verify(c.bytes, intermediate), VQTK_ERR_FORMAT) << c.reason;
        EXPECT_NE(tk.error().find(c.reason), std::string::npos) << tk.error();
    }
    // Every truncation of a good certificate is refused, none crashes.
    for (size_t n = 1; n < leaf.size(); n += 7)
        EXPECT_EQ(verify(ByteVector(leaf.begin(), leaf.begin() + n)), VQTK_ERR_FORMAT) << n;
    EXPECT_EQ(verify(leaf, ByteVector{0x30, 0x03, 0x02, 0x01}), VQTK_ERR_FORMAT);
    EXPECT_NE(tk.error().find("intermediates (certificate 1)"), std::string::npos) << tk.error();
}

TEST_F(CertVerify, SettingsAndReservedArgumentsAreChecked) {
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 0, 2, 0, 0), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 3, 0, 0), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 2, 1, 0), VQTK_ERR_UNSUPPORTED);
    EXPECT_NE(tk.error().find("Revocation"), std::string::npos);
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 2, 0, 7), VQTK_ERR_ARGUMENT);
    // The refused values changed nothing: time is still checked.
    expectRefused(verify(fixture("leaf_expired.der"), intermediate), "expired", "Expired Leaf");

    String leaf(fixture("leaf.der"));
    int reserved = 0;
    EXPECT_EQ(VQTK_CERT_Verify(tk.get(), leaf.get(), nullptr, nullptr, &reserved, nullptr, nullptr),
              VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_CERT_Verify(tk.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              VQTK_ERR_ARGUMENT);
}

TEST_F(CertVerify, StrictModeStillAcceptsAWellFormedPath) {
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 2, 2, 0, 0), VQTK_OK);
    EXPECT_EQ(verify(fixture("leaf.der"), intermediate), VQTK_OK) << tk.error();
}

TEST(CertAnchors, AnAnchorMustBeACaCertificate) {
    Toolkit tk;
    EXPECT_EQ(tk.addAnchor(fixture("leaf.der")), VQTK_ERR_ARGUMENT);
    EXPECT_NE(tk.error().find("not a CA"), std::string::npos);
    EXPECT_EQ(tk.addAnchor(ByteVector{0x30, 0x00}), VQTK_ERR_FORMAT);
    String leaf(fixture("leaf.der"));
    EXPECT_EQ(VQTK_CERT_Verify(tk.get(), leaf.get(), nullptr, nullptr, nullptr, nullptr, nullptr),
              VQTK_ERR_REFUSED);
    EXPECT_NE(tk.error().find("No trust anchor"), std::string::npos);
}

TEST_F(CertVerify, AKcdsaLeafIsCheckedWithItsRsaIssuersKey) {
    EXPECT_EQ(verify(fixture("kcdsa_leaf.der"), intermediate), VQTK_OK) << tk.error();
    EXPECT_EQ(verify(fixture("kcdsa_ca.der"), intermediate), VQTK_OK) << tk.error();
    expectRefused(verify(fixture("kcdsa_leaf.der")), "unknown issuer", "CN=vqxml KCDSA Leaf");

    ByteVector forged = fixture("kcdsa_leaf.der");
    forged[forged.size() - 5] ^= 0x40;
    expectRefused(verify(forged, intermediate), "bad signature", "CN=vqxml KCDSA Leaf");
}

TEST_F(CertVerify, AKcdsaLeafOnlyPassesIfItsIssuersPathDoes) {
    Toolkit other;
    ASSERT_EQ(other.addAnchor(fixture("other_root.der")), VQTK_OK);
    String leaf(fixture("kcdsa_leaf.der")), offered(intermediate);
    EXPECT_EQ(VQTK_CERT_Verify(other.get(), leaf.get(), offered.get(), nullptr, nullptr, nullptr,
                               nullptr),
              VQTK_ERR_REFUSED);
    EXPECT_NE(other.error().find("depth 1"), std::string::npos) << other.error();

    const int64_t before = 1000000000;  // 2001: the leaf (from 2020) was not yet valid
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 1, 0, 0), VQTK_OK);
    expectRefused(verify(fixture("kcdsa_leaf.der"), intermediate, &before), "not yet valid",
                  "KCDSA Leaf");
}

TEST_F(CertVerify, AKcdsaIssuerIsRefusedAsUnsupported) {
    EXPECT_EQ(verify(fixture("kcdsa_under_kcdsa.der"), fixture("kcdsa_ca.der") + intermediate),
              VQTK_ERR_UNSUPPORTED);
    EXPECT_NE(tk.error().find("KCDSA signatures cannot be verified"), std::string::npos) << tk.error();
    EXPECT_EQ(verify(fixture("rsa_under_kcdsa.der"), fixture("kcdsa_ca.der") + intermediate),
              VQTK_ERR_UNSUPPORTED);
    EXPECT_NE(tk.error().find("RSA Under KCDSA"), std::string::npos) << tk.error();
}
