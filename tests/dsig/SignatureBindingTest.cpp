// A verified XML Signature binds what it reports: the document handed back is
// what a reference covered (signed elements moved aside, forged ones in their
// place, are refused; Signatures the references left out are not handed back),
// and the getters report the certificate whose key verified.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "SignatureFixture.hpp"

using namespace dsigtest;

namespace {

const char kEnvelopedXPath[] = "not(ancestor-or-self::ds:Signature)";
const char kDsig[] = "http://www.w3.org/2000/09/xmldsig#";

// An RSA-SHA256 signature over doc (NULL: enveloping, with one Object "obj1")
// with the references given as URI and XPath (nullptr: none).
std::string signWith(const char* doc, const std::vector<std::pair<const char*, const char*>>& references,
                     const std::string& cert = signerCert(), const std::string& key = signerKey(),
                     void (*switches)(void*) = nullptr) {
    ScopedHandle h;
    std::string text = doc != nullptr ? doc : "";
    EXPECT_EQ(VQTK_XMLDSIG_SetXMLDocument(h, doc != nullptr ? chars(text) : nullptr, static_cast<int>(text.size())), 0);
    EXPECT_EQ(VQTK_XMLDSIG_SignatureMethod(h, 5, 3), 0);
    if (doc == nullptr) {
        std::string content = "<Amount xmlns=\"\">1100000</Amount>";
        EXPECT_EQ(VQTK_XMLDSIG_appendObject(h, const_cast<char*>("obj1"), chars(content),
                                            static_cast<int>(content.size())),
                  0);
    }
    for (const auto& [uri, xpath] : references)
        EXPECT_EQ(VQTK_XMLDSIG_createReference(h, const_cast<char*>(uri), 3, 0, const_cast<char*>(xpath)), 0);
    if (switches != nullptr)
        switches(h);
    EXPECT_EQ(VQTK_XMLDSIG_SetSigner(h, bytes(cert), static_cast<int>(cert.size()), bytes(key),
                                     static_cast<int>(key.size())),
              0);
    EXPECT_EQ(VQTK_XMLDSIG_sign(h), 0) << errorText(h);
    return resultDocument(h);
}

std::string inserted(const std::string& text, const std::string& before, const std::string& what) {
    return replaced(text, before, what + before);
}

std::string between(const std::string& text, const std::string& open, const std::string& close) {
    const size_t from = text.find(open);
    const size_t to = text.find(close, from);
    EXPECT_NE(to, std::string::npos) << open;
    return to == std::string::npos ? "" : text.substr(from, to + close.size() - from);
}

TEST(SignatureBinding, WhatComesBackIsWhatAReferenceCovered) {
    const char* doc = "<r><a Id=\"x\">1100000</a></r>";
    const std::string partial = signWith(doc, {{"x", nullptr}});
    const std::string forged = "<a>9900000</a>";
    const std::string moved = replaced(partial, "<a Id=\"x\">1100000</a>", forged);
    const std::string alsoExcludingA = signWith(
        doc, {{"", "not(ancestor-or-self::ds:Signature | ancestor-or-self::a)"}, {"x", nullptr}});
    const std::string enveloping = signWith(nullptr, {{"obj1", nullptr}});
    const std::string whole = signWith("<r Id=\"x\"><a>1100000</a></r>", {{"x", kEnvelopedXPath}});
    const struct {
        const char* name;
        std::string text;
    } refused[] = {
        {"a reference to one element only", partial},
        {"the element moved into the Object", inserted(moved, "</Signature>", "<Object><a xmlns=\"\" Id=\"x\">1100000</a></Object>")},
        {"the element moved into a wrapper", replaced(partial, "<a Id=\"x\">1100000</a>", forged + "<w><a Id=\"x\">1100000</a></w>")},
        {"the element moved behind a second Signature",
         inserted(moved, "</r>", std::string("<Signature xmlns=\"") + kDsig + "\"><Object><a xmlns=\"\" Id=\"x\">1100000</a></Object></Signature>")},
        {"the element the whole-document reference leaves out moved into the Object",
         inserted(replaced(alsoExcludingA, "<a Id=\"x\">1100000</a>", forged), "</Signature>",
                  "<Object><a xmlns=\"\" Id=\"x\">1100000</a></Object>")},
        {"an enveloping signature with a forged first Object",
         inserted(enveloping, "<Object", "<Object><Amount xmlns=\"\">9900000</Amount></Object>")},
        {"the signed document element wrapped in a new one",
         "<evil>" + whole.substr(whole.find("<r ")) + "</evil>"},
    };
    for (const auto& c : refused) {
        std::string why;
        EXPECT_EQ(verify(c.text, &why), 11213) << c.name << ": " << why;
    }
    std::string result;
    EXPECT_EQ(verify(whole, &result), 0) << result;
    EXPECT_EQ(verify(alsoExcludingA, &result), 0) << result;
    EXPECT_EQ(verify(enveloping, &result), 0) << result;
    EXPECT_NE(result.find(">1100000</Amount>"), std::string::npos) << result;
    EXPECT_EQ(result.find("Object"), std::string::npos) << "the Object's first element alone comes back";
}

struct Signer {
    std::string cert, key;
};

Signer victim() {
    return {testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.der")),
            testfiles::read(testfiles::dataPath("testpki/ee-rsa.key.der"))};
}

void withNames(void* h) {
    EXPECT_EQ(VQTK_XMLENC_SetSubjectName(h), 0);
    EXPECT_EQ(VQTK_XMLENC_SetIssuerSerial(h), 0);
}

struct Reported {
    int status;
    bool cert, subject, issuer, serial;
};

Reported verifyAndReport(const std::string& text) {
    ScopedHandle h;
    Reported out{VQTK_XMLDSIG_SetSignXMLDocument(h, chars(text), static_cast<int>(text.size())), false, false, false,
                 false};
    unsigned char* cert = nullptr;
    int certLen = 0;
    char *subject = nullptr, *issuer = nullptr, *serial = nullptr;
    EXPECT_EQ(VQTK_XMLDSIG_GetSignCert(h, &cert, &certLen), 0);
    EXPECT_EQ(VQTK_XMLDSIG_GetSubjectName(h, &subject), 0);
    EXPECT_EQ(VQTK_XMLDSIG_GetIssuerSerialNum(h, &issuer, &serial), 0);
    out = {out.status != 0 ? out.status : VQTK_XMLDSIG_Verify(h), cert != nullptr && certLen > 0, subject != nullptr,
           issuer != nullptr, serial != nullptr};
    return out;
}

// Key information that names one certificate and carries another key.
TEST(SignatureBinding, TheGettersReportOnlyTheKeyThatVerified) {
    const char* doc = "<r><a>1100000</a></r>";
    const std::string attacker = signWith(doc, {{"", kEnvelopedXPath}}, signerCert(), signerKey(), withNames);
    const std::string victims = signWith(doc, {{"", kEnvelopedXPath}}, victim().cert, victim().key, withNames);
    const std::string attackerCert = between(attacker, "<X509Certificate>", "</X509Certificate>");
    const std::string bare = replaced(replaced(attacker, between(attacker, "<X509SubjectName>", "</X509SubjectName>"), ""),
                                      between(attacker, "<X509IssuerSerial>", "</X509IssuerSerial>"), "");
    const std::string victimSubject = between(victims, "<X509SubjectName>", "</X509SubjectName>");
    const std::string victimIssuerSerial = between(victims, "<X509IssuerSerial>", "</X509IssuerSerial>");
    const std::string keyValueOnly = replaced(attacker, between(attacker, "<X509Data>", "</X509Data>"), "");
    const struct {
        const char* name;
        std::string text;
        Reported expected;
    } cases[] = {
        {"its own names", attacker, {0, true, true, true, true}},
        {"the victim's X509SubjectName", inserted(bare, "<X509Certificate>", victimSubject), {11213, false, false, false, false}},
        {"the victim's X509IssuerSerial", inserted(bare, "<X509Certificate>", victimIssuerSerial), {11213, false, false, false, false}},
        {"the victim's certificate beside its KeyValue",
         replaced(bare, attackerCert, between(victims, "<X509Certificate>", "</X509Certificate>")), {11213, false, false, false, false}},
        {"the victim's names beside its KeyValue only",
         inserted(keyValueOnly, "<KeyValue>", "<X509Data>" + victimSubject + "</X509Data>"), {11213, false, false, false, false}},
        {"its KeyValue only", keyValueOnly, {0, false, false, false, false}},
    };
    for (const auto& c : cases) {
        const Reported got = verifyAndReport(c.text);
        EXPECT_EQ(got.status, c.expected.status) << c.name;
        EXPECT_EQ(got.cert, c.expected.cert) << c.name;
        EXPECT_EQ(got.subject, c.expected.subject) << c.name;
        EXPECT_EQ(got.issuer, c.expected.issuer) << c.name;
        EXPECT_EQ(got.serial, c.expected.serial) << c.name;
    }
}

}  // namespace
