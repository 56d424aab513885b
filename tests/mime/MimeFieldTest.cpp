// Header fields: parsing, folding, parameters and RFC 2047 encoded words; the
// coder registry.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

using mimetest::Repeat;
using mimetest::kKorean;

namespace {

// Restores the process-wide settings a test changes.
class EnvironmentScope {
public:
    ~EnvironmentScope() {
        CMimeEnvironment::SetAutoFolding(false);
        CMimeEnvironment::SetDefaultCharset(nullptr);
    }
};

std::string StoreField(const CMimeField& field, const char* lineBreak = "\r\n") {
    std::vector<char> out(field.GetLength(lineBreak));
    int n = field.Store(out.data(), static_cast<int>(out.size()), lineBreak);
    return std::string(out.data(), n);
}

CMimeField MakeField(const char* name, const char* value, const char* charset = nullptr) {
    CMimeField field;
    field.SetName(name);
    field.SetValue(value);
    field.SetCharset(charset);
    return field;
}

std::string DecodeWords(const std::string& text, std::string* charset = nullptr) {
    CMimeEncodedWord words;
    std::string out = mimetest::Run(words, text, false);
    if (charset)
        *charset = words.GetCharset();
    return out;
}

template <typename Want, typename Have>
bool Is(Have* object) {
    std::unique_ptr<Have> owned(object);
    return dynamic_cast<Want*>(owned.get()) != nullptr;
}

class XmlBody : public CMimeBody {
public:
    static CMimeBody* CreateObject() { return new XmlBody; }
};

CFieldCodeBase* MakeAddressCoder() {
    return new CFieldCodeAddress;
}

}  // namespace

// A field ends with its line break (CRLF or LF as the data has it).
TEST(MimeField, LoadsAndStoresASimpleLine) {
    CMimeField field;
    const std::string line = "Subject: Hello\r\n";
    EXPECT_EQ(field.Load(line.data(), static_cast<int>(line.size()), "\r\n", '\r'),
              static_cast<int>(line.size()));
    EXPECT_STREQ(field.GetName(), "Subject");
    EXPECT_STREQ(field.GetValue(), "Hello");
    EXPECT_STREQ(field.GetCharset(), "");
    EXPECT_EQ(StoreField(field), line);
    const std::string data = "Subject: no end";
    EXPECT_EQ(field.Load(data.data(), static_cast<int>(data.size()), "\r\n", '\r'), 0);
    const std::string lf = "Subject: lf\n";
    EXPECT_EQ(field.Load(lf.data(), static_cast<int>(lf.size()), "\n", '\n'), 12);
    EXPECT_STREQ(field.GetValue(), "lf");
}

TEST(MimeField, FoldedValueKeepsItsBreakUnlessAutoFolding) {
    const std::string data = "Comments: first\r\n\tsecond\r\nNext: x\r\n";
    CMimeField field;
    int taken = field.Load(data.data(), static_cast<int>(data.size()), "\r\n", '\r');
    EXPECT_EQ(taken, static_cast<int>(data.find("Next")));
    EXPECT_STREQ(field.GetValue(), "first\r\n\tsecond");
    EXPECT_EQ(StoreField(field), data.substr(0, taken));

    EnvironmentScope scope;
    CMimeEnvironment::SetAutoFolding(true);
    field.Load(data.data(), static_cast<int>(data.size()), "\r\n", '\r');
    EXPECT_STREQ(field.GetValue(), "first second");
}

TEST(MimeField, ParametersIgnoreCaseAndQuotes) {
    CMimeField field = MakeField("Content-Type", "text/plain; charset=\"euc-kr\"");
    std::string value;
    field.GetValue(value);
    EXPECT_EQ(value, "text/plain");
    EXPECT_TRUE(field.GetParameter("CharSet", value));
    EXPECT_EQ(value, "euc-kr");
    EXPECT_FALSE(field.GetParameter("name", value));
    EXPECT_EQ(value, "");

    CMimeField unquoted = MakeField("Content-Type", "text/plain ;format=flowed; charset=us-ascii");
    EXPECT_TRUE(unquoted.GetParameter("charset", value));
    EXPECT_EQ(value, "us-ascii");
    unquoted.GetValue(value);
    EXPECT_EQ(value, "text/plain");
}

TEST(MimeField, SetParameterQuotesAndReplacesInPlace) {
    CMimeField field = MakeField("Content-Type", "multipart/mixed");
    field.SetParameter("boundary", "abc");
    EXPECT_STREQ(field.GetValue(), "multipart/mixed; boundary=\"abc\"");
    field.SetParameter("BOUNDARY", "xyz");
    EXPECT_STREQ(field.GetValue(), "multipart/mixed; boundary=\"xyz\"");
    field.SetParameter("type", "\"text/xml\"");
    EXPECT_STREQ(field.GetValue(), "multipart/mixed; boundary=\"xyz\"; type=\"text/xml\"");
    field.SetParameter("start", nullptr);
    EXPECT_STREQ(field.GetValue(), "multipart/mixed; boundary=\"xyz\"; type=\"text/xml\"; start=\"\"");
}

// Non-ASCII words become encoded words only with a charset, and not with an
// overlong one.
TEST(MimeField, NonAsciiWordsBecomeEncodedWordsOnlyWithACharset) {
    CMimeField plain = MakeField("Subject", ("Hi " + kKorean).c_str());
    EXPECT_EQ(StoreField(plain), "Subject: Hi " + kKorean + "\r\n");

    CMimeField address = MakeField("From", (kKorean + " <kim@example.kr>").c_str(), "utf-8");
    EXPECT_EQ(StoreField(address), "From: =?utf-8?B?7ZWc6riA?= <kim@example.kr>\r\n");

    const std::string subject = "re: a longer subject line " + kKorean;  // mostly ASCII: Q
    CMimeField text = MakeField("Subject", subject.c_str(), "utf-8");
    std::string stored = StoreField(text);
    EXPECT_EQ(stored.compare(0, 19, "Subject: =?utf-8?Q?"), 0) << stored;

    CMimeField loaded;
    loaded.Load(stored.data(), static_cast<int>(stored.size()), "\r\n", '\r');
    EXPECT_EQ(std::string(loaded.GetValue()), subject);
    EXPECT_STREQ(loaded.GetCharset(), "utf-8");
    std::string charset(60, 'c');
    CMimeField field = MakeField("Subject", kKorean.c_str(), charset.c_str());
    EXPECT_EQ(StoreField(field), "Subject: " + kKorean + "\r\n");
}

TEST(MimeField, DefaultCharsetFoldsAddressListsAndParameters) {
    EnvironmentScope scope;
    CMimeEnvironment::SetDefaultCharset("euc-kr");
    CMimeField to = MakeField("To", "A <a@x.kr>, B <b@x.kr>");
    EXPECT_EQ(StoreField(to), "To: A <a@x.kr>,\r\n\tB <b@x.kr>\r\n");
    CMimeField type = MakeField("Content-Type", "text/plain; charset=\"x; y\"");
    EXPECT_EQ(StoreField(type), "Content-Type: text/plain;\r\n\tcharset=\"x; y\"\r\n");
}

TEST(MimeField, AutoFoldingBreaksLongValuesAtWhiteSpace) {
    EnvironmentScope scope;
    CMimeEnvironment::SetAutoFolding(true);
    const std::string value = Repeat("word ", 40);
    CMimeField field = MakeField("X-Note", value.c_str());
    std::string stored = StoreField(field);
    size_t start = 0;
    int lines = 0;
    for (size_t br; (br = stored.find("\r\n", start)) != std::string::npos; start = br + 2, ++lines)
        EXPECT_LE(br - start, 76u + 8) << "value lines of 76 after the name";
    EXPECT_GT(lines, 2);
    CMimeField back;
    back.Load(stored.data(), static_cast<int>(stored.size()), "\r\n", '\r');
    EXPECT_EQ(std::string(back.GetValue()), value);
}

TEST(EncodedWord, QWordsStayWithin75CharactersEach) {
    CMimeEncodedWord word;
    word.SetEncoding('Q', "utf-8");
    std::string text = Repeat(kKorean, 20);
    std::string encoded = mimetest::Run(word, text, true);
    size_t start = 0;
    int words = 0;
    for (;;) {
        size_t space = encoded.find(' ', start);
        std::string one = encoded.substr(start, space - start);
        EXPECT_LE(one.size(), 75u);
        EXPECT_EQ(one.compare(0, 10, "=?utf-8?Q?"), 0);
        EXPECT_EQ(one.substr(one.size() - 2), "?=");
        ++words;
        if (space == std::string::npos)
            break;
        start = space + 1;
    }
    EXPECT_GT(words, 1);
    EXPECT_EQ(DecodeWords(encoded), text);

    word.SetEncoding('b', "utf-8");
    std::string b = mimetest::Run(word, text, true);
    EXPECT_EQ(DecodeWords(b), text);
    EXPECT_LE(b.find(' '), 75u);
}

// The RFC 2047 examples; malformed words stay text.
TEST(EncodedWord, Rfc2047ExamplesAndMalformedWords) {
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a?=)"), "(a)");
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a?= b)"), "(a b)");
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a?= =?ISO-8859-1?Q?b?=)"), "(ab)");
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a?=  =?ISO-8859-1?Q?b?=)"), "(ab)");
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a?=\r\n    =?ISO-8859-1?Q?b?=)"), "(ab)");
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a_b?=)"), "(a b)");
    EXPECT_EQ(DecodeWords("(=?ISO-8859-1?Q?a?= =?ISO-8859-2?Q?_b?=)"), "(a b)");
    std::string charset;
    EXPECT_EQ(DecodeWords("=?US-ASCII?Q?Keith_Moore?= <moore@cs.utk.edu>", &charset),
              "Keith Moore <moore@cs.utk.edu>");
    EXPECT_EQ(charset, "US-ASCII");
    EXPECT_EQ(DecodeWords("=?ISO-8859-1?Q?Keld_J=F8rn_Simonsen?= <keld@dkuug.dk>"),
              "Keld J\xF8rn Simonsen <keld@dkuug.dk>");
    EXPECT_EQ(DecodeWords("=?ISO-8859-1?B?SWYgeW91IGNhbiByZWFkIHRoaXMgeW8=?=\r\n"
                          " =?ISO-8859-2?B?dSB1bmRlcnN0YW5kIHRoZSBleGFtcGxlLg==?="),
              "If you can read this you understand the example.");
    EXPECT_EQ(DecodeWords("=?no-end"), "=?no-end");
    EXPECT_EQ(DecodeWords("a =?x?"), "a =?x?");
    EXPECT_EQ(DecodeWords("=?=?utf-8?Q?a?="), "=?a");
    EXPECT_EQ(DecodeWords("=?utf-8?Q?open"), "open");
}

// Registering replaces (names ignore case) and a null factory removes.
TEST(MimeEnvironment, RegistrationsReplaceAndNullRemoves) {
    CMimeEnvironment::RegisterFieldCoder("SUBJECT", MakeAddressCoder);
    EXPECT_TRUE(Is<CFieldCodeAddress>(CMimeEnvironment::CreateFieldCoder("Subject")));
    CMimeEnvironment::RegisterFieldCoder("Subject", nullptr);
    std::unique_ptr<CFieldCodeBase> plain(CMimeEnvironment::CreateFieldCoder("Subject"));
    EXPECT_TRUE(typeid(*plain) == typeid(CFieldCodeBase));
    CMimeEnvironment::RegisterFieldCoder("Subject", CFieldCodeText::CreateObject);
    EXPECT_TRUE(Is<CFieldCodeText>(CMimeEnvironment::CreateFieldCoder("Subject")));

    EXPECT_FALSE(Is<XmlBody>(CMimeEnvironment::CreateBodyPart("multipart")));
    CMimeEnvironment::RegisterMediaType("application", XmlBody::CreateObject);
    const std::string data =
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
        "Content-Type: Application/xml\r\n\r\n<a/>\r\n--b--\r\n";
    CMimeBody body;
    EXPECT_EQ(mimetest::LoadExact(body, data), static_cast<int>(data.size()));
    ASSERT_EQ(body.GetPartCount(), 1);
    EXPECT_TRUE(dynamic_cast<XmlBody*>(body.GetPartList().front()) != nullptr);
    CMimeEnvironment::RegisterMediaType("application", nullptr);
    EXPECT_FALSE(Is<XmlBody>(CMimeEnvironment::CreateBodyPart("application")));
}
