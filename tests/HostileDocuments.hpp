// Documents every loader must refuse with a clear status (malformed, truncated,
// wrongly encoded, reaching outside, past the parser's bounds), and the ones at
// those bounds it must still take. Shared by the core loader's tests and those
// of every family's loaders.
#ifndef VQXML_TESTS_HOSTILEDOCUMENTS_HPP
#define VQXML_TESTS_HOSTILEDOCUMENTS_HPP

#include <string>
#include <vector>

#include "core/ParseLimits.hpp"
#include "vqxml/vqxml.h"

namespace hostile {

struct Document {
    const char* name;
    std::string text;
    int status;        // VQXML_ERR_PARSE, VQXML_ERR_ENCODING, or 0 when it loads
    const char* says;  // part of the error text; "" for any
};

// levels nested elements (the document element counts as one) around inner.
inline std::string nested(std::size_t levels, const std::string& inner = "x") {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
        text += "<e>";
    text += inner;
    for (std::size_t i = 0; i < levels; ++i)
        text += "</e>";
    return text;
}

// An element with count attributes, its namespace declaration counted.
inline std::string withAttributes(std::size_t count) {
    std::string text = "<r xmlns:p=\"urn:p\"";
    for (std::size_t i = 1; i < count; ++i)
        text += " a" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
    return text + "/>";
}

// Ten references an entity, levels deep: 10^levels characters if expanded.
inline std::string entityExpansion(int levels) {
    std::string doc = "<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxx\">";
    for (int i = 1; i < levels; ++i) {
        doc += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            doc += "&e" + std::to_string(i - 1) + ";";
        doc += "\">";
    }
    return doc + "]><a>&e" + std::to_string(levels - 1) + ";</a>";
}

inline const std::vector<Document>& documents() {
    using vqxml::kMaxAttributesPerElement;
    using vqxml::kMaxElementDepth;
    static const std::vector<Document> all = [] {
        std::string closed;  // closed elements leave the depth count where it was
        for (int i = 0; i < 300; ++i)
            closed += "<x/><y></y>";
        std::string wide;  // only open elements count, not siblings
        for (int i = 0; i < 16; ++i)
            wide += nested(kMaxElementDepth - 2, "<x/><y></y>");
        return std::vector<Document>{
            {"unclosed element", "<a><b></a>", VQXML_ERR_PARSE, "(line 1"},
            {"truncated", "<a", VQXML_ERR_PARSE, ""},
            {"empty", "", VQXML_ERR_PARSE, ""},
            {"white space", "   ", VQXML_ERR_PARSE, ""},
            {"binary", std::string("\1\2\xff\0<", 5), VQXML_ERR_PARSE, ""},
            {"declaration alone", "<?xml version=\"1.0\"?>", VQXML_ERR_PARSE, ""},
            {"text alone", "text only", VQXML_ERR_PARSE, ""},
            {"two document elements", "<a></a><b/>", VQXML_ERR_PARSE, ""},
            {"repeated attribute", "<a x='1' x='2'/>", VQXML_ERR_PARSE, ""},
            {"bytes that are no name", "<\xFF\xFE/>", VQXML_ERR_PARSE, ""},
            {"invalid UTF-8", "<a>\xC3\x28</a>", VQXML_ERR_PARSE, ""},
            {"EUC-KR declared", "<?xml version=\"1.0\" encoding=\"EUC-KR\"?><a>\xC7\xD1</a>", VQXML_ERR_ENCODING,
             "declared encoding is not UTF-8"},
            {"ISO-8859-1 declared", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a/>", VQXML_ERR_ENCODING, ""},
            {"UTF-8 spelled otherwise", "<?xml version=\"1.0\" encoding=\"Utf-8\"?><a/>", VQXML_ERR_ENCODING, ""},
            {"external parameter entity", "<!DOCTYPE a [<!ENTITY % p SYSTEM \"file:///etc/passwd\"> %p;]><a/>",
             VQXML_ERR_PARSE, ""},
            {"entity expansion", entityExpansion(10), VQXML_ERR_PARSE, ""},
            {"one level too deep", nested(kMaxElementDepth + 1), VQXML_ERR_PARSE, "nested deeper than 256 levels"},
            {"empty element one level too deep", nested(kMaxElementDepth, "<leaf/>"), VQXML_ERR_PARSE, ""},
            {"too deep after closed elements", "<r>" + closed + nested(kMaxElementDepth) + "</r>", VQXML_ERR_PARSE,
             ""},
            {"huge nesting", nested(200000), VQXML_ERR_PARSE, ""},
            {"one attribute too many", withAttributes(kMaxAttributesPerElement + 1), VQXML_ERR_PARSE,
             "more than 256 attributes"},
            {"huge attribute count", withAttributes(20000), VQXML_ERR_PARSE, ""},

            {"nesting at the bound", nested(kMaxElementDepth), 0, ""},
            {"empty element at the bound", nested(kMaxElementDepth - 1, "<leaf/>"), 0, ""},
            {"wide tree at the bound", "<r>" + wide + "</r>", 0, ""},
            {"at the bound after closed elements", "<r>" + closed + nested(kMaxElementDepth - 1) + "</r>", 0, ""},
            {"attributes at the bound", withAttributes(kMaxAttributesPerElement), 0, ""},
            {"external DTD, not fetched", "<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/never.dtd\"><a/>", 0, ""},
        };
    }();
    return all;
}

}  // namespace hostile

#endif
