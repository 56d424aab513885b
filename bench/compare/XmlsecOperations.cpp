// The same operations through the libxmlsec1 C library.
#include <stdexcept>

#include "compare/Implementations.hpp"
#include "dsig/XmlsecSigner.hpp"

namespace compare {

namespace {

class XmlsecSign : public Operation {
public:
    explicit XmlsecSign(const std::string& doc) : doc_(doc) { xmlsecbench::start(); }
    void run() override { xmlsecbench::signEnveloped(doc_, keys().keyDer, keys().certDer); }

private:
    const std::string& doc_;
};

class XmlsecVerify : public Operation {
public:
    explicit XmlsecVerify(const std::string& signedDoc) : signedDoc_(signedDoc) { xmlsecbench::start(); }
    void run() override {
        if (!xmlsecbench::verify(signedDoc_, keys().certDer))
            throw std::runtime_error("xmlsec could not verify");
    }

private:
    const std::string& signedDoc_;
};

}  // namespace

std::unique_ptr<Operation> makeXmlsecOperation(const std::string& kind, const Inputs& inputs) {
    if (kind == "sign")
        return std::make_unique<XmlsecSign>(inputs.document);
    if (kind == "verify")
        return std::make_unique<XmlsecVerify>(inputs.signedDocument);
    return nullptr;
}

}  // namespace compare
