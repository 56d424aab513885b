#include "compare/Recipes.hpp"

#include <stdexcept>

namespace compare {

namespace {

// The item whose kinds are NAME-first and NAME-second.
template <class Item>
const Item* itemOfKind(const std::vector<Item>& items, const std::string& kind, const char* first,
                       const char* second) {
    for (const Item& item : items)
        if (kind == item.name + first || kind == item.name + second)
            return &item;
    return nullptr;
}

}  // namespace

const std::vector<Recipe>& recipes() {
    static const std::vector<Recipe> all{
        // The national e-tax invoice: C14N 1.0 then an XPath that leaves out the
        // TaxInvoice element, the exchange data and the Signature.
        {"kec", 1, 1,
         "not(self::*[name() = 'TaxInvoice'] | ancestor-or-self::*[name() = 'ExchangedDocument'] | "
         "ancestor-or-self::ds:Signature)",
         {"kec", "kec99"}, false},
        {"xpath", 3, 0, "not(ancestor-or-self::ds:Signature)", {"2k", "100k", "1m", "10m"}, true},
        {"exc-xpath", 3, 3, "not(ancestor-or-self::ds:Signature)", {"2k", "100k", "1m"}, true},
    };
    return all;
}

const Recipe* recipeOfKind(const std::string& kind) {
    return itemOfKind(recipes(), kind, "-sign", "-verify");
}

const Recipe& recipeNamed(const std::string& name) {
    for (const Recipe& recipe : recipes())
        if (recipe.name == name)
            return recipe;
    throw std::runtime_error("no recipe " + name);
}

const std::vector<Cipher>& ciphers() {
    static const std::vector<Cipher> all{
        {"3des", 1, xmlsecbench::SessionCipher::TripleDes},
        {"aes128-cbc", 5, xmlsecbench::SessionCipher::Aes128Cbc},
        {"aes128-gcm", 8, xmlsecbench::SessionCipher::Aes128Gcm},
    };
    return all;
}

const Cipher* cipherOfKind(const std::string& kind) {
    return itemOfKind(ciphers(), kind, "-encrypt", "-decrypt");
}

namespace {

xmlSecTransformId c14nTransform(int selector) {
    return selector == 1 ? xmlSecTransformInclC14NId : xmlSecTransformExclC14NId;
}

}  // namespace

xmlsecbench::Recipe xmlsecRecipe(const Recipe& recipe, bool enveloped) {
    xmlsecbench::Recipe out{c14nTransform(recipe.signedInfoC14n), {}, recipe.xpath};
    if (enveloped)
        out.transforms.push_back(xmlSecTransformEnvelopedId);
    if (recipe.referenceC14n != 0)
        out.transforms.push_back(c14nTransform(recipe.referenceC14n));
    if (!enveloped)
        out.transforms.push_back(xmlSecTransformXPathId);
    return out;
}

}  // namespace compare
