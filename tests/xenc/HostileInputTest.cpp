// Documents built to fail: every one gives a status and a text, never a crash,
// and the session key is left as the failing step says.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "XencFixture.hpp"
#include "engine/Base64.hpp"
#include "engine/korean/XmlEncCbc.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

using namespace xenctest;

namespace {

class Context : public VQXML_XMLSecurity {
public:
    using VQXML_XMLSecurity::m_symmKey;
    using VQXML_XMLSecurity::m_symmKeyLen;

    std::string error() { return getLastErrorMsg(); }
    std::string sessionKey() const {
        return m_symmKey != nullptr ? std::string(reinterpret_cast<char*>(m_symmKey), m_symmKeyLen) : "(none)";
    }
};

const char kDoc[] = "<Root><Amount>1100000</Amount><Memo>메모</Memo></Root>";
const Recipient kRsa{2, "ee-rsa", ""};
const Recipient kKeyWrap{1, "", sharedKek()};
const std::string kPlaceholder = "qrstuvwxyz0123456789ABCD";

std::string encryptedFor(const Recipient& r, int symmetric = 1, bool names = true) {
    Encryption e;
    e.symmetric = symmetric;
    e.targets = {"Amount"};
    e.recipients = {r};
    e.subjectName = names;
    e.issuerSerial = names;
    return encrypt(kDoc, e);
}

// text with the first occurrence of what after from replaced by with.
std::string replaced(std::string text, const std::string& from, const std::string& what, const std::string& with) {
    const size_t at = text.find(what, text.find(from));
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

// The CipherValue of the EncryptedData (the last one in the text), replaced.
std::string withDataCipherValue(const std::string& text, const std::string& value) {
    const size_t from = text.rfind("<xenc:CipherValue>") + 18;
    return std::string(text).replace(from, text.find('<', from) - from, value);
}

// Loads and reads the key information; the status of the first step that fails.
int load(Context& ctx, const std::string& text) {
    int rc = ctx.XMLENC_setEncXMLDocument(chars(text), size(text));
    return rc != 0 ? rc : ctx.XMLENC_getEncKeyInfo();
}

int unwrap(Context& ctx, const Recipient& r) {
    const std::string cert = r.cert(), key = r.privateKey();
    return ctx.XMLENC_decryptKeyWrapKey(cert.empty() ? nullptr : bytes(cert), size(cert), bytes(key), size(key));
}

// Names the document states (any of several, where the X509Data names other
// certificates first), or, when it carries only the certificate, the names in
// that certificate: someone else's key is refused before any unwrapping, with
// the status one name of each kind would give.
TEST(CertificateChecks, AnotherRecipientLeavesTheSessionKeyAlone) {
    struct Case {
        std::string cert, key;
        bool names;        // the EncryptedKey states subject and issuer-serial
        std::string edit;  // an X509SerialNumber to write instead of the real one
        int code;
        bool others = false;  // names of another certificate before the recipient's
    };
    const auto withOthers = [](const std::string& text) {
        return replaced(text, "", "<ds:X509Data>",
                        "<ds:X509Data><ds:X509SubjectName>CN=a</ds:X509SubjectName><ds:X509IssuerSerial>"
                        "<ds:X509IssuerName>CN=a</ds:X509IssuerName><ds:X509SerialNumber>4097</ds:X509SerialNumber>"
                        "</ds:X509IssuerSerial>");
    };
    const std::string otherIssuerCert = testfiles::read(testfiles::dataPath("dsig/signer-cert.der"));
    const std::string otherIssuerKey = testfiles::read(testfiles::dataPath("dsig/signer-key.pk8.der"));
    const Case cases[] = {
        {otherIssuerCert, otherIssuerKey, true, "", 10308},
        {pki("ee-rsa-b.crt.der"), pki("ee-rsa-b.key.der"), true, "", 10309},
        {pki("ee-rsa.crt.der"), pki("ee-rsa.key.der"), true, "4099", 10310},
        {otherIssuerCert, otherIssuerKey, false, "", 10308},
        {pki("ee-rsa-b.crt.der"), pki("ee-rsa-b.key.der"), false, "", 10309},
        {otherIssuerCert, otherIssuerKey, true, "", 10308, true},
        {pki("ee-rsa-b.crt.der"), pki("ee-rsa-b.key.der"), true, "", 10309, true},
        {pki("ee-rsa.crt.der"), pki("ee-rsa.key.der"), true, "4099", 10310, true},
    };
    for (const Case& c : cases) {
        std::string text = encryptedFor(kRsa, 1, c.names);
        if (!c.edit.empty())
            text = replaced(text, "<ds:X509SerialNumber>", "4097", c.edit);
        if (c.others)
            text = withOthers(text);
        Context ctx;
        ASSERT_EQ(load(ctx, text), 0);
        ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(kPlaceholder), 24, 1), 0);
        EXPECT_EQ(ctx.XMLENC_decryptKeyWrapKey(bytes(c.cert), size(c.cert), bytes(c.key), size(c.key)), c.code)
            << ctx.error();
        EXPECT_EQ(ctx.sessionKey(), kPlaceholder);
    }
    for (const std::string& text : {encryptedFor(kRsa, 2, false), withOthers(encryptedFor(kRsa, 2, true))}) {
        std::string opened;
        EXPECT_EQ(decrypt(text, kRsa, &opened), 0) << opened;
        EXPECT_NE(opened.find("<Amount>1100000</Amount>"), std::string::npos);
    }
}

// A key-encryption key that is not the sender's fails its integrity check
// inside the unwrapping, which has already let go of the old session key.
TEST(Unwrapping, WrongKeyEncryptionKeyLeavesNoSessionKey) {
    Context ctx;
    ASSERT_EQ(load(ctx, encryptedFor(kKeyWrap)), 0);
    ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(kPlaceholder), 24, 1), 0);
    EXPECT_NE(unwrap(ctx, {1, "", "another key-encryption k"}), 0);
    EXPECT_EQ(ctx.error().rfind("XMLENC_decryptKeyWrapKey > ", 0), 0u) << ctx.error();
    EXPECT_EQ(ctx.sessionKey(), "(none)");
    EXPECT_EQ(ctx.XMLENC_decrypt(), 10314);
}

// The base64 RSA encryption, without padding, of 00 type PS 00 key (keyLen
// bytes) for the certificate's key.
std::string rawRsa(const std::string& certDer, unsigned char type, size_t keyLen) {
    const auto* der = reinterpret_cast<const unsigned char*>(certDer.data());
    std::unique_ptr<X509, decltype(&X509_free)> cert(d2i_X509(nullptr, &der, long(certDer.size())), X509_free);
    EVP_PKEY* key = X509_get0_pubkey(cert.get());
    std::vector<unsigned char> em(size_t(EVP_PKEY_get_size(key)), 0x5a), out(em.size());
    em[0] = 0;
    em[1] = type;
    em[em.size() - keyLen - 1] = 0;
    std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(EVP_PKEY_CTX_new(key, nullptr),
                                                                   EVP_PKEY_CTX_free);
    size_t len = out.size();
    EXPECT_EQ(EVP_PKEY_encrypt_init(ctx.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_NO_PADDING), 1);
    EXPECT_EQ(EVP_PKEY_encrypt(ctx.get(), out.data(), &len, em.data(), em.size()), 1);
    return vqxml::base64Text(out);
}

// The EncryptedData's CipherValue octets changed by edit.
std::string editedData(const std::string& text, const std::function<void(std::vector<std::uint8_t>&)>& edit) {
    const size_t from = text.rfind("<xenc:CipherValue>") + 18;
    std::vector<std::uint8_t> octets;
    EXPECT_TRUE(vqxml::base64Decode(text.substr(from, text.find('<', from) - from).c_str(), octets));
    edit(octets);
    return withDataCipherValue(text, vqxml::base64Text(octets));
}

// A stranger who changes the wrapped key or the ciphertext learns nothing from
// the answer: an RSA-1_5 key with bad padding, for another key, or of the wrong
// length unwraps (to a key of the data's length, AES included) and the data then
// fails; a ciphertext with bad padding, bad XML or bad UTF-8, a changed GCM tag
// or IV, a truncated one or one under another key fails alike. One status, one
// text, and no byte of the plaintext in it.
TEST(Oracles, FailedDecryptionsLookAlike) {
    const std::string cert = pki("ee-rsa.crt.der");
    std::string text;
    const auto expectUndecryptable = [&](Context& ctx, const std::string& what) {
        EXPECT_EQ(ctx.XMLENC_decrypt(), 46) << what;
        text = text.empty() ? ctx.error() : text;
        EXPECT_EQ(ctx.error(), text) << what;
    };
    struct Content {
        int symmetric;
        size_t keyBytes;
    };
    for (const Content content : {Content{1, 24}, Content{5, 16}, Content{7, 32}, Content{8, 16}}) {
        const std::string rsa = encryptedFor(kRsa, content.symmetric, false);
        const auto withKeyValue = [&](const std::string& value) {
            const size_t from = rsa.find("<xenc:CipherValue>") + 18;
            return std::string(rsa).replace(from, rsa.find('<', from) - from, value);
        };
        std::string flipped = rsa;
        flipped[rsa.find("<xenc:CipherValue>") + 28] ^= 1;
        const std::string mine = kRsa.privateKey(), another = pki("ee-rsa-b.key.der");
        const struct {
            const char* name;
            std::string doc;
            const std::string& key;
        } cases[] = {
            {"bad padding type", withKeyValue(rawRsa(cert, 1, content.keyBytes)), mine},
            {"wrong key length", withKeyValue(rawRsa(cert, 2, content.keyBytes == 16 ? 24 : 16)), mine},
            {"changed wrapped key", flipped, mine},
            {"another recipient's key", rsa, another},
        };
        for (const auto& c : cases) {
            Context ctx;
            ASSERT_EQ(load(ctx, c.doc), 0) << c.name;
            EXPECT_EQ(ctx.XMLENC_decryptKeyWrapKey(nullptr, 0, bytes(c.key), size(c.key)), 0) << c.name << ctx.error();
            EXPECT_EQ(ctx.m_symmKeyLen, int(content.keyBytes)) << c.name;
            expectUndecryptable(ctx, std::string(c.name) + " " + std::to_string(content.symmetric));
        }
    }
    // The same ciphertext always gives the same stand-in key.
    std::string flipped = encryptedFor(kRsa, 1, false);
    flipped[flipped.find("<xenc:CipherValue>") + 28] ^= 1;
    Context once, again;
    for (Context* ctx : {&once, &again}) {
        ASSERT_EQ(load(*ctx, flipped), 0);
        ASSERT_EQ(unwrap(*ctx, kRsa), 0);
    }
    EXPECT_EQ(once.sessionKey(), again.sessionKey());

    // Ciphertexts under a known session key: CBC plaintexts of every kind of
    // wrong (pad byte 0 or beyond the block, bad XML, bad UTF-8), and changed
    // AES-GCM and AES-CBC ones.
    const std::string plains[] = {
        std::string("<Amount>1100000</Amount>") + std::string(8, '\0'),
        std::string("<Amount>1100000</Amount>") + std::string(8, '\x11'),
        std::string("<Amount>1100000</Amoun>") + std::string(9, '\x09'),
        std::string("<Amount>11\xff\xfe" "000</Amount>") + std::string(8, '\x08'),
    };
    struct Cbc {
        int symmetric;
        const EVP_CIPHER* cipher;
    };
    for (const Cbc cbc : {Cbc{4, EVP_aria_128_cbc()}, Cbc{5, EVP_aes_128_cbc()},
                          Cbc{7, EVP_aes_256_cbc()}, Cbc{1, EVP_des_ede3_cbc()}}) {
        const std::string key = (kPlaceholder + kPlaceholder).substr(0, size_t(EVP_CIPHER_get_key_length(cbc.cipher)));
        const std::string doc = encryptedFor(kKeyWrap, cbc.symmetric);
        for (const std::string& plain : plains) {
            Context ctx;
            ASSERT_EQ(load(ctx, withDataCipherValue(doc, cbcCipherValue(cbc.cipher, key, plain))), 0);
            ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(key), size(key), cbc.symmetric), 0);
            expectUndecryptable(ctx, "CBC plaintext " + std::to_string(cbc.symmetric));
        }
    }
    {  // a Triple DES session key unwrapped shorter than 24 bytes fails as a wrong one
        Context ctx;
        ASSERT_EQ(load(ctx, encryptedFor(kKeyWrap, 1)), 0);
        ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(kPlaceholder), 24, 1), 0);
        ctx.m_symmKeyLen = 16;
        expectUndecryptable(ctx, "Triple DES key of 16 bytes");
    }
    using Edit = std::function<void(std::vector<std::uint8_t>&)>;
    const std::pair<const char*, Edit> edits[] = {
        {"tag or last block", [](std::vector<std::uint8_t>& o) { o.back() ^= 1; }},
        {"IV", [](std::vector<std::uint8_t>& o) { o.front() ^= 1; }},
        {"ciphertext", [](std::vector<std::uint8_t>& o) { o[o.size() / 2] ^= 0x80; }},
        {"truncated by one", [](std::vector<std::uint8_t>& o) { o.pop_back(); }},
        {"truncated by a block", [](std::vector<std::uint8_t>& o) { o.resize(o.size() - 16); }},
        {"IV and tag alone", [](std::vector<std::uint8_t>& o) { o.erase(o.begin() + 12, o.end() - 16); }},
        {"empty", [](std::vector<std::uint8_t>& o) { o.clear(); }},
        {"nothing changed, wrong key", [](std::vector<std::uint8_t>&) {}},
    };
    for (const auto& [symmetric, keyBytes] : {std::pair{8, 16}, {9, 24}, {10, 32}, {6, 24}}) {
        Encryption e;
        e.symmetric = symmetric;
        e.sessionKey = (kPlaceholder + kPlaceholder).substr(0, size_t(keyBytes));
        e.targets = {"Amount"};
        e.recipients = {kKeyWrap};
        const std::string doc = encrypt(kDoc, e);
        for (const auto& [name, edit] : edits) {
            const bool changed = std::string(name).find("wrong key") == std::string::npos;
            std::string key = e.sessionKey;
            key[0] ^= changed ? 0 : 1;
            Context ctx;
            ASSERT_EQ(load(ctx, editedData(doc, edit)), 0) << name;
            ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(key), size(key), symmetric), 0);
            expectUndecryptable(ctx, std::string(name) + " " + std::to_string(symmetric));
        }
    }
    EXPECT_EQ(text.find("Amount"), std::string::npos) << text;
    EXPECT_EQ(text.find("1100000"), std::string::npos) << text;
}

// Other writers fill the CBC padding with random bytes before its length byte:
// Triple DES and AES accept them, as the Korean ciphers do.
TEST(Ciphertext, CbcPaddingCountsOnlyTheLastByte) {
    const std::string plain = "<Amount>7</Amount>";
    for (const auto& [symmetric, cipher] : {std::pair{1, EVP_des_ede3_cbc()}, std::pair{6, EVP_aes_192_cbc()}}) {
        const size_t block = size_t(EVP_CIPHER_get_block_size(cipher));
        std::string padded = plain + std::string(block - plain.size() % block - 1, '\xa5');
        padded.push_back(char(block - plain.size() % block));
        Context ctx;
        ASSERT_EQ(load(ctx, withDataCipherValue(encryptedFor(kKeyWrap, symmetric), cbcCipherValue(cipher, kPlaceholder, padded))),
                  0);
        ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(kPlaceholder), 24, symmetric), 0);
        ASSERT_EQ(ctx.XMLENC_decrypt(), 0) << ctx.error();
        EXPECT_NE(std::string(ctx.getXMLDocument()).find("<Root><Amount>7</Amount><Memo>"), std::string::npos);
    }
}

// A key-encryption key must be as long as its transport says, both ways.
TEST(Unwrapping, KeyEncryptionKeyOfAnotherLengthIsRefused) {
    for (int transport : {5, 6, 7, 1}) {
        const Recipient right = transport == 1 ? kKeyWrap : aesKeyWrap(transport);
        const std::string shorter = right.kek.substr(0, right.kek.size() - 8);
        ScopedHandle h;
        ASSERT_EQ(VQTK_XMLENC_SetXMLDocument(h, chars(kDoc), size(kDoc)), 0);
        ASSERT_EQ(VQTK_XMLENC_SetSymmAlg(h, 8), 0);
        ASSERT_EQ(VQTK_XMLENC_EncryptElement(h, chars("Amount"), 2), 0);
        EXPECT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(shorter), size(shorter), transport), 10306) << transport;
        Context ctx;
        ASSERT_EQ(load(ctx, encryptedFor(right, 8)), 0);
        EXPECT_EQ(unwrap(ctx, {transport, "", shorter}), 10306) << transport;
        EXPECT_NE(ctx.error().find("key-encryption key must be"), std::string::npos) << ctx.error();
        EXPECT_EQ(unwrap(ctx, {transport, "", right.kek + "12345678"}), 10306) << transport;
        EXPECT_EQ(unwrap(ctx, right), 0) << ctx.error();
    }
}

TEST(Unwrapping, UnknownTransportIsRecordedThenRefused) {
    const std::string text = replaced(encryptedFor(kRsa), "<xenc:EncryptedKey", "xmlenc#rsa-1_5", "xmlenc#rsa-2_0");
    Context ctx;
    EXPECT_EQ(load(ctx, text), 0);
    EXPECT_EQ(ctx.getLaseErrorCode(), 11304);
    EXPECT_EQ(ctx.error().rfind("getEncryptedKeyInfo > ", 0), 0u) << ctx.error();
    EXPECT_EQ(unwrap(ctx, kRsa), 10304);
}

TEST(Ciphertext, BrokenEncryptedDataFailsCleanly) {
    for (int symmetric : {1, 2, 3, 4}) {
        const std::string good = encryptedFor(kKeyWrap, symmetric);
        const bool eightByteBlocks = symmetric == 1;  // Triple DES
        Encryption emptyMemo;
        emptyMemo.symmetric = symmetric;
        emptyMemo.mode = 1;
        emptyMemo.targets = {"Memo"};
        emptyMemo.recipients = {kKeyWrap};
        const std::string cases[] = {
            replaced(good, "<xenc:EncryptedData", "Algorithm=\"", "Algorithm=\"urn:unknown:"),
            withDataCipherValue(good, "!!not*base64!!"),
            // no whole block after the IV
            withDataCipherValue(good, eightByteBlocks ? "AAECAwQFBgcICQoL" : "AAECAwQFBgcICQoLDA0ODxAREhMUFRYX"),
            // an IV and one block, whose plaintext (under the right key) is empty or a few random bytes
            withDataCipherValue(good, eightByteBlocks ? "AAECAwQFBgcICQoLDA0ODw==" : "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="),
            withDataCipherValue(good, ""),
            replaced(good, "<xenc:EncryptedData", "#Element", "#Elephant"),
            // the empty content of an element, claimed to be an element
            replaced(encrypt("<Root><Memo/></Root>", emptyMemo), "<xenc:EncryptedData", "#Content", "#Element"),
        };
        for (const std::string& text : cases) {
            Context ctx;
            int rc = load(ctx, text);
            if (rc == 0)
                rc = unwrap(ctx, kKeyWrap);
            if (rc == 0)
                rc = ctx.XMLENC_decrypt();
            EXPECT_NE(rc, 0) << symmetric << ": " << text;
            EXPECT_FALSE(ctx.error().empty());
            EXPECT_EQ(ctx.getXMLDocument(), nullptr);
        }
    }
}

// An EncryptedData standing as the document element must decrypt to one element
// (comments beside it may stay); two elements cannot make a document.
TEST(Ciphertext, DocumentElementComesBackAsOneElement) {
    struct Case {
        std::string content;  // of the root whose content is encrypted
        bool opens;
    };
    const Case cases[] = {{"<!--c--><a>x</a>", true}, {"<a/><b/>", false}, {"text", false}};
    for (const Case& c : cases) {
        Encryption e;
        e.sessionKey = kPlaceholder;
        e.targets = {" "};
        e.mode = 1;
        e.recipients = {kKeyWrap};
        const std::string encrypted = encrypt("<Root>" + c.content + "</Root>", e);
        const size_t from = encrypted.find("<xenc:EncryptedData");
        const size_t to = encrypted.find("</xenc:EncryptedData>") + 21;
        const std::string alone = replaced(encrypted.substr(from, to - from), "<xenc:EncryptedData", "#Content", "#Element");
        Context ctx;
        ASSERT_EQ(load(ctx, alone), 0) << ctx.error();
        ASSERT_EQ(ctx.XMLENC_setSymmKey(bytes(kPlaceholder), 24, 1), 0);
        const int rc = ctx.XMLENC_decrypt();
        if (c.opens) {
            ASSERT_EQ(rc, 0) << ctx.error();
            const std::string opened = ctx.getXMLDocument();
            EXPECT_NE(opened.find("<!--c-->"), std::string::npos) << opened;
            EXPECT_NE(opened.find("<a>x</a>"), std::string::npos) << opened;
            EXPECT_EQ(opened.find("EncryptedData"), std::string::npos) << opened;
        } else {
            EXPECT_NE(rc, 0) << c.content;
            EXPECT_EQ(ctx.error().rfind("XMLENC_decrypt > ", 0), 0u) << ctx.error();
        }
    }
}

TEST(Structure, MalformedAndTruncatedDocumentsFailCleanly) {
    const std::string text = encryptedFor(kRsa);
    for (size_t len = 1; len < text.size(); len += 13) {
        Context ctx;
        int rc = load(ctx, text.substr(0, len));
        if (rc == 0)
            rc = unwrap(ctx, kRsa);
        if (rc == 0)
            rc = ctx.XMLENC_decrypt();
        EXPECT_NE(rc, 0) << len;
    }
    Context ctx;
    EXPECT_NE(load(ctx, replaced(text, "</xenc:EncryptedKey>", "<xenc:CipherData>", "<xenc:Nothing>")), 0);
}

TEST(SessionKey, RandomKeysAreFreshAndOfTheAlgorithmsLength) {
    Context a, b;
    ASSERT_EQ(a.XMLENC_setXMLDocument(chars(kDoc), size(kDoc)), 0);
    ASSERT_EQ(b.XMLENC_setXMLDocument(chars(kDoc), size(kDoc)), 0);
    ASSERT_EQ(a.XMLENC_setSymmKey(nullptr, 0, 2), 0);
    ASSERT_EQ(b.XMLENC_setSymmKey(nullptr, 0, 2), 0);
    EXPECT_EQ(a.sessionKey().size(), 16u);
    EXPECT_NE(a.sessionKey(), b.sessionKey());
    ASSERT_EQ(a.XMLENC_setSymmKey(nullptr, 0, 1), 0);
    EXPECT_EQ(a.sessionKey().size(), 24u);
}

}  // namespace
