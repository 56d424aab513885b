// Certificate paths through the toolkit, on the RSA test PKI and KCDSA leaves,
// with and without CRLs.
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
    void expectRefused(int status, const std::string& reason, const std::string& subject, int check) {
        EXPECT_EQ(status, VQTK_ERR_REFUSED);
        EXPECT_NE(tk.error().find(reason), std::string::npos) << tk.error();
        EXPECT_NE(tk.error().find(subject), std::string::npos) << tk.error();
        int refusal = -1;
        EXPECT_EQ(VQTK_CERT_GetRefusal(tk.get(), &refusal), VQTK_OK);
        EXPECT_EQ(refusal, check) << tk.error();
    }
    int addCrls(const ByteVector& der) {
        String crls(der);
        return VQTK_CERT_AddCRLs(tk.get(), crls.get());
    }

    Toolkit tk;
    const ByteVector intermediate = fixture("intermediate.der");
};

}  // namespace

TEST_F(CertVerify, AcceptsAFullPathBuiltWithTheOfferedIntermediate) {
    EXPECT_EQ(verify(fixture("leaf.der"), intermediate), VQTK_OK) << tk.error();
    EXPECT_EQ(verify(intermediate), VQTK_OK) << tk.error();
    EXPECT_EQ(verify(fixture("root.der")), VQTK_OK) << tk.error();
    // Unrelated certificates among the intermediates do no harm.
    EXPECT_EQ(verify(fixture("leaf.der"), fixture("other_root.der") + intermediate), VQTK_OK);
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 2, 2, 0, 0), VQTK_OK);  // the strict profile
    EXPECT_EQ(verify(fixture("leaf.der"), intermediate), VQTK_OK) << tk.error();
}

TEST_F(CertVerify, EachRefusalNamesItsReasonItsCheckAndTheCertificate) {
    expectRefused(verify(fixture("leaf.der")), "unknown issuer", "CN=vqxml Test Leaf", VQTK_CHECK_PATH);
    expectRefused(verify(fixture("other_root.der")), "unknown issuer", "CN=vqxml Other Root", VQTK_CHECK_PATH);
    expectRefused(verify(fixture("under_not_ca.der"), fixture("not_ca.der") + intermediate), "not a CA",
                  "CN=vqxml Not A CA", VQTK_CHECK_CONSTRAINTS);
    ByteVector forged = fixture("leaf.der");
    forged[forged.size() - 10] ^= 0x01;  // inside the signature value
    expectRefused(verify(forged, intermediate), "bad signature", "CN=vqxml Test Leaf", VQTK_CHECK_SIGNATURE);
    // Korean names come in EUC-KR.
    expectRefused(verify(readFile(testfiles::dataPath("testpki/ee-rsa.crt.der"))),
                  "CN=\xC8\xAB\xB1\xE6\xB5\xBF()0012345RSA,OU=\xB0\xB3\xB9\xDF\xC6\xC0,OU=xUsers",
                  "unknown issuer", VQTK_CHECK_PATH);
}

TEST_F(CertVerify, TimeModesChooseWhichValidityPeriodsCount) {
    const ByteVector expired = fixture("leaf_expired.der");
    expectRefused(verify(expired, intermediate), "expired", "Expired Leaf", VQTK_CHECK_VALIDITY);
    // In 2001 the leaf was valid but its issuer (2020-2099) was not yet.
    expectRefused(verify(expired, intermediate, &kJune2001), "not yet valid", "CN=vqxml Test Intermediate",
                  VQTK_CHECK_VALIDITY);
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 1, 0, 0), VQTK_OK);  // the certificate alone
    EXPECT_EQ(verify(expired, intermediate, &kJune2001), VQTK_OK) << tk.error();
    expectRefused(verify(expired, intermediate), "expired", "Expired Leaf", VQTK_CHECK_VALIDITY);
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 0, 0, 0), VQTK_OK);  // none
    EXPECT_EQ(verify(expired, intermediate), VQTK_OK) << tk.error();

    // An added intermediate ends a path on its own; mode 2 lets its dates pass, mode 3 not.
    Toolkit partial;
    ASSERT_EQ(partial.addAnchor(intermediate), VQTK_OK);
    String leaf(expired), none;
    const auto verifyIn2001 = [&] {
        return VQTK_CERT_Verify(partial.get(), leaf.get(), none.get(), &kJune2001, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(verifyIn2001(), VQTK_OK) << partial.error();
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(partial.get(), 1, 3, 0, 0), VQTK_OK);
    EXPECT_EQ(verifyIn2001(), VQTK_ERR_REFUSED);
    EXPECT_NE(partial.error().find("depth 1 (CN=vqxml Test Intermediate,O=vqxml test,C=KR): not yet valid"),
              std::string::npos)
        << partial.error();
}

TEST_F(CertVerify, RevocationNeedsACurrentCrlOfTheIssuerAndChecksTheOthersGiven) {
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 2, 1, 0), VQTK_OK);
    const ByteVector leaf = fixture("leaf.der");
    expectRefused(verify(leaf, intermediate), "no CRL of its issuer", "Test Leaf", VQTK_CHECK_REVOCATION);
    ASSERT_EQ(addCrls(fixture("intermediate_stale.crl.der")), VQTK_OK);
    expectRefused(verify(leaf, intermediate), "CRL is out of date", "Test Leaf", VQTK_CHECK_REVOCATION);
    // A current CRL beside the stale one; the intermediate needs none of the root's.
    ASSERT_EQ(addCrls(fixture("intermediate.crl.der")), VQTK_OK);
    EXPECT_EQ(verify(leaf, intermediate), VQTK_OK) << tk.error();
    expectRefused(verify(fixture("leaf_revoked.der"), intermediate), "revoked", "CN=vqxml Revoked Leaf",
                  VQTK_CHECK_REVOCATION);
    // Certificates with a KCDSA key are looked up in their issuer's CRL by hand.
    EXPECT_EQ(verify(fixture("kcdsa_leaf.der"), intermediate), VQTK_OK) << tk.error();
    expectRefused(verify(fixture("kcdsa_ca.der"), intermediate), "revoked", "CN=vqxml KCDSA CA",
                  VQTK_CHECK_REVOCATION);
    // The root's CRL revokes the intermediate, and with it every leaf under it.
    ASSERT_EQ(addCrls(fixture("root.crl.der")), VQTK_OK);
    expectRefused(verify(leaf, intermediate), "depth 1 (CN=vqxml Test Intermediate", "revoked",
                  VQTK_CHECK_REVOCATION);
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
    const ByteVector crl = fixture("intermediate.crl.der");
    EXPECT_EQ(addCrls(crl + ByteVector(crl.begin(), crl.end() - 1)), VQTK_ERR_FORMAT);
    EXPECT_NE(tk.error().find("The CRLs (CRL 2) is not a well-formed"), std::string::npos) << tk.error();
}

TEST_F(CertVerify, SettingsAndReservedArgumentsAreChecked) {
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 0, 2, 0, 0), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 4, 0, 0), VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 2, 2, 0), VQTK_ERR_UNSUPPORTED);
    EXPECT_NE(tk.error().find("Online revocation"), std::string::npos);
    EXPECT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 2, 0, 7), VQTK_ERR_ARGUMENT);
    // The refused values changed nothing: time is still checked.
    expectRefused(verify(fixture("leaf_expired.der"), intermediate), "expired", "Expired Leaf", VQTK_CHECK_VALIDITY);

    String leaf(fixture("leaf.der"));
    int reserved = 0;
    EXPECT_EQ(VQTK_CERT_Verify(tk.get(), leaf.get(), nullptr, nullptr, &reserved, nullptr, nullptr),
              VQTK_ERR_ARGUMENT);
    EXPECT_EQ(VQTK_CERT_Verify(tk.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              VQTK_ERR_ARGUMENT);
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

// A KCDSA leaf is checked with its RSA issuer's key, and passes only where its
// issuer's path does; a KCDSA issuer is refused as unsupported.
TEST_F(CertVerify, KcdsaCertificates) {
    EXPECT_EQ(verify(fixture("kcdsa_leaf.der"), intermediate), VQTK_OK) << tk.error();
    EXPECT_EQ(verify(fixture("kcdsa_ca.der"), intermediate), VQTK_OK) << tk.error();
    expectRefused(verify(fixture("kcdsa_leaf.der")), "unknown issuer", "CN=vqxml KCDSA Leaf", VQTK_CHECK_PATH);
    ByteVector forged = fixture("kcdsa_leaf.der");
    forged[forged.size() - 5] ^= 0x40;
    expectRefused(verify(forged, intermediate), "bad signature", "CN=vqxml KCDSA Leaf", VQTK_CHECK_SIGNATURE);

    Toolkit other;
    ASSERT_EQ(other.addAnchor(fixture("other_root.der")), VQTK_OK);
    String leaf(fixture("kcdsa_leaf.der")), offered(intermediate);
    EXPECT_EQ(VQTK_CERT_Verify(other.get(), leaf.get(), offered.get(), nullptr, nullptr, nullptr, nullptr),
              VQTK_ERR_REFUSED);
    EXPECT_NE(other.error().find("depth 1"), std::string::npos) << other.error();

    EXPECT_EQ(verify(fixture("kcdsa_under_kcdsa.der"), fixture("kcdsa_ca.der") + intermediate), VQTK_ERR_UNSUPPORTED);
    EXPECT_NE(tk.error().find("KCDSA signatures cannot be verified"), std::string::npos) << tk.error();
    EXPECT_EQ(verify(fixture("rsa_under_kcdsa.der"), fixture("kcdsa_ca.der") + intermediate), VQTK_ERR_UNSUPPORTED);
    EXPECT_NE(tk.error().find("RSA Under KCDSA"), std::string::npos) << tk.error();

    const int64_t before = 1000000000;  // 2001: the leaf (from 2020) was not yet valid
    ASSERT_EQ(VQTK_CERT_SetVerifyEnv1(tk.get(), 1, 1, 0, 0), VQTK_OK);
    expectRefused(verify(fixture("kcdsa_leaf.der"), intermediate, &before), "not yet valid", "KCDSA Leaf",
                  VQTK_CHECK_VALIDITY);
}
