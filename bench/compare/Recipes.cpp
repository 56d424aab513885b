#include "compare/Recipes.hpp"

#include <stdexcept>

namespace compare {

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
    for (const Recipe& recipe : recipes())
        if (kind == recipe.name + "-sign" || kind == recipe.name + "-verify")
            return &recipe;
    return nullptr;
}

const Recipe& recipeNamed(const std::string& name) {
    for (const Recipe& recipe : recipes())
        if (recipe.name == name)
            return recipe;
    throw std::runtime_error("no recipe " + name);
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
