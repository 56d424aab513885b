// The library's DOM writer against Xerces' serializer: the same bytes for every
// document of the test data and the interop samples, for trees the engine builds,
// and for the corners of escaping and namespace fix-up.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>

#include "ContextFixture.hpp"
#include "TestFiles.hpp"
#include "core/adapter/DomWriter.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

std::string xercesWrites(const DOMNode* node) {
    DOMImplementation* impl = DOMImplementationRegistry::getDOMImplementation(u"LS");
    auto* ls = dynamic_cast<DOMImplementationLS*>(impl);
    MemBufFormatTarget target;
    DOMLSSerializer* serializer = ls->createLSSerializer();
    serializer->getDomConfig()->setParameter(XMLUni::fgDOMWRTFormatPrettyPrint, false);
    DOMLSOutput* output = ls->createLSOutput();
    output->setByteStream(&target);
    serializer->write(node, output);
    serializer->release();
    output->release();
    return std::string(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
}

// True when the writer took the node; then its bytes must be Xerces' bytes.
bool writesAsXerces(const DOMNode* node, const std::string& what) {
    std::string ours;
    if (!vqxml::writeDom(node, ours))
        return false;
    EXPECT_EQ(ours, xercesWrites(node)) << what;
    return true;
}

class DomWriter : public ::testing::Test {
protected:
    InspectableContext ctx;
};

TEST_F(DomWriter, EveryTestAndInteropDocumentComesOutAsXercesWritesIt) {
    int taken = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(testfiles::dataPath(""))) {
        if (entry.path().extension() != ".xml")
            continue;
        if (ctx.load(testfiles::read(entry.path().string())) != 0)
            continue;
        const std::string name = entry.path().string();
        taken += writesAsXerces(ctx.m_document, name);
        const DOMElement* root = ctx.m_document->getDocumentElement();
        writesAsXerces(root, name + " (document element)");
        if (const DOMElement* inner = root->getFirstElementChild())
            writesAsXerces(inner->getFirstElementChild() != nullptr ? inner->getFirstElementChild() : inner,
                           name + " (inner element)");
    }
    EXPECT_GE(taken, 40);
}

TEST_F(DomWriter, TreesTheEngineBuildsComeOutAsXercesWritesThem) {
    const std::string invoice = testfiles::read(testfiles::dataPath("dsig/taxinvoice.xml"));
    const std::string cert = testfiles::read(testfiles::dataPath("dsig/signer-cert.der"));
    const std::string key = testfiles::read(testfiles::dataPath("dsig/signer-key.pk8.der"));
    auto* certBytes = reinterpret_cast<unsigned char*>(const_cast<char*>(cert.data()));
    auto* keyBytes = reinterpret_cast<unsigned char*>(const_cast<char*>(key.data()));
    for (const char* prefix : {"ds", "sig"}) {
        ASSERT_EQ(ctx.XMLDSIG_setXMLDocument(const_cast<char*>(invoice.data()), static_cast<int>(invoice.size())), 0);
        ASSERT_EQ(ctx.XMLDSIG_setPrefix(const_cast<char*>(prefix)), 0);
        ASSERT_EQ(ctx.XMLDSIG_setSignatureAlg(5, 3), 0);
        ASSERT_EQ(ctx.XMLDSIG_createReference(nullptr, 3, 0, const_cast<char*>("not(ancestor-or-self::ds:Signature)")), 0);
        ASSERT_EQ(ctx.XMLDSIG_setSignCertAndKey(certBytes, static_cast<int>(cert.size()), keyBytes,
                                                static_cast<int>(key.size()), nullptr, nullptr, nullptr, nullptr),
                  0);
        ASSERT_EQ(ctx.XMLDSIG_sign(), 0);
        EXPECT_TRUE(writesAsXerces(ctx.m_document, std::string("signed, prefix \"") + prefix + "\""));
    }
}

TEST_F(DomWriter, EscapesCdataAndNamespaceFixUpAsXerces) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
        "<a xmlns=\"urn:d\" x=\"1&#9;2&#10;3&#13;4 &lt;&gt;&amp;&quot;'\">t&#13;x &gt; &lt;&amp; \" ' \xf0\x9f\x98\x80"
        "\xed\x95\x9c<![CDATA[c]]]]><![CDATA[>d]]><!-- c --><?pi data?><?bare?><b xmlns=\"\"/>"
        "<p:c xmlns:p=\"urn:p\" p:at=\"v\" xml:lang=\"ko\"/></a>";
    ASSERT_EQ(ctx.load(text), 0);
    DOMDocument* doc = ctx.m_document;
    DOMElement* made = doc->createElementNS(u"urn:ds", u"ds:Sig");
    made->setAttributeNS(u"urn:q", u"q:at", u"1");
    made->setAttributeNS(nullptr, u"Id", u"i");
    made->appendChild(doc->createElementNS(nullptr, u"plain"));
    made->appendChild(doc->createElementNS(u"urn:d", u"same"));
    made->appendChild(doc->createElementNS(u"urn:p", u"p:again"));
    doc->getDocumentElement()->appendChild(made);
    EXPECT_TRUE(writesAsXerces(doc, "constructed"));
    EXPECT_TRUE(writesAsXerces(made, "constructed subtree"));
}

// Xerces loses the ">" where it splits a section; the split here keeps it.
TEST_F(DomWriter, CdataHoldingItsOwnEndIsSplitWithoutLoss) {
    ASSERT_EQ(ctx.load("<a/>"), 0);
    DOMElement* root = ctx.m_document->getDocumentElement();
    root->appendChild(ctx.m_document->createCDATASection(u"x]]>y"));
    std::string out;
    ASSERT_TRUE(vqxml::writeDom(root, out));
    EXPECT_EQ(out, "<a><![CDATA[x]]]]><![CDATA[>y]]></a>");
}

// Text is written a run of 16384 units at a time: a pair across a run's end
// stays whole, half of one at a run's end is still refused.
TEST_F(DomWriter, TextOfManyRunsKeepsItsPairsWhole) {
    ASSERT_EQ(ctx.load("<a/>"), 0);
    std::u16string text(16383, u'a');
    text += u"\U0001F600\u00e9&<";
    text += std::u16string(40000, u'\ud55c');
    DOMElement* root = ctx.m_document->getDocumentElement();
    root->appendChild(ctx.m_document->createTextNode(text.c_str()));
    EXPECT_TRUE(writesAsXerces(ctx.m_document, "long text"));
    text.resize(16384);
    text.back() = 0xD800;
    root->replaceChild(ctx.m_document->createTextNode(text.c_str()), root->getFirstChild());
    vqxml::GrowingBuffer out;
    EXPECT_FALSE(vqxml::writeDom(root, out)) << "half a pair at the end of a run";
}

TEST_F(DomWriter, DeclinesWhatItLeavesToXerces) {
    std::string out;
    ASSERT_EQ(ctx.load("<!DOCTYPE a [<!ATTLIST a def CDATA 'dv'>]><a/>"), 0);
    EXPECT_FALSE(vqxml::writeDom(ctx.m_document, out)) << "a DOCTYPE";
    EXPECT_FALSE(vqxml::writeDom(ctx.m_document->getDocumentElement(), out)) << "an attribute from the DTD";
    ASSERT_EQ(ctx.load("<a/>"), 0);
    const XMLCh lone[] = {u'x', 0xD800, 0};
    ctx.m_document->getDocumentElement()->appendChild(ctx.m_document->createTextNode(lone));
    EXPECT_FALSE(vqxml::writeDom(ctx.m_document, out)) << "a lone surrogate";
}

}  // namespace
