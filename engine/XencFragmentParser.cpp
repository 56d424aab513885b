#include "engine/XencFragmentParser.hpp"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/framework/XSECException.hpp>

#include "core/adapter/Upstream.hpp"
#include "core/adapter/DomLinking.hpp"
#include "core/adapter/ElementMaker.hpp"
#include "core/adapter/QuickDOMParser.hpp"
#include "core/adapter/TextRoom.hpp"
#include "core/RecyclingMemoryManager.hpp"
#include "core/ParseLimits.hpp"
#include "core/VQXMLException.hpp"
#include "vqxml/vqxml.h"

XERCES_CPP_NAMESPACE_USE

namespace vqxml::xenc {

namespace {

using XString = std::basic_string<XMLCh>;

const XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";
const char kWrapperStart[] = "<vqxml-plaintext";
const char kWrapperEnd[] = "</vqxml-plaintext>";

const XMLCh* orNull(const XMLCh* uri) {
    return uri != nullptr && *uri != 0 ? uri : nullptr;
}

bool isDeclaration(const XMLCh* qname) {
    return XMLString::equals(qname, u"xmlns") || XMLString::startsWith(qname, u"xmlns:");
}

// Prefix and namespace of every binding in scope at node, nearest first.
std::vector<std::pair<XString, XString>> bindingsInScope(const DOMNode* node) {
    std::vector<std::pair<XString, XString>> bindings;
    std::set<XString> seen{u"xml", u"xmlns"};
    for (; node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE; node = node->getParentNode()) {
        const DOMNamedNodeMap* attributes = node->getAttributes();
        for (XMLSize_t i = 0; attributes != nullptr && i < attributes->getLength(); ++i) {
            const DOMNode* a = attributes->item(i);
            if (!XMLString::equals(a->getNamespaceURI(), kXmlnsNamespace))
                continue;
            XString prefix = XMLString::equals(a->getLocalName(), u"xmlns") ? XString() : XString(a->getLocalName());
            if (seen.insert(prefix).second)
                bindings.emplace_back(std::move(prefix), a->getNodeValue());
        }
        // An element made without declarations still binds its own prefix.
        if (const XMLCh* uri = orNull(node->getNamespaceURI())) {
            XString prefix = node->getPrefix() != nullptr ? XString(node->getPrefix()) : XString();
            if (seen.insert(prefix).second)
                bindings.emplace_back(std::move(prefix), uri);
        }
    }
    return bindings;
}

void appendUtf8(std::string& out, const XString& text) {
    TranscodeToStr utf8(reinterpret_cast<const XMLCh*>(text.c_str()), text.size(), "UTF-8");
    out.append(reinterpret_cast<const char*>(utf8.str()), utf8.length());
}

std::string wrapperStart(const DOMNode* context) {
    std::string start = kWrapperStart;
    for (const auto& [prefix, uri] : bindingsInScope(context)) {
        start += prefix.empty() ? " xmlns=\"" : " xmlns:";
        if (!prefix.empty()) {
            appendUtf8(start, prefix);
            start += "=\"";
        }
        XString escaped;
        for (XMLCh c : uri) {
            if (c == u'&')
                escaped += u"&amp;";
            else if (c == u'<')
                escaped += u"&lt;";
            else if (c == u'"')
                escaped += u"&quot;";
            else
                escaped += c;
        }
        appendUtf8(start, escaped);
        start += "\"";
    }
    return start + ">";
}

using Piece = std::pair<const XMLByte*, XMLSize_t>;

// The wrapper's start, the plaintext and the wrapper's end read one after the
// other where they lie: the plaintext, a megabyte or more, is not copied.
class PiecesInputStream : public BinInputStream {
public:
    explicit PiecesInputStream(std::vector<Piece> pieces) : m_pieces(std::move(pieces)) {}

    XMLFilePos curPos() const override { return m_read; }
    const XMLCh* getContentType() const override { return nullptr; }

    XMLSize_t readBytes(XMLByte* const toFill, const XMLSize_t maxToRead) override {
        XMLSize_t filled = 0;
        while (filled < maxToRead && m_piece < m_pieces.size()) {
            const Piece& p = m_pieces[m_piece];
            const XMLSize_t n = std::min(maxToRead - filled, p.second - m_offset);
            std::memcpy(toFill + filled, p.first + m_offset, n);
            filled += n;
            m_offset += n;
            if (m_offset == p.second) {
                ++m_piece;
                m_offset = 0;
            }
        }
        m_read += filled;
        return filled;
    }

private:
    std::vector<Piece> m_pieces;
    std::size_t m_piece = 0;
    XMLSize_t m_offset = 0;
    XMLFilePos m_read = 0;
};

class PiecesInputSource : public InputSource {
public:
    explicit PiecesInputSource(std::vector<Piece> pieces) : InputSource("vqxml-plaintext"), m_pieces(std::move(pieces)) {
        setEncoding(XMLUni::fgUTF8EncodingString);
    }
    BinInputStream* makeStream() const override { return new PiecesInputStream(m_pieces); }

private:
    std::vector<Piece> m_pieces;
};

// Builds the wrapper's content as nodes of doc under one fragment.
class FragmentBuilder : public DefaultHandler {
public:
    // levelsAbove: the elements around the place the nodes go.
    FragmentBuilder(DOMDocument* doc, std::size_t levelsAbove)
        : m_doc(doc), m_elements(doc), m_fragment(doc->createDocumentFragment()), m_levelsAbove(levelsAbove) {}
    ~FragmentBuilder() override {
        if (m_fragment != nullptr)
            m_fragment->release();
    }
    FragmentBuilder(const FragmentBuilder&) = delete;
    FragmentBuilder& operator=(const FragmentBuilder&) = delete;

    DOMDocumentFragment* release() { return std::exchange(m_fragment, nullptr); }
    bool holdsXenc() const { return m_holdsXenc; }

    void startElement(const XMLCh* const uri, const XMLCh* const, const XMLCh* const qname,
                      const Attributes& attributes) override {
        flushText();
        if (m_depth++ == 0)
            return;
        const std::string broken = boundBrokenBy(m_levelsAbove + m_depth - 1, attributes.getLength());
        if (!broken.empty())
            throw VQXML_XSECException(VQXML_ERR_PARSE, ("Decrypted content: " + broken).c_str());
        m_holdsXenc = m_holdsXenc || XMLString::equals(uri, DSIGConstants::s_unicodeStrURIXENC);
        DOMElement* element = m_elements.make(uri, qname);
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
            const XMLCh* name = attributes.getQName(i);
            element->setAttributeNS(isDeclaration(name) ? kXmlnsNamespace : orNull(attributes.getURI(i)), name,
                                    attributes.getValue(i));
        }
        appendNewChild(parent(), element);
        m_open.push_back(element);
    }

    void endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const) override {
        flushText();
        if (--m_depth == 0)
            return;
        m_open.pop_back();
    }

    void characters(const XMLCh* const chars, const XMLSize_t length) override {
        (m_inCdata ? m_cdata : m_text).append(chars, length);
    }

    void ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length) override { characters(chars, length); }

    void processingInstruction(const XMLCh* const target, const XMLCh* const data) override {
        flushText();
        appendNewChild(parent(), m_doc->createProcessingInstruction(target, data));
    }

    void comment(const XMLCh* const chars, const XMLSize_t length) override {
        flushText();
        appendNewChild(parent(), m_doc->createComment(XString(chars, length).c_str()));
    }

    void startCDATA() override {
        flushText();
        m_inCdata = true;
    }

    void endCDATA() override {
        appendNewChild(parent(), m_doc->createCDATASection(m_cdata.c_str()));
        m_cdata.clear();
        m_inCdata = false;
    }

    void error(const SAXParseException& e) override { refuse(e); }
    void fatalError(const SAXParseException& e) override { refuse(e); }

private:
    [[noreturn]] static void refuse(const SAXParseException& e) {
        throw XSECException(XSECException::CipherError, e.getMessage());
    }

    DOMNode* parent() const { return m_open.empty() ? static_cast<DOMNode*>(m_fragment) : m_open.back(); }

    // Adjacent character data makes one text node, as a DOM parser makes it.
    void flushText() {
        if (m_text.empty())
            return;
        appendNewChild(parent(), exactText(m_doc, m_text.data(), m_text.size()));
        m_text.clear();
    }

    DOMDocument* m_doc;
    ElementMaker m_elements;
    DOMDocumentFragment* m_fragment;
    std::vector<DOMElement*> m_open;  // started, not yet ended
    std::size_t m_levelsAbove;
    std::size_t m_depth = 0;  // the wrapper included
    bool m_inCdata = false;
    bool m_holdsXenc = false;
    XString m_text;
    XString m_cdata;
};

}  // namespace

DOMDocumentFragment* parseInPlace(const korean::SecureBytes& plain, const DOMElement* encryptedData, bool* holdsXenc) {
    const std::string start = wrapperStart(encryptedData->getParentNode());

    // The document parser's memory: the reader's buffers it kept are taken again.
    std::unique_ptr<SAX2XMLReader> reader(XMLReaderFactory::createXMLReader(&RecyclingMemoryManager::instance()));
    // Long texts in pieces, as the document parser has them, not in one buffer doubled.
    reader->setInputBufferSize(QuickDOMParser::kTextPiece);
    reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
    reader->setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, true);
    reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
    reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    reader->setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    // As the document parser has it: no schema processing (nor the grammar
    // lookups it makes for every element).
    reader->setFeature(XMLUni::fgXercesSchema, false);
    std::size_t levelsAbove = 0;
    for (const DOMNode* up = encryptedData->getParentNode(); up != nullptr; up = up->getParentNode())
        levelsAbove += up->getNodeType() == DOMNode::ELEMENT_NODE ? 1 : 0;
    FragmentBuilder builder(encryptedData->getOwnerDocument(), levelsAbove);
    reader->setContentHandler(&builder);
    reader->setLexicalHandler(&builder);
    reader->setErrorHandler(&builder);
    const PiecesInputSource source({{reinterpret_cast<const XMLByte*>(start.data()), start.size()},
                                    {plain.data(), plain.size()},
                                    {reinterpret_cast<const XMLByte*>(kWrapperEnd), sizeof kWrapperEnd - 1}});
    try {
        reader->parse(source);
    } catch (const XMLException& e) {
        throw XSECException(XSECException::CipherError, e.getMessage());
    }
    *holdsXenc = builder.holdsXenc();
    return builder.release();
}

}  // namespace vqxml::xenc
