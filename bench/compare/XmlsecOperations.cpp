// The same operations through the libxmlsec1 C library, its keys read once.
#include <stdexcept>

#include "compare/Implementations.hpp"
#include "dsig/XmlsecSigner.hpp"
#include "xenc/XmlsecCipher.hpp"

namespace compare {

namespace {

// The signer's key and certificate, read once, as a service keeps them; each
// signature context gets a copy.
const xmlsecbench::SignatureKey& signerKey() {
    static const auto key = xmlsecbench::SignatureKey::signer(keys().keyDer, keys().certDer);
    return key;
}

class XmlsecSign : public Operation {
public:
    XmlsecSign(const Recipe& recipe, bool enveloped, const std::string& input)
        : recipe_(xmlsecRecipe(recipe, enveloped)), key_(signerKey()), input_(input) {}
    void run() override { xmlsecbench::signEnveloped(input_, recipe_, key_); }

private:
    xmlsecbench::Recipe recipe_;
    const xmlsecbench::SignatureKey& key_;
    const std::string& input_;
};

// Verifying with the signer's public key, read once from its certificate.
class XmlsecVerify : public Operation {
public:
    explicit XmlsecVerify(const std::string& input)
        : key_(xmlsecbench::SignatureKey::verifier(keys().certDer)), input_(input) {}
    void run() override {
        if (!xmlsecbench::verify(input_, key_))
            throw std::runtime_error("xmlsec could not verify");
    }

private:
    xmlsecbench::SignatureKey key_;
    const std::string& input_;
};

// Encryption and decryption with a keys manager made once, as an application
// would keep it.
class XmlsecCipherOperation : public Operation {
public:
    XmlsecCipherOperation(const Cipher& cipher, bool encrypting, const std::string& input)
        : keys_(encrypting ? keys().certDer : keys().keyDer, encrypting),
          cipher_(cipher.xmlsec),
          encrypting_(encrypting),
          input_(input) {}
    void run() override {
        if (encrypting_)
            xmlsecbench::encryptElement(input_, "TaxInvoice", keys_, cipher_);
        else
            xmlsecbench::decrypt(input_, keys_);
    }

private:
    xmlsecbench::Keys keys_;
    xmlsecbench::SessionCipher cipher_;
    bool encrypting_;
    const std::string& input_;
};

}  // namespace

std::string xmlsecSigned(const Recipe& recipe, bool enveloped, const std::string& document) {
    return xmlsecbench::signEnveloped(document, xmlsecRecipe(recipe, enveloped), signerKey());
}

std::unique_ptr<Operation> makeXmlsecOperation(const std::string& kind, bool enveloped, const std::string& input) {
    if (const Recipe* recipe = recipeOfKind(kind)) {
        if (isSigning(kind))
            return std::make_unique<XmlsecSign>(*recipe, enveloped, input);
        return std::make_unique<XmlsecVerify>(input);
    }
    if (const Cipher* cipher = cipherOfKind(kind))
        return std::make_unique<XmlsecCipherOperation>(*cipher, isEncrypting(kind), input);
    return nullptr;
}

}  // namespace compare
