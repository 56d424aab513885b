// What an encrypted document looks like and what each encryption call refuses.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "XencFixture.hpp"

using namespace xenctest;

namespace {

const char kDoc[] =
    "<Root xmlns:p=\"urn:example:p\"><p:Name>홍길동</p:Name><Amount>1100000</Amount><Memo>메모</Memo></Root>";

const Recipient kRsa{2, "ee-rsa", ""};
const Recipient kKeyWrap{1, "", sharedKek()};

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

// The text of the first element whose start tag begins so, through its end tag.
std::string element(const std::string& text, const std::string& startTag, const std::string& endTag) {
    const size_t from = text.find(startTag);
    return from == std::string::npos ? std::string() : text.substr(from, text.find(endTag, from) + endTag.size() - from);
}

// One element carries its key inside its KeyInfo; several share one key, first
// in the document; data identifiers avoid Ids the document uses; the whole
// document element or its content can be encrypted.
TEST(Placement, KeysStandWithOneElementOrFirstForSeveral) {
    Encryption e;
    e.targets = {"Amount"};
    e.recipients = {kRsa};
    std::string doc = encrypt(kDoc, e);
    const std::string data = element(doc, "<xenc:EncryptedData", "</xenc:EncryptedData>");
    EXPECT_NE(data.find("<ds:KeyInfo"), std::string::npos);
    EXPECT_NE(data.find("<xenc:EncryptedKey"), std::string::npos);
    EXPECT_NE(data.find("<xenc:DataReference URI=\"#EncDataId-1\"/>"), std::string::npos);
    EXPECT_NE(data.find("Id=\"EncDataId-1\""), std::string::npos);
    EXPECT_TRUE(std::regex_search(doc, std::regex("<xenc:EncryptedKey Id=\"EncKeyId-[0-9]{1,10}\"")));

    e.targets = {"Amount", "p:Name"};
    doc = encrypt(kDoc, e);
    const std::string root = "<Root xmlns:p=\"urn:example:p\">";
    EXPECT_EQ(doc.find("<xenc:EncryptedKey"), doc.find(root) + root.size()) << doc;
    const std::string key = element(doc, "<xenc:EncryptedKey", "</xenc:EncryptedKey>");
    EXPECT_EQ(count(key, "<xenc:DataReference"), 2u);
    EXPECT_NE(key.find("URI=\"#EncDataId-1\""), std::string::npos);
    EXPECT_NE(key.find("URI=\"#EncDataId-2\""), std::string::npos);
    EXPECT_EQ(element(doc, "<xenc:EncryptedData", "</xenc:EncryptedData>").find("KeyInfo"), std::string::npos);

    e.targets = {"Amount"};
    doc = encrypt("<Root><Other Id=\"EncDataId-1\"/><Amount>1</Amount></Root>", e);
    EXPECT_NE(element(doc, "<xenc:EncryptedData", ">").find(" Id=\"EncDataId-2\""), std::string::npos) << doc;

    // The whole document element, or its content.
    e.targets = {" "};
    e.recipients = {kKeyWrap};
    doc = encrypt(kDoc, e);
    EXPECT_EQ(doc.find("<Root"), std::string::npos);
    EXPECT_NE(doc.find("?><xenc:EncryptedData"), std::string::npos) << doc;
    e.mode = 1;
    doc = encrypt(kDoc, e);
    EXPECT_NE(doc.find("<Root xmlns:p=\"urn:example:p\"><xenc:EncryptedData"), std::string::npos) << doc;
    EXPECT_NE(doc.find("#Content"), std::string::npos);
}

TEST(KeyInformation, RsaKeyNamesItsRecipientKeyWrapDoesNotAndThePrefixIsKept) {
    Encryption e;
    e.targets = {"Amount"};
    e.recipients = {kRsa};
    e.subjectName = true;
    e.issuerSerial = true;
    const std::string doc = encrypt(kDoc, e);
    EXPECT_NE(doc.find("<ds:X509SubjectName>cn=홍길동()0012345RSA,ou=개발팀,ou=xUsers,o=VQXML Test,c=KR<"),
              std::string::npos)
        << doc;
    EXPECT_NE(doc.find("<ds:X509IssuerName>cn=VQXML Test Root CA,ou=Test CA,o=VQXML Test,c=KR<"), std::string::npos);
    EXPECT_NE(doc.find("<ds:X509SerialNumber>4097<"), std::string::npos);
    EXPECT_NE(doc.find("<ds:X509Certificate>"), std::string::npos);
    // A key-wrap recipient gets none; a prefix names every encryption element.
    e.recipients = {kKeyWrap};
    e.prefix = "enc";
    const std::string wrapped = encrypt(kDoc, e);
    EXPECT_EQ(wrapped.find("X509Data"), std::string::npos);
    EXPECT_NE(wrapped.find("<enc:EncryptedData xmlns:enc=\"http://www.w3.org/2001/04/xmlenc#\""), std::string::npos);
    EXPECT_NE(wrapped.find("<enc:DataReference"), std::string::npos);
    EXPECT_EQ(wrapped.find("xenc:"), std::string::npos);
}

// A key name set before the elements goes into each EncryptedData; one set after
// them into the next key only.
TEST(KeyInformation, KeyNamesGoWhereTheyWereSet) {
    Encryption e;
    e.targets = {"Amount", "Memo"};
    e.keyNameBefore = "공유키";
    e.recipients = {kRsa};
    std::string doc = encrypt(kDoc, e);
    EXPECT_EQ(count(doc, "<ds:KeyName>공유키</ds:KeyName>"), 2u) << doc;
    EXPECT_EQ(element(doc, "<xenc:EncryptedKey", "</xenc:EncryptedKey>").find("KeyName"), std::string::npos);
    e.keyNameBefore.clear();
    e.keyNameAfter = "recipient-key";
    e.recipients = {kRsa, kKeyWrap};
    doc = encrypt(kDoc, e);
    EXPECT_EQ(count(doc, "<ds:KeyName>recipient-key</ds:KeyName>"), 1u) << doc;
    // The keys are inserted first in turn: the first wrap is the second key.
    const size_t second = doc.find("<xenc:EncryptedKey", doc.find("</xenc:EncryptedKey>"));
    EXPECT_NE(doc.find("<ds:KeyName>recipient-key", second), std::string::npos);
}

// The caller's buffer gives the algorithm's length whatever keyLen says.
TEST(SessionKey, TripleDesTakesTwentyFourBytes) {
    const std::string key = "abcdefghijklmnopqrstuvwx";
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLENC_SetXMLDocument(h, chars(kDoc), size(kDoc)), 0);
    ASSERT_EQ(VQTK_XMLENC_SetSymmKey(h, bytes(key), 5, 1), 0);
    ASSERT_EQ(VQTK_XMLENC_EncryptElement(h, chars("Amount"), 2), 0);
    ASSERT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(sharedKek()), 24, 1), 0);
    ASSERT_EQ(VQTK_XMLENC_Encrypt(h), 0);
    const std::string doc = resultDocument(h);
    ScopedHandle r;
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(r, chars(doc), size(doc)), 0);
    ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(r), 0);
    ASSERT_EQ(VQTK_XMLENC_SetSymmKey(r, bytes(key), 24, 1), 0);
    EXPECT_EQ(VQTK_XMLENC_Decrypt(r), 0) << errorText(r);
}

struct Refusal {
    const char* name;
    int code;
    const char* prefix;
};

TEST(Refusals, EachCallNamesWhatIsWrong) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLENC_Encrypt(h), 10106);
    EXPECT_EQ(errorText(h).rfind("Load a document", 0), 0u) << errorText(h);
    EXPECT_EQ(VQTK_XMLENC_SetXMLDocument(h, nullptr, 0), 10106);
    EXPECT_EQ(VQTK_XMLENC_EncryptElement(h, chars("Amount"), 2), 10106) << "no document";
    ASSERT_EQ(VQTK_XMLENC_SetXMLDocument(h, chars(kDoc), size(kDoc)), 0);
    EXPECT_EQ(VQTK_XMLENC_SetPrefix(h, nullptr), 10300);
    EXPECT_EQ(VQTK_XMLENC_SetPrefix(h, chars("1x")), 10300);
    EXPECT_EQ(VQTK_XMLENC_SetSymmAlg(h, 11), 10301);
    EXPECT_EQ(VQTK_XMLENC_SetKeyName(h, chars("")), 10305);
    EXPECT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(sharedKek()), 24, 1), 10307);
    ASSERT_EQ(VQTK_XMLENC_SetSymmAlg(h, 3), 0);
    EXPECT_EQ(VQTK_XMLENC_EncryptElement(h, chars("Name"), 2), 10302) << "the prefix is part of the name";
    EXPECT_EQ(VQTK_XMLENC_EncryptElement(h, chars("q:Name"), 2), 10302);
    EXPECT_EQ(VQTK_XMLENC_EncryptElement(h, chars("Amount"), 3), 10303);
    EXPECT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(sharedKek()), 24, 8), 10304);
    EXPECT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(sharedKek()), 0, 1), 10306);
    EXPECT_EQ(errorText(h), "XMLENC_encryptKeyWrapKey > The key or certificate is empty");
    EXPECT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(sharedKek()), 24, 1), 10302) << "nothing encrypted yet";
}

// The signature family's loader replaces the document under the cipher.
TEST(Refusals, CipherOfAReplacedDocumentServesNoMore) {
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLENC_SetXMLDocument(h, chars(kDoc), size(kDoc)), 0);
    ASSERT_EQ(VQTK_XMLENC_SetSymmAlg(h, 1), 0);
    ASSERT_EQ(VQTK_XMLDSIG_SetXMLDocument(h, chars(kDoc), size(kDoc)), 0);
    EXPECT_EQ(VQTK_XMLENC_EncryptElement(h, chars("Amount"), 2), 10106);
    EXPECT_EQ(VQTK_XMLENC_Decrypt(h), 10311);
}

}  // namespace
