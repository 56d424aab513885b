// Each implementation's operations (Operations.cpp picks among them).
#ifndef VQXML_BENCH_COMPARE_IMPLEMENTATIONS_HPP
#define VQXML_BENCH_COMPARE_IMPLEMENTATIONS_HPP

#include "compare/Operations.hpp"
#include "compare/Recipes.hpp"

namespace compare {

std::unique_ptr<Operation> makeVqxmlOperation(const std::string& kind, const std::string& input);
std::unique_ptr<Operation> makeXmlsecOperation(const std::string& kind, bool enveloped, const std::string& input);
std::unique_ptr<Operation> makeFloorOperation(const std::string& kind, const std::string& input);

// The document signed with a recipe or encrypted (the cipher of selector, RSA-OAEP)
// by vqxml, or signed by libxmlsec1.
std::string vqxmlSigned(const Recipe& recipe, const std::string& document);
std::string vqxmlEncrypted(int selector, const std::string& document);
std::string xmlsecSigned(const Recipe& recipe, bool enveloped, const std::string& document);

}  // namespace compare

#endif
