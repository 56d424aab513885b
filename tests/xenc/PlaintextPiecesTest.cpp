// The pieces decryption is made of, taken one by one: the CipherValue's base64
// text and the plaintext parsed where the EncryptedData stands.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xsec/framework/XSECException.hpp>

#include "ScopedHandle.hpp"
#include "core/Transcode.hpp"
#include "engine/Base64.hpp"
#include "engine/XencFragmentParser.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

using vqxml::korean::SecureBytes;

std::string text(const SecureBytes& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

TEST(CipherValueText, DecodesWhateverWhitespaceSplitsIt) {
    std::vector<unsigned char> bytes;
    for (int i = 0; i < 200; ++i)
        bytes.push_back(static_cast<unsigned char>(i * 7));
    const vqxml::XString lines = vqxml::base64Encode(bytes);
    EXPECT_EQ(lines.find(u'\n'), 76u);
    SecureBytes decoded;
    ASSERT_TRUE(vqxml::base64Decode(lines.c_str(), decoded));
    EXPECT_EQ(std::vector<unsigned char>(decoded.begin(), decoded.end()), bytes);

    ASSERT_TRUE(vqxml::base64Decode(vqxml::toXString(" \r\n\tYW Jj\nZA==\n").c_str(), decoded));
    EXPECT_EQ(text(decoded), "abcd");
    ASSERT_TRUE(vqxml::base64Decode(vqxml::toXString("YWI=").c_str(), decoded));
    EXPECT_EQ(text(decoded), "ab");
    ASSERT_TRUE(vqxml::base64Decode(vqxml::toXString("").c_str(), decoded));
    EXPECT_TRUE(decoded.empty());
}

TEST(CipherValueText, RefusesWhatIsNotBase64) {
    for (const char* bad : {"YWJj!", "YWJ", "YW=j", "Y===", "YQ==YWJj", "YQ=", "=YWJ", "YWJj\xc3\xa9"}) {
        SecureBytes decoded;
        EXPECT_FALSE(vqxml::base64Decode(vqxml::toXString(bad).c_str(), decoded)) << bad;
    }
    SecureBytes decoded;
    const XMLCh wide[] = {u'Y', u'W', u'J', 0x0100 | u'j', 0};
    EXPECT_FALSE(vqxml::base64Decode(wide, decoded)) << "a character above 255 is no base64 letter";
    EXPECT_FALSE(vqxml::base64Decode(static_cast<const XMLCh*>(nullptr), decoded));
}

// A document to decrypt into, with the engines started by a handle.
class InPlace : public testing::Test {
protected:
    void SetUp() override {
        const std::string xml =
            "<r:Root xmlns:r=\"urn:r\" xmlns=\"urn:default\" xmlns:a=\"urn:a\"><Place><Spot/></Place></r:Root>";
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "test", false);
        m_parser.setDoNamespaces(true);
        m_parser.parse(source);
        m_spot = static_cast<DOMElement*>(
            m_parser.getDocument()->getElementsByTagNameNS(u"urn:default", u"Spot")->item(0));
    }

    // Puts the nodes of plain where Spot stands; the element they now stand in.
    DOMElement* parsed(const std::string& plain, bool* holdsXenc) {
        DOMDocumentFragment* nodes =
            vqxml::xenc::parseInPlace(SecureBytes(plain.begin(), plain.end()), m_spot, holdsXenc);
        auto* place = static_cast<DOMElement*>(m_spot->getParentNode());
        place->replaceChild(nodes, m_spot);
        nodes->release();
        return place;
    }

    ScopedHandle m_engines;  // keeps Xerces started
    XercesDOMParser m_parser;
    DOMElement* m_spot = nullptr;
};

TEST_F(InPlace, NamesTakeTheNamespacesInScope) {
    bool holdsXenc = true;
    const DOMElement* place = parsed("<a:In b=\"1\" a:c=\"2\">x &amp; <![CDATA[<y>]]></a:In>text<Default/>", &holdsXenc);
    EXPECT_FALSE(holdsXenc);
    const DOMNode* in = place->getFirstChild();
    ASSERT_NE(in, nullptr);
    EXPECT_TRUE(XMLString::equals(in->getNamespaceURI(), u"urn:a"));
    EXPECT_TRUE(XMLString::equals(static_cast<const DOMElement*>(in)->getAttributeNS(u"urn:a", u"c"), u"2"));
    EXPECT_TRUE(XMLString::equals(static_cast<const DOMElement*>(in)->getAttributeNS(nullptr, u"b"), u"1"));
    ASSERT_EQ(in->getChildNodes()->getLength(), 2u) << "one text node, one CDATA section";
    EXPECT_TRUE(XMLString::equals(in->getFirstChild()->getNodeValue(), u"x & "));
    EXPECT_EQ(in->getLastChild()->getNodeType(), DOMNode::CDATA_SECTION_NODE);
    EXPECT_TRUE(XMLString::equals(in->getNextSibling()->getNodeValue(), u"text"));
    EXPECT_TRUE(XMLString::equals(place->getLastChild()->getNamespaceURI(), u"urn:default"))
        << "an unprefixed element takes the default namespace in scope";
}

TEST_F(InPlace, TellsWhenEncryptionElementsComeIn) {
    bool holdsXenc = false;
    parsed("<x:EncryptedData xmlns:x=\"http://www.w3.org/2001/04/xmlenc#\"/>", &holdsXenc);
    EXPECT_TRUE(holdsXenc);
}

TEST_F(InPlace, RefusesWhatIsNotWellFormedContent) {
    for (const char* bad : {"<a>", "</Place><Place>", "<u:Unbound/>", "<!DOCTYPE x [<!ENTITY e \"x\">]><x/>",
                            "&undeclared;", "<a></b>", "<?xml version=\"1.0\"?><x/>", "\xff\xfe"}) {
        EXPECT_THROW(
            {
                bool holdsXenc = false;
                DOMDocumentFragment* nodes = vqxml::xenc::parseInPlace(
                    SecureBytes(bad, bad + std::char_traits<char>::length(bad)), m_spot, &holdsXenc);
                nodes->release();
            },
            XSECException)
            << bad;
    }
    EXPECT_EQ(m_spot->getParentNode()->getChildNodes()->getLength(), 1u) << "a refused plaintext adds nothing";
}

}  // namespace
