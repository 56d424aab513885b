// What the library encrypts, the library opens again to the very bytes it
// started from: every symmetric algorithm and every transport, one or two
// elements, element or content, one or several recipients.
#include <gtest/gtest.h>

#include <string>

#include "XencFixture.hpp"

using namespace xenctest;

namespace {

const char kInvoice[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Invoice xmlns=\"urn:example:invoice\" xmlns:p=\"urn:example:party\"><Head>세금계산서 2024-0001</Head>"
    "<p:Supplier>테스트상사 주식회사</p:Supplier><Amount currency=\"KRW\">1100000</Amount>"
    "<Note>비고 &amp; 메모</Note></Invoice>";

// The document from its root element on.
std::string body(const std::string& text) {
    const size_t root = text.find("<Invoice");
    return root == std::string::npos ? text : text.substr(root);
}

const Recipient kRsa15{2, "ee-rsa", ""};
const Recipient kOaep{3, "ee-rsa", ""};
const Recipient kKeyWrap{1, "", sharedKek()};
const Recipient kOaepB{3, "ee-rsa-b", ""};
const Recipient kOaep11{4, "ee-rsa", ""};

struct Case {
    int symmetric;
    Recipient recipient;
    bool twoElements;
    int mode;
};

std::string name(const Case& c) {
    return caseName(c.symmetric, c.recipient.transport, c.twoElements, c.mode);
}

void PrintTo(const Case& c, std::ostream* os) {
    *os << name(c);
}

class RoundTrip : public testing::TestWithParam<Case> {};

TEST_P(RoundTrip, OpensToTheOriginalBytes) {
    const Case& c = GetParam();
    Encryption e;
    e.symmetric = c.symmetric;
    e.mode = c.mode;
    e.targets = c.twoElements ? std::vector<std::string>{"Amount", "p:Supplier"} : std::vector<std::string>{"Amount"};
    e.recipients = {c.recipient};
    const std::string encrypted = encrypt(kInvoice, e);
    ASSERT_EQ(encrypted.find("1100000"), std::string::npos) << encrypted;
    if (c.twoElements) {
        ASSERT_EQ(encrypted.find("주식회사"), std::string::npos);
    }
    std::string opened;
    ASSERT_EQ(decrypt(encrypted, c.recipient, &opened), 0) << opened;
    EXPECT_EQ(body(opened), body(kInvoice));
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    const auto add = [&](int symmetric, const Recipient& r) {
        for (bool two : {false, true})
            for (int mode : {1, 2})
                cases.push_back({symmetric, r, two, mode});
    };
    for (int symmetric = 1; symmetric <= 4; ++symmetric)
        for (const Recipient& r : {kKeyWrap, kRsa15, kOaep})
            add(symmetric, r);
    for (const Recipient& r : {kOaep11, aesKeyWrap(5), aesKeyWrap(6), aesKeyWrap(7)})
        add(1, r);
    for (int symmetric = 5; symmetric <= 10; ++symmetric)
        for (const Recipient& r : {kOaep11, aesKeyWrap(5 + (symmetric - 5) % 3)})
            add(symmetric, r);
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Algorithms, RoundTrip, testing::ValuesIn(allCases()),
                         [](const testing::TestParamInfo<Case>& info) { return name(info.param); });

// Santuario's and .NET's layout: the EncryptedKey stands at document level and
// the EncryptedData's KeyInfo names it by a RetrievalMethod.
TEST(KeyLayouts, RetrievalMethodNamesADocumentLevelKey) {
    for (const Recipient& r : {aesKeyWrap(5), kOaep11, kRsa15}) {
        Encryption e;
        e.symmetric = 8;
        e.targets = {"Amount"};
        e.recipients = {r};
        std::string text = encrypt(kInvoice, e);
        const size_t from = text.find("<xenc:EncryptedKey");
        const size_t to = text.find("</xenc:EncryptedKey>") + 20;
        const size_t idAt = text.find("Id=\"", from) + 4;
        const std::string id = text.substr(idAt, text.find('"', idAt) - idAt);
        const std::string key = text.substr(from, to - from);
        text.replace(from, to - from, "<ds:RetrievalMethod Type=\"http://www.w3.org/2001/04/xmlenc#EncryptedKey\" URI=\"#" +
                                          id + "\"/>");
        text.insert(text.find("<Head>"), key);
        std::string opened;
        ASSERT_EQ(decrypt(text, r, &opened), 0) << opened << "\n" << text;
        EXPECT_EQ(body(opened), body(kInvoice));
    }
}

// Each recipient opens the document with its own key, whether the keys sit in
// the one EncryptedData or at the top of the document.
TEST(SeveralRecipients, EachOpensWithItsOwnKey) {
    for (bool twoElements : {false, true}) {
        Encryption e;
        e.symmetric = 2;
        e.targets = twoElements ? std::vector<std::string>{"Amount", "Note"} : std::vector<std::string>{"Amount"};
        e.recipients = {kRsa15, kKeyWrap, kOaepB};
        e.subjectName = true;
        e.issuerSerial = true;
        const std::string encrypted = encrypt(kInvoice, e);
        for (const Recipient& r : e.recipients) {
            std::string opened;
            ASSERT_EQ(decrypt(encrypted, r, &opened), 0) << r.transport << " " << r.prefix << ": " << opened;
            EXPECT_EQ(body(opened), body(kInvoice));
        }
        std::string why;
        EXPECT_NE(decrypt(encrypted, {1, "", "another key-encryption k"}, &why), 0) << "an outsider";
    }
}

// The library reads the CipherValue where it stands in the document: text split
// by a comment, with a character reference for a line feed, decodes as one.
TEST(SessionKey, CipherValueSplitByACommentOpens) {
    Encryption e;
    e.targets = {"Amount"};
    e.recipients = {kOaep};
    std::string encrypted = encrypt(kInvoice, e);
    const size_t close = encrypted.rfind("</xenc:CipherValue>");
    ASSERT_NE(close, std::string::npos) << encrypted;
    encrypted.insert(close - 9, "<!-- split -->&#10;");
    encrypted.insert(close - 30, "<!---->");
    std::string opened;
    ASSERT_EQ(decrypt(encrypted, kOaep, &opened), 0) << opened;
    EXPECT_EQ(body(opened), body(kInvoice));
}

// The document as the library writes it when it changes nothing.
std::string reserialised(const std::string& text) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLENC_SetXMLDocument(h, chars(text), size(text)), 0);
    EXPECT_EQ(VQTK_XMLENC_Encrypt(h), 0);
    return resultDocument(h);
}

// Every kind of node the plaintext may hold is rebuilt as it was: text with
// references, CDATA (one holding "]]>"), comments, processing instructions,
// attributes in namespaces bound on ancestors, characters outside the BMP; an
// element in no namespace under a default one (first in the content) and one in
// the default namespace (the element) each come back in its own.
TEST(Namespaces, EveryKindOfNodeComesBack) {
    const std::string text =
        "<r:Root xmlns:r=\"urn:r\" xmlns:a=\"urn:a\" xmlns=\"urn:default\"><Outer a:flag=\"1 &amp; &lt;2&gt;\">"
        "\n  <Target a:id=\"t\" plain=\"&quot;q&quot;\">x &amp; y &lt; z<![CDATA[<raw> ]]]]><![CDATA[> &]]>"
        "<!-- note --><?proc data?><a:Inner xmlns:b=\"urn:b\" b:x=\"\U0001F600\">\t&#xD;</a:Inner>"
        "<Empty/><NoNs xmlns=\"\"><Deep/></NoNs></Target>\n</Outer></r:Root>";
    for (int mode : {1, 2}) {
        for (int symmetric : {1, 2}) {
            Encryption e;
            e.symmetric = symmetric;
            e.targets = {"Target"};
            e.mode = mode;
            e.recipients = {kKeyWrap};
            EXPECT_EQ(reopened(text, e, "proc data"), reserialised(text)) << mode << " " << symmetric;
        }
    }
}

}  // namespace
