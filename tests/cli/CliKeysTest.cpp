// cert-verify, key-decrypt and key-random through the tool (version: installed_tool.sh).
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "TestVectors.hpp"
#include "cli/CliRunner.hpp"

using clitest::contains;
using clitest::testpki;
using clitest::vqxml;

namespace {

std::string hexOfBase64(const std::string& base64) {
    return testvectors::toHex(testvectors::fromBase64(base64));
}

TEST(CliKeys, KeyDecryptWritesThePlainKeyPrivately) {
    const std::string out = testfiles::scratch("plain.der");
    auto r = vqxml({"key-decrypt", "--password", "vqxml-test", "-o", out, testpki("ee-rsa.key.enc.der")});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(testfiles::read(out), testfiles::read(testpki("ee-rsa.key.der")));
    struct stat st {};
    ASSERT_EQ(stat(out.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    unlink(out.c_str());
}

TEST(CliKeys, KeyRandomGivesTheNpkiRandomAndEncryptsItForARecipient) {
    for (const char* ee : {"ee-kcdsa1024", "ee-kcdsa2048"}) {
        auto r = vqxml({"key-random", "--password", "vqxml-test", testpki(std::string(ee) + ".signPri.key")});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        std::string expected = testfiles::read(testpki(std::string(ee) + ".random.hex"));
        expected.erase(expected.find_last_not_of('\n') + 1);
        EXPECT_EQ(hexOfBase64(r.out), expected) << ee;
    }
    auto sealed = vqxml({"key-random", "--password", "vqxml-test", "--recipient", testpki("ee-rsa.crt.pem"),
                         testpki("ee-kcdsa1024.signPri.key")});
    ASSERT_EQ(sealed.exitCode, 0) << sealed.err;
    EXPECT_EQ(hexOfBase64(sealed.out).size(), 2u * 256);
}

TEST(CliKeys, WrongPasswordIsRefusedWithTheLibrarysReason) {
    for (const char* command : {"key-decrypt", "key-random"}) {
        auto r = vqxml({command, "--password", "not-it", testpki("ee-kcdsa1024.signPri.key")});
        EXPECT_EQ(r.exitCode, 211) << command;
        EXPECT_EQ(r.out, "");
        EXPECT_TRUE(contains(r.err, "(status 12011)")) << r.err;
    }
}

TEST(CliKeys, CertVerifyAcceptsAKisaRootAndRefusesTheTestPkiWithTheReason) {
    const std::string root = testfiles::scratch("root.der");
    clitest::shell("base64 -d " + testfiles::dataPath("roots/kisa_rootca4.b64") + " > " + root);
    auto accepted = vqxml({"cert-verify", root});
    EXPECT_EQ(accepted.exitCode, 0) << accepted.err;
    auto refused = vqxml({"cert-verify", testpki("ee-rsa.crt.pem")});
    EXPECT_EQ(refused.exitCode, 211);
    EXPECT_TRUE(contains(refused.err, "vqxml cert-verify: verifyCert > ")) << refused.err;
    EXPECT_TRUE(contains(refused.err, "unknown issuer")) << refused.err;
    // With intermediates and CRLs the exit code says which check refused.
    auto chained = vqxml({"cert-verify", "--chain", testpki("ca-rsa.crt.der"), "--crl", testpki("ee-rsa.crt.der"),
                          "--chain", root, testpki("ee-rsa.crt.pem")});
    EXPECT_EQ(chained.exitCode, 225);
    EXPECT_TRUE(contains(chained.err, "verifyCertChain > The CRLs (CRL 1) is not a well-formed")) << chained.err;
    chained = vqxml({"cert-verify", "--chain", testpki("ca-rsa.crt.pem"), "--chain", root, testpki("ee-rsa.crt.der")});
    EXPECT_EQ(chained.exitCode, 220);
    EXPECT_TRUE(contains(chained.err, "path check failed: Certificate refused at depth 1 (CN=VQXML Test Root CA"))
        << chained.err;
    clitest::shell("base64 -d " + testfiles::dataPath("roots/kisa_rootca1.b64") + " > " + root);
    EXPECT_EQ(vqxml({"cert-verify", "--chain", root, root}).exitCode, 222);
    unlink(root.c_str());
}

}  // namespace
