// libFuzzer target for reference transform chains: the first bytes choose an
// XPath filter (axes up the tree, node tests, name and attribute tests, unions,
// counts, and forms only the general XPath engine takes), whether a C14N
// transform of some kind comes before it, and the SignedInfo canonicalization;
// the rest is the document. Whatever node-set comes out (the document element
// left out, text, comments and processing instructions outside it, namespace and
// attribute nodes without their element), signing must give a status and never
// crash, and a document the library signed must verify again: signing and
// verifying compute the same canonical form.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzData.hpp"

namespace {

const char* const kNames[] = {"TaxInvoice", "ExchangedDocument", "a", "b", "t:item", "x:a", "Signature"};
const char* const kAxes[] = {"self", "parent", "ancestor", "ancestor-or-self", "attribute"};
const char* const kTests[] = {"*", "node()", "text()", "comment()", "processing-instruction()", "t:*"};

std::string name(FuzzedDataProvider& in) {
    return kNames[in.ConsumeIntegralInRange<size_t>(0, std::size(kNames) - 1)];
}

std::string expression(FuzzedDataProvider& in, int depth);

std::string step(FuzzedDataProvider& in, int depth) {
    std::string s = std::string(kAxes[in.ConsumeIntegralInRange<size_t>(0, std::size(kAxes) - 1)]) + "::";
    s += in.ConsumeBool() ? kTests[in.ConsumeIntegralInRange<size_t>(0, std::size(kTests) - 1)] : name(in);
    if (depth > 0 && in.ConsumeBool())
        s += "[" + expression(in, depth - 1) + "]";
    return s;
}

std::string expression(FuzzedDataProvider& in, int depth) {
    const int choice = depth > 0 ? in.ConsumeIntegralInRange(0, 8) : 0;
    switch (choice) {
    case 1:
        return "not(" + expression(in, depth - 1) + ")";
    case 2:
        return "(" + expression(in, depth - 1) + ") and (" + expression(in, depth - 1) + ")";
    case 3:
        return "(" + expression(in, depth - 1) + ") or (" + expression(in, depth - 1) + ")";
    case 4:
        return step(in, depth - 1) + " | " + step(in, depth - 1);
    case 5: {
        const char* fn = in.ConsumeBool() ? "name()" : in.ConsumeBool() ? "local-name()" : "namespace-uri()";
        return std::string(fn) + (in.ConsumeBool() ? " = '" : " != '") + name(in) + "'";
    }
    case 6:
        return "count(" + step(in, depth - 1) + ") " + (in.ConsumeBool() ? "< " : ">= ") +
               std::to_string(in.ConsumeIntegralInRange(0, 3));
    case 7:
        return "@" + name(in) + " = '" + name(in) + "'";
    case 8:  // beyond the library's own evaluator: the general engine
        return "string-length(name()) >= " + std::to_string(in.ConsumeIntegralInRange(0, 2));
    default:
        return step(in, depth);
    }
}

int signAndVerify(const std::string& document, int signedInfoC14n, int referenceC14n, const std::string& xpath) {
    static std::string cert = fuzzdata::testFile("testpki/ee-rsa.crt.der");
    static std::string key = fuzzdata::testFile("testpki/ee-rsa.key.der");
    void* h = fuzzdata::sharedHandle();
    std::vector<char> doc(document.begin(), document.end());
    std::vector<char> expr(xpath.c_str(), xpath.c_str() + xpath.size() + 1);
    char uri[] = "";
    int rc = VQTK_XMLDSIG_SetXMLDocument(h, doc.data(), static_cast<int>(doc.size()));
    rc = rc ? rc : VQTK_XMLDSIG_SetPrefix(h, const_cast<char*>("ds"));
    rc = rc ? rc : VQTK_XMLDSIG_SignatureMethod(h, 5, signedInfoC14n);
    rc = rc ? rc : VQTK_XMLDSIG_createReference(h, uri, 3, referenceC14n, expr.data());
    rc = rc ? rc : VQTK_XMLDSIG_SetSigner(h, fuzzdata::bytes(cert), fuzzdata::length(cert), fuzzdata::bytes(key),
                                          fuzzdata::length(key));
    rc = rc ? rc : VQTK_XMLDSIG_sign(h);
    if (rc != VQXML_OK)
        return rc;
    char* signedText = nullptr;
    int signedLen = 0;
    VQTK_XMLAPI_GetXMLDocument(h, &signedText, &signedLen);
    std::vector<char> copy(signedText, signedText + signedLen);
    rc = VQTK_XMLDSIG_SetSignXMLDocument(h, copy.data(), signedLen);
    rc = rc ? rc : VQTK_XMLDSIG_Verify(h);
    if (rc != VQXML_OK)
        std::abort();  // the library's own signature must verify
    return rc;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    const int signedInfoC14n = in.ConsumeIntegralInRange(1, 4);
    const int referenceC14n = in.ConsumeIntegralInRange(0, 4);
    // The filter never keeps the Signature, whose values are written after the digest.
    const std::string xpath = "(" + expression(in, 3) + ") and not(ancestor-or-self::ds:Signature)";
    const std::string document = in.ConsumeRemainingBytesAsString();
    if (document.empty())
        return 0;
    signAndVerify(document, signedInfoC14n, referenceC14n, xpath);
    return 0;
}
