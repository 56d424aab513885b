// The DOM parser every document goes through: it refuses, during the parse and
// before any tree is built from it, what would break the bounds of
// core/ParseLimits.hpp: elements nested too deep or with too many attributes,
// and a DTD that would cost more than its size (too many or too large
// declarations, parameter entities, entity references or declared attribute
// defaults that would multiply the document).
#ifndef VQXML_CORE_ADAPTER_BOUNDEDDOMPARSER_HPP
#define VQXML_CORE_ADAPTER_BOUNDEDDOMPARSER_HPP

#include <cstddef>
#include <string>

#include "core/adapter/QuickDOMParser.hpp"
#include "core/Transcode.hpp"

namespace vqxml {

// Thrown through the scanner when a bound is broken, to tell that refusal from
// the others; text names the bound and the line.
struct BoundBroken {
    XString text;
};

class BoundedDOMParser : public QuickDOMParser {
public:
    // levelsAbove: the elements open around the text before it starts.
    explicit BoundedDOMParser(std::size_t levelsAbove = 0);

    void startElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& decl, unsigned int urlId, const XMLCh* prefix,
                      const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attributes,
                      XMLSize_t attributeCount, bool isEmpty, bool isRoot) override;
    void endElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& decl, unsigned int urlId, bool isRoot,
                    const XMLCh* prefix) override;

    void elementDecl(const XERCES_CPP_NAMESPACE::DTDElementDecl& decl, bool isIgnored) override;
    void startAttList(const XERCES_CPP_NAMESPACE::DTDElementDecl& elemDecl) override;
    void attDef(const XERCES_CPP_NAMESPACE::DTDElementDecl& elemDecl, const XERCES_CPP_NAMESPACE::DTDAttDef& attDef,
                bool ignoring) override;
    void entityDecl(const XERCES_CPP_NAMESPACE::DTDEntityDecl& entityDecl, bool isPEDecl, bool isIgnored) override;
    void notationDecl(const XERCES_CPP_NAMESPACE::XMLNotationDecl& notDecl, bool isIgnored) override;
    void doctypeComment(const XMLCh* comment) override;
    void doctypePI(const XMLCh* target, const XMLCh* data) override;
    void doctypeWhitespace(const XMLCh* chars, XMLSize_t length) override;

private:
    void declared();
    void checkSubsetLength() const;
    [[noreturn]] void refuse(const std::string& what) const;

    std::size_t m_depth;
    std::size_t m_declarations = 0;
    std::size_t m_defaultedCharacters = 0;
};

}  // namespace vqxml

#endif
