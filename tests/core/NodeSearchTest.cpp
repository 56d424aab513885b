// Finding nodes by qualified name and SOAP headers.
#include <gtest/gtest.h>

#include <xercesc/dom/DOM.hpp>

#include "ContextFixture.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

const char kSoap11[] =
    "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
    "<soap:Header><h/></soap:Header><soap:Body><Signature/><ds:Signature xmlns:ds=\"urn:d\"/></soap:Body>"
    "</soap:Envelope>";

// Found under a prefixed Envelope of either SOAP version, not under one in a
// default namespace.
TEST(NodeSearch, SoapHeaders) {
    const std::pair<const char*, bool> cases[] = {
        {kSoap11, true},
        {"<e:Envelope xmlns:e=\"http://www.w3.org/2003/05/soap-envelope\"><e:Header/><e:Body/></e:Envelope>", true},
        {"<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body/></soap:Envelope>", false},
        {"<Envelope xmlns=\"http://schemas.xmlsoap.org/soap/envelope/\"><Header/><Body/></Envelope>", false},
        {"<plain><Header/></plain>", false},
    };
    InspectableContext ctx;
    for (const auto& [text, found] : cases) {
        ASSERT_EQ(ctx.load(text), 0);
        DOMNode* header = ctx.findSOAPHeaderNode(ctx.m_document);
        EXPECT_EQ(header != nullptr, found) << text;
        if (header != nullptr) {
            EXPECT_TRUE(XMLString::equals(header->getLocalName(), u"Header")) << text;
        }
    }
}

TEST(NodeSearch, ComparesQualifiedNamesInDocumentOrder) {
    InspectableContext ctx;
    ASSERT_EQ(ctx.load(kSoap11), 0);
    DOMNode* plain = ctx.findNode(ctx.m_document, u"Signature");
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->getNamespaceURI(), nullptr);
    DOMNode* prefixed = ctx.findNode(ctx.m_document, u"ds:Signature");
    ASSERT_NE(prefixed, nullptr);
    EXPECT_NE(plain, prefixed);
    EXPECT_EQ(ctx.findNode(ctx.m_document, u"Missing"), nullptr);

    ASSERT_EQ(ctx.load("<r><a><t id=\"1\"/></a><t id=\"2\"/></r>"), 0);
    auto* first = static_cast<DOMElement*>(ctx.findNode(ctx.m_document, u"t"));
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(XMLString::equals(first->getAttribute(u"id"), u"1"));
}

TEST(NodeSearch, SearchStaysInsideTheStartingSubtree) {
    InspectableContext ctx;
    ASSERT_EQ(ctx.load("<r><a><x/></a><b><y/></b></r>"), 0);
    DOMNode* a = ctx.findNode(ctx.m_document, u"a");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(ctx.findNode(a, u"y"), nullptr);
    EXPECT_EQ(ctx.findNode(a, u"a"), a);
}

TEST(NodeSearch, DeepNestingDoesNotExhaustTheStack) {
    // Deeper than any parsed document may be: built in the tree directly.
    InspectableContext ctx;
    ASSERT_EQ(ctx.load("<n/>"), 0);
    XERCES_CPP_NAMESPACE::DOMNode* parent = ctx.m_document->getDocumentElement();
    for (int i = 0; i < 20000; ++i)
        parent = parent->appendChild(ctx.m_document->createElement(u"n"));
    parent->appendChild(ctx.m_document->createElement(u"target"));
    EXPECT_NE(ctx.findNode(ctx.m_document, u"target"), nullptr);
    EXPECT_EQ(ctx.findNode(ctx.m_document, u"absent"), nullptr);
}

}  // namespace
