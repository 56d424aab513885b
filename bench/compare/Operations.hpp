// The operations compared: one kind of work on one document, ready to run again
// and again, through vqxml's C interface, through libxmlsec1, or (the floor)
// through OpenSSL alone. The Google Benchmark program and the memory driver
// share them.
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

// What an operation works on: the plain document and, for verification and
// decryption, the document signed or encrypted once beforehand by vqxml.
struct Inputs {
    std::string document;
    std::string signedDocument;
    std::string encryptedDocument;
};

// impl: "vqxml", "xmlsec" or "openssl"; kind: "sign", "verify", "encrypt", "decrypt"
// ("openssl": "rsa-sign", "rsa-verify", "sha256-c14n"). nullptr if the pair does
// not exist.
std::unique_ptr<Operation> makeOperation(const std::string& impl, const std::string& kind, const Inputs& inputs);

// The kinds this build has, in report order.
std::vector<std::string> kinds();

// Whether a kind goes through the enveloped signature's XPath transform.
inline bool usesXPath(const std::string& kind) {
    return kind == "sign" || kind == "verify";
}

// Document sizes by label: "2k" is the sample tax invoice itself, the others the
// invoice grown with line items to 100 KB, 1 MB, 10 MB.
std::vector<std::string> sizeLabels();
std::string documentOfSize(const std::string& label);

// The inputs for a size, with the signed and encrypted forms made by vqxml.
Inputs makeInputs(const std::string& label);

}  // namespace compare

#endif
