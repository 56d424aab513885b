// Parsing, the encoding rule, refusal of external content, and serialisation.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "ContextFixture.hpp"

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

TEST(DocumentLoading, RefusesOtherDeclaredEncodings) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load("<?xml version=\"1.0\" encoding=\"Utf-8\"?><a/>"), VQXML_ERR_ENCODING);
    EXPECT_EQ(ctx.load("<?xml version=\"1.0\" encoding=\"EUC-KR\"?><a>\xC7\xD1</a>"), VQXML_ERR_ENCODING);
    EXPECT_EQ(ctx.load("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a/>"), VQXML_ERR_ENCODING);
    EXPECT_STREQ(ctx.getLastErrorMsg(), "load > The document's declared encoding is not UTF-8");
    // The handle stays usable.
    EXPECT_EQ(ctx.load("<a/>"), 0);
}

TEST(DocumentLoading, MalformedTruncatedAndEmptyInputGiveAParseStatus) {
    InspectableContext ctx;
    for (const char* bad : {"<a><b></a>", "<a", "", "   ", "\x00\x01\x02", "<?xml version=\"1.0\"?>", "text only",
                            "<a></a><b/>", "<a x='1' x='2'/>", "<\xFF\xFE/>"}) {
        EXPECT_EQ(ctx.load(bad), VQXML_ERR_PARSE) << bad;
    }
    EXPECT_EQ(ctx.load("<a><b></a>"), VQXML_ERR_PARSE);
    EXPECT_NE(std::string(ctx.getLastErrorMsg()).find("(line 1"), std::string::npos) << ctx.getLastErrorMsg();
    EXPECT_NE(ctx.m_document, nullptr) << "the partial tree is kept until the next load";
    EXPECT_EQ(ctx.load("<ok/>"), 0);
}

TEST(DocumentLoading, InvalidUtf8BytesAreAParseError) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load("<a>\xC3\x28</a>"), VQXML_ERR_PARSE);
}

TEST(DocumentLoading, ExternalEntitiesAreNeverRead) {
    char path[] = "/tmp/vqxml-secretXXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    const std::string secret = "TOP-SECRET-CONTENT";
    ASSERT_EQ(write(fd, secret.data(), secret.size()), static_cast<ssize_t>(secret.size()));
    close(fd);

    InspectableContext ctx;
    const std::string doc = std::string("<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY x SYSTEM \"file://") + path +
                            "\">]><a>&x;</a>";
    EXPECT_EQ(ctx.load(doc), VQXML_ERR_PARSE);
    EXPECT_NE(std::string(ctx.getLastErrorMsg()).find("External entities are not loaded"), std::string::npos)
        << ctx.getLastErrorMsg();
    if (ctx.m_document != nullptr) {
        ctx.storeResultDocument();
        EXPECT_EQ(std::string(ctx.getXMLDocument()).find(secret), std::string::npos);
    }
    std::remove(path);
}

TEST(DocumentLoading, ExternalDtdIsNotFetchedAndParameterEntitiesAreRefused) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load("<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/never.dtd\"><a/>"), 0);
    EXPECT_EQ(ctx.load("<!DOCTYPE a [<!ENTITY % p SYSTEM \"file:///etc/passwd\"> %p;]><a/>"), VQXML_ERR_PARSE);
}

// Ten levels of ten references each: 10^10 characters if expanded.
std::string billionLaughs(int levels) {
    std::string doc = "<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxx\">";
    for (int i = 1; i < levels; ++i) {
        doc += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            doc += "&e" + std::to_string(i - 1) + ";";
        doc += "\">";
    }
    return doc + "]><a>&e" + std::to_string(levels - 1) + ";</a>";
}

TEST(DocumentLoading, EntityExpansionIsBounded) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load(billionLaughs(10)), VQXML_ERR_PARSE);
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
