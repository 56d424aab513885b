// Canonical XML 1.1 against 1.0 where they part ways, byte for byte, and the
// xml:base join on its own.
#include <gtest/gtest.h>

#include <string>

#include "CanonicalXml11Cases.hpp"
#include "ScopedHandle.hpp"
#include "core/ParseLimits.hpp"
#include "dsig/Canonicalizer.hpp"

namespace {

struct Text : vqxml::ByteSink {
    void write(const char* bytes, std::size_t n) override { text.append(bytes, n); }
    std::string text;
};

const XERCES_CPP_NAMESPACE::DOMElement* byId(const XERCES_CPP_NAMESPACE::DOMElement* e, const std::u16string& id) {
    if (id == e->getAttribute(u"Id"))
        return e;
    for (auto* child = e->getFirstElementChild(); child != nullptr; child = child->getNextElementSibling())
        if (const auto* found = byId(child, id))
            return found;
    return nullptr;
}

TEST(CanonicalXml11, SubtreesUnderLeftOutAncestors) {
    ScopedHandle engines;  // Xerces started
    XERCES_CPP_NAMESPACE::DOMDocument* doc = nullptr;
    ASSERT_EQ(vqxml::parseBounded(c14n11::kDocument, sizeof c14n11::kDocument - 1, &doc), 0);
    for (const c14n11::Case& c : c14n11::kCases) {
        const auto* apex = byId(doc->getDocumentElement(), vqxml::toXString(c.id));
        ASSERT_NE(apex, nullptr) << c.id;
        vqxml::CanonicalOptions how;
        how.version11 = std::string(c.algorithm) == c14n11::kC14n11;
        vqxml::SubtreeSelection subtree(apex, false);
        Text out;
        vqxml::canonicalize(apex, subtree, how, out);
        EXPECT_EQ(out.text, c.bytes) << c.id << " " << c.algorithm;
    }
    doc->release();
}

TEST(CanonicalXml11, XmlBaseJoin) {
    const struct {
        const char *base, *reference, *joined;
    } kJoins[] = {
        {"http://e.org/x/", "y/z.xml", "http://e.org/x/y/z.xml"},
        {"http://e.org/x/y", "?q", "http://e.org/x/y?q"},
        {"http://e.org", "p", "http://e.org/p"},
        {"http://e.org/a/b/", "../../../c", "http://e.org/c"},
        {"../r/", "./s/../../t/", "../t/"},
        {"a/b/", "../../../c#f", "../c#f"},
        {"x/..", "y", "y"},
        {"http://e.org/", "/a/../../c", "http://e.org/c"},
    };
    for (const auto& j : kJoins) {
        const vqxml::XString joined = vqxml::joinXmlBase(vqxml::toXString(j.base), vqxml::toXString(j.reference));
        EXPECT_EQ(std::string(joined.begin(), joined.end()), j.joined) << j.base << " + " << j.reference;
    }
}

}  // namespace
