// Parsing callers' bytes into a tree, safely: no DTD, external entity or URL is
// ever loaded, and the document's shape and DTD are bounded
// (core/BoundedDOMParser.hpp, core/ParseLimits.hpp).
#include <cstdint>
#include <memory>
#include <string>

#include <openssl/crypto.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>

#include "core/ParseLimits.hpp"
#include "core/adapter/BoundedDOMParser.hpp"
#include "core/Transcode.hpp"
#include "core/VQXMLException.hpp"
#include "vqxml/VQXML_XMLSecurity.h"

XERCES_CPP_NAMESPACE_USE

namespace {

const XMLCh kSystemId[] = {chLatin_X, chLatin_S, chLatin_E, chLatin_C, chLatin_M, chLatin_e, chLatin_m, chNull};
const XMLCh kUTF8Upper[] = {chLatin_U, chLatin_T, chLatin_F, chDash, chDigit_8, chNull};
const XMLCh kUTF8Lower[] = {chLatin_u, chLatin_t, chLatin_f, chDash, chDigit_8, chNull};

// External DTD subsets are never asked for (loading them is switched off); any
// external entity the document references is refused here, so the parse fails
// instead of opening a file or URL.
class RefusingEntityResolver : public XMLEntityResolver {
public:
    InputSource* resolveEntity(XMLResourceIdentifier*) override {
        throw VQXML_XSECException(VQXML_ERR_PARSE, "External entities are not loaded");
    }
};

// Counts errors and keeps the first one's text for the caller.
class FirstErrorHandler : public ErrorHandler {
public:
    void warning(const SAXParseException&) override {}
    void error(const SAXParseException& e) override { record(e); }
    void fatalError(const SAXParseException& e) override { record(e); }
    void resetErrors() override {}
    const vqxml::XString& firstError() const { return m_first; }

private:
    void record(const SAXParseException& e) {
        if (!m_first.empty())
            return;
        m_first = e.getMessage();
        m_first += vqxml::XString(u" (line ") + vqxml::toXString(std::to_string(e.getLineNumber())) +
                   u", column " + vqxml::toXString(std::to_string(e.getColumnNumber())) + u")";
    }
    vqxml::XString m_first;
};

struct ParseResult {
    int errors;
    vqxml::XString firstError;
};

void configure(XercesDOMParser& parser) {
    parser.setValidationScheme(XercesDOMParser::Val_Never);
    parser.setLoadExternalDTD(false);
    parser.setDisableDefaultEntityResolution(true);
    parser.setCreateEntityReferenceNodes(false);
    static RefusingEntityResolver resolver;
    parser.setXMLEntityResolver(&resolver);
}

ParseResult parse(const char* xml, int len, DOMDocument** out) {
    vqxml::BoundedDOMParser parser;
    configure(parser);
    parser.setDoNamespaces(true);
    SecurityManager limits;
    limits.setEntityExpansionLimit(vqxml::kMaxEntityExpansions);
    parser.setSecurityManager(&limits);
    FirstErrorHandler handler;
    parser.setErrorHandler(&handler);

    MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml), static_cast<XMLSize_t>(len), kSystemId,
                             false);
    // The caller's bytes outlive the parse: no copy of the whole document.
    source.setCopyBufToStream(false);
    ParseResult result{0, {}};
    try {
        parser.parse(source);
        result.errors = static_cast<int>(parser.getErrorCount());
    } catch (const vqxml::BoundBroken& e) {
        result.errors = 1;
        result.firstError = e.text;
    } catch (const VQXML_XSECException& e) {
        result.errors = 1;
        result.firstError = e.getMsg();
    } catch (const XMLException& e) {
        result.errors = 1;
        result.firstError = e.getMessage();
    }
    if (result.firstError.empty())
        result.firstError = handler.firstError();
    if (result.errors == 0 && !result.firstError.empty())
        result.errors = 1;
    *out = parser.adoptDocument();
    return result;
}

}  // namespace

namespace {

// Parses text only to enforce the bounds, starting levelsAbove levels deep;
// malformed text and external entities are whoever parses it next's to report
// (the scan stops there, as that parser will).
void checkShape(const std::string& text, std::size_t levelsAbove) {
    vqxml::BoundedDOMParser parser(levelsAbove);
    configure(parser);
    SecurityManager limits;
    limits.setEntityExpansionLimit(vqxml::kMaxEntityExpansions);
    parser.setSecurityManager(&limits);
    FirstErrorHandler quiet;
    parser.setErrorHandler(&quiet);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), kSystemId, false);
    try {
        parser.parse(source);
    } catch (const vqxml::BoundBroken& e) {
        throw VQXML_XSECException(VQXML_ERR_PARSE, e.text.c_str());
    } catch (const VQXML_XSECException&) {
    } catch (const XMLException&) {
    }
}

}  // namespace

std::string vqxml::boundBrokenBy(std::size_t level, std::size_t attributeCount) {
    if (level > kMaxElementDepth)
        return "Elements are nested deeper than " + std::to_string(kMaxElementDepth) + " levels";
    if (attributeCount > kMaxAttributesPerElement)
        return "An element has more than " + std::to_string(kMaxAttributesPerElement) + " attributes";
    return {};
}

void vqxml::checkFragmentShape(const char* text, std::size_t length, std::size_t levelsAbove) {
    // The wrapper stands for the element the text goes into; a text at the top
    // of a document has none, so it stands one level higher.
    std::string wrapped = "<w>";
    wrapped.append(text, length);
    wrapped += "</w>";
    struct Wipe {
        std::string& text;
        ~Wipe() { OPENSSL_cleanse(&text[0], text.size()); }
    } wipe{wrapped};
    checkShape(wrapped, levelsAbove > 0 ? levelsAbove - 1 : 0);
}

void vqxml::checkDocumentShape(const char* text, std::size_t length) {
    checkShape(std::string(text, length), 0);
}

int vqxml::parseBounded(const char* text, std::size_t length, DOMDocument** out) {
    if (length == 0 || length > static_cast<std::size_t>(INT32_MAX)) {
        *out = nullptr;
        return 1;
    }
    return parse(text, static_cast<int>(length), out).errors;
}

int VQXML_XMLSecurity::setXMLDocument(char* xml, int len, DOMDocument** out) {
    if (xml == nullptr || len <= 0) {
        *out = nullptr;
        return 1;
    }
    return parse(xml, len, out).errors;
}

void VQXML_XMLSecurity::loadDocument(char* xml, int len) {
    if (m_document != nullptr) {
        m_document->release();
        m_document = nullptr;
    }
    if (xml == nullptr || len <= 0)
        throw VQXML_XSECException(VQXML_ERR_PARSE);
    ParseResult result = parse(xml, len, &m_document);
    if (result.errors != 0) {
        vqxml::XString text = vqxml::toXString(vqxml::standardErrorText(VQXML_ERR_PARSE)) + u": " + result.firstError;
        throw VQXML_XSECException(VQXML_ERR_PARSE, text.c_str());
    }
    if (m_document == nullptr || m_document->getDocumentElement() == nullptr)
        throw VQXML_XSECException(VQXML_ERR_PARSE);
    checkDocumentEncoding();
}

void VQXML_XMLSecurity::checkDocumentEncoding() const {
    const XMLCh* encoding = m_document != nullptr ? m_document->getXmlEncoding() : nullptr;
    if (encoding != nullptr && !XMLString::equals(encoding, kUTF8Upper) && !XMLString::equals(encoding, kUTF8Lower))
        throw VQXML_XSECException(VQXML_ERR_ENCODING);
}

char* VQXML_XMLSecurity::getXMLEncoding() {
    if (m_document == nullptr)
        return nullptr;
    const XMLCh* encoding = m_document->getXmlEncoding();
    m_encodingBuf.sbStrcpyIn("");
    if (encoding != nullptr)
        m_encodingBuf.sbTranscodeIn(encoding);
    return const_cast<char*>(m_encodingBuf.rawCharBuffer());
}
