// Encrypting and decrypting through the C interface with the test PKI's keys.
#ifndef VQXML_TESTS_XENC_XENCFIXTURE_HPP
#define VQXML_TESTS_XENC_XENCFIXTURE_HPP

#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <string>
#include <vector>

#include "ScopedHandle.hpp"
#include "TestFiles.hpp"
#include "dsig/SignatureFixture.hpp"
#include "vqxml/vqxml.h"

namespace xenctest {

using apitest::bytes;
using apitest::chars;
using apitest::errorText;
using apitest::resultDocument;
using apitest::size;

inline std::string pki(const std::string& file) {
    return testfiles::read(testfiles::dataPath("testpki/" + file));
}

// A recipient: an RSA certificate and key of the test PKI, or a key-encryption key.
struct Recipient {
    int transport;       // selector: 1 Triple DES key wrap, 2 RSA 1.5, 3 RSA-OAEP, 4 RSA-OAEP 1.1, 5-7 AES key wrap
    std::string prefix;  // test PKI end entity ("ee-rsa"), for RSA
    std::string kek;     // for key wrap: 24 bytes for Triple DES, 16/24/32 for AES

    bool shared() const { return !kek.empty(); }
    std::string wrapKey() const { return shared() ? kek : pki(prefix + ".crt.der"); }
    std::string cert() const { return shared() ? std::string() : pki(prefix + ".crt.der"); }
    std::string privateKey() const { return shared() ? kek : pki(prefix + ".key.der"); }
};

inline const std::string& sharedKek() {
    static const std::string kek = "0123456789abcdefFEDCBA98";
    return kek;
}

// An AES key-wrap recipient of selector 5, 6 or 7 (a 16, 24 or 32-byte key).
inline Recipient aesKeyWrap(int selector) {
    return {selector, "", std::string("0123456789abcdefFEDCBA9876543210").substr(0, 8 * (selector - 3))};
}

struct Encryption {
    int symmetric = 1;                  // selector 1-10
    std::string sessionKey;             // empty: a random one
    std::vector<std::string> targets;   // qualified names; " " for the document element
    int mode = 2;                       // 1 content, 2 element
    std::vector<Recipient> recipients;
    std::string keyNameBefore;          // set before the elements
    std::string keyNameAfter;           // set after them, before the first wrap
    std::string prefix;
    bool subjectName = false;
    bool issuerSerial = false;
};

// Encrypts text as e says; the encrypted document ("" and a failure on any error).
inline std::string encrypt(const std::string& text, const Encryption& e) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLENC_SetXMLDocument(h, chars(text), size(text)), 0) << errorText(h);
    if (!e.prefix.empty()) {
        EXPECT_EQ(VQTK_XMLENC_SetPrefix(h, chars(e.prefix)), 0) << errorText(h);
    }
    if (e.sessionKey.empty()) {
        EXPECT_EQ(VQTK_XMLENC_SetSymmAlg(h, e.symmetric), 0) << errorText(h);
    } else {
        EXPECT_EQ(VQTK_XMLENC_SetSymmKey(h, bytes(e.sessionKey), size(e.sessionKey), e.symmetric), 0);
    }
    if (!e.keyNameBefore.empty()) {
        EXPECT_EQ(VQTK_XMLENC_SetKeyName(h, chars(e.keyNameBefore)), 0);
    }
    for (const std::string& target : e.targets)
        EXPECT_EQ(VQTK_XMLENC_EncryptElement(h, chars(target), e.mode), 0) << errorText(h);
    if (e.subjectName)
        VQTK_XMLENC_SetSubjectName(h);
    if (e.issuerSerial)
        VQTK_XMLENC_SetIssuerSerial(h);
    if (!e.keyNameAfter.empty()) {
        EXPECT_EQ(VQTK_XMLENC_SetKeyName(h, chars(e.keyNameAfter)), 0);
    }
    for (const Recipient& r : e.recipients) {
        const std::string key = r.wrapKey();
        EXPECT_EQ(VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(key), size(key), r.transport), 0) << errorText(h);
    }
    EXPECT_EQ(VQTK_XMLENC_Encrypt(h), 0) << errorText(h);
    return resultDocument(h);
}

// Opens text as recipient r on a fresh handle, trying the document's
// EncryptedKeys in turn as a caller would: the status, and the result document
// (or the error text) in *out. A key that never unwraps gives its first failure.
inline int decrypt(const std::string& text, const Recipient& r, std::string* out = nullptr) {
    ScopedHandle h;
    const std::string cert = r.cert();
    const std::string key = r.privateKey();
    int rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(text), size(text));
    bool opened = false;
    int firstFailure = 0;
    std::string failureText;
    for (int attempt = 0; rc == 0 && !opened && attempt < 4; ++attempt) {
        rc = VQTK_XMLENC_GetEncKeyInfo(h);
        if (rc != 0)
            break;
        const int unwrapped = VQTK_XMLENC_DecryptKeyWrapKey(h, cert.empty() ? nullptr : bytes(cert), size(cert),
                                                            bytes(key), size(key));
        opened = unwrapped == 0;
        if (!opened && firstFailure == 0) {
            firstFailure = unwrapped;
            failureText = errorText(h);
        }
    }
    if (!opened && firstFailure != 0) {
        if (out != nullptr)
            *out = failureText;
        return firstFailure;
    }
    if (rc == 0)
        rc = VQTK_XMLENC_Decrypt(h);
    if (out != nullptr)
        *out = rc == 0 ? resultDocument(h) : errorText(h);
    return rc;
}

// Encrypts text as e says, checks that hidden no longer shows, and opens it again
// as e's first recipient: the opened document (a failure when it does not open).
inline std::string reopened(const std::string& text, const Encryption& e, const std::string& hidden) {
    const std::string encrypted = encrypt(text, e);
    EXPECT_EQ(encrypted.find(hidden), std::string::npos) << encrypted;
    std::string opened;
    EXPECT_EQ(decrypt(encrypted, e.recipients.front(), &opened), 0) << opened;
    return opened;
}

// text from its root element on (declarations and DOCTYPE are written
// differently by every serialiser) without EncryptedKey elements (which
// decrypting drops and other software keeps) and trailing line ends.
inline std::string comparable(const std::string& text) {
    size_t at = 0;
    while ((at = text.find('<', at)) != std::string::npos && (text[at + 1] == '?' || text[at + 1] == '!'))
        ++at;
    std::string body = at == std::string::npos ? text : text.substr(at);
    for (const std::string tag : {"xenc:EncryptedKey", "EncryptedKey"})
        while ((at = body.find("<" + tag)) != std::string::npos) {
            const std::string end = "</" + tag + ">";
            body.erase(at, body.find(end, at) + end.size() - at);
        }
    while (!body.empty() && (body.back() == '\n' || body.back() == ' '))
        body.pop_back();
    return body;
}

// xmlsec's names of the symmetric selectors 1-10 (SEED, NEAT and ARIA named
// alike) and of the transports 1-7.
inline const char* const kCipherNames[] = {"",           "tripledes-cbc", "seed-cbc",   "neat-cbc",
                                           "aria-cbc",   "aes128-cbc",    "aes192-cbc", "aes256-cbc",
                                           "aes128-gcm", "aes192-gcm",    "aes256-gcm"};
inline const char* const kTransportNames[] = {"",          "kw-tripledes", "rsa-1_5",  "rsa-oaep-mgf1p",
                                              "rsa-oaep",  "kw-aes128",    "kw-aes192", "kw-aes256"};

// A parameterised test's name for a cipher, transport, number of elements and mode.
inline std::string caseName(int symmetric, int transport, bool twoElements, int mode) {
    std::string n = std::string(kCipherNames[symmetric]) + "_" + kTransportNames[transport] +
                    (twoElements ? "_two" : "_one") + (mode == 1 ? "_content" : "_element");
    for (char& c : n)
        if (c == '-')
            c = '_';
    return n;
}

// A CipherValue: IV || CBC(plain), base64, without padding (plain fills whole blocks).
inline std::string cbcCipherValue(const EVP_CIPHER* cipher, const std::string& key, const std::string& plain) {
    std::vector<unsigned char> framed(size_t(EVP_CIPHER_get_iv_length(cipher)), 7);
    std::vector<unsigned char> out(plain.size() + 32);
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    int n = 0;
    EXPECT_EQ(EVP_EncryptInit_ex(ctx, cipher, nullptr, bytes(key), framed.data()), 1);
    EVP_CIPHER_CTX_set_padding(ctx, 0);
    EXPECT_EQ(EVP_EncryptUpdate(ctx, out.data(), &n, bytes(plain), size(plain)), 1);
    EVP_CIPHER_CTX_free(ctx);
    framed.insert(framed.end(), out.begin(), out.begin() + n);
    std::string text(4 * ((framed.size() + 2) / 3) + 1, '\0');
    text.resize(size_t(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&text[0]), framed.data(), int(framed.size()))));
    return text;
}

}  // namespace xenctest

#endif
