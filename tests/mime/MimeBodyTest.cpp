// Headers and bodies: loading rules (incomplete headers, headerless multipart,
// preamble and epilogue, unclosed parts), default types, the Date field and files.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <regex>

using mimetest::LoadExact;
using mimetest::Stored;
using mimetest::Text;

// A header whose last field has no line break is not loaded; one that reaches
// the end leaves an empty body.
TEST(MimeHeader, LoadNeedsCompleteFields) {
    CMimeHeader header;
    EXPECT_EQ(LoadExact(header, "Subject: a\r\nTo: b"), 0);
    CMimeBody body;
    EXPECT_EQ(LoadExact(body, "Subject: a\r\nTo: b"), 0);
    EXPECT_EQ(LoadExact(body, ""), 0);
    const std::string data = "Subject: a\r\nTo: b\r\n";
    EXPECT_EQ(LoadExact(body, data), static_cast<int>(data.size()));
    EXPECT_EQ(body.GetFieldList().size(), 2u);
    EXPECT_EQ(body.GetTextLen(), 0);
}

TEST(MimeHeader, StoresFieldsThenTheEmptyLine) {
    CMimeHeader header;
    header.SetFieldValue("MIME-Version", "1.0");
    header.SetFieldValue("Content-Type", "text/plain");
    header.SetFieldValue("content-type", "text/html", "utf-8");
    EXPECT_EQ(Stored(header), "MIME-Version: 1.0\r\ncontent-type: text/html\r\n\r\n");
    header.SetLineBreakMode(2);
    EXPECT_EQ(Stored(header), "MIME-Version: 1.0\ncontent-type: text/html\n\n");
    EXPECT_STREQ(header.GetFieldCharset("Content-Type"), "utf-8");
    EXPECT_EQ(header.GetFieldValue("Content-ID"), nullptr);
}

// A charset alone makes text/plain; a name does not replace a type already set.
TEST(MimeHeader, CharsetOrNameWhereNoTypeIsSet) {
    CMimeHeader typed;
    typed.SetContentType("text/xml");
    typed.SetName("a.jpg");
    EXPECT_STREQ(typed.GetContentType(), "text/xml; name=\"a.jpg\"");
    CMimeHeader charset;
    charset.SetCharset("euc-kr");
    EXPECT_STREQ(charset.GetContentType(), "text/plain; charset=\"euc-kr\"");
}

// A headerless package is multipart/related (its first delimiter has no line
// break before it); the preamble is the body's own text and the epilogue is not
// taken; an unclosed part, or a delimiter at the very end, runs to the end;
// line-feed data is detected and stored back as it came.
TEST(MimeBody, LoadingRules) {
    const std::string headerless = "--b1\r\nContent-ID: <a>\r\n\r\n<x/>\r\n--b1--\r\n";
    const std::string preamble = "Content-Type: multipart/mixed; boundary=\"zz\"\r\n\r\n"
                                 "This is the preamble.\r\n--zz\r\n\r\npart one\r\n--zz--\r\nepilogue\r\n";
    const std::string unclosed =
        "Content-Type: multipart/mixed; boundary=zz\r\n\r\n--zz\r\n\r\none\r\n--zz\r\n\r\ntwo, never closed";
    const std::string cut = "Content-Type: multipart/mixed; boundary=x\r\n\r\n--x";
    const std::string lf = "Content-Type: multipart/mixed; boundary=zz\n\n--zz\nX-A: 1\n\none\n--zz--\n";
    const struct {
        std::string data;
        size_t taken;
        std::string preamble;
        std::vector<std::string> parts;
    } cases[] = {
        {headerless, headerless.size(), "", {"<x/>\r\n"}},
        {preamble, preamble.find("epilogue"), "This is the preamble.\r\n", {"part one"}},
        {unclosed, unclosed.size(), "", {"one", "two, never closed"}},
        {cut, cut.size(), "", {}},
        {lf, lf.size(), "", {"one"}},
    };
    for (const auto& c : cases) {
        CMimeBody body;
        EXPECT_EQ(LoadExact(body, c.data), static_cast<int>(c.taken)) << c.data;
        EXPECT_EQ(Text(body), c.preamble) << c.data;
        std::vector<std::string> parts;
        for (const CMimeBody* part : body.GetPartList())
            parts.push_back(Text(*part));
        EXPECT_EQ(parts, c.parts) << c.data;
    }
    CMimeBody body;
    LoadExact(body, headerless);
    EXPECT_STREQ(body.GetContentType(), "multipart/related; type=\"text/xml\"; boundary=\"b1\"");
    EXPECT_STREQ(body.GetPartList().front()->GetContentId(), "<a>");
    EXPECT_EQ(LoadExact(body, "--no line break"), 0);
    LoadExact(body, lf);
    EXPECT_EQ(body.GetLineBreakMode(), 2);
    EXPECT_EQ(Stored(body), lf);
}

TEST(MimeBody, MultipartWithoutBoundaryCannotBeStored) {
    CMimeBody body;
    body.SetContentType("multipart/mixed");
    body.CreatePart()->SetText("x");
    std::vector<char> out(body.GetLength());
    EXPECT_EQ(body.Store(out.data(), static_cast<int>(out.size())), -1);
}

TEST(MimeBody, PartsAreInsertedErasedAndWalked) {
    CMimeBody body;
    CMimeBody* second = body.CreatePart();
    CMimeBody* first = body.CreatePart("text", second);
    CMimeBody* third = body.CreatePart(nullptr, nullptr);
    EXPECT_EQ(body.FindFirstPart(), first);
    EXPECT_EQ(body.FindNextPart(), second);
    body.ErasePart(second);
    EXPECT_EQ(body.FindNextPart(), third);
    EXPECT_EQ(body.FindNextPart(), nullptr);
    body.FindFirstPart();
    body.ErasePart(third);
    EXPECT_EQ(body.FindNextPart(), nullptr) << "the cursor moved past the erased part";
    body.Clear();
    EXPECT_EQ(body.GetPartCount(), 0);
    EXPECT_EQ(body.FindFirstPart(), nullptr);
}

TEST(MimeBody, TextIsCopiedAndCut) {
    CMimeBody body;
    EXPECT_EQ(body.SetText("hello"), 5);
    EXPECT_EQ(body.SetText("a\0b", 3), 3);
    EXPECT_EQ(body.GetTextLen(), 3);
    char out[2];
    EXPECT_EQ(body.GetText(out, 2), 2);
    EXPECT_EQ(body.SetText("x", -1), -1);
    EXPECT_EQ(body.GetContent()[3], '\0');
}

TEST(MimeMessage, DateFollowsTheLocalZone) {
    const char* const before = std::getenv("TZ");
    const std::string saved = before != nullptr ? before : "";
    const auto zone = [](const char* tz) {
        tz != nullptr ? setenv("TZ", tz, 1) : unsetenv("TZ");
        tzset();
    };
    CMimeMessage msg;
    zone("KST-9");
    msg.SetDate(2009, 2, 29, 0, 0, 0);
    EXPECT_STREQ(msg.GetDate(), "Sun, 1 Mar 2009 00:00:00 +0900");
    zone("EST5");
    msg.SetDate(2024, 12, 31, 23, 59, 7);
    EXPECT_STREQ(msg.GetDate(), "Tue, 31 Dec 2024 23:59:07 -0500");
    zone("UTC0");
    msg.SetDate(1960, 1, 1, 0, 0, 0);
    EXPECT_STREQ(msg.GetDate(), "Tue, 31 Dec 2024 23:59:07 -0500") << "before 1970: unchanged";
    msg.SetDate();
    EXPECT_TRUE(std::regex_match(std::string(msg.GetDate()),
                                 std::regex("[A-Z][a-z]{2}, [0-9]{1,2} [A-Z][a-z]{2} [0-9]{4} "
                                            "[0-9]{2}:[0-9]{2}:[0-9]{2} \\+0000")));
    zone(before != nullptr ? saved.c_str() : nullptr);  // no assertion above ends the test early
}

TEST(MimeBodyFile, ReadsWithNameAndWritesPrivately) {
    const std::string path = testfiles::scratch("mime-report.pdf");
    CMimeBody source;
    source.SetText("%PDF-1.4 binary\0data", 20);
    ASSERT_EQ(source.WriteToFile(path.c_str()), 1);
    struct stat st {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    CMimeBody read;
    ASSERT_EQ(read.ReadFromFile(path.c_str()), 1);
    EXPECT_EQ(Text(read), std::string("%PDF-1.4 binary\0data", 20));
    std::string name = path.substr(path.rfind('/') + 1);
    EXPECT_EQ(read.GetName(), name);
    EXPECT_EQ(read.GetContentType(), "application/pdf; name=\"" + name + "\"");
    ::unlink(path.c_str());

    EXPECT_EQ(read.ReadFromFile((path + ".missing").c_str()), 0);
    CMimeBody empty;
    const std::string none = testfiles::scratch("mime-empty");
    EXPECT_EQ(empty.WriteToFile(none.c_str()), 1);
    EXPECT_NE(::access(none.c_str(), F_OK), 0) << "an empty body creates no file";
}
