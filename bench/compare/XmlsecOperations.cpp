// The same operations through the libxmlsec1 C library.
#include <stdexcept>

#include "compare/Implementations.hpp"
#include "dsig/XmlsecSigner.hpp"
#include "xenc/XmlsecCipher.hpp"

namespace compare {

namespace {

// One of the libxmlsec1 calls on one input with the comparison's keys.
class XmlsecOperation : public Operation {
public:
    XmlsecOperation(void (*work)(const std::string&), const std::string& input) : work_(work), input_(input) {
        xmlsecbench::start();
    }
    void run() override { work_(input_); }

private:
    void (*work_)(const std::string&);
    const std::string& input_;
};

void sign(const std::string& doc) {
    xmlsecbench::signEnveloped(doc, keys().keyDer, keys().certDer);
}

void verify(const std::string& signedDoc) {
    if (!xmlsecbench::verify(signedDoc, keys().certDer))
        throw std::runtime_error("xmlsec could not verify");
}

// Encryption and decryption with a keys manager made once, as an application
// would keep it.
class XmlsecCipherOperation : public Operation {
public:
    XmlsecCipherOperation(bool encrypting, const std::string& input)
        : keys_(encrypting ? keys().certDer : keys().keyDer, encrypting), encrypting_(encrypting), input_(input) {}
    void run() override {
        if (encrypting_)
            xmlsecbench::encryptElement(input_, "TaxInvoice", keys_);
        else
            xmlsecbench::decrypt(input_, keys_);
    }

private:
    xmlsecbench::Keys keys_;
    bool encrypting_;
    const std::string& input_;
};

}  // namespace

std::unique_ptr<Operation> makeXmlsecOperation(const std::string& kind, const Inputs& inputs) {
    if (kind == "sign")
        return std::make_unique<XmlsecOperation>(sign, inputs.document);
    if (kind == "verify")
        return std::make_unique<XmlsecOperation>(verify, inputs.signedDocument);
    if (kind == "encrypt")
        return std::make_unique<XmlsecCipherOperation>(true, inputs.document);
    if (kind == "decrypt")
        return std::make_unique<XmlsecCipherOperation>(false, inputs.encryptedDocument);
    return nullptr;
}

}  // namespace compare
