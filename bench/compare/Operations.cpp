#include "compare/Operations.hpp"

#include "compare/Implementations.hpp"
#include "support/BenchDocuments.hpp"

namespace compare {

const Keys& keys() {
    static const Keys k{benchdata::signerCert(), benchdata::signerKey()};
    return k;
}

std::unique_ptr<Operation> makeOperation(const std::string& impl, const std::string& kind, const Inputs& inputs) {
    if (impl == "vqxml")
        return makeVqxmlOperation(kind, inputs);
    if (impl == "xmlsec")
        return makeXmlsecOperation(kind, inputs);
    if (impl == "openssl")
        return makeFloorOperation(kind, inputs);
    return nullptr;
}

std::vector<std::string> sizeLabels() {
    return {"2k", "100k", "1m", "10m"};
}

std::string documentOfSize(const std::string& label) {
    if (label == "100k")
        return benchdata::largeInvoice(100 << 10);
    if (label == "1m")
        return benchdata::largeInvoice(1 << 20);
    if (label == "10m")
        return benchdata::largeInvoice(10 << 20);
    return benchdata::invoice();
}

Inputs makeInputs(const std::string& label) {
    Inputs inputs;
    inputs.document = documentOfSize(label);
    inputs.signedDocument = vqxmlSigned(inputs.document);
    inputs.encryptedDocument = vqxmlEncrypted(inputs.document);
    return inputs;
}

}  // namespace compare
