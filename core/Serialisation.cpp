// Serialising the tree back into the result document.
#include <cstdlib>
#include <cstring>
#include <memory>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>

#include "core/VQXMLException.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

namespace {

struct XercesReleaser {
    template <class T>
    void operator()(T* object) const { object->release(); }
};

}  // namespace

int VQXML_XMLSecurity::XMLDocument2char(DOMImplementation* impl, DOMNode* node, char** out) {
    MemBufFormatTarget target(1023, XMLPlatformUtils::fgMemoryManager);
    auto* ls = dynamic_cast<DOMImplementationLS*>(impl);
    if (ls == nullptr)
        throw VQXML_XSECException(VQXML_ERR_UNKNOWN, "The DOM implementation cannot serialise");
    std::unique_ptr<DOMLSSerializer, XercesReleaser> serializer(ls->createLSSerializer());
    serializer->getDomConfig()->setParameter(XMLUni::fgDOMWRTFormatPrettyPrint, false);
    std::unique_ptr<DOMLSOutput, XercesReleaser> output(ls->createLSOutput());
    output->setByteStream(&target);
    serializer->write(node, output.get());

    const XMLSize_t len = target.getLen();
    if (m_mimeMessage != nullptr)
        return storePackage(target.getRawBuffer(), static_cast<int>(len), out);
    char* bytes = static_cast<char*>(std::calloc(len + 1, 1));
    if (bytes == nullptr)
        throw VQXML_XSECException(VQXML_ERR_MEMORY);
    std::memcpy(bytes, target.getRawBuffer(), len);
    *out = bytes;
    return static_cast<int>(len);
}

void VQXML_XMLSecurity::storeResultDocument() {
    std::free(m_xmlDocument);
    m_xmlDocument = nullptr;
    m_xmlDocumentLength = 0;
    m_xmlDocumentLength = XMLDocument2char(m_domImpl, m_document, &m_xmlDocument);
}
