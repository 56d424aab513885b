// Signed documents that are broken, tricky or reach outside themselves: each gets
// a status and a message, and the handle stays usable.
#include <gtest/gtest.h>

#include <string>

#include <xsec/framework/XSECException.hpp>

#include "SignatureFixture.hpp"

using namespace dsigtest;

namespace {

const char kEnvelopedXPath[] = "not(ancestor-or-self::ds:Signature)";

// An RSA-SHA256 signature over doc with one reference.
std::string signWithReference(const std::string& doc, const char* uri, const char* xpath = nullptr) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLDSIG_SetXMLDocument(h, chars(doc), static_cast<int>(doc.size())), 0);
    EXPECT_EQ(VQTK_XMLDSIG_SignatureMethod(h, 5, 3), 0);
    EXPECT_EQ(VQTK_XMLDSIG_createReference(h, const_cast<char*>(uri), 3, 0, const_cast<char*>(xpath)), 0);
    EXPECT_EQ(VQTK_XMLDSIG_SetSigner(h, bytes(signerCert()), static_cast<int>(signerCert().size()),
                                     bytes(signerKey()), static_cast<int>(signerKey().size())),
              0);
    EXPECT_EQ(VQTK_XMLDSIG_sign(h), 0) << errorText(h);
    return resultDocument(h);
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos)
        text.replace(at, from.size(), to);
    return text;
}

const std::string& signedInvoice() {
    static const std::string text = signWithReference(invoice(), "", kEnvelopedXPath);
    return text;
}

// The handle that failed still verifies a good document afterwards.
void expectStillUsable(void* h) {
    const std::string& good = signedInvoice();
    EXPECT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, chars(good), static_cast<int>(good.size())), 0);
    EXPECT_EQ(VQTK_XMLDSIG_Verify(h), 0) << errorText(h);
}

int loadAndVerify(void* h, const std::string& text) {
    int rc = VQTK_XMLDSIG_SetSignXMLDocument(h, chars(text), static_cast<int>(text.size()));
    return rc != 0 ? rc : VQTK_XMLDSIG_Verify(h);
}

TEST(HostileSignatures, DocumentsThatAreNotSignaturesOrAreBroken) {
    const std::string& good = signedInvoice();
    const std::string cases[] = {
        "<a/>",
        "<Signature xmlns=\"http://www.w3.org/2000/09/xmldsig#\"/>",
        replaced(good, "<SignedInfo>", "<SignedInfoX>"),
        replaced(good, "http://www.w3.org/2001/04/xmldsig-more#rsa-sha256", "urn:unknown:algorithm"),
        replaced(good, "http://www.w3.org/2001/04/xmlenc#sha256", "urn:unknown:digest"),
        replaced(good, "http://www.w3.org/2001/10/xml-exc-c14n#", "urn:unknown:c14n"),
        good.substr(0, good.size() / 2),
    };
    for (const std::string& text : cases) {
        ScopedHandle h;
        int rc = loadAndVerify(h, text);
        EXPECT_NE(rc, 0) << text.substr(0, 200);
        EXPECT_NE(rc, 11213) << "not an invalid signature but one that cannot be checked: " << errorText(h);
        EXPECT_FALSE(errorText(h).empty());
        expectStillUsable(h);
    }
}

TEST(HostileSignatures, BrokenValuesDoNotVerify) {
    const std::string& good = signedInvoice();
    size_t value = good.find("<SignatureValue>") + 16;
    const std::string cases[] = {
        good.substr(0, value) + good.substr(value + 40),                      // truncated base64
        replaced(good, "<DigestValue>", "<DigestValue>AAAA"),                    // wrong digest
        good.substr(0, value) + "!!!!" + good.substr(value + 4),               // not base64
    };
    for (const std::string& text : cases) {
        ScopedHandle h;
        EXPECT_NE(loadAndVerify(h, text), 0);
        expectStillUsable(h);
    }
}

TEST(HostileSignatures, ReferenceToAMissingIdNamesIt) {
    const std::string doc = "<r><a Id=\"x\">1</a></r>";
    const std::string text = replaced(signWithReference(doc, "x"), "URI=\"#x\"", "URI=\"#missing\"");
    ScopedHandle h;
    EXPECT_EQ(loadAndVerify(h, text), XSECException::IDNotFoundInDOMDoc);
    EXPECT_NE(errorText(h).find("missing"), std::string::npos) << errorText(h);
}

TEST(HostileSignatures, DuplicateIdsAreRefused) {
    const std::string doc = "<r><a Id=\"x\">1100000</a></r>";
    const std::string signedText = signWithReference(doc, "x");
    // The signed element moved aside and a forged one put first with the same Id.
    const std::string wrapped = replaced(signedText, "<a Id=\"x\">1100000</a>",
                                         "<a Id=\"x\">9900000</a><hidden><a Id=\"x\">1100000</a></hidden>");
    ScopedHandle h;
    EXPECT_EQ(loadAndVerify(h, wrapped), XSECException::IDNotFoundInDOMDoc);
    EXPECT_NE(errorText(h).find("More than one element"), std::string::npos) << errorText(h);
    // The XPointer form names the same Id and gets the same check.
    const std::string pointer = signWithReference("<r Id=\"x\"><a>1100000</a></r>", "#xpointer(id('x'))", kEnvelopedXPath);
    EXPECT_EQ(loadAndVerify(h, pointer), 0) << errorText(h);
    EXPECT_EQ(loadAndVerify(h, replaced(pointer, "<a>1100000</a>", "<a>1100000</a><hidden Id=\"x\"/>")),
              XSECException::IDNotFoundInDOMDoc);
}

// A node-set without the document element (the tax-invoice recipe leaves it out)
// crashed the engine's canonicalizer, before any key was looked at: in signing,
// and in verifying a document of a few hundred bytes without key information.
TEST(HostileSignatures, NodeSetsWithoutTheDocumentElement) {
    const char* const filters[] = {
        "not(self::r | ancestor-or-self::ds:Signature)",  // the library's own evaluator
        "not(self::r) and string-length(name()) >= 0 and not(ancestor-or-self::ds:Signature)",  // the engine's
    };
    for (const char* xpath : filters) {
        const std::string signedText =
            signWithReference("<r xmlns:p=\"urn:p\" p:a=\"1\"><!-- c --><a>1100000</a><?pi x?></r>", "", xpath);
        ASSERT_FALSE(signedText.empty()) << xpath;
        ScopedHandle h;
        EXPECT_EQ(loadAndVerify(h, signedText), 0) << xpath << ": " << errorText(h);
        EXPECT_EQ(loadAndVerify(h, replaced(signedText, "1100000", "9900000")), 11213) << xpath;
        const size_t from = signedText.find("<KeyInfo>");
        const size_t to = signedText.find("</KeyInfo>");
        ASSERT_NE(to, std::string::npos);
        const std::string keyless = signedText.substr(0, from) + signedText.substr(to + 10);
        EXPECT_NE(loadAndVerify(h, keyless), 0) << xpath;
        expectStillUsable(h);
    }
}

TEST(HostileSignatures, NothingOutsideTheDocumentIsReadWhenVerifying) {
    const std::string file = testfiles::scratch("external.xml");
    testfiles::write(file, "<external>signed content</external>");
    // Detached: the Signature alone is the document (in <r/>, r would come back unsigned).
    const std::string inR = signWithReference("<r/>", ("file://" + file).c_str());
    const size_t from = inR.find("<Signature");
    ASSERT_NE(from, std::string::npos);
    const std::string signedText = inR.substr(from, inR.rfind("</Signature>") + 12 - from);
    for (const std::string& text :
         {signedText, replaced(signedText, "file://" + file, "external.xml"),
          replaced(signedText, "file://" + file, "http://127.0.0.1:9/never")}) {
        ScopedHandle h;
        EXPECT_EQ(loadAndVerify(h, text), XSECException::ErrorOpeningURI) << errorText(h);
        EXPECT_NE(errorText(h).find("not followed"), std::string::npos) << errorText(h);
    }
    ScopedHandle allowed;
    EXPECT_EQ(VQTK_XMLDSIG_AllowExternalReferences(allowed, 1), 0);
    EXPECT_EQ(loadAndVerify(allowed, signedText), 0) << errorText(allowed);
    std::remove(file.c_str());
}

// Inputs the fuzzer found; the sanitizer build checks they leave nothing behind.
TEST(HostileSignatures, FuzzerFindingsStayFixed) {
    for (const char* name : {"unreadable-digest-value.xml"}) {
        const std::string text = testfiles::read(testfiles::dataPath(std::string("dsig/regressions/") + name));
        ASSERT_FALSE(text.empty()) << name;
        ScopedHandle h;
        EXPECT_NE(loadAndVerify(h, text), 0) << name;
        expectStillUsable(h);
    }
}

// An XPath transform runs once per node: one that walks the document again from
// each node would make verification quadratic, so it is refused; one that only
// looks up stays linear and verifies.
TEST(HostileSignatures, XPathThatWalksTheDocumentForEveryNodeIsRefused) {
    const std::string walking[] = {
        "count(//*) > 0",
        "not(ancestor-or-self::ds:Signature) and count(descendant :: *) >= 0",
        "count(following-sibling::*) >= 0 or preceding::*",
        "not(id('x'))",
        "not(ancestor-or-self::ds:Signature) and string-length('" + std::string(1100, 'a') + "') > 0",
    };
    for (const std::string& xpath : walking) {
        const std::string text = signWithReference(invoice(), "", xpath.c_str());
        ScopedHandle h;
        EXPECT_EQ(loadAndVerify(h, text), XSECException::UnsupportedFunction) << xpath;
        EXPECT_NE(errorText(h).find("XPath"), std::string::npos) << errorText(h);
        expectStillUsable(h);
    }
    const std::string looking[] = {
        "not(ancestor-or-self::ds:Signature) and not(ancestor-or-self::*[@Id='http://x//y/descendant::id()'])",
        "count(ancestor-or-self::ds:Signature | here()/ancestor::ds:Signature[1]) > "
        "count(ancestor-or-self::ds:Signature)",
    };
    for (const std::string& xpath : looking)
        EXPECT_EQ(verify(signWithReference(invoice(), "", xpath.c_str())), 0) << xpath;
}

// Decoded certificates are shared between handles by their bytes: another
// certificate put in the signer's place must be decoded as itself.
TEST(HostileSignatures, ACertificateSwappedIntoAKnownSignatureIsNotTakenForTheSigners) {
    const std::string& good = signedInvoice();
    ASSERT_EQ(verify(good), 0);
    const size_t from = good.find("X509Certificate>") + 16;
    const size_t to = good.find("<", from);
    std::string other = testfiles::read(testfiles::dataPath("testpki/ee-rsa.crt.pem"));
    other = other.substr(other.find('\n') + 1);
    other = other.substr(0, other.find("-----END"));
    std::string swapped = good;
    swapped.replace(from, to - from, other);
    EXPECT_EQ(verify(swapped), 11213);

    const std::string signer = good.substr(from, to - from);
    const std::string unreadable[] = {signer.substr(0, signer.size() / 2), signer + "AAAA", "@@@@"};
    for (const std::string& text : unreadable) {
        std::string broken = good;
        broken.replace(from, to - from, text);
        ScopedHandle h;
        const int rc = loadAndVerify(h, broken);
        EXPECT_NE(rc, 0) << text;
        EXPECT_NE(rc, 11213) << "an unreadable certificate is not a bad signature: " << errorText(h);
        expectStillUsable(h);
    }
}

TEST(HostileSignatures, NoDocumentToVerify) {
    ScopedHandle h;
    EXPECT_EQ(VQTK_XMLDSIG_SetSignXMLDocument(h, nullptr, 0), 10212);
    EXPECT_EQ(VQTK_XMLDSIG_Verify(h), 10200);
    expectStillUsable(h);
}

}  // namespace
