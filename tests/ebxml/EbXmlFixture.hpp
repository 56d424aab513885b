// ebXML packages for the tests: made and taken apart with the library's MIME
// classes, signed and verified through the C interface.
#ifndef VQXML_TESTS_EBXML_EBXMLFIXTURE_HPP
#define VQXML_TESTS_EBXML_EBXMLFIXTURE_HPP

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dsig/SignatureFixture.hpp"
#include "vqxml/VQXML_Mime.h"

namespace ebxmltest {

using apitest::bytes;
using apitest::chars;
using apitest::errorText;
using apitest::resultDocument;

// Excludes the signature and what the next MSH may change, as ebMS 2.0 does with
// its enveloped-signature and XPath transforms.
const char kEnvelopeXPath[] =
    "not(ancestor-or-self::ds:Signature"
    " | ancestor-or-self::node()[@SOAP:actor=\"urn:oasis:names:tc:ebxml-msg:actor:nextMSH\"]"
    " | ancestor-or-self::node()[@SOAP:actor=\"http://schemas.xmlsoap.org/soap/actor/next\"])";

struct Part {
    std::string contentType;
    std::string contentId;  // with its angle brackets; empty: no Content-ID field
    std::string content;
    std::string transferEncoding;
};

inline const std::string& envelope() {
    static const std::string text = testfiles::read(testfiles::dataPath("ebxml/envelope.xml"));
    return text;
}

inline const std::string& orderDocument() {
    static const std::string text = testfiles::read(testfiles::dataPath("ebxml/order.xml"));
    return text;
}

// Bytes a text reader would mangle: CR, LF, NUL, a line that looks like a boundary.
inline std::string binaryPayload() {
    std::string data;
    for (int i = 0; i < 600; ++i)
        data += static_cast<char>((i * 37 + 11) & 0xFF);
    data += "\r\n--not-a-boundary\r\n";
    data += std::string(3, '\0');
    return data;
}

inline std::vector<Part> standardParts() {
    return {{"text/xml; charset=UTF-8", "<soap-part@example.kr>", envelope(), ""},
            {"text/xml; charset=UTF-8", "<order@example.kr>", orderDocument(), ""},
            {"application/octet-stream", "<scan@example.kr>", binaryPayload(), "binary"}};
}

inline std::string makePackage(const std::vector<Part>& parts) {
    CMimeMessage msg;
    msg.SetVersion();
    msg.SetContentType("multipart/related; type=\"text/xml\"");
    msg.SetBoundary("----=_ebxml_test_boundary");
    for (const Part& p : parts) {
        CMimeBody* body = msg.CreatePart();
        body->SetContentType(p.contentType.c_str());
        if (!p.contentId.empty())
            body->SetContentId(p.contentId.c_str());
        if (!p.transferEncoding.empty())
            body->SetTransferEncoding(p.transferEncoding.c_str());
        body->SetText(p.content.data(), static_cast<int>(p.content.size()));
    }
    std::string out(static_cast<size_t>(msg.GetLength()), '\0');
    out.resize(static_cast<size_t>(msg.Store(&out[0], static_cast<int>(out.size()))));
    return out;
}

// The decoded leaf parts of a package, with their identifiers.
struct Leaf {
    std::string contentId;
    std::string content;
};

inline std::vector<Leaf> leavesOf(const std::string& package) {
    CMimeMessage msg;
    EXPECT_GT(msg.Load(package.data(), static_cast<int>(package.size())), 0);
    std::list<CMimeBody*> leaves;
    msg.GetBodyPartList(leaves);
    std::vector<Leaf> out;
    for (const CMimeBody* leaf : leaves) {
        std::string content;
        leaf->GetText(content);
        out.push_back({leaf->GetContentId() != nullptr ? leaf->GetContentId() : "", content});
    }
    return out;
}

// A signer: signature selector and the dsig test signer's files ("" for the RSA signer).
struct Signer {
    int selector = 5;
    std::string kind;  // dsigtest::signerFile's kind
};

// Signs data (a package or a bare envelope) with a dsig test signer; the result
// document, or the error text after a failure.
inline int sign(const std::string& data, std::string* out, int digestSelector = 1, int c14nSelector = 1,
                const char* xpath = kEnvelopeXPath, int signedInfoC14nSelector = 1, const Signer& signer = {}) {
    const std::string cert = testfiles::read(dsigtest::signerFile(signer.kind, "crt.der"));
    const std::string key = testfiles::read(dsigtest::signerFile(signer.kind, "key.pk8.der"));
    ScopedHandle h;
    int rc = 0;  // each call runs only when the ones before returned 0
    (rc = VQTK_EBXML_SetSOAPDocument(h, chars(data), static_cast<int>(data.size()))) ||
        (rc = VQTK_EBXML_SignatureMethod(h, signer.selector, signedInfoC14nSelector)) ||
        (rc = VQTK_EBXML_createReference(h, const_cast<char*>(""), digestSelector, c14nSelector,
                                         const_cast<char*>(xpath))) ||
        (rc = VQTK_EBXML_SetSigner(h, bytes(cert), static_cast<int>(cert.size()), bytes(key),
                                   static_cast<int>(key.size()))) ||
        (rc = VQTK_EBXML_Sign(h));
    *out = rc == 0 ? resultDocument(h) : errorText(h);
    return rc;
}

// Signs what h holds with the test HMAC key (HMAC-SHA1, C14N); the status.
inline int signWithHmac(void* h, const char* xpath = kEnvelopeXPath) {
    const std::string& key = dsigtest::hmacKey();
    int rc = 0;
    (rc = VQTK_EBXML_SignatureMethod(h, 1, 1)) ||
        (rc = VQTK_EBXML_createReference(h, const_cast<char*>(""), 1, 1, const_cast<char*>(xpath))) ||
        (rc = VQTK_XMLDSIG_SetHMACKey(h, bytes(key), static_cast<unsigned>(key.size()))) || (rc = VQTK_EBXML_Sign(h));
    return rc;
}

// Verifies data on a fresh handle; the result document or the error text in *out.
inline int verify(const std::string& data, std::string* out = nullptr) {
    ScopedHandle h;
    int rc = 0;
    (rc = VQTK_EBXML_SetSOAPSecXMLDocument(h, chars(data), static_cast<int>(data.size()))) ||
        (rc = VQTK_EBXML_Verify(h));
    if (out != nullptr)
        *out = rc == 0 ? resultDocument(h) : errorText(h);
    return rc;
}

}  // namespace ebxmltest

#endif
