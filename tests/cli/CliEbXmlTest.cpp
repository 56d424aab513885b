// ebxml-sign and ebxml-verify through the tool.
#include <gtest/gtest.h>

#include "cli/CliRunner.hpp"

using clitest::contains;
using clitest::testpki;
using clitest::vqxml;

namespace {

// The demo's envelope with the tax invoice attached, as a MIME package.
std::string package() {
    const std::string b = "----=_cli_test";
    return "Content-Type: multipart/related; type=\"text/xml\"; boundary=\"" + b +
           "\"; start=\"<envelope@vqxml.example>\"\r\nMIME-Version: 1.0\r\n\r\n--" + b +
           "\r\nContent-Type: text/xml; charset=UTF-8\r\nContent-ID: <envelope@vqxml.example>\r\n\r\n" +
           testfiles::read(std::string(VQXML_SOURCE_DIR) + "/demo/ebxml-envelope.xml") + "\r\n--" + b +
           "\r\nContent-Type: text/xml\r\nContent-ID: <taxinvoice@vqxml.example>\r\n\r\n" +
           testfiles::read(clitest::invoice()) + "\r\n--" + b + "--\r\n";
}

TEST(CliEbXml, SignedPackageVerifiesAndAChangedAttachmentDoesNot) {
    auto sign = vqxml({"ebxml-sign", "-c", testpki("ee-rsa.crt.pem"), "-k", testpki("ee-rsa.key.pem"),
                       "--issuer-serial", "--key-name", "ee-rsa"},
                      package());
    ASSERT_EQ(sign.exitCode, 0) << sign.err;
    EXPECT_TRUE(contains(sign.out, "URI=\"cid:taxinvoice@vqxml.example\""));
    auto verify = vqxml({"ebxml-verify", "-"}, sign.out);
    EXPECT_EQ(verify.exitCode, 0) << verify.err;
    EXPECT_TRUE(contains(verify.out, "serial: 4097")) << verify.out;
    EXPECT_TRUE(contains(verify.out, "key name: ee-rsa")) << verify.out;
    std::string forged = sign.out;
    forged.replace(forged.find("<GrandTotalAmount>1100000"), 25, "<GrandTotalAmount>1900000");
    auto refused = vqxml({"ebxml-verify"}, forged);
    EXPECT_EQ(refused.exitCode, 213);
    EXPECT_TRUE(contains(refused.err, "cid:taxinvoice@vqxml.example")) << refused.err;
}

TEST(CliEbXml, PackagesSignedByXmlsec1VerifyUnlessTamperedAndNoPackageIsRefused) {
    const std::string dir = testfiles::dataPath("interop/ebxml/");
    EXPECT_EQ(vqxml({"ebxml-verify", "-q", dir + "ebms2-signed.mime"}).exitCode, 0);
    EXPECT_EQ(vqxml({"ebxml-verify", "-q", dir + "ebms2-tampered-header.mime"}).exitCode, 213);
    EXPECT_EQ(vqxml({"ebxml-verify", "-q", "--trust", dir + "ebms2-signed.mime"}).exitCode, 220);
    // No package is its own status; a signer without a key is a usage error.
    auto r = vqxml({"ebxml-verify"}, "");
    EXPECT_EQ(r.exitCode, 104);
    EXPECT_TRUE(contains(r.err, "(status 10104)")) << r.err;
    EXPECT_EQ(vqxml({"ebxml-sign", "-c", testpki("ee-rsa.crt.pem")}, package()).exitCode, 64);
}

}  // namespace
