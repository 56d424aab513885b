// Transfer encodings: exact output of quoted-printable, base64 and 7bit on the
// cases RFC 2045 cares about, and output bounds that really bound the output.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <random>

using mimetest::Decode;
using mimetest::Encode;
using mimetest::Repeat;

namespace {

std::string RandomBytes(std::mt19937& rng, size_t n, bool text) {
    static const char kText[] = "ab cd\tEF=.\r\n\r\nxyz ";
    std::string s(n, '\0');
    for (char& c : s)
        c = text ? kText[rng() % (sizeof kText - 1)] : static_cast<char>(rng());
    return s;
}

}  // namespace

TEST(QuotedPrintable, EncodesEqualsAndTrailingWhiteSpace) {
    EXPECT_EQ(Encode<CMimeCodeQP>("a =b", false), "a =3Db");
    EXPECT_EQ(Encode<CMimeCodeQP>("end ", false), "end=20");
    EXPECT_EQ(Encode<CMimeCodeQP>("a \r\nb", false), "a=20\r\nb");
    EXPECT_EQ(Encode<CMimeCodeQP>("\xED\x95\x9C", false), "=ED=95=9C");
    EXPECT_EQ(Encode<CMimeCodeQP>("x\r\n.\r\ny", false), "x\r\n=2E\r\ny");
}

TEST(QuotedPrintable, BinaryModeEncodesLineBreaks) {
    EXPECT_EQ(Encode<CMimeCodeQP>("a\r\nb", true), "a=0D=0Ab");
}

TEST(QuotedPrintable, SoftBreaksKeepLinesWithin76) {
    std::string letters(100, 'x');
    EXPECT_EQ(Encode<CMimeCodeQP>(letters, false), std::string(75, 'x') + "=\r\n" + std::string(25, 'x'));

    std::string spaced = std::string(40, 'a') + " " + std::string(70, 'b');
    EXPECT_EQ(Encode<CMimeCodeQP>(spaced, false),
              std::string(40, 'a') + " =\r\n" + std::string(70, 'b'));

    std::mt19937 rng(7);
    std::string encoded = Encode<CMimeCodeQP>(RandomBytes(rng, 5000, false), true);
    size_t start = 0;
    for (size_t br; (br = encoded.find("\r\n", start)) != std::string::npos; start = br + 2)
        EXPECT_LE(br - start, 76u);
}

TEST(QuotedPrintable, DecodesHexSoftBreaksAndStrayEquals) {
    EXPECT_EQ(Decode<CMimeCodeQP>("=3d"), "=");
    EXPECT_EQ(Decode<CMimeCodeQP>("=a0"), "a0");
    EXPECT_EQ(Decode<CMimeCodeQP>("abc=4"), "abc");
    EXPECT_EQ(Decode<CMimeCodeQP>("ab=\r\ncd"), "abcd");
    EXPECT_EQ(Decode<CMimeCodeQP>("caf=C3=A9"), "caf\xC3\xA9");
}

TEST(QuotedPrintable, RoundTripsTextAndBinary) {
    std::mt19937 rng(11);
    for (int i = 0; i < 200; ++i) {
        bool text = i % 2 == 0;
        std::string in = RandomBytes(rng, rng() % 400, text);
        EXPECT_EQ(Decode<CMimeCodeQP>(Encode<CMimeCodeQP>(in, !text)), in);
    }
}

TEST(Base64, LinesOf76EndedByCrLf) {
    EXPECT_EQ(Encode<CMimeCodeBase64>(std::string(57, '\0'), true), std::string(76, 'A') + "\r\n");
    EXPECT_EQ(Encode<CMimeCodeBase64>("M", true), "TQ==\r\n");
    EXPECT_EQ(Encode<CMimeCodeBase64>("Ma", false), "TWE=");
    EXPECT_EQ(Encode<CMimeCodeBase64>("Man", false), "TWFu");
    std::string two = Encode<CMimeCodeBase64>(std::string(58, 'x'), true);
    EXPECT_EQ(two.size(), 76u + 2 + 4 + 2);
    EXPECT_EQ(two.substr(76, 2), "\r\n");
}

TEST(Base64, DecodingSkipsLineBreaksAndStopsAtForeignBytes) {
    EXPECT_EQ(Decode<CMimeCodeBase64>("TW\r\nFu\nTWE="), "ManMa");
    EXPECT_EQ(Decode<CMimeCodeBase64>("TWFu TWFu"), "Man");
    std::mt19937 rng(3);
    for (int i = 0; i < 100; ++i) {
        std::string in = RandomBytes(rng, rng() % 300, false);
        EXPECT_EQ(Decode<CMimeCodeBase64>(Encode<CMimeCodeBase64>(in, i % 2 == 0)), in);
    }
}

TEST(SevenBit, BreaksLongLinesBeforeTheirLastSpace) {
    std::string shortLine = std::string(76, 'a');
    EXPECT_EQ(Encode<CMimeCode7bit>(shortLine, false), shortLine);
    std::string noSpace = std::string(300, 'a');
    EXPECT_EQ(Encode<CMimeCode7bit>(noSpace, false), noSpace);

    std::string words = Repeat("word ", 20);  // 100 characters
    std::string folded = Encode<CMimeCode7bit>(words, false);
    EXPECT_EQ(folded, Repeat("word ", 15).substr(0, 74) + "\r\n " + Repeat("word ", 5));
    EXPECT_EQ(Decode<CMimeCode7bit>(folded), folded);
}

TEST(CoderBounds, TheBoundHoldsTheWholeOutput) {
    std::mt19937 rng(5);
    for (int i = 0; i < 300; ++i) {
        std::string in = RandomBytes(rng, rng() % 1000, i % 3 == 0);
        std::vector<std::unique_ptr<CMimeCodeBase>> coders;
        coders.emplace_back(new CMimeCodeBase);
        coders.emplace_back(new CMimeCode7bit);
        coders.emplace_back(new CMimeCodeQP);
        coders.emplace_back(new CMimeCodeQP);
        coders.back()->SetBreakLines(true);
        coders.emplace_back(new CMimeCodeBase64);
        coders.emplace_back(new CMimeCodeBase64);
        coders.back()->SetBreakLines(false);
        for (auto& coder : coders) {
            for (bool encode : {true, false}) {
                coder->SetInput(in.data(), static_cast<int>(in.size()), encode);
                int bound = coder->GetOutputLength();
                std::vector<unsigned char> big(in.size() * 4 + 64);
                std::vector<unsigned char> exact(bound + 1);
                int full = coder->GetOutput(big.data(), static_cast<int>(big.size()));
                int fitted = coder->GetOutput(exact.data(), bound);
                ASSERT_EQ(fitted, full) << "bound too small";
                ASSERT_EQ(0, std::memcmp(big.data(), exact.data(), full));
            }
        }
    }
}

TEST(CoderBounds, ShortBuffersCutTheOutputWithoutError) {
    std::string in(200, 'q');
    CMimeCodeBase64 coder;
    coder.SetInput(in.data(), static_cast<int>(in.size()), true);
    unsigned char out[10];
    EXPECT_EQ(coder.Encode(out, 10), 10);
    EXPECT_EQ(coder.Encode(out, 0), 0);
    CMimeCodeQP qp;
    std::string eq(10, '=');
    qp.SetInput(eq.data(), 10, true);
    EXPECT_EQ(qp.Encode(out, 8), 6);  // never half of "=3D"
}
