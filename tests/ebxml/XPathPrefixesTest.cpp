// Which prefixes an XPath expression uses.
#include <gtest/gtest.h>

#include "ebxml/XPathPrefixes.hpp"

using vqxml::ebxml::prefixesUsed;
using Prefixes = std::set<std::basic_string<XMLCh>>;

TEST(XPathPrefixes, QualifiedNamesOnly) {
    EXPECT_EQ(prefixesUsed(u"not(ancestor-or-self::ds:Signature)"), (Prefixes{u"ds"}));
    EXPECT_EQ(prefixesUsed(u"ancestor-or-self::node()[@SOAP:actor=\"urn:a:b:nextMSH\"] | self::eb:*"),
              (Prefixes{u"SOAP", u"eb"}));
    EXPECT_EQ(prefixesUsed(u"count(//x) > 1 and 'p:q' != \"r:s\" and $v = 2"), Prefixes{});
    EXPECT_EQ(prefixesUsed(u"self::p-1.x:y and here()"), (Prefixes{u"p-1.x"}));
    EXPECT_EQ(prefixesUsed(u"'unclosed p:q"), Prefixes{});
    EXPECT_EQ(prefixesUsed(u"trailing:"), Prefixes{});
    EXPECT_EQ(prefixesUsed(nullptr), Prefixes{});
}
