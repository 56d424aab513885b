#include "XmlTestSupport.hpp"

#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/XMLString.hpp>

#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

namespace vqxml::test {

VQXML_XMLSecurity* EngineTest::s_context = nullptr;

void EngineTest::SetUpTestSuite() {
    s_context = new VQXML_XMLSecurity();
}

void EngineTest::TearDownTestSuite() {
    delete s_context;
    s_context = nullptr;
}

// A provider of our own: the engine's may not be the library's (a host that
// started the engine keeps its provider), and the keys do not depend on it.
VQTKCryptoProvider& EngineTest::provider() {
    static VQTKCryptoProvider p;
    return p;
}

Document EngineTest::parse(const std::string& text) {
    XercesDOMParser parser;
    parser.setDoNamespaces(true);
    parser.setCreateEntityReferenceNodes(false);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "test");
    parser.parse(source);
    if (parser.getErrorCount() != 0 || parser.getDocument() == nullptr)
        throw std::runtime_error("test document does not parse");
    return Document(parser.adoptDocument());
}

std::string EngineTest::serialise(const DOMNode* node) {
    static const XMLCh ls[] = {chLatin_L, chLatin_S, chNull};
    DOMImplementation* impl = DOMImplementationRegistry::getDOMImplementation(ls);
    DOMLSSerializer* writer = impl->createLSSerializer();
    writer->getDomConfig()->setParameter(XMLUni::fgDOMXMLDeclaration, false);
    DOMLSOutput* output = impl->createLSOutput();
    MemBufFormatTarget target;
    output->setByteStream(&target);
    output->setEncoding(u"UTF-8");
    writer->write(node, output);
    std::string out(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
    output->release();
    writer->release();
    return out;
}

DOMElement* EngineTest::find(const DOMNode* from, const char* localName) {
    for (DOMNode* child = from->getFirstChild(); child != nullptr; child = child->getNextSibling()) {
        if (child->getNodeType() != DOMNode::ELEMENT_NODE)
            continue;
        const XMLCh* name = child->getLocalName() != nullptr ? child->getLocalName() : child->getNodeName();
        if (XMLString::equals(name, xml(localName).c_str()))
            return static_cast<DOMElement*>(child);
        if (DOMElement* found = find(child, localName))
            return found;
    }
    return nullptr;
}

std::u16string xml(const char* ascii) {
    return std::u16string(ascii, ascii + std::char_traits<char>::length(ascii));
}

}  // namespace vqxml::test
