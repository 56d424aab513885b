// Bad input and bad arguments: a clear exit code and message, and --help.
#include <gtest/gtest.h>

#include "cli/CliRunner.hpp"

using clitest::contains;
using clitest::testpki;
using clitest::vqxml;

namespace {

const std::vector<std::string> kCommands = {"sign",        "verify",       "encrypt",      "decrypt",
                                            "soap-sign",   "soap-encrypt", "soap-process", "ebxml-sign",
                                            "ebxml-verify", "cert-verify", "key-decrypt", "key-random", "version"};

std::vector<std::string> signWith(std::initializer_list<std::string> more) {
    std::vector<std::string> args{"sign", "-c", testpki("ee-rsa.crt.der"), "-k", testpki("ee-rsa.key.der")};
    args.insert(args.end(), more);
    return args;
}

TEST(CliBadInput, LibraryStatusesBecomeTheirExitCodes) {
    const std::string invoice = testfiles::read(clitest::invoice());
    auto broken = vqxml(signWith({"-"}), invoice.substr(0, invoice.size() / 2));
    EXPECT_EQ(broken.exitCode, 105);
    EXPECT_TRUE(contains(broken.err, "vqxml sign: XMLDSIG_setXMLDocument > ")) << broken.err;
    EXPECT_TRUE(contains(broken.err, "(status 10105)")) << broken.err;
    auto eucKr = vqxml(signWith({"-"}), "<?xml version=\"1.0\" encoding=\"EUC-KR\"?><a/>");
    EXPECT_EQ(eucKr.exitCode, 107) << eucKr.err;
    EXPECT_EQ(vqxml({"verify"}, "").exitCode, 132);
    EXPECT_EQ(vqxml({"verify"}, "<a/>").exitCode, 30);  // engine: no Signature element
    auto missingId = vqxml(signWith({"--ref", "#nowhere", clitest::invoice()}));
    EXPECT_EQ(missingId.exitCode, 7) << missingId.err;
}

TEST(CliBadInput, ToolFailuresHaveTheirOwnCodes) {
    auto noFile = vqxml({"verify", "/nonexistent/in.xml"});
    EXPECT_EQ(noFile.exitCode, 66);
    EXPECT_TRUE(contains(noFile.err, "vqxml verify: cannot read /nonexistent/in.xml")) << noFile.err;
    EXPECT_EQ(vqxml(signWith({"-o", "/nonexistent/out.xml", clitest::invoice()})).exitCode, 73);
    const std::string badPem = testfiles::scratch("bad.pem");
    testfiles::write(badPem, "-----BEGIN CERTIFICATE-----\n!!!!\n-----END CERTIFICATE-----\n");
    EXPECT_EQ(vqxml({"cert-verify", badPem}).exitCode, 65);
    unlink(badPem.c_str());
}

TEST(CliBadInput, BadArgumentsAreUsageErrors) {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"frobnicate"},
             {},
             {"sign", clitest::invoice()},
             {"sign", "--cert"},
             {"sign", "--bogus"},
             {"verify", "a.xml", "b.xml"},
             {"key-decrypt", testpki("ee-rsa.key.enc.der")},
             {"version", "--quiet=1"},
         }) {
        auto r = vqxml(args);
        EXPECT_EQ(r.exitCode, 64) << (args.empty() ? "" : args[0]);
        EXPECT_FALSE(r.err.empty());
    }
    auto alg = vqxml(signWith({"-a", "rsa-md5", clitest::invoice()}));
    EXPECT_EQ(alg.exitCode, 64);
    EXPECT_TRUE(contains(alg.err, "known: hmac-sha1, rsa-sha1, kcdsa-sha1, kcdsa-has160, rsa-sha256")) << alg.err;
}

TEST(CliBadInput, EveryCommandHasHelpAndItIsDocumented) {
    const std::string documented = testfiles::read(std::string(VQXML_SOURCE_DIR) + "/docs/cli.md");
    auto overview = vqxml({"--help"});
    EXPECT_EQ(overview.exitCode, 0);
    for (const std::string& command : kCommands) {
        EXPECT_TRUE(contains(overview.out, "  " + command + " ")) << command;
        auto help = vqxml({command, "--help"});
        EXPECT_EQ(help.exitCode, 0) << command;
        EXPECT_EQ(help.out.rfind("Usage: vqxml " + command, 0), 0u) << help.out;
        EXPECT_EQ(vqxml({"help", command}).out, help.out);
        EXPECT_TRUE(contains(documented, help.out)) << command << ": run cli/write-docs.sh";
    }
}

}  // namespace
