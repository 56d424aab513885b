// Hostile input: every loader gets truncated, empty, binary and crafted data.
// Results stay within their contract (0 incomplete, negative error, otherwise
// at most the data's length), nothing reads past the data (each load works on
// an exact-size heap copy, so AddressSanitizer would see it), and the crafted
// inputs that would be quadratic or recursive in a naive loader finish.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <random>

using mimetest::LoadExact;
using mimetest::Repeat;

namespace {

// Loads data into every kind of loader and checks the result contract.
void LoadEverywhere(const std::string& data) {
    const int len = static_cast<int>(data.size());
    CMimeMessage msg;
    int taken = LoadExact(msg, data);
    EXPECT_LE(taken, len);
    if (taken >= 0) {
        std::string stored = mimetest::Stored(msg);
        CMimeMessage again;
        LoadExact(again, stored);
    }
    CMimeHeader header;
    EXPECT_LE(LoadExact(header, data), len);

    std::unique_ptr<char[]> copy(new char[data.size() + 1]);
    std::copy(data.begin(), data.end(), copy.get());
    CMimeField field;
    EXPECT_LE(field.Load(copy.get(), len, "\r\n", '\r'), len);
    EXPECT_LE(field.Load(copy.get(), len, "\n", '\n'), len);

    CMimeCodeQP qp;
    CMimeCodeBase64 b64;
    CMimeEncodedWord words;
    CFieldCodeAddress address;
    for (CMimeCodeBase* coder : std::initializer_list<CMimeCodeBase*>{&qp, &b64, &words, &address})
        EXPECT_LE(mimetest::Run(*coder, data, false).size(), data.size() + 2);
}

std::string Nested(int depth, const std::string& leaf) {
    std::string open;
    std::string close;
    for (int i = 0; i < depth; ++i) {
        std::string b = "b" + std::to_string(i) + "z";
        open += "Content-Type: multipart/mixed; boundary=" + b + "\r\n\r\n--" + b + "\r\n";
        close = "\r\n--" + b + "--\r\n" + close;
    }
    return open + leaf + close;
}

}  // namespace

TEST(MimeHostileInput, EveryPrefixOfARealPackage) {
    const std::string mail = testfiles::read(mimetest::DataPath("nested-alternative.eml"));
    for (size_t n = 0; n <= mail.size(); n += 3)
        LoadEverywhere(mail.substr(0, n));
    const std::string ebxml = testfiles::read(testfiles::dataPath("interop/ebxml/ebms2-signed-b64attachment.mime"));
    for (size_t n = 0; n <= ebxml.size(); n += 97)
        LoadEverywhere(ebxml.substr(0, n));
}

// Tiny inputs, NUL bytes, boundaries missing, empty, unterminated or unclosed,
// and random bytes, some after a multipart header.
TEST(MimeHostileInput, OddAndRandomInputs) {
    const char nul[] = "Subject: a\0b\r\nContent-Type: multipart/mixed; boundary=\"q\"\r\n\r\n--q\r\n\0\r\n--q--\r\n";
    const std::string withNul(nul, sizeof nul - 1);
    const std::string odd[] = {
        "", "-", "--", "\r", "\n", "\r\n", ":", "=", "=?", "\t", " \r\n\r\n", withNul, std::string("\0\0\0\r\n\r\n", 7),
        "Content-Type: multipart/mixed\r\n\r\n--x\r\n\r\nno boundary parameter\r\n--x--\r\n",
        "Content-Type: multipart/mixed; boundary=\"\"\r\n\r\n--\r\n\r\nempty\r\n----\r\n",
        "Content-Type: multipart/mixed; boundary=x\r\n\r\n--x\r\n\r\nopen",
        "Content-Type: multipart/mixed; boundary=x\r\n\r\n--x",
        "Content-Type: multipart/mixed; boundary=\"unterminated\r\n\r\n--x\r\n",
    };
    for (const std::string& data : odd)
        LoadEverywhere(data);
    CMimeMessage msg;
    EXPECT_GT(LoadExact(msg, withNul), 0);
    EXPECT_EQ(msg.Load(nullptr, 10), 0);
    EXPECT_EQ(msg.Load("x", -5), 0);

    std::mt19937 rng(1234);
    for (int i = 0; i < 300; ++i) {
        std::string data(rng() % 600, '\0');
        for (char& c : data)
            c = static_cast<char>(rng());
        if (i % 3 == 0)
            data = "Content-Type: multipart/mixed; boundary=x\r\n\r\n--x\r\n" + data;
        LoadEverywhere(data);
    }
}

TEST(MimeHostileInput, EndlessFoldingAndHugeLines) {
    const std::string folded = "Subject: x" + Repeat("\r\n\t =?utf-8?Q?a?=", 100000) + "\r\n\r\nbody";
    CMimeMessage msg;
    EXPECT_EQ(LoadExact(msg, folded), static_cast<int>(folded.size()));
    CMimeEnvironment::SetAutoFolding(true);
    EXPECT_EQ(LoadExact(msg, folded), static_cast<int>(folded.size()));
    EXPECT_EQ(std::string(msg.GetFieldValue("Subject")), "x " + std::string(100000, 'a'));
    CMimeEnvironment::SetAutoFolding(false);

    const std::string unended = "Subject: x" + Repeat("\r\n\t more", 100000);
    EXPECT_EQ(LoadExact(msg, unended), 0);
    const std::string huge = "X-Long: " + std::string(4 << 20, 'a') + "\r\n\r\n";
    EXPECT_EQ(LoadExact(msg, huge), static_cast<int>(huge.size()));
    const std::string leading = Repeat(" \r\n", 100000) + "Subject: late\r\n\r\n";
    LoadEverywhere(leading);
}

TEST(MimeHostileInput, CraftedForQuadraticScans) {
    LoadEverywhere("Subject: " + Repeat("=?", 500000) + "\r\n\r\n");
    LoadEverywhere("Subject: " + Repeat("=?a", 300000) + "\r\n\r\n");
    LoadEverywhere("Subject: " + Repeat("=?x?Q?", 200000) + "\r\n\r\n");
    LoadEverywhere("Content-Type: multipart/mixed;" + Repeat(" x=\"", 200000) + "\r\n\r\n");
    const std::string boundary(100000, 'b');
    const std::string nearMisses = Repeat("\r\n--" + boundary.substr(1) + "c", 20);
    LoadEverywhere("Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n" + nearMisses);
    LoadEverywhere("Content-Type: multipart/mixed; boundary=x\r\n\r\n" + Repeat("\r\n--x\r\n", 50000));
}

TEST(MimeHostileInput, NestingDepthIsBounded) {
    const int bound = CMimeBody::MAX_NESTING_DEPTH;
    CMimeMessage msg;
    const std::string allowed = Nested(bound, "\r\nleaf");
    EXPECT_EQ(LoadExact(msg, allowed), static_cast<int>(allowed.size()));
    CMimeBody::CBodyList leaves;
    msg.GetBodyPartList(leaves);
    ASSERT_EQ(leaves.size(), 1u);
    EXPECT_EQ(mimetest::Text(*leaves.front()), "leaf");

    EXPECT_LT(LoadExact(msg, Nested(bound + 2, "\r\nleaf")), 0);
    EXPECT_LT(LoadExact(msg, Nested(5000, "\r\nleaf")), 0);
    EXPECT_EQ(msg.GetPartCount(), 0) << "a failed part is not kept";
    EXPECT_GT(LoadExact(msg, allowed), 0) << "the depth count recovers after a failure";
}
