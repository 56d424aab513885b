// The signatures compared, each as vqxml's C interface and libxmlsec1 are told it.
// Every one is enveloped: RSA-2048/SHA-256, one Reference URI="" with SHA-256, the
// Signature before TaxInvoiceDocument, the signer's certificate in KeyInfo.
// And the ciphers the document element is encrypted with, its session key
// wrapped by RSA-OAEP for the recipient's certificate.
#ifndef VQXML_BENCH_COMPARE_RECIPES_HPP
#define VQXML_BENCH_COMPARE_RECIPES_HPP

#include <string>
#include <vector>

#include "dsig/XmlsecSigner.hpp"
#include "xenc/XmlsecCipher.hpp"

namespace compare {

struct Recipe {
    // Its kinds are NAME-sign and NAME-verify.
    std::string name;
    // vqxml's canonicalization selectors: 1 C14N 1.0, 3 exclusive; 0 (reference)
    // no canonicalization transform before the XPath.
    int signedInfoC14n;
    int referenceC14n;
    const char* xpath;
    // The document sizes it is measured at.
    std::vector<std::string> sizes;
    // Whether libxmlsec1 writes the same canonical form as vqxml, and so verifies
    // vqxml's signatures; where not, each verifies its own.
    bool sameCanonicalForm;
};

// In report order: the national tax-invoice recipe first.
const std::vector<Recipe>& recipes();

// The recipe of a signature kind; nullptr for other kinds.
const Recipe* recipeOfKind(const std::string& kind);
const Recipe& recipeNamed(const std::string& name);

inline bool isSigning(const std::string& kind) {
    return kind.size() > 5 && kind.compare(kind.size() - 5, 5, "-sign") == 0;
}

struct Cipher {
    // Its kinds are NAME-encrypt and NAME-decrypt.
    std::string name;
    // vqxml's selector for VQTK_XMLENC_SetSymmAlg.
    int selector;
    xmlsecbench::SessionCipher xmlsec;
};

// In report order.
const std::vector<Cipher>& ciphers();

// The cipher of an encryption kind; nullptr for other kinds.
const Cipher* cipherOfKind(const std::string& kind);

inline bool isEncrypting(const std::string& kind) {
    return kind.size() > 8 && kind.compare(kind.size() - 8, 8, "-encrypt") == 0;
}

// The recipe for libxmlsec1: its own transforms, or the enveloped-signature
// transform in place of the XPath (first, then the canonicalization if any).
xmlsecbench::Recipe xmlsecRecipe(const Recipe& recipe, bool enveloped);

}  // namespace compare

#endif
