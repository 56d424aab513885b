// Whole packages: exact stored bytes, round trips of packages built through the
// API, ebXML SOAP-with-attachments packages made by other tools, and a mail with
// nested multipart/alternative and attachments written from the RFC examples.
#include "MimeTestSupport.hpp"

#include <gtest/gtest.h>

#include <random>

using mimetest::LoadExact;
using mimetest::Stored;
using mimetest::Text;
using mimetest::kKorean;

namespace {

std::string RandomBinary(size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::string s(n, '\0');
    for (char& c : s)
        c = static_cast<char>(rng());
    return s;
}

// An ebXML-style package with a nested alternative and several encodings.
void BuildPackage(CMimeMessage& msg) {
    const int lineBreakMode = 0;
    msg.SetLineBreakMode(lineBreakMode);
    msg.SetVersion();
    msg.SetFieldValue("Subject", ("Order " + kKorean + " of the week").c_str(), "utf-8");
    msg.SetContentType("multipart/related; type=\"text/xml\"; start=\"<soap@example.kr>\"");
    msg.SetBoundary();

    CMimeBody* soap = msg.CreatePart();
    soap->SetLineBreakMode(lineBreakMode);
    soap->SetContentType("text/xml; charset=UTF-8");
    soap->SetContentId("<soap@example.kr>");
    soap->SetText("<?xml version=\"1.0\"?>\n<Envelope>\r\n<Body/></Envelope>\n");

    CMimeBody* attachment = msg.CreatePart("application");
    attachment->SetLineBreakMode(lineBreakMode);
    attachment->SetName("invoice.pdf");
    attachment->SetContentId("<invoice@example.kr>");
    attachment->SetTransferEncoding("base64");
    std::string binary = RandomBinary(5000, 42);
    attachment->SetText(binary.data(), static_cast<int>(binary.size()));

    CMimeBody* alternative = msg.CreatePart("multipart");
    alternative->SetLineBreakMode(lineBreakMode);
    alternative->SetContentType("multipart/alternative");
    alternative->SetBoundary("alt-boundary");
    CMimeBody* plain = alternative->CreatePart();
    plain->SetLineBreakMode(lineBreakMode);
    plain->SetContentType("text/plain; charset=UTF-8");
    plain->SetTransferEncoding("quoted-printable");
    plain->SetText((std::string(120, 'x') + " = " + kKorean + "\r\nsecond line \r\n").c_str());
    CMimeBody* html = alternative->CreatePart();
    html->SetLineBreakMode(lineBreakMode);
    html->SetContentType("text/html");
    html->SetText("<p>hi</p>");
}

std::vector<std::string> LeafTexts(const CMimeBody& body) {
    CMimeBody::CBodyList leaves;
    body.GetBodyPartList(leaves);
    std::vector<std::string> texts;
    for (const CMimeBody* leaf : leaves)
        texts.push_back(Text(*leaf));
    return texts;
}

std::string InteropPath(const std::string& name) {
    return testfiles::dataPath("interop/ebxml/" + name);
}

}  // namespace

TEST(MimePackage, StoresExactBytes) {
    CMimeMessage msg;
    msg.SetContentType("multipart/related; type=\"text/xml\"");
    msg.SetBoundary("b");
    CMimeBody* soap = msg.CreatePart();
    soap->SetContentType("text/xml");
    soap->SetContentId("<soap>");
    soap->SetText("<e/>");
    CMimeBody* bin = msg.CreatePart();
    bin->SetContentType("application/octet-stream");
    bin->SetTransferEncoding("base64");
    bin->SetText("\x00\x01\x02", 3);
    EXPECT_EQ(Stored(msg),
              "Content-Type: multipart/related; type=\"text/xml\"; boundary=\"b\"\r\n"
              "\r\n"
              "--b\r\n"
              "Content-Type: text/xml\r\n"
              "Content-ID: <soap>\r\n"
              "\r\n"
              "<e/>\r\n"
              "--b\r\n"
              "Content-Type: application/octet-stream\r\n"
              "Content-Transfer-Encoding: base64\r\n"
              "\r\n"
              "AAEC\r\n"
              "\r\n"
              "--b--\r\n");
}

TEST(MimePackage, BuiltPackagesRoundTripByteForByte) {
    CMimeMessage built;
    BuildPackage(built);
    const std::string first = Stored(built);
    ASSERT_FALSE(first.empty());

    CMimeMessage loaded;
    EXPECT_EQ(LoadExact(loaded, first), static_cast<int>(first.size()));
    EXPECT_EQ(Stored(loaded), first);
    EXPECT_EQ(LeafTexts(loaded), LeafTexts(built));
    EXPECT_EQ(loaded.GetBoundary(), built.GetBoundary());
    EXPECT_EQ(std::string(loaded.GetFieldValue("Subject")), "Order " + kKorean + " of the week");

    CMimeBody::CBodyList attachments;
    EXPECT_EQ(loaded.GetAttachmentList(attachments), 1);
    EXPECT_EQ(attachments.front()->GetName(), "invoice.pdf");
    EXPECT_STREQ(attachments.front()->GetContentId(), "<invoice@example.kr>");
}

TEST(MimePackage, GetLengthBoundsStoreWithAutoFoldingAndCharsets) {
    CMimeEnvironment::SetAutoFolding(true);
    CMimeEnvironment::SetDefaultCharset("utf-8");
    CMimeMessage msg;
    BuildPackage(msg);
    msg.SetFieldValue("To", ("A " + kKorean + " <a@x.kr>, " + std::string(200, 'b') + "@x.kr").c_str());
    std::string exact = Stored(msg);
    std::vector<char> roomy(msg.GetLength() * 2 + 100);
    int n = msg.Store(roomy.data(), static_cast<int>(roomy.size()));
    EXPECT_EQ(exact, std::string(roomy.data(), n));
    CMimeMessage back;
    EXPECT_EQ(LoadExact(back, exact), static_cast<int>(exact.size()));
    EXPECT_EQ(Stored(back), exact);
    CMimeEnvironment::SetAutoFolding(false);
    CMimeEnvironment::SetDefaultCharset(nullptr);
}

TEST(MimePackage, LoadingAgainReplacesThePreviousPackage) {
    CMimeMessage msg;
    const std::string lf = "Content-Type: multipart/mixed; boundary=q\n\n--q\n\na\n--q\n\nb\n--q--\n";
    const std::string crlf = testfiles::read(InteropPath("ebms2-signed.mime"));
    EXPECT_GT(LoadExact(msg, lf), 0);
    EXPECT_EQ(LeafTexts(msg), (std::vector<std::string>{"a", "b"}));
    ASSERT_GT(LoadExact(msg, crlf), 0);
    EXPECT_EQ(msg.GetLineBreakMode(), 1);
    EXPECT_EQ(LeafTexts(msg).size(), 3u);
    ASSERT_FALSE(msg.GetFieldList().empty());
    EXPECT_EQ(msg.GetFieldList().front().GetName(), std::string("Content-Type"));
}

TEST(MimePackage, NestedMailFromRfcExamples) {
    const std::string mail = testfiles::read(mimetest::DataPath("nested-alternative.eml"));
    CMimeMessage msg;
    EXPECT_EQ(LoadExact(msg, mail), static_cast<int>(mail.find("\r\nThis is the epilogue")));
    EXPECT_EQ(std::string(msg.GetFieldValue("subject")), "Sample message with \xE9l\xE8ves");
    EXPECT_STREQ(msg.GetFieldCharset("Subject"), "ISO-8859-1");
    EXPECT_EQ(msg.GetBoundary(), "simple boundary");
    EXPECT_EQ(Text(msg).find("This is the preamble."), 0u);

    ASSERT_EQ(msg.GetPartCount(), 3);
    const CMimeBody* alternative = msg.GetPartList().front();
    EXPECT_EQ(alternative->GetSubType(), "alternative");
    ASSERT_EQ(alternative->GetPartCount(), 2);

    CMimeBody::CBodyList leaves;
    ASSERT_EQ(msg.GetBodyPartList(leaves), 4);
    std::vector<CMimeBody*> leaf(leaves.begin(), leaves.end());
    EXPECT_EQ(Text(*leaf[0]), "Now's the time for all folk to come to the aid of their country.");
    EXPECT_EQ(Text(*leaf[1]), "<p>Now's the time for all folk.</p>");
    EXPECT_EQ(Text(*leaf[2]), std::string("\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d\x0e\x0f", 16));
    EXPECT_EQ(leaf[3]->GetMediaType(), CMimeHeader::MEDIA_MESSAGE);

    CMimeMessage inner;
    EXPECT_GT(leaf[3]->GetMessage(&inner), 0);
    EXPECT_STREQ(inner.GetFieldValue("Subject"), "inner");
    EXPECT_EQ(Text(inner), "inner body");

    CMimeBody::CBodyList attachments;
    ASSERT_EQ(msg.GetAttachmentList(attachments), 1);
    EXPECT_EQ(attachments.front()->GetName(), "tiny.bin");

    const std::string stored = Stored(msg);
    CMimeMessage again;
    EXPECT_EQ(LoadExact(again, stored), static_cast<int>(stored.size()));
    EXPECT_EQ(Stored(again), stored);
}

TEST(MimePackage, MessagesNestAsMessageBodies) {
    CMimeMessage inner;
    inner.SetFieldValue("Subject", "inner");
    inner.SetText("inner text");
    CMimeBody wrapper;
    EXPECT_EQ(wrapper.SetMessage(&inner), 1);
    EXPECT_STREQ(wrapper.GetContentType(), "message/rfc822");
    EXPECT_EQ(Text(wrapper), "Subject: inner\r\n\r\ninner text");
    CMimeMessage back;
    EXPECT_GT(wrapper.GetMessage(&back), 0);
    EXPECT_EQ(Text(back), "inner text");
}
