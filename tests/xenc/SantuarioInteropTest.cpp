// XML Encryption with Apache Santuario (Java) both ways: Santuario decrypts what
// the library encrypts, and the library decrypts what Santuario encrypts, with
// AES-GCM and AES-CBC content under RSA-OAEP of XML Encryption 1.1 (SHA-256 and
// MGF1-SHA256 as the library writes it, other digests as Santuario may),
// RSA-OAEP with MGF1 and RSA 1.5; Santuario's EncryptedKey sits in the
// EncryptedData's KeyInfo or at the top of the document behind a RetrievalMethod.
#include <gtest/gtest.h>

#include <string>

#include "XencFixture.hpp"

using namespace xenctest;

namespace {

#ifdef VQXML_XENC_SANTUARIO_JAVA
const std::string kSantuario = VQXML_XENC_SANTUARIO_JAVA " XencSantuario ";
#else
const std::string kSantuario;
#endif

const char kOrder[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Order xmlns=\"urn:example:po\"><Item id=\"1\">spade</Item>"
    "<Pay><Card type=\"visa\">4000-1234</Card><Holder>홍길동</Holder></Pay></Order>";

const char* const kCiphers[] = {"",
                                "http://www.w3.org/2001/04/xmlenc#tripledes-cbc",
                                "", "", "",
                                "http://www.w3.org/2001/04/xmlenc#aes128-cbc",
                                "http://www.w3.org/2001/04/xmlenc#aes192-cbc",
                                "http://www.w3.org/2001/04/xmlenc#aes256-cbc",
                                "http://www.w3.org/2009/xmlenc11#aes128-gcm",
                                "http://www.w3.org/2009/xmlenc11#aes192-gcm",
                                "http://www.w3.org/2009/xmlenc11#aes256-gcm"};

// Runs Santuario; its exit status, and its complaint in *why.
int santuario(const testfiles::ScratchDir& dir, const std::string& args, std::string* why) {
    const int rc = testfiles::run("{ " + kSantuario + args + " 2>'" + dir("errors") + "'; }");
    *why = testfiles::read(dir("errors"));
    return rc;
}

TEST(SantuarioDecrypts, WhatTheLibraryEncrypts) {
    if (kSantuario.empty())
        GTEST_SKIP() << "no JDK or no Santuario (libxml-security-java)";
    for (int symmetric : {8, 9, 10, 5, 7, 1})
        for (int transport : {4, 3, 2}) {
            Encryption e;
            e.symmetric = symmetric;
            e.targets = {"Card"};
            e.recipients = {{transport, "ee-rsa", ""}};
            const std::string what = std::to_string(symmetric) + "/" + std::to_string(transport);
            testfiles::ScratchDir dir;
            testfiles::write(dir("in.xml"), encrypt(kOrder, e));
            testfiles::write(dir("key.der"), pki("ee-rsa.key.der"));
            std::string why;
            ASSERT_EQ(santuario(dir, "decrypt '" + dir("in.xml") + "' '" + dir("out.xml") + "' '" + dir("key.der") + "'",
                                &why),
                      0)
                << what << ": " << why;
            EXPECT_EQ(comparable(testfiles::read(dir("out.xml"))), comparable(kOrder)) << what;
        }
}

TEST(SantuarioEncrypts, TheLibraryDecrypts) {
    if (kSantuario.empty())
        GTEST_SKIP() << "no JDK or no Santuario (libxml-security-java)";
    struct Transport {
        const char* uri;
        const char* digest;
        const char* mgf;
        int selector;
    };
    const Transport transports[] = {
        {"http://www.w3.org/2009/xmlenc11#rsa-oaep", "http://www.w3.org/2001/04/xmlenc#sha256",
         "http://www.w3.org/2009/xmlenc11#mgf1sha256", 4},
        {"http://www.w3.org/2009/xmlenc11#rsa-oaep", "http://www.w3.org/2001/04/xmlenc#sha512",
         "http://www.w3.org/2009/xmlenc11#mgf1sha1", 4},
        {"http://www.w3.org/2009/xmlenc11#rsa-oaep", "-", "-", 4},
        {"http://www.w3.org/2001/04/xmlenc#rsa-oaep-mgf1p", "http://www.w3.org/2000/09/xmldsig#sha1", "-", 3},
        {"http://www.w3.org/2001/04/xmlenc#rsa-1_5", "-", "-", 2},
    };
    for (int symmetric : {8, 10, 5, 6})
        for (const Transport& t : transports)
            for (const char* layout : {"inline", "retrieved"}) {
                const std::string what = std::string(kCiphers[symmetric]) + " " + t.uri + " " + t.digest + " " + layout;
                testfiles::ScratchDir dir;
                testfiles::write(dir("in.xml"), kOrder);
                testfiles::write(dir("cert.der"), pki("ee-rsa.crt.der"));
                std::string why;
                ASSERT_EQ(santuario(dir,
                                    "encrypt '" + dir("in.xml") + "' '" + dir("out.xml") + "' '" + dir("cert.der") +
                                        "' " + kCiphers[symmetric] + " " + t.uri + " " + t.digest + " " + t.mgf + " " +
                                        layout,
                                    &why),
                          0)
                    << what << ": " << why;
                const std::string encrypted = testfiles::read(dir("out.xml"));
                ASSERT_EQ(encrypted.find("4000-1234"), std::string::npos) << what;
                std::string opened;
                ASSERT_EQ(decrypt(encrypted, {t.selector, "ee-rsa", ""}, &opened), 0) << what << ": " << opened;
                EXPECT_EQ(comparable(opened), comparable(kOrder)) << what;
            }
}

}  // namespace
