// Signing and verifying through the C interface with the test signer's keys.
#ifndef VQXML_TESTS_DSIG_SIGNATUREFIXTURE_HPP
#define VQXML_TESTS_DSIG_SIGNATUREFIXTURE_HPP

#include <gtest/gtest.h>

#include <string>

#include "ScopedHandle.hpp"
#include "TestFiles.hpp"
#include "vqxml/vqxml.h"

namespace dsigtest {

inline const std::string& invoice() {
    static const std::string text = testfiles::read(testfiles::dataPath("dsig/taxinvoice.xml"));
    return text;
}

inline const std::string& signerCert() {
    static const std::string der = testfiles::read(testfiles::dataPath("dsig/signer-cert.der"));
    return der;
}

inline const std::string& signerKey() {
    static const std::string der = testfiles::read(testfiles::dataPath("dsig/signer-key.pk8.der"));
    return der;
}

// A file of a signer under tests/data/dsig: kind "" is the RSA signer above, else
// an EC or DSA signer (ec256, ec384, ec521, dsa2048); part "crt.der", "key.pk8.der"
// or "key.pem".
inline std::string signerFile(const std::string& kind, const std::string& part) {
    if (!kind.empty())
        return testfiles::dataPath("dsig/signer-" + kind + "." + part);
    return testfiles::dataPath(part == "crt.der" ? "dsig/signer-cert.der" : "dsig/signer-" + part);
}

// The signed invoice with its amount 1100000 changed into 1100001.
inline std::string tampered(std::string text) {
    const size_t at = text.find("1100000<");
    EXPECT_NE(at, std::string::npos);
    if (at != std::string::npos)
        text[at + 6] = '1';
    return text;
}

// text with the first from replaced by to (a failed check when from is not there).
inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

inline const std::string& hmacKey() {
    static const std::string bytes = testfiles::read(testfiles::dataPath("dsig/hmac.bin"));
    return bytes;
}

using apitest::bytes;
using apitest::chars;
using apitest::errorText;
using apitest::resultDocument;

// One signature through the C interface: RSA-SHA256 by the test signer over the
// whole document less its Signatures, unless a field says otherwise.
struct Signing {
    int method = 5, c14n = 3, digest = 3, referenceC14n = 0;
    const char* uri = "";
    const char* xpath = "not(ancestor-or-self::ds:Signature)";
    std::string cert = signerCert(), key = signerKey();  // no cert: key is the HMAC secret
    std::string object;  // not empty: enveloping, no document and this Object's content, Id uri
};

// doc signed on a fresh handle; "" (and a failed check) when a call fails.
inline std::string signedText(const std::string& doc, const Signing& s = Signing()) {
    ScopedHandle h;
    int rc = 0;  // each call runs only when the ones before returned 0
    (rc = s.object.empty() ? VQTK_XMLDSIG_SetXMLDocument(h, chars(doc), static_cast<int>(doc.size()))
                           : VQTK_XMLDSIG_SetXMLDocument(h, nullptr, 0)) ||
        (rc = VQTK_XMLDSIG_SignatureMethod(h, s.method, s.c14n)) ||
        (rc = s.object.empty() ? 0
                               : VQTK_XMLDSIG_appendObject(h, const_cast<char*>(s.uri), chars(s.object),
                                                           static_cast<int>(s.object.size()))) ||
        (rc = VQTK_XMLDSIG_createReference(h, const_cast<char*>(s.uri), s.digest, s.referenceC14n,
                                           const_cast<char*>(s.xpath))) ||
        (rc = s.cert.empty() ? VQTK_XMLDSIG_SetHMACKey(h, bytes(s.key), static_cast<unsigned>(s.key.size()))
                             : VQTK_XMLDSIG_SetSigner(h, bytes(s.cert), static_cast<int>(s.cert.size()), bytes(s.key),
                                                      static_cast<int>(s.key.size()))) ||
        (rc = VQTK_XMLDSIG_sign(h));
    EXPECT_EQ(rc, 0) << errorText(h);
    return rc == 0 ? resultDocument(h) : "";
}

// Verifies signed text on a fresh handle; the status, and the result document in *out.
inline int verify(const std::string& signedText, std::string* out = nullptr, const std::string& hmac = "") {
    ScopedHandle h;
    int rc = 0;
    (rc = VQTK_XMLDSIG_SetSignXMLDocument(h, chars(signedText), static_cast<int>(signedText.size()))) ||
        (rc = hmac.empty() ? 0 : VQTK_XMLDSIG_SetHMACKey(h, bytes(hmac), static_cast<unsigned>(hmac.size()))) ||
        (rc = VQTK_XMLDSIG_Verify(h));
    if (out != nullptr)
        *out = rc == 0 ? resultDocument(h) : errorText(h);
    return rc;
}

}  // namespace dsigtest

#endif
