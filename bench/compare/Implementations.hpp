// Each implementation's operations (Operations.cpp picks among them).
#ifndef VQXML_BENCH_COMPARE_IMPLEMENTATIONS_HPP
#define VQXML_BENCH_COMPARE_IMPLEMENTATIONS_HPP

#include "compare/Operations.hpp"

namespace compare {

std::unique_ptr<Operation> makeVqxmlOperation(const std::string& kind, const Inputs& inputs);
std::unique_ptr<Operation> makeXmlsecOperation(const std::string& kind, const Inputs& inputs);
std::unique_ptr<Operation> makeFloorOperation(const std::string& kind, const Inputs& inputs);

// The document signed (enveloped, RSA-SHA256, exclusive C14N) or encrypted by vqxml.
std::string vqxmlSigned(const std::string& document);
std::string vqxmlEncrypted(const std::string& document);

}  // namespace compare

#endif
