// What the library encrypts opens with other software, to the bytes it had:
// xmlsec1 --decrypt for Triple DES with each transport, and openssl enc for a
// SEED CipherValue.
//
// xmlsec1 finds the key of an EncryptedData in its own KeyInfo only, so with one
// element it does the whole work. With several, the EncryptedKey stands at the
// top of the document and names its EncryptedData in a ReferenceList, which
// xmlsec1 1.2 does not follow: libxmlsec1 itself (python3-xmlsec) unwraps the
// session key, and xmlsec1 --decrypt then opens each EncryptedData with it.
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

bool havePythonXmlsec() {
    return testfiles::run("/usr/bin/python3 -c 'import xmlsec'") == 0;
}

struct Case {
    const char* name;
    Recipient recipient;
    bool twoElements;
    int mode;
};

void PrintTo(const Case& c, std::ostream* os) {
    *os << c.name;
}

class XmlsecDecrypts : public testing::TestWithParam<Case> {};

TEST_P(XmlsecDecrypts, ToTheOriginalBytes) {
    const Case& c = GetParam();
    if (!testfiles::haveProgram("xmlsec1"))
        GTEST_SKIP() << "xmlsec1 is not installed";
    if (c.twoElements && !havePythonXmlsec())
        GTEST_SKIP() << "python3-xmlsec is not installed";
    Encryption e;
    e.symmetric = 1;
    e.mode = c.mode;
    e.targets = c.twoElements ? std::vector<std::string>{"Card", "Item"} : std::vector<std::string>{"Card"};
    if (c.mode == 1 && c.twoElements)
        e.targets = {"Pay", "Item"};
    e.recipients = {c.recipient};
    const std::string encrypted = encrypt(kOrder, e);
    ASSERT_EQ(encrypted.find("4000-1234"), std::string::npos);

    testfiles::ScratchDir dir;
    testfiles::write(dir("doc.xml"), encrypted);
    const bool rsa = c.recipient.transport != 1;
    testfiles::write(dir("key"), c.recipient.privateKey());
    const std::string keyOption = rsa ? "--privkey-der " + dir("key") : "--deskey " + dir("key");
    std::string input = dir("doc.xml");
    if (c.twoElements) {
        const std::string unwrap = "/usr/bin/python3 " + std::string(VQXML_TEST_SOURCE_DIR) + "/xmlsec_unwrap.py '" +
                                   input + "' '" + dir("key") + "' " + (rsa ? "rsa '" : "des '") + dir("session") + "'";
        ASSERT_EQ(testfiles::run(unwrap), 0) << unwrap;
        ASSERT_EQ(testfiles::read(dir("session")).size(), 24u);
        for (int step = 0; step < 2; ++step) {
            const std::string out = dir("step" + std::to_string(step) + ".xml");
            const std::string command = "xmlsec1 --decrypt --deskey '" + dir("session") + "' --output '" + out +
                                        "' '" + input + "'";
            ASSERT_EQ(testfiles::run(command), 0) << command;
            input = out;
        }
    } else {
        const std::string command = "xmlsec1 --decrypt " + keyOption + " --output '" + dir("out.xml") + "' '" +
                                    input + "'";
        ASSERT_EQ(testfiles::run(command), 0) << command;
        input = dir("out.xml");
    }
    EXPECT_EQ(comparable(testfiles::read(input)), comparable(kOrder));
}

INSTANTIATE_TEST_SUITE_P(
    TripleDes, XmlsecDecrypts,
    testing::Values(Case{"Rsa15_OneElement", {2, "ee-rsa", ""}, false, 2},
                    Case{"Rsa15_OneContent", {2, "ee-rsa", ""}, false, 1},
                    Case{"Rsa15_TwoElements", {2, "ee-rsa", ""}, true, 2},
                    Case{"Rsa15_TwoContents", {2, "ee-rsa", ""}, true, 1},
                    Case{"RsaOaep_OneElement", {3, "ee-rsa-b", ""}, false, 2},
                    Case{"RsaOaep_OneContent", {3, "ee-rsa-b", ""}, false, 1},
                    Case{"RsaOaep_TwoElements", {3, "ee-rsa-b", ""}, true, 2},
                    Case{"RsaOaep_TwoContents", {3, "ee-rsa-b", ""}, true, 1},
                    Case{"KeyWrap_OneElement", {1, "", sharedKek()}, false, 2},
                    Case{"KeyWrap_OneContent", {1, "", sharedKek()}, false, 1},
                    Case{"KeyWrap_TwoElements", {1, "", sharedKek()}, true, 2},
                    Case{"KeyWrap_TwoContents", {1, "", sharedKek()}, true, 1}),
    [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

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
