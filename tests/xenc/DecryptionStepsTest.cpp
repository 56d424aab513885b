// Reading which key a document was encrypted for, walking its EncryptedKeys and
// the order of the decryption calls.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "XencFixture.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

using namespace xenctest;

namespace {

const char kDoc[] = "<Root><Amount>1100000</Amount><Memo>메모</Memo></Root>";

const Recipient kRsa{2, "ee-rsa", ""};
const Recipient kRsaB{3, "ee-rsa-b", ""};
const Recipient kKeyWrap{1, "", sharedKek()};

struct Reading {
    std::string subject, issuer, serial, keyName, cert;
};

Reading read(void* h) {
    char* subject = nullptr;
    char* issuer = nullptr;
    char* serial = nullptr;
    char* keyName = nullptr;
    unsigned char* cert = nullptr;
    int certLen = 0;
    EXPECT_EQ(VQTK_XMLENC_GetSubjectName(h, &subject), 0);
    EXPECT_EQ(VQTK_XMLENC_GetIssuerSerialNum(h, &issuer, &serial), 0);
    EXPECT_EQ(VQTK_XMLENC_GetKeyName(h, &keyName), 0);
    EXPECT_EQ(VQTK_XMLENC_GetEncCert(h, &cert, &certLen), 0);
    auto text = [](const char* s) { return s != nullptr ? std::string(s) : std::string("(null)"); };
    return {text(subject), text(issuer), text(serial), text(keyName),
            cert != nullptr ? std::string(reinterpret_cast<char*>(cert), static_cast<size_t>(certLen)) : ""};
}

std::string encryptFor(std::vector<Recipient> recipients, std::vector<std::string> targets, bool names = true) {
    Encryption e;
    e.targets = std::move(targets);
    e.recipients = std::move(recipients);
    e.subjectName = names;
    e.issuerSerial = names;
    return encrypt(kDoc, e);
}

// Key information of the EncryptedData's own is read afresh on every call: the
// document-level walk, and its end (10313), concern document-level keys only.
TEST(KeyInfoReading, RecipientOfOneElementComesFromTheNestedKeyOnEveryCall) {
    const std::string doc = encryptFor({kRsa}, {"Amount"});
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(doc), size(doc)), 0);
    for (int call = 0; call < 2; ++call) {
        ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 0) << call;
        EXPECT_EQ(read(h).serial, "4097") << call;
    }
    const Reading r = read(h);
    EXPECT_EQ(r.subject, "cn=홍길동()0012345RSA,ou=개발팀,ou=xUsers,o=VQXML Test,c=KR");
    EXPECT_EQ(r.issuer, "cn=VQXML Test Root CA,ou=Test CA,o=VQXML Test,c=KR");
    EXPECT_EQ(r.serial, "4097");
    EXPECT_EQ(r.cert, pki("ee-rsa.crt.der"));
    EXPECT_EQ(static_cast<VQXML_XMLSecurity*>(h.h)->getSymmAlg(), 1);
    EXPECT_EQ(static_cast<VQXML_XMLSecurity*>(h.h)->getKeyWrapAlg(), 2);
}

TEST(KeyInfoReading, NestedRecipientsShowTheLastOne) {
    const std::string doc = encryptFor({kRsa, kRsaB}, {"Amount"});
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(doc), size(doc)), 0);
    ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 0);
    EXPECT_EQ(read(h).cert, pki("ee-rsa-b.crt.der"));
    const std::string cert = pki("ee-rsa-b.crt.der"), key = pki("ee-rsa-b.key.der");
    EXPECT_EQ(VQTK_XMLENC_DecryptKeyWrapKey(h, bytes(cert), size(cert), bytes(key), size(key)), 0) << errorText(h);
    EXPECT_EQ(VQTK_XMLENC_Decrypt(h), 0);
}

// The walk's position belongs to the handle, not to the document: it outlives a load.
TEST(KeyInfoReading, DocumentLevelKeysAreWalkedInDocumentOrder) {
    // Each new key goes first: the document holds ee-rsa-b's, then ee-rsa's.
    const std::string doc = encryptFor({kRsa, kRsaB}, {"Amount", "Memo"});
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(doc), size(doc)), 0);
    ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 0);
    EXPECT_EQ(read(h).serial, "4098");
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(doc), size(doc)), 0);
    ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 0);
    EXPECT_EQ(read(h).serial, "4097");
    const std::string cert = pki("ee-rsa.crt.der"), key = pki("ee-rsa.key.der");
    EXPECT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 10313);
    EXPECT_EQ(read(h).serial, "4097") << "a failed walk leaves what was read";
    EXPECT_EQ(VQTK_XMLENC_DecryptKeyWrapKey(h, bytes(cert), size(cert), bytes(key), size(key)), 0) << errorText(h);
    EXPECT_EQ(VQTK_XMLENC_Decrypt(h), 0);
    EXPECT_EQ(resultDocument(h).substr(resultDocument(h).find("<Root")), kDoc);
}

TEST(KeyInfoReading, KeyNameOfTheDataStaysBesideADocumentLevelKey) {
    Encryption e;
    e.targets = {"Amount", "Memo"};
    e.keyNameBefore = "shared";
    e.recipients = {kKeyWrap};
    const std::string doc = encrypt(kDoc, e);
    std::string opened;
    ASSERT_EQ(decrypt(doc, kKeyWrap, &opened), 0) << opened;
    ScopedHandle h;
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(doc), size(doc)), 0);
    ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 0);
    EXPECT_EQ(read(h).keyName, "shared");
    EXPECT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 10313);
    // Decrypting on a fresh handle without a key read only drops the keys.
    ScopedHandle fresh;
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(fresh, chars(doc), size(doc)), 0);
    ASSERT_EQ(VQTK_XMLENC_Decrypt(fresh), 0);
    const std::string result = resultDocument(fresh);
    EXPECT_EQ(result.find("EncryptedKey"), std::string::npos);
    EXPECT_EQ(result.find("1100000"), std::string::npos);
    EXPECT_NE(result.find("EncryptedData"), std::string::npos);
}

TEST(CallOrder, EachStepNeedsTheOneBefore) {
    const std::string doc = encryptFor({kKeyWrap}, {"Amount"});
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, nullptr, 0), 10311);
    EXPECT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 10311);
    const std::string plain = "<Root/>";
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(plain), size(plain)), 0);
    EXPECT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 10312);
    ASSERT_EQ(VQTK_XMLENC_SetEncXMLDocument(h, chars(doc), size(doc)), 0);
    EXPECT_EQ(VQTK_XMLENC_DecryptKeyWrapKey(h, nullptr, 0, bytes(sharedKek()), 24), 10304) << "no key read yet";
    ASSERT_EQ(VQTK_XMLENC_GetEncKeyInfo(h), 0);
    EXPECT_EQ(VQTK_XMLENC_Decrypt(h), 10314);
    EXPECT_EQ(errorText(h), "XMLENC_decrypt > No session key is set");
    EXPECT_EQ(VQTK_XMLENC_DecryptKeyWrapKey(h, nullptr, 0, nullptr, 0), 10306);
    ASSERT_EQ(VQTK_XMLENC_DecryptKeyWrapKey(h, nullptr, 0, bytes(sharedKek()), 24), 0);
    EXPECT_EQ(VQTK_XMLENC_Decrypt(h), 0);
    EXPECT_EQ(VQTK_XMLENC_DecryptKeyWrapKey(h, nullptr, 0, bytes(sharedKek()), 24), 10304)
        << "the key went with its EncryptedData";
}

// An EncryptedData that comes out of another one's plaintext is decrypted too,
// and EncryptedData elements side by side each are, in document order.
TEST(CallOrder, DecryptOpensEveryEncryptedDataEvenNestedOnes) {
    const std::string doc = "<Root><Body><Amount>1100000</Amount><Memo>메모</Memo></Body><Tail>끝</Tail></Root>";
    for (const std::vector<std::string>& targets :
         {std::vector<std::string>{"Amount", "Body"}, std::vector<std::string>{"Amount", "Memo", "Tail"}}) {
        Encryption e;
        e.targets = targets;
        e.recipients = {kKeyWrap};
        const std::string opened = reopened(doc, e, "1100000");
        EXPECT_EQ(opened.substr(opened.find("<Root")), doc);
    }
}

}  // namespace
