// Helpers of the engine tests that go through xml-security-c: a fixture that
// starts the engines the way the library does (one context), parsing,
// serialising and finding elements.
#ifndef VQXML_TESTS_ENGINE_XMLTESTSUPPORT_HPP
#define VQXML_TESTS_ENGINE_XMLTESTSUPPORT_HPP

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>

#include "TestSupport.hpp"
#include "engine/VQTKCryptoProvider.hpp"

class VQXML_XMLSecurity;

namespace vqxml::test {

struct DocumentDeleter {
    void operator()(XERCES_CPP_NAMESPACE::DOMDocument* doc) const { doc->release(); }
};
using Document = std::unique_ptr<XERCES_CPP_NAMESPACE::DOMDocument, DocumentDeleter>;

class EngineTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    // Makes keys; the engine's own provider is not needed for that.
    static VQTKCryptoProvider& provider();
    static Document parse(const std::string& xml);
    // UTF-8 text of a node (the whole document for a document node), no XML declaration.
    static std::string serialise(const XERCES_CPP_NAMESPACE::DOMNode* node);
    // The first element with this local name, depth first; null if none.
    static XERCES_CPP_NAMESPACE::DOMElement* find(const XERCES_CPP_NAMESPACE::DOMNode* from,
                                                 const char* localName);

private:
    static VQXML_XMLSecurity* s_context;
};

// A 16-bit string from ASCII, kept alive for the statement.
std::u16string xml(const char* ascii);

}  // namespace vqxml::test

#endif
