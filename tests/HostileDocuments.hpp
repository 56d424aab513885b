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

// Ten references an entity, levels deep: 10^levels characters if expanded, in
// the document element's text or in an attribute default the DTD declares.
inline std::string entityExpansion(int levels, bool inDefault = false) {
    std::string doc = "<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxx\">";
    for (int i = 1; i < levels; ++i) {
        doc += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            doc += "&e" + std::to_string(i - 1) + ";";
        doc += "\">";
    }
    const std::string last = "&e" + std::to_string(levels - 1) + ";";
    return inDefault ? doc + "<!ATTLIST a v CDATA \"" + last + "\">]><a/>" : doc + "]><a>" + last + "</a>";
}

// count attribute list declarations, each declaring (with a default) one more
// attribute of the document element r: two declarations each.
inline std::string attributeLists(std::size_t count) {
    std::string doc = "<!DOCTYPE r [";
    for (std::size_t i = 0; i < count; ++i)
        doc += "<!ATTLIST r a" + std::to_string(i) + " CDATA \"v\">";
    return doc + "]><r/>";
}

// An entity of length characters referenced references times in text and once
// in an attribute.
inline std::string entityReferences(std::size_t length, std::size_t references) {
    std::string doc = "<!DOCTYPE a [<!ENTITY e \"" + std::string(length, 'x') + "\">]><a v=\"&e;\">";
    for (std::size_t i = 1; i < references; ++i)
        doc += "&e;";
    return doc + "</a>";
}

inline const std::vector<Document>& documents() {
    using vqxml::kMaxAttributesPerElement;
    using vqxml::kMaxElementDepth;
    using vqxml::kMaxDeclarations;
    using vqxml::kMaxEntityExpansions;
    using vqxml::kMaxEntityValueLength;
    static const std::vector<Document> all = [] {
        std::string closed;  // closed elements leave the depth count where it was
        for (int i = 0; i < 300; ++i)
            closed += "<x/><y></y>";
        std::string nestedParameters = "<!DOCTYPE a [<!ENTITY % p0 \"\">";  // 10^9 empty expansions
        for (int i = 1; i < 10; ++i) {
            nestedParameters += "<!ENTITY % p" + std::to_string(i) + " \"";
            for (int k = 0; k < 10; ++k)
                nestedParameters += "&#37;p" + std::to_string(i - 1) + ";";
            nestedParameters += "\">";
        }
        nestedParameters += "%p9;]><a/>";
        std::string defaulted = "<!DOCTYPE r [<!ATTLIST e a CDATA \"" + std::string(500, 'v') + "\">]><r>";
        for (int i = 0; i < 2200; ++i)  // a megabyte of defaults
            defaulted += "<e/>";
        defaulted += "</r>";
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
            {"external general entity", "<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/hostname\">]><a>&x;</a>",
             VQXML_ERR_PARSE, "External entities are not loaded"},
            {"external parameter entity", "<!DOCTYPE a [<!ENTITY % p SYSTEM \"file:///etc/passwd\"> %p;]><a/>",
             VQXML_ERR_PARSE, ""},
            {"entity expansion", entityExpansion(10), VQXML_ERR_PARSE, ""},
            {"entity amplification", entityReferences(kMaxEntityValueLength, kMaxEntityExpansions + 1),
             VQXML_ERR_PARSE, ""},
            {"entity value too long", entityReferences(kMaxEntityValueLength + 1, 1), VQXML_ERR_PARSE,
             "value is longer than 128 characters"},
            {"entity expansion in an attribute default", entityExpansion(10, true), VQXML_ERR_PARSE,
             "refers to other entities"},
            {"nested parameter entities", nestedParameters, VQXML_ERR_PARSE, "Parameter entities"},
            {"attribute lists past the bound", attributeLists(2000), VQXML_ERR_PARSE, "more than 128 declarations"},
            {"DTD too long", "<!DOCTYPE r [<!--" + std::string(70000, 'c') + "-->]><r/>", VQXML_ERR_PARSE,
             "DTD is longer than"},
            {"attribute defaults past the bound", defaulted, VQXML_ERR_PARSE, "Attributes that the DTD adds"},
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
            {"attribute lists at the bound", attributeLists(kMaxDeclarations / 2), 0, ""},
            {"entities at the bound", entityReferences(kMaxEntityValueLength, kMaxEntityExpansions), 0, ""},
            {"external DTD, not fetched", "<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/never.dtd\"><a/>", 0, ""},
        };
    }();
    return all;
}

}  // namespace hostile

#endif
