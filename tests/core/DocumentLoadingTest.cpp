// Parsing: hostile documents, the encoding rule, refusal of external content,
// and serialisation.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "ContextFixture.hpp"
#include "HostileDocuments.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

std::string serialised(InspectableContext& ctx) {
    ctx.storeResultDocument();
    return std::string(ctx.getXMLDocument(), ctx.getXMLDocumentLength());
}

TEST(DocumentLoading, AcceptsUtf8DeclarationsAndNoDeclaration) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>"), 0);
    EXPECT_STREQ(ctx.getXMLEncoding(), "UTF-8");
    EXPECT_EQ(ctx.load("<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>"), 0);
    EXPECT_EQ(ctx.load("<a>\xED\x95\x9C</a>"), 0);
    EXPECT_STREQ(ctx.getXMLEncoding(), "");
}

TEST(DocumentLoading, HostileDocumentsGiveTheirStatusAndLeaveTheHandleUsable) {
    InspectableContext ctx;
    for (const hostile::Document& d : hostile::documents()) {
        EXPECT_EQ(ctx.load(d.text), d.status) << d.name << ": " << ctx.getLastErrorMsg();
        EXPECT_NE(std::string(ctx.getLastErrorMsg()).find(d.says), std::string::npos)
            << d.name << ": " << ctx.getLastErrorMsg();
        EXPECT_EQ(ctx.load("<ok/>"), 0) << "after " << d.name;
    }
    EXPECT_EQ(ctx.load("<a><b></a>"), VQXML_ERR_PARSE);
    EXPECT_NE(ctx.m_document, nullptr) << "the partial tree is kept until the next load";
}

TEST(DocumentLoading, InternalEntitiesAndIdsStillWork) {
    InspectableContext ctx;
    ASSERT_EQ(ctx.load("<!DOCTYPE a [<!ENTITY who \"world\"><!ATTLIST b id ID #IMPLIED>]><a><b id=\"x\">&who;</b></a>"), 0);
    DOMElement* b = ctx.m_document->getElementById(u"x");
    ASSERT_NE(b, nullptr);
    EXPECT_TRUE(XMLString::equals(b->getTextContent(), u"world"));
}

TEST(Serialisation, UnchangedDocumentComesBackWithoutIndentation) {
    InspectableContext ctx;
    const std::string body = "<inv:Invoice xmlns:inv=\"urn:x\"><inv:Item n=\"1\">\xED\x95\x9C\xEA\xB8\x80</inv:Item>"
                             "<inv:Note>a &amp; b</inv:Note></inv:Invoice>";
    ASSERT_EQ(ctx.load("<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + body), 0);
    const std::string out = serialised(ctx);
    EXPECT_EQ(out.find("<?xml version=\"1.0\" encoding=\"UTF-8\""), 0u) << out;
    EXPECT_NE(out.find(body), std::string::npos) << out;
    EXPECT_EQ(out[ctx.getXMLDocumentLength()], '\0');
    EXPECT_EQ(out.size(), std::strlen(ctx.getXMLDocument()));
}

TEST(Serialisation, EachResultReplacesThePreviousOne) {
    InspectableContext ctx;
    ASSERT_EQ(ctx.load("<first/>"), 0);
    EXPECT_NE(serialised(ctx).find("<first/>"), std::string::npos);
    ASSERT_EQ(ctx.load("<second/>"), 0);
    const std::string out = serialised(ctx);
    EXPECT_NE(out.find("<second/>"), std::string::npos);
    EXPECT_EQ(out.find("first"), std::string::npos);
}

}  // namespace
