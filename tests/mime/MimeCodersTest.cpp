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

// Exact encodings; binary mode encodes line breaks too. Round trips of random
// text and binary run against Python's coders (MimePythonPeerTest).
TEST(TransferEncodings, ExactOutput) {
    const std::string spaced = std::string(40, 'a') + " " + std::string(70, 'b');
    const struct {
        std::string in;
        bool breakLines;
        std::string qp;
    } qp[] = {
        {"a =b", false, "a =3Db"},
        {"end ", false, "end=20"},
        {"a \r\nb", false, "a=20\r\nb"},
        {"\xED\x95\x9C", false, "=ED=95=9C"},
        {"x\r\n.\r\ny", false, "x\r\n=2E\r\ny"},
        {"a\r\nb", true, "a=0D=0Ab"},
        {std::string(100, 'x'), false, std::string(75, 'x') + "=\r\n" + std::string(25, 'x')},
        {spaced, false, std::string(40, 'a') + " =\r\n" + std::string(70, 'b')},
    };
    for (const auto& c : qp) {
        EXPECT_EQ(Encode<CMimeCodeQP>(c.in, c.breakLines), c.qp) << c.in;
        EXPECT_EQ(Decode<CMimeCodeQP>(c.qp), c.in) << c.qp;
    }
    const std::pair<std::string, std::string> qpDecoded[] = {
        {"=3d", "="}, {"=a0", "a0"}, {"abc=4", "abc"}, {"ab=\r\ncd", "abcd"}, {"caf=C3=A9", "caf\xC3\xA9"}};
    for (const auto& [in, out] : qpDecoded)
        EXPECT_EQ(Decode<CMimeCodeQP>(in), out) << in;

    EXPECT_EQ(Encode<CMimeCodeBase64>(std::string(57, '\0'), true), std::string(76, 'A') + "\r\n");
    EXPECT_EQ(Encode<CMimeCodeBase64>("M", true), "TQ==\r\n");
    EXPECT_EQ(Encode<CMimeCodeBase64>("Ma", false), "TWE=");
    EXPECT_EQ(Encode<CMimeCodeBase64>(std::string(58, 'x'), true),
              Encode<CMimeCodeBase64>(std::string(57, 'x'), false) + "\r\neA==\r\n");
    EXPECT_EQ(Decode<CMimeCodeBase64>("TW\r\nFu\nTWE="), "ManMa");
    EXPECT_EQ(Decode<CMimeCodeBase64>("TWFu TWFu"), "Man") << "decoding stops at a foreign byte";

    std::mt19937 rng(7);
    std::string encoded = Encode<CMimeCodeQP>(RandomBytes(rng, 5000, false), true);
    size_t start = 0;
    for (size_t br; (br = encoded.find("\r\n", start)) != std::string::npos; start = br + 2)
        EXPECT_LE(br - start, 76u);
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

// Body coders both ways on random text and bytes; header-field coders encoding
// values of the pieces their rules turn on, with and without automatic folding.
TEST(CoderBounds, TheBoundHoldsTheWholeOutput) {
    std::mt19937 rng(5);
    const std::vector<std::string> pieces = {"a", "word", " ", "\t", ",", ";", ":", "<", ">", "\"",
                                             "(", ")", "\r\n\t", "=?", mimetest::kKorean, "\xFF", std::string(90, 'z')};
    const std::vector<std::string> charsets = {"utf-8", "x", std::string(25, 'c'), std::string(40, 'c')};
    for (int i = 0; i < 400; ++i) {
        CMimeEnvironment::SetAutoFolding(i % 2 == 0);
        const std::string in = RandomBytes(rng, rng() % 1000, i % 3 == 0);
        std::string value;
        for (int n = rng() % 40; n > 0; --n)
            value += pieces[rng() % pieces.size()];
        std::vector<std::unique_ptr<CMimeCodeBase>> coders;
        coders.emplace_back(new CMimeCodeBase);
        coders.emplace_back(new CMimeCode7bit);
        coders.emplace_back(new CMimeCodeQP);
        coders.emplace_back(new CMimeCodeQP);
        coders.back()->SetBreakLines(true);
        coders.emplace_back(new CMimeCodeBase64);
        coders.emplace_back(new CMimeCodeBase64);
        coders.back()->SetBreakLines(false);
        const size_t bodyCoders = coders.size();
        for (CFieldCodeBase* field : {new CFieldCodeBase, CFieldCodeText::CreateObject(),
                                      CFieldCodeAddress::CreateObject(), CFieldCodeParameter::CreateObject()}) {
            field->SetCharset(i % 3 == 0 ? "" : charsets[i % charsets.size()].c_str());
            coders.emplace_back(field);
        }
        for (size_t c = 0; c < coders.size(); ++c) {
            const std::string& data = c < bodyCoders ? in : value;
            for (bool encode : {true, false}) {
                if (!encode && c >= bodyCoders)
                    continue;
                coders[c]->SetInput(data.data(), static_cast<int>(data.size()), encode);
                int bound = coders[c]->GetOutputLength();
                std::vector<unsigned char> big(data.size() * 12 + 256);
                std::vector<unsigned char> exact(bound + 1);
                int full = coders[c]->GetOutput(big.data(), static_cast<int>(big.size()));
                int fitted = coders[c]->GetOutput(exact.data(), bound);
                ASSERT_EQ(fitted, full) << "bound too small for: " << data;
                ASSERT_EQ(0, std::memcmp(big.data(), exact.data(), full));
            }
        }
    }
    CMimeEnvironment::SetAutoFolding(false);
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
