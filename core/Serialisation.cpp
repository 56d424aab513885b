// Serialising the tree back into the result document.
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>

#include "core/adapter/DomWriter.hpp"
#include "core/VQXMLException.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

namespace {

struct XercesReleaser {
    template <class T>
    void operator()(T* object) const { object->release(); }
};

}  // namespace

// The library's own writer, or Xerces' serializer for the trees it leaves alone.
// What the writer wrote is handed over as it is, not copied.
int VQXML_XMLSecurity::XMLDocument2char(DOMImplementation* impl, DOMNode* node, char** out) {
    vqxml::GrowingBuffer written;
    if (vqxml::writeDom(node, written)) {
        if (m_mimeMessage != nullptr || written.size() > static_cast<std::size_t>(INT_MAX - 1))
            return storeBytes(reinterpret_cast<const unsigned char*>(written.data()), written.size(), out);
        const int len = static_cast<int>(written.size());
        *out = written.release();
        return len;
    }
    MemBufFormatTarget target(1023, XMLPlatformUtils::fgMemoryManager);
    auto* ls = dynamic_cast<DOMImplementationLS*>(impl);
    if (ls == nullptr)
        throw VQXML_XSECException(VQXML_ERR_UNKNOWN, "The DOM implementation cannot serialise");
    std::unique_ptr<DOMLSSerializer, XercesReleaser> serializer(ls->createLSSerializer());
    serializer->getDomConfig()->setParameter(XMLUni::fgDOMWRTFormatPrettyPrint, false);
    std::unique_ptr<DOMLSOutput, XercesReleaser> output(ls->createLSOutput());
    output->setByteStream(&target);
    serializer->write(node, output.get());
    return storeBytes(target.getRawBuffer(), target.getLen(), out);
}

int VQXML_XMLSecurity::storeBytes(const unsigned char* written, std::size_t len, char** out) {
    if (len > static_cast<std::size_t>(INT_MAX - 1))
        throw VQXML_XSECException(VQXML_ERR_MEMORY, "The result document is too large");
    if (m_mimeMessage != nullptr)
        return storePackage(written, static_cast<int>(len), out);
    char* bytes = static_cast<char*>(std::calloc(len + 1, 1));
    if (bytes == nullptr)
        throw VQXML_XSECException(VQXML_ERR_MEMORY);
    std::memcpy(bytes, written, len);
    *out = bytes;
    return static_cast<int>(len);
}

void VQXML_XMLSecurity::storeResultDocument() {
    std::free(m_xmlDocument);
    m_xmlDocument = nullptr;
    m_xmlDocumentLength = 0;
    m_xmlDocumentLength = XMLDocument2char(m_domImpl, m_document, &m_xmlDocument);
}
