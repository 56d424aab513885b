// Where Canonical XML 1.1 and 1.0 part ways: the subtree of one element (by its
// Id) whose left-out ancestors carry xml:base, xml:id, xml:lang and xml:space,
// and its canonical form under each (xmlsec1 writes the same bytes). Shared by
// the exact-bytes test and the Santuario peer test.
#ifndef VQXML_TESTS_DSIG_CANONICALXML11CASES_HPP
#define VQXML_TESTS_DSIG_CANONICALXML11CASES_HPP

namespace c14n11 {

constexpr char kC14n10[] = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
constexpr char kC14n11[] = "http://www.w3.org/2006/12/xml-c14n11";

constexpr char kDocument[] =
    "<a xmlns=\"urn:a\" xml:base=\"http://e.org/x/\" xml:id=\"a1\" xml:lang=\"ko\">"
    "<b xml:base=\"y/\" xml:space=\"preserve\"><c Id=\"c\" xml:base=\"z.xml\">t</c><d Id=\"d\"/></b>"
    "<c2 Id=\"c2\" xml:base=\"z.xml\"><!-- kept --></c2>"
    "<e xml:base=\"../r/\"><f xml:base=\"./s/../../t/\"><g Id=\"g\" xml:base=\"a/b/../../../c\"/></f></e>"
    "<h xml:base=\"\"><i Id=\"i\" xml:id=\"own\"/></h></a>";

struct Case {
    const char* id;
    const char* algorithm;
    const char* bytes;
    // Santuario 2.1 reads the xml: attributes of a subtree's left-out ancestors
    // outermost first (they all land on one level of its attribute stack): under
    // 1.0 the outermost of several xml:base wins, under 1.1 they are joined
    // outermost first. Where that matters it writes other bytes.
    bool santuarioAgrees;
};

constexpr Case kCases[] = {
    // One left-out ancestor with xml:base: joined onto the element's own; xml:id stays behind.
    {"c2", kC14n11, "<c2 xmlns=\"urn:a\" Id=\"c2\" xml:base=\"http://e.org/x/z.xml\" xml:lang=\"ko\"></c2>", true},
    {"c2", kC14n10, "<c2 xmlns=\"urn:a\" Id=\"c2\" xml:base=\"z.xml\" xml:id=\"a1\" xml:lang=\"ko\"></c2>", true},
    {"i", kC14n11, "<i xmlns=\"urn:a\" Id=\"i\" xml:base=\"http://e.org/x/\" xml:id=\"own\" xml:lang=\"ko\"></i>", true},
    {"i", kC14n10, "<i xmlns=\"urn:a\" Id=\"i\" xml:base=\"\" xml:id=\"own\" xml:lang=\"ko\"></i>", false},
    // Two: innermost first, as relative references resolve.
    {"c", kC14n11,
     "<c xmlns=\"urn:a\" Id=\"c\" xml:base=\"http://e.org/x/y/z.xml\" xml:lang=\"ko\" xml:space=\"preserve\">t</c>",
     false},
    {"c", kC14n10,
     "<c xmlns=\"urn:a\" Id=\"c\" xml:base=\"z.xml\" xml:id=\"a1\" xml:lang=\"ko\" xml:space=\"preserve\">t</c>", true},
    {"d", kC14n11, "<d xmlns=\"urn:a\" Id=\"d\" xml:base=\"http://e.org/x/y/\" xml:lang=\"ko\" xml:space=\"preserve\"></d>",
     false},
    // Dot segments above a relative path are kept.
    {"g", kC14n11, "<g xmlns=\"urn:a\" Id=\"g\" xml:base=\"http://e.org/c\" xml:lang=\"ko\"></g>", true},
};

}  // namespace c14n11

#endif
