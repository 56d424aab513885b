// The quick parser must build the very tree XercesDOMParser builds: the same
// nodes, names, namespaces and values, linked both ways, and a tree the DOM can
// go on editing.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/TransService.hpp>

#include "ContextFixture.hpp"
#include "core/adapter/QuickDOMParser.hpp"
#include "core/RecyclingMemoryManager.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

std::string utf8(const XMLCh* s) {
    if (s == nullptr)
        return "(null)";
    TranscodeToStr bytes(s, "UTF-8");
    return reinterpret_cast<const char*>(bytes.str());
}

// Every node's properties and its links to its neighbours, in document order.
void describe(const DOMNode* n, std::string& out) {
    out += std::to_string(n->getNodeType()) + " " + utf8(n->getNodeName()) + " {" + utf8(n->getNamespaceURI()) +
           "} " + utf8(n->getPrefix()) + ":" + utf8(n->getLocalName()) + " = " + utf8(n->getNodeValue()) + "\n";
    if (const DOMNamedNodeMap* attributes = n->getAttributes()) {
        for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
            const auto* a = static_cast<const DOMAttr*>(attributes->item(i));
            out += "  @" + utf8(a->getName()) + " {" + utf8(a->getNamespaceURI()) + "} = " + utf8(a->getValue()) +
                   (a->getSpecified() ? "" : " (default)") + (a->isId() ? " (id)" : "") + "\n";
            EXPECT_EQ(a->getOwnerElement(), n);
        }
    }
    const DOMNode* previous = nullptr;
    for (const DOMNode* c = n->getFirstChild(); c != nullptr; c = c->getNextSibling()) {
        EXPECT_EQ(c->getParentNode(), n) << utf8(c->getNodeName());
        EXPECT_EQ(c->getPreviousSibling(), previous) << utf8(c->getNodeName());
        describe(c, out);
        previous = c;
    }
    EXPECT_EQ(n->getLastChild(), previous);
}

template <class Parser>
std::string tree(const std::string& xml) {
    Parser parser;
    parser.setDoNamespaces(true);
    parser.setLoadExternalDTD(false);
    parser.setCreateEntityReferenceNodes(false);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "test", false);
    parser.parse(source);
    EXPECT_EQ(parser.getErrorCount(), 0u) << xml;
    std::string out;
    describe(parser.getDocument(), out);
    return out;
}

// A context keeps the engines started.
class QuickDOMParserTest : public ::testing::TestWithParam<const char*> {
protected:
    InspectableContext engines;
};

TEST_P(QuickDOMParserTest, BuildsTheTreeXercesBuilds) {
    EXPECT_EQ(tree<vqxml::QuickDOMParser>(GetParam()), tree<XercesDOMParser>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, QuickDOMParserTest,
    ::testing::Values(
        "<r/>",
        "<r xmlns='urn:d' xmlns:p='urn:p'><a p:x='1' y='2'>text &amp; more<p:b/><c xmlns=''>in none</c></a></r>",
        "<p:r xmlns:p='urn:p'><p:a>1</p:a>tail<!--note--><?pi data?><![CDATA[<raw>]]>after</p:r>",
        "<r>\xed\x95\x9c\xea\xb8\x80 <e></e><e/>\n  <f a='&#x9;&lt;'/></r>",
        // one name under several namespaces, one namespace under several prefixes
        "<r xmlns:p='urn:1'><p:a/><p:a xmlns:p='urn:2'><p:a/></p:a><q:a xmlns:q='urn:1'/><a/><a xmlns='urn:1'><a/></a>"
        "<p:a/></r>",
        "<r xml:lang='ko' xmlns:q='urn:q' q:a=''><q:e xmlns:q='urn:other' b='1' q:b='2'/>\xf0\x9f\x98\x80</r>",
        "<!DOCTYPE r [<!ATTLIST e id ID #IMPLIED d CDATA 'dflt'><!ENTITY ent 'expanded'>]>"
        "<r><e id='x1'>&ent;</e><e d='given'/><g>&ent;&ent;</g></r>"));

// A long text reaches the parser in pieces; it must come out whole, a
// character split between two pieces included, and end where markup starts.
TEST(QuickDOMParserLongText, ComesOutAsOneTextNode) {
    InspectableContext engines;
    const std::size_t piece = vqxml::QuickDOMParser::kTextPiece;
    std::string split(piece - 1, 'a');
    split += "\xf0\x9f\x98\x80";  // a surrogate pair across the first boundary
    split += std::string(2 * piece, 'b');
    const std::string xml = "<!DOCTYPE r [<!ENTITY e 'ent'>]><r><a>" + split + "</a><b>" + split + "&e;" + split +
                            "<!--c-->" + split + "<![CDATA[cd]]>" + split + "<?p?></b><c>" + split + "</c></r>";
    EXPECT_EQ(tree<vqxml::QuickDOMParser>(xml), tree<XercesDOMParser>(xml));
}

TEST(QuickDOMParserEditing, TheTreeCanBeEditedAfterwards) {
    InspectableContext engines;
    vqxml::QuickDOMParser parser;
    parser.setDoNamespaces(true);
    const std::string xml = "<r><a/>t<b/><c/></r>";
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "test", false);
    parser.parse(source);
    DOMElement* root = parser.getDocument()->getDocumentElement();
    root->removeChild(root->getLastChild())->release();
    root->insertBefore(parser.getDocument()->createElement(u"n"), root->getFirstChild());
    root->appendChild(parser.getDocument()->createTextNode(u"end"));
    std::string out;
    describe(parser.getDocument(), out);
    EXPECT_NE(out.find("1 r {(null)} (null):r = (null)\n1 n {"), std::string::npos) << out;
    EXPECT_EQ(out.find(" c "), std::string::npos) << out;
    EXPECT_EQ(utf8(root->getTextContent()), "tend");
}

// Released blocks wait for the next document, as many as were in use at once;
// a smaller document afterwards takes one and the surplus goes back.
TEST(RecyclingMemoryManager, KeepsWhatTheLastDocumentsNeeded) {
    using Memory = vqxml::RecyclingMemoryManager;
    InspectableContext engines;
    Memory& memory = Memory::instance();
    memory.clear();
    const std::size_t block = Memory::kLeastKeptBytes / 4;
    std::vector<void*> large;
    for (int i = 0; i < 8; ++i)  // twice the least kept
        large.push_back(memory.allocate(block));
    for (void* p : large)
        memory.deallocate(p);
    EXPECT_EQ(memory.keptBytes(), 8 * block);
    // A request it fits with a quarter to spare takes a kept block; a small or
    // much smaller one does not.
    void* again = memory.allocate(block - block / 5);
    void* small = memory.allocate(Memory::kSmallestKept - 1);
    void* smaller = memory.allocate(block / 2);
    EXPECT_EQ(memory.keptBytes(), 7 * block);
    EXPECT_TRUE(std::find(large.begin(), large.end(), again) != large.end());
    EXPECT_TRUE(std::find(large.begin(), large.end(), smaller) == large.end());
    memory.deallocate(small);
    memory.deallocate(smaller);
    memory.deallocate(again);
    EXPECT_EQ(memory.keptBytes(), Memory::kLeastKeptBytes);
    memory.clear();
    EXPECT_EQ(memory.keptBytes(), 0u);
}

}  // namespace
