// The bounds on nesting depth and attributes per element: refused during the
// parse with the parse status and a text naming the bound, the handle usable.
#include <gtest/gtest.h>

#include <string>

#include "ContextFixture.hpp"
#include "core/ParseLimits.hpp"

namespace {

using vqxml::kMaxAttributesPerElement;
using vqxml::kMaxElementDepth;

// levels nested elements (the document element counts as one), with text inside.
std::string nested(std::size_t levels, const std::string& inner = "x") {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
        text += "<e>";
    text += inner;
    for (std::size_t i = 0; i < levels; ++i)
        text += "</e>";
    return text;
}

std::string withAttributes(std::size_t count) {
    std::string text = "<r xmlns:p=\"urn:p\"";
    for (std::size_t i = 1; i < count; ++i)
        text += " a" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
    return text + "/>";
}

TEST(ParseLimits, NestingAtTheLimitLoads) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load(nested(kMaxElementDepth)), 0) << ctx.getLastErrorMsg();
    // The deepest element may be empty, too.
    EXPECT_EQ(ctx.load(nested(kMaxElementDepth - 1, "<leaf/>")), 0) << ctx.getLastErrorMsg();
}

TEST(ParseLimits, OneLevelDeeperIsRefusedNamingTheLimit) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load(nested(kMaxElementDepth + 1)), VQXML_ERR_PARSE);
    EXPECT_NE(std::string(ctx.getLastErrorMsg()).find("nested deeper than 256 levels"), std::string::npos)
        << ctx.getLastErrorMsg();
    EXPECT_EQ(ctx.load(nested(kMaxElementDepth, "<leaf/>")), VQXML_ERR_PARSE);
    EXPECT_EQ(ctx.load("<ok/>"), 0) << "the handle stays usable";
}

TEST(ParseLimits, DepthIsCountedPerPathNotPerElement) {
    // Many siblings and many empty elements at a modest depth are fine: only the
    // open elements count.
    std::string wide;
    for (int i = 0; i < 16; ++i)
        wide += nested(kMaxElementDepth - 2, "<x/><y></y>");
    InspectableContext ctx;
    EXPECT_EQ(ctx.load("<r>" + wide + "</r>"), 0) << ctx.getLastErrorMsg();
    // Closed elements, empty ones included, leave the count where it was.
    std::string empties;
    for (int i = 0; i < 300; ++i)
        empties += "<x/><y></y>";
    EXPECT_EQ(ctx.load("<r>" + empties + nested(kMaxElementDepth - 1) + "</r>"), 0) << ctx.getLastErrorMsg();
    EXPECT_EQ(ctx.load("<r>" + empties + nested(kMaxElementDepth) + "</r>"), VQXML_ERR_PARSE);
}

TEST(ParseLimits, HugeNestingIsRefusedWithoutExhaustingTheStack) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load(nested(200000)), VQXML_ERR_PARSE);
    EXPECT_EQ(ctx.load("<ok/>"), 0);
}

TEST(ParseLimits, AttributesUpToTheLimitLoad) {
    InspectableContext ctx;
    EXPECT_EQ(ctx.load(withAttributes(kMaxAttributesPerElement)), 0) << ctx.getLastErrorMsg();
}

TEST(ParseLimits, TooManyAttributesAreRefusedNamingTheLimit) {
    InspectableContext ctx;
    // The namespace declaration counts as one of them.
    EXPECT_EQ(ctx.load(withAttributes(kMaxAttributesPerElement + 1)), VQXML_ERR_PARSE);
    EXPECT_NE(std::string(ctx.getLastErrorMsg()).find("more than 256 attributes"), std::string::npos)
        << ctx.getLastErrorMsg();
    EXPECT_EQ(ctx.load(withAttributes(20000)), VQXML_ERR_PARSE);
    EXPECT_EQ(ctx.load("<ok a=\"1\"/>"), 0);
}

}  // namespace
