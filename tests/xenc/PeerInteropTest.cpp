// XML Encryption with libxmlsec1 both ways: xmlsec1 --decrypt opens what the
// library encrypts, to the bytes it had, for every cipher and transport both
// know (Triple DES and AES in CBC and GCM mode; RSA 1.5, RSA-OAEP with MGF1 and
// SHA-1, Triple DES and AES key wrap), and the library opens what libxmlsec1
// encrypts (python3-xmlsec) with the same. openssl enc reads a SEED CipherValue.
//
// xmlsec1 finds the key of an EncryptedData in its own KeyInfo only, so with one
// element it does the whole work. With several, the EncryptedKey stands at the
// top of the document and names its EncryptedData in a ReferenceList, which
// xmlsec1 1.2 does not follow: libxmlsec1 itself (python3-xmlsec) unwraps the
// session key, and xmlsec1 --decrypt then opens each EncryptedData with it.
// The large rows (a plaintext of 400 KB) are opened by the library too.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestVectors.hpp"
#include "XencFixture.hpp"

using namespace xenctest;

namespace {

const char kOrder[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Order xmlns=\"urn:example:po\"><Item id=\"1\">spade</Item>"
    "<Pay><Card type=\"visa\">4000-1234</Card><Holder>홍길동</Holder></Pay></Order>";

// The same order with a card text of about 400 KB (ASCII, escapes and Hangul),
// so that the plaintext outgrows its first buffer several times.
std::string largeOrder() {
    std::string text;
    while (text.size() < 400000)
        text += "4000-1234 &amp; &lt;visa&gt; 홍길동 ";
    std::string order = kOrder;
    order.replace(order.find("4000-1234"), 9, text);
    return order;
}

bool havePythonXmlsec() {
    return testfiles::run("/usr/bin/python3 -c 'import xmlsec'") == 0;
}

std::string peerScript() {
    return "/usr/bin/python3 " + std::string(VQXML_TEST_SOURCE_DIR) + "/xmlsec_peer.py";
}

// libxmlsec1's kind of key for a recipient, and the xmlsec1 option for a key of it.
std::string kindOf(const Recipient& r) {
    return !r.shared() ? "rsa" : r.transport == 1 ? "des" : "aes";
}
std::string keyOption(const std::string& kind) {
    return kind == "rsa" ? "--privkey-der" : kind == "des" ? "--deskey" : "--aeskey";
}

struct Case {
    int symmetric;
    Recipient recipient;
    bool twoElements;
    int mode;
    bool large = false;
};

std::string name(const Case& c) {
    return caseName(c.symmetric, c.recipient.transport, c.twoElements, c.mode) + (c.large ? "_large" : "");
}

void PrintTo(const Case& c, std::ostream* os) {
    *os << name(c);
}

class XmlsecDecrypts : public testing::TestWithParam<Case> {};

TEST_P(XmlsecDecrypts, ToTheOriginalBytes) {
    const Case& c = GetParam();
    if (!testfiles::haveProgram("xmlsec1"))
        GTEST_SKIP() << "xmlsec1 is not installed";
    if (c.twoElements && !havePythonXmlsec())
        GTEST_SKIP() << "python3-xmlsec is not installed";
    Encryption e;
    e.symmetric = c.symmetric;
    e.mode = c.mode;
    e.targets = c.twoElements ? std::vector<std::string>{"Card", "Item"} : std::vector<std::string>{"Card"};
    if (c.mode == 1 && c.twoElements)
        e.targets = {"Pay", "Item"};
    e.recipients = {c.recipient};
    const std::string original = c.large ? largeOrder() : kOrder;
    const std::string encrypted = encrypt(original, e);
    ASSERT_EQ(encrypted.find("4000-1234"), std::string::npos);
    if (c.large) {
        std::string opened;
        ASSERT_EQ(decrypt(encrypted, c.recipient, &opened), 0) << opened;
        EXPECT_EQ(comparable(opened), comparable(original));
    }

    testfiles::ScratchDir dir;
    testfiles::write(dir("doc.xml"), encrypted);
    const std::string kind = kindOf(c.recipient);
    testfiles::write(dir("key"), c.recipient.privateKey());
    std::string input = dir("doc.xml");
    if (c.twoElements) {
        const std::string unwrap =
            peerScript() + " unwrap '" + input + "' '" + dir("key") + "' " + kind + " '" + dir("session") + "'";
        ASSERT_EQ(testfiles::run(unwrap), 0) << unwrap;
        const std::string sessionOption = keyOption(c.symmetric == 1 ? "des" : "aes");
        for (int step = 0; step < 2; ++step) {
            const std::string out = dir("step" + std::to_string(step) + ".xml");
            const std::string command = "xmlsec1 --decrypt " + sessionOption + " '" + dir("session") + "' --output '" +
                                        out + "' '" + input + "'";
            ASSERT_EQ(testfiles::run(command), 0) << command;
            input = out;
        }
    } else {
        const std::string command = "xmlsec1 --decrypt " + keyOption(kind) + " '" + dir("key") + "' --output '" +
                                    dir("out.xml") + "' '" + input + "'";
        ASSERT_EQ(testfiles::run(command), 0) << command;
        input = dir("out.xml");
    }
    EXPECT_EQ(comparable(testfiles::read(input)), comparable(original));
}

const Recipient kRsa15{2, "ee-rsa", ""}, kOaep{3, "ee-rsa-b", ""}, kTripleDesWrap{1, "", sharedKek()};

std::vector<Case> xmlsecCases() {
    std::vector<Case> cases;
    for (const Recipient& r : {kRsa15, kOaep, kTripleDesWrap})
        for (bool two : {false, true})
            for (int mode : {1, 2})
                cases.push_back({1, r, two, mode});
    for (int symmetric = 5; symmetric <= 10; ++symmetric)
        for (const Recipient& r : {kRsa15, kOaep, aesKeyWrap(5 + (symmetric - 5) % 3)})
            cases.push_back({symmetric, r, symmetric == 7, symmetric % 2 == 0 ? 1 : 2});
    cases.push_back({5, kOaep, false, 2, true});
    cases.push_back({8, kOaep, false, 1, true});
    cases.push_back({1, kRsa15, false, 2, true});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Algorithms, XmlsecDecrypts, testing::ValuesIn(xmlsecCases()),
                         [](const testing::TestParamInfo<Case>& info) { return name(info.param); });

// libxmlsec1 encrypts the Card element; the library opens it as the recipient.
TEST(XmlsecEncrypts, LibraryOpensIt) {
    if (!havePythonXmlsec())
        GTEST_SKIP() << "python3-xmlsec is not installed";
    for (const int symmetric : {1, 5, 6, 7, 8, 9, 10})
        for (const Recipient& r : {kRsa15, kOaep, aesKeyWrap(5), aesKeyWrap(7), kTripleDesWrap}) {
            const std::string what = std::string(kCipherNames[symmetric]) + " " + kTransportNames[r.transport];
            testfiles::ScratchDir dir;
            testfiles::write(dir("doc.xml"), kOrder);
            testfiles::write(dir("key"), r.wrapKey());
            const std::string command = peerScript() + " encrypt '" + dir("doc.xml") + "' '" + dir("key") + "' " +
                                        kindOf(r) + " " + kCipherNames[symmetric] + " " +
                                        kTransportNames[r.transport] + " '" + dir("out.xml") + "'";
            ASSERT_EQ(testfiles::run(command), 0) << command;
            const std::string encrypted = testfiles::read(dir("out.xml"));
            ASSERT_EQ(encrypted.find("4000-1234"), std::string::npos) << what;
            std::string opened;
            ASSERT_EQ(decrypt(encrypted, r, &opened), 0) << what << ": " << opened;
            EXPECT_EQ(comparable(opened), comparable(kOrder)) << what;
        }
}

// The CipherValue is the IV and the CBC ciphertext; XML Encryption's padding
// ends in its own length.
TEST(OpenSSLDecrypts, SeedCipherValueWithTheSessionKey) {
    if (!testfiles::haveProgram("openssl"))
        GTEST_SKIP() << "openssl is not installed";
    const std::string sessionKey = "\x88\xe3\x4f\x8f\x08\x17\x79\xf1\xe9\xf3\x94\x37\x0a\xd4\x05\x89";
    Encryption e;
    e.symmetric = 2;
    e.sessionKey = sessionKey;
    e.targets = {"Card"};
    e.recipients = {{3, "ee-rsa", ""}};
    const std::string encrypted = encrypt(kOrder, e);
    const size_t data = encrypted.find("<xenc:CipherData>", encrypted.find("</xenc:EncryptedKey>"));
    const size_t from = encrypted.find("<xenc:CipherValue>", data) + 18;
    const testvectors::Bytes framed = testvectors::fromBase64(encrypted.substr(from, encrypted.find('<', from) - from));
    ASSERT_GE(framed.size(), 32u);
    const testvectors::Bytes iv(framed.begin(), framed.begin() + 16);

    testfiles::ScratchDir dir;
    testfiles::write(dir("in"), std::string(framed.begin() + 16, framed.end()));
    const std::string command = "openssl enc -d -seed-cbc -provider legacy -provider default -nopad -K " +
                                testvectors::toHex(testvectors::Bytes(sessionKey.begin(), sessionKey.end())) +
                                " -iv " + testvectors::toHex(iv) + " -in '" + dir("in") + "' -out '" + dir("out") +
                                "'";
    ASSERT_EQ(testfiles::run(command), 0) << command;
    std::string plain = testfiles::read(dir("out"));
    ASSERT_FALSE(plain.empty());
    plain.resize(plain.size() - static_cast<unsigned char>(plain.back()));
    EXPECT_EQ(plain, "<Card type=\"visa\">4000-1234</Card>");
}

}  // namespace
