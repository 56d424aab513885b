#include "core/adapter/BoundedDOMParser.hpp"

#include <algorithm>
#include <iterator>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "core/ParseLimits.hpp"
#include "core/adapter/Upstream.hpp"

XERCES_CPP_NAMESPACE_USE

namespace {

// Whether an entity's value (references to general entities kept as written,
// character references already replaced) refers to an entity other than the
// five XML predefines.
bool refersToEntities(const XMLCh* value) {
    static const char16_t* const kPredefined[] = {u"lt", u"gt", u"amp", u"apos", u"quot"};
    for (const XMLCh* at = value != nullptr ? XMLString::findAny(value, u"&") : nullptr; at != nullptr;
         at = XMLString::findAny(at + 1, u"&")) {
        const XMLCh* end = XMLString::findAny(at + 1, u";");
        if (at[1] == u'#')
            continue;
        if (end == nullptr)
            return true;
        const std::u16string name(at + 1, end);
        if (std::find(std::begin(kPredefined), std::end(kPredefined), name) == std::end(kPredefined))
            return true;
    }
    return false;
}

}  // namespace

vqxml::BoundedDOMParser::BoundedDOMParser(std::size_t levelsAbove) : m_depth(levelsAbove) {}

void vqxml::BoundedDOMParser::startElement(const XMLElementDecl& decl, const unsigned int urlId,
                                           const XMLCh* const prefix, const RefVectorOf<XMLAttr>& attributes,
                                           const XMLSize_t attributeCount, const bool isEmpty, const bool isRoot) {
    const std::string broken = boundBrokenBy(m_depth + 1, attributeCount);
    if (!broken.empty())
        refuse(broken);
    // Attributes the DTD adds to every element of a type cost as much as if the
    // document spelled them out, without its size saying so.
    for (XMLSize_t i = 0; i < attributeCount; ++i) {
        const XMLAttr* attribute = attributes.elementAt(i);
        if (attribute->getSpecified())
            continue;
        m_defaultedCharacters +=
            XMLString::stringLen(attribute->getQName()) + XMLString::stringLen(attribute->getValue());
        if (m_defaultedCharacters > kMaxDefaultedAttributeCharacters)
            refuse("Attributes that the DTD adds to elements exceed " +
                   std::to_string(kMaxDefaultedAttributeCharacters) + " characters");
    }
    ++m_depth;
    QuickDOMParser::startElement(decl, urlId, prefix, attributes, attributeCount, isEmpty, isRoot);
}

void vqxml::BoundedDOMParser::endElement(const XMLElementDecl& decl, const unsigned int urlId, const bool isRoot,
                                         const XMLCh* const prefix) {
    --m_depth;
    QuickDOMParser::endElement(decl, urlId, isRoot, prefix);
}

// The DOM keeps every element's declared defaults and builds all of them again,
// each looked up among the others, for every attribute list declared for the
// element: declarations cost the cube of their number (2,000 took 47 s), so
// their number is bounded before they get there.
void vqxml::BoundedDOMParser::elementDecl(const DTDElementDecl& decl, const bool isIgnored) {
    declared();
    QuickDOMParser::elementDecl(decl, isIgnored);
    checkSubsetLength();
}

void vqxml::BoundedDOMParser::startAttList(const DTDElementDecl& elemDecl) {
    declared();
    QuickDOMParser::startAttList(elemDecl);
}

void vqxml::BoundedDOMParser::attDef(const DTDElementDecl& elemDecl, const DTDAttDef& attDef, const bool ignoring) {
    declared();
    QuickDOMParser::attDef(elemDecl, attDef, ignoring);
    checkSubsetLength();
}

// Parameter entities are refused at their declaration: expanded between
// declarations they can nest without producing anything the other bounds
// would count. General entities may not refer to other entities either: the
// DTD expands references in attribute defaults without counting them, so
// nesting would multiply there unseen. What is left is bounded: an entity's
// value, and the number of expansions in the document (the parser's security
// manager).
void vqxml::BoundedDOMParser::entityDecl(const DTDEntityDecl& entityDecl, const bool isPEDecl, const bool isIgnored) {
    declared();
    if (isPEDecl)
        refuse("Parameter entities are not supported");
    if (entityDecl.getValueLen() > kMaxEntityValueLength)
        refuse("An entity's value is longer than " + std::to_string(kMaxEntityValueLength) + " characters");
    if (refersToEntities(entityDecl.getValue()))
        refuse("An entity that refers to other entities is not supported");
    QuickDOMParser::entityDecl(entityDecl, isPEDecl, isIgnored);
    checkSubsetLength();
}

void vqxml::BoundedDOMParser::notationDecl(const XMLNotationDecl& notDecl, const bool isIgnored) {
    declared();
    QuickDOMParser::notationDecl(notDecl, isIgnored);
    checkSubsetLength();
}

void vqxml::BoundedDOMParser::doctypeComment(const XMLCh* const comment) {
    QuickDOMParser::doctypeComment(comment);
    checkSubsetLength();
}

void vqxml::BoundedDOMParser::doctypePI(const XMLCh* const target, const XMLCh* const data) {
    QuickDOMParser::doctypePI(target, data);
    checkSubsetLength();
}

void vqxml::BoundedDOMParser::doctypeWhitespace(const XMLCh* const chars, const XMLSize_t length) {
    QuickDOMParser::doctypeWhitespace(chars, length);
    checkSubsetLength();
}

void vqxml::BoundedDOMParser::declared() {
    if (++m_declarations > kMaxDeclarations)
        refuse("The DTD has more than " + std::to_string(kMaxDeclarations) + " declarations");
}

// The parser keeps the internal subset's text as it reads it.
void vqxml::BoundedDOMParser::checkSubsetLength() const {
    if (fInternalSubset.getLen() > kMaxInternalSubsetLength)
        refuse("The DTD is longer than " + std::to_string(kMaxInternalSubsetLength) + " characters");
}

void vqxml::BoundedDOMParser::refuse(const std::string& what) const {
    const XString text = toXString(what) + u" (line " +
                         toXString(std::to_string(currentLine())) + u")";
    throw BoundBroken{text};
}
