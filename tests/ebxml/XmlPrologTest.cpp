// Which XML attachments can be seen to declare no document type without parsing.
#include <gtest/gtest.h>

#include <string>

#include "ebxml/XmlProlog.hpp"

namespace {

bool plain(const std::string& text) {
    return vqxml::ebxml::hasPlainProlog(reinterpret_cast<const unsigned char*>(text.data()),
                                        static_cast<int>(text.size()));
}

TEST(XmlProlog, DeclarationsCommentsAndInstructionsBeforeTheRoot) {
    EXPECT_TRUE(plain("<a/>"));
    EXPECT_TRUE(plain("\xEF\xBB\xBF<?xml version=\"1.0\" encoding='utf-8'?>\n<!-- <!DOCTYPE --><?pi x?> <a>"));
    EXPECT_TRUE(plain("<?xml version=\"1.0\" encoding = \"US-ASCII\"?><a><!DOCTYPE later/></a>"));
}

TEST(XmlProlog, AnythingElseNeedsTheParser) {
    EXPECT_FALSE(plain("<!DOCTYPE a [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><a>&e;</a>"));
    EXPECT_FALSE(plain("<?xml version=\"1.0\"?>\n<!DOCTYPE a><a/>"));
    EXPECT_FALSE(plain("<?xml version=\"1.0\" encoding=\"IBM037\"?>\x4c\x5a"));  // EBCDIC after the declaration
    EXPECT_FALSE(plain("<?xml version=\"1.0\" encoding=\"UTF-16\"?><a/>"));
    EXPECT_FALSE(plain(std::string("<\0?\0x\0m\0l\0", 10)));  // UTF-16
    EXPECT_FALSE(plain("\xFE\xFF<a/>"));
    EXPECT_FALSE(plain("<!-- never closed <a/>"));
    EXPECT_FALSE(plain("<?xml version=\"1.0\""));
    EXPECT_FALSE(plain("  "));
    EXPECT_FALSE(plain("not xml"));
    EXPECT_FALSE(vqxml::ebxml::hasPlainProlog(nullptr, 4));
}

}  // namespace
