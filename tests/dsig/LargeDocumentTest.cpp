// A tax invoice grown with line items to about 100 MB (10 MB in the slower
// sanitizer build) loads, signs and verifies, and the signature covers all of
// it; so does one text value of a sixth of that through the engine's
// transforms. Time and memory are measured by bench/large, not here.
#include <gtest/gtest.h>

#include <string>

#include "ScopedHandle.hpp"
#include "bench/support/BenchDocuments.hpp"
#include "dsig/SignatureFixture.hpp"

namespace {

std::string documentElement(const std::string& text) {
    const size_t from = text.find("<TaxInvoice");
    const size_t to = text.rfind("</TaxInvoice>");
    return from == std::string::npos || to == std::string::npos ? "" : text.substr(from, to - from);
}

TEST(LargeDocument, SignsAndVerifiesAndTheSignatureCoversEveryLineItem) {
    const std::string doc = benchdata::largeInvoice(static_cast<size_t>(VQXML_LARGE_DOCUMENT_MB) << 20);
    std::string signedDoc = dsigtest::signedText(doc);
    ASSERT_GT(signedDoc.size(), doc.size());

    std::string unsignedAgain;
    ASSERT_EQ(dsigtest::verify(signedDoc, &unsignedAgain), 0) << unsignedAgain;
    // Verification gives back the document without its signature (with the
    // serialiser's own XML declaration).
    EXPECT_TRUE(documentElement(unsignedAgain) == documentElement(doc));

    // One digit of a line item in the middle changed: the signature no longer holds.
    const size_t middle = signedDoc.find("<UnitAmount>1", signedDoc.size() / 2);
    ASSERT_NE(middle, std::string::npos);
    signedDoc[middle + 12] = '2';
    EXPECT_EQ(dsigtest::verify(signedDoc), 11213);
}

// string-length() is not the library's own XPath: the engine canonicalizes the
// text, which once cost the square of its length.
TEST(LargeDocument, OneLongTextValueSignsAndVerifiesThroughTheEngine) {
    const std::string doc = "<r><a>" + std::string((static_cast<size_t>(VQXML_LARGE_DOCUMENT_MB) << 20) / 6, 'x') +
                            "</a></r>";
    const std::string& key = dsigtest::hmacKey();
    dsigtest::Signing s;
    s.method = s.c14n = s.digest = s.referenceC14n = 1;
    s.xpath = "string-length(name()) >= 0 and not(ancestor-or-self::ds:Signature)";
    s.cert = "";
    s.key = key;
    std::string signedDoc = dsigtest::signedText(doc, s);
    std::string result;
    EXPECT_EQ(dsigtest::verify(signedDoc, &result, key), 0) << result;
    signedDoc[signedDoc.find("xxx") + 1] = 'y';
    EXPECT_EQ(dsigtest::verify(signedDoc, nullptr, key), 11213);
}

}  // namespace
