// The operations compared: one kind of work on one input, ready to run again and
// again, through vqxml's C interface, through libxmlsec1, or (the floor) through
// OpenSSL alone. The Google Benchmark program and the memory driver share them.
#ifndef VQXML_BENCH_COMPARE_OPERATIONS_HPP
#define VQXML_BENCH_COMPARE_OPERATIONS_HPP

#include <memory>
#include <string>
#include <vector>

namespace compare {

// The keys every implementation uses: RSA 2048, PKCS #8 DER key, DER certificate.
struct Keys {
    std::string certDer;
    std::string keyDer;
};
const Keys& keys();

class Operation {
public:
    virtual ~Operation() = default;
    // Does the work once; throws std::runtime_error if it fails.
    virtual void run() = 0;
};

// The kinds, in report order: RECIPE-sign and RECIPE-verify for each signature
// recipe, then CIPHER-encrypt and CIPHER-decrypt for each cipher (Recipes.hpp).
std::vector<std::string> kinds();

// The document sizes a kind is measured at: "2k" is the tax invoice of
// tests/data/dsig, "100k", "1m", "10m" that invoice grown with line items; "kec"
// is the public KEC sample invoice, "kec99" the same with 99 line items.
std::vector<std::string> sizesOf(const std::string& kind);
std::string documentOfSize(const std::string& label);

// The implementations of a kind: "vqxml", "xmlsec" (libxmlsec1 told the same
// recipe) and, for signatures, "xmlsec-enveloped" (libxmlsec1 with the
// enveloped-signature transform in place of the XPath) and, where libxmlsec1
// verifies only its own signatures, "vqxml-of-xmlsec" (vqxml verifying those).
std::vector<std::string> implementationsOf(const std::string& kind);

// Whether the implementation evaluates the XPath with libxmlsec1, whose cost grows
// with the square of the document.
bool quadratic(const std::string& impl, const std::string& kind);

// What an operation works on: "document", "encrypted.CIPHER" (by vqxml), or a
// signed document "RECIPE.SIGNER" (SIGNER "vqxml", "xmlsec" or "xmlsec-enveloped").
std::string inputName(const std::string& impl, const std::string& kind);
// That input at a size, made from the document.
std::string makeInput(const std::string& name, const std::string& size);

// impl: one of implementationsOf(kind), or "openssl" with kind "rsa-sign",
// "rsa-verify" or "sha256-c14n" (the floor); input: inputName's, kept by the
// caller for the operation's lifetime. nullptr if the pair does not exist.
std::unique_ptr<Operation> makeOperation(const std::string& impl, const std::string& kind, const std::string& input);

}  // namespace compare

#endif
