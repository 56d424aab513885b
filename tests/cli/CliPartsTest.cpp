// The tool's own pieces: exit codes, text conversion, PEM.
#include <clocale>
#include <cstdio>
#include <set>

#include <gtest/gtest.h>

#include "TestFiles.hpp"
#include "cli/cli.h"

namespace {

TEST(CliParts, StatusesFoldIntoDistinctExitCodesOutsideTheToolsOwn) {
    const std::pair<int, int> table[] = {{0, 0},       {1, 1},       {7, 7},       {33, 33},     {58, 58},
                                         {10100, 100}, {10107, 107}, {10212, 132}, {10314, 154}, {10408, 168},
                                         {10511, 191}, {11102, 202}, {11213, 213}, {11304, 204}, {12011, 211},
                                         {99, 255},    {10120, 255}, {-5, 255},    {20000, 255}};
    std::set<int> seen;
    for (auto [status, exitCode] : table) {
        EXPECT_EQ(cliExitCode(status), exitCode) << status;
        EXPECT_FALSE(exitCode >= CLI_EXIT_USAGE && exitCode <= CLI_EXIT_CANT_CREATE) << status;
        if (exitCode != 255) {
            EXPECT_TRUE(seen.insert(exitCode).second) << status;
        }
    }
}

std::string converted(const std::string& text, const char* from) {
    char* buffer = nullptr;
    size_t len = 0;
    FILE* out = open_memstream(&buffer, &len);
    cliPrintConverted(out, text.data(), text.size(), from);
    fclose(out);
    std::string result(buffer, len);
    free(buffer);
    return result;
}

TEST(CliParts, EucKrMessagesReachAUtf8TerminalAsUtf8AndBadBytesAsQuestionMarks) {
    const char* saved = setlocale(LC_ALL, nullptr);
    const std::string previous = saved != nullptr ? saved : "C";
    setlocale(LC_ALL, "C.UTF-8");
    EXPECT_STREQ(cliTerminalEncoding(), "UTF-8");
    const std::string unknownError = "\xBE\xCB\xBC\xF6 \xBE\xF8\xB4\xC2 \xBF\xC0\xB7\xF9\xC0\xD4\xB4\xCF\xB4\xD9.";
    EXPECT_EQ(converted("XMLDSIG_sign > " + unknownError, "EUC-KR"), "XMLDSIG_sign > 알수 없는 오류입니다.");
    EXPECT_EQ(converted("a\xFF\xFF" "b", "EUC-KR"), "a??b");
    EXPECT_EQ(converted(std::string(600, 'x'), "EUC-KR"), std::string(600, 'x'));
    setlocale(LC_ALL, "C");
    EXPECT_STREQ(cliTerminalEncoding(), "UTF-8");
    setlocale(LC_ALL, previous.c_str());
}

TEST(CliParts, PemArmourGivesTheSameDerAndBrokenArmourIsRefused) {
    const std::string pem = testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.pem"));
    CliBuffer der{};
    ASSERT_EQ(cliPemToDer(reinterpret_cast<const unsigned char*>(pem.data()), pem.size(), &der), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(der.data), der.len),
              testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.der")));
    cliFreeBuffer(&der);
    for (const std::string& bad : {std::string("-----BEGIN X-----\nAAAA"),
                                  std::string("-----BEGIN X-----\nAA=A\n-----END X-----\n"),
                                  std::string("-----BEGIN X-----\nProc-Type: 4,ENCRYPTED\n\nAAAA\n-----END X-----\n")})
        EXPECT_EQ(cliPemToDer(reinterpret_cast<const unsigned char*>(bad.data()), bad.size(), &der), -1) << bad;
}

}  // namespace
