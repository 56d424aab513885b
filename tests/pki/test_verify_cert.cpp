// VQTK_XMLAPI_VerifyCert: the caller's certificate against the built-in roots.
#include <gtest/gtest.h>

#include "ScopedHandle.hpp"
#include "toolkit/ToolkitTestSupport.hpp"

using namespace vqtktest;
using apitest::errorText;

namespace {

int verify(void* h, ByteVector cert) {
    return VQTK_XMLAPI_VerifyCert(h, cert.data(), static_cast<int>(cert.size()));
}

}  // namespace

TEST(VerifyCert, NullCertificateIsRefusedWithoutTouchingTheContext) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, nullptr, 1), VQXML_ERR_NULL_ARGUMENT);
    EXPECT_EQ(errorText(h), "");
}

TEST(VerifyCert, ACertificateOutsideTheBuiltInRootsIsRefusedWithTheReason) {
    ScopedHandle h;
    EXPECT_EQ(verify(h, fixture("leaf.der")), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > Certificate refused at depth 0 (CN=vqxml Test Leaf,O=vqxml "
                         "test,C=KR): unknown issuer: the path does not lead to a trusted anchor");
    EXPECT_EQ(verify(h, fixture("root.der")), VQXML_ERR_UNKNOWN);
    EXPECT_NE(errorText(h).find("CN=vqxml Test Root"), std::string::npos) << errorText(h);
}

TEST(VerifyCert, BytesThatAreNotADerCertificateComeBackAs12011) {
    ScopedHandle h;
    unsigned char byte = 0x30;
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, &byte, 0), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > The certificate is empty");
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, &byte, -4), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > The certificate is empty");

    const std::string pem = "-----BEGIN CERTIFICATE-----\nMIIDdTCC\n-----END CERTIFICATE-----\n";
    EXPECT_EQ(verify(h, ByteVector(pem.begin(), pem.end())), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h), "verifyCert > The certificate is PEM text; DER bytes are expected");
    ByteVector garbage(300, 0x30);
    EXPECT_EQ(verify(h, garbage), VQXML_ERR_UNKNOWN);
    EXPECT_EQ(errorText(h).rfind("verifyCert > The certificate is not a well-formed", 0), 0u) << errorText(h);
}

TEST(VerifyCert, OnlyTheLastFailureIsKeptAndSuccessKeepsIt) {
    ScopedHandle h;
    EXPECT_EQ(verify(h, fixture("leaf.der")), VQXML_ERR_UNKNOWN);
    unsigned char byte = 0x30;
    EXPECT_EQ(VQTK_XMLAPI_VerifyCert(h, &byte, 0), VQXML_ERR_UNKNOWN);
    const std::string second = errorText(h);
    EXPECT_EQ(second, "verifyCert > The certificate is empty");
    // A KISA root itself chains (to itself); the earlier failure stays recorded.
    const ByteVector b64 = readFile(testfiles::dataPath("roots/kisa_rootca4.b64"));
    EXPECT_EQ(verify(h, fromBase64(std::string(b64.begin(), b64.end() - 1))), VQXML_OK) << errorText(h);
    EXPECT_EQ(errorText(h), second);
}
