#include "compare/Operations.hpp"

#include "compare/Implementations.hpp"
#include "compare/Recipes.hpp"
#include "support/BenchDocuments.hpp"

namespace compare {

const Keys& keys() {
    static const Keys k{benchdata::signerCert(), benchdata::signerKey()};
    return k;
}

std::vector<std::string> kinds() {
    std::vector<std::string> out;
    for (const Recipe& recipe : recipes()) {
        out.push_back(recipe.name + "-sign");
        out.push_back(recipe.name + "-verify");
    }
    for (const Cipher& cipher : ciphers()) {
        out.push_back(cipher.name + "-encrypt");
        out.push_back(cipher.name + "-decrypt");
    }
    return out;
}

std::vector<std::string> sizesOf(const std::string& kind) {
    const Recipe* recipe = recipeOfKind(kind);
    return recipe != nullptr ? recipe->sizes : std::vector<std::string>{"2k", "100k", "1m", "10m"};
}

std::string documentOfSize(const std::string& label) {
    if (label == "kec")
        return benchdata::kecInvoice(1);
    if (label == "kec99")
        return benchdata::kecInvoice(99);
    if (label == "100k")
        return benchdata::largeInvoice(100 << 10);
    if (label == "1m")
        return benchdata::largeInvoice(1 << 20);
    if (label == "10m")
        return benchdata::largeInvoice(10 << 20);
    return benchdata::invoice();
}

std::vector<std::string> implementationsOf(const std::string& kind) {
    const Recipe* recipe = recipeOfKind(kind);
    if (recipe == nullptr)
        return {"vqxml", "xmlsec"};
    if (!isSigning(kind) && !recipe->sameCanonicalForm)
        return {"vqxml", "xmlsec", "xmlsec-enveloped", "vqxml-of-xmlsec"};
    return {"vqxml", "xmlsec", "xmlsec-enveloped"};
}

bool quadratic(const std::string& impl, const std::string& kind) {
    return impl == "xmlsec" && recipeOfKind(kind) != nullptr;
}

std::string inputName(const std::string& impl, const std::string& kind) {
    const Recipe* recipe = recipeOfKind(kind);
    if (const Cipher* cipher = cipherOfKind(kind))
        return isEncrypting(kind) ? "document" : "encrypted." + cipher->name;
    if (recipe == nullptr || isSigning(kind))
        return "document";
    if (impl == "xmlsec-enveloped")
        return recipe->name + ".xmlsec-enveloped";
    const bool xmlsecSigned = impl == "vqxml-of-xmlsec" || (impl == "xmlsec" && !recipe->sameCanonicalForm);
    return recipe->name + (xmlsecSigned ? ".xmlsec" : ".vqxml");
}

std::string makeInput(const std::string& name, const std::string& size) {
    const std::string document = documentOfSize(size);
    if (name == "document")
        return document;
    const size_t dot = name.find('.');
    if (name.compare(0, dot, "encrypted") == 0)
        return vqxmlEncrypted(cipherOfKind(name.substr(dot + 1) + "-encrypt")->selector, document);
    const Recipe& recipe = recipeNamed(name.substr(0, dot));
    const std::string signer = name.substr(dot + 1);
    if (signer == "vqxml")
        return vqxmlSigned(recipe, document);
    return xmlsecSigned(recipe, signer == "xmlsec-enveloped", document);
}

std::unique_ptr<Operation> makeOperation(const std::string& impl, const std::string& kind, const std::string& input) {
    if (impl == "vqxml" || impl == "vqxml-of-xmlsec")
        return makeVqxmlOperation(kind, input);
    if (impl == "xmlsec" || impl == "xmlsec-enveloped")
        return makeXmlsecOperation(kind, impl == "xmlsec-enveloped", input);
    if (impl == "openssl")
        return makeFloorOperation(kind, input);
    return nullptr;
}

}  // namespace compare
