// A DOM parser that links the nodes it makes itself (DomLinking.hpp)
// instead of through the DOM's checked, cast-heavy appends. It makes the same
// tree as XercesDOMParser: elements, attributes and text of the common case go
// the quick way; anything the quick way does not cover (the document element,
// a DTD's defaulted or ID attributes, CDATA, schema information) is left to
// XercesDOMParser.
//
// A long text comes from the scanner in pieces (kTextPiece units at most),
// which are kept aside until the next element starts or ends, or characters
// come after another node, and then copied once into a node of the text's
// exact length. The scanner's own buffer would double to hold the whole text,
// and the DOM's growth would leave each smaller copy behind: four times the
// text in all, where a CipherValue's base64 is most of the document.
#ifndef VQXML_CORE_ADAPTER_QUICKDOMPARSER_HPP
#define VQXML_CORE_ADAPTER_QUICKDOMPARSER_HPP

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/XMLString.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/adapter/ElementMaker.hpp"

namespace vqxml {

class QuickDOMParser : public XERCES_CPP_NAMESPACE::XercesDOMParser {
public:
    QuickDOMParser();

    // An empty element ends through endElement() here, whichever way it was
    // made, so that subclasses see one end for every start.
    void startElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& decl, unsigned int urlId, const XMLCh* prefix,
                      const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attributes,
                      XMLSize_t attributeCount, bool isEmpty, bool isRoot) override;
    void endElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& decl, unsigned int urlId, bool isRoot,
                    const XMLCh* prefix) override;
    void docCharacters(const XMLCh* chars, XMLSize_t length, bool cdataSection) override;
    // Every text the parser makes, its buffer no longer than its value.
    XERCES_CPP_NAMESPACE::DOMText* createText(const XMLCh* chars, XMLSize_t length) override;
    void startDocument() override;

    static constexpr XMLSize_t kTextPiece = 16 * 1024;

protected:
    // The line the scanner has reached, for messages.
    XMLFileLoc currentLine() const;

private:
    bool startQuickly(const XERCES_CPP_NAMESPACE::XMLElementDecl& decl, unsigned int urlId, const XMLCh* prefix,
                      const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attributes,
                      XMLSize_t attributeCount);
    XERCES_CPP_NAMESPACE::DOMElement* makeElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& decl,
                                                  unsigned int urlId, const XMLCh* prefix);
    void addAttributes(XERCES_CPP_NAMESPACE::DOMElement* element,
                       const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attributes,
                       XMLSize_t attributeCount);
    bool endQuickly();
    void finishLongText();

    std::optional<ElementMaker> m_elements;  // the parse's
    // The text node whose later pieces are kept aside, and those pieces.
    XERCES_CPP_NAMESPACE::DOMText* m_longText = nullptr;
    std::vector<std::basic_string<XMLCh>> m_pieces;
};

}  // namespace vqxml

#endif
