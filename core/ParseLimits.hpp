// Bounds on the shape of every document the library parses, and of decrypted
// content before the engine parses it.
//
// Real documents are shallow and narrow: a tax invoice nests about a dozen
// levels, a SOAP message with a WS-Security header and an ebXML envelope fewer
// than twenty, and no element of theirs carries more than a handful of
// attributes and namespace declarations. The engines walk trees recursively
// (serialisation, namespace and XPath processing, freeing the tree), so a
// document nested tens of thousands deep would exhaust the stack long before
// it got anywhere; many thousand attributes on one element cost sorting and
// namespace work on every canonicalisation. The bounds leave real documents
// far inside and stop the rest during the parse.
//
// A DTD in the document is read (for ID attributes, defaults and entities) but
// may not cost more than its size: real documents declare a handful of
// attributes and entities, or have no DTD at all (SOAP forbids one).
#ifndef VQXML_CORE_PARSELIMITS_HPP
#define VQXML_CORE_PARSELIMITS_HPP

#include <cstddef>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
XERCES_CPP_NAMESPACE_END

namespace vqxml {

// Levels of element nesting; the document element is level 1.
constexpr std::size_t kMaxElementDepth = 256;
// Attributes of one element, namespace declarations included.
constexpr std::size_t kMaxAttributesPerElement = 256;

// Declarations of the DTD: elements, attribute lists, each attribute of a list,
// entities and notations. Parameter entities are not taken at all.
constexpr std::size_t kMaxDeclarations = 128;
// Characters of the internal DTD subset (the DTD itself, comments included).
constexpr std::size_t kMaxInternalSubsetLength = 64 * 1024;
// Entity references expanded in a document's content and attribute values,
// and characters of one entity's value (entities may not refer to entities):
// together, entities add at most 256 Ki characters there; in a declared
// attribute default, at most the value length per reference written.
constexpr std::size_t kMaxEntityExpansions = 2048;
constexpr std::size_t kMaxEntityValueLength = 128;
// Characters (names and values) of the attributes that declared defaults add
// to the elements of a document.
constexpr std::size_t kMaxDefaultedAttributeCharacters = 1024 * 1024;
// Characters of a distinguished name or key name in key information
// (X509SubjectName, X509IssuerName, KeyName): the engine reads them in time
// that grows with the square of their length. Real ones are under 300.
constexpr std::size_t kMaxNameLength = 4096;

// What an element at this level (the document element is 1) with so many
// attributes breaks; empty when it is within the bounds.
std::string boundBrokenBy(std::size_t level, std::size_t attributeCount);

// Throws the parse status when the XML text (UTF-8; elements, content or both)
// would break the bounds in a place levelsAbove elements deep (0: as the whole
// document). For text that another parser is about to read, such as the
// engine's parse of decrypted content. Namespaces are not resolved.
void checkFragmentShape(const char* text, std::size_t length, std::size_t levelsAbove);
// The same for a whole document that another parser is about to read.
void checkDocumentShape(const char* text, std::size_t length);

// Parses text (a document, such as the octets of a transform that the next
// transform needs as nodes) within the bounds, loading nothing from outside;
// the number of errors. *out is the tree, or null; the caller releases it.
int parseBounded(const char* text, std::size_t length, XERCES_CPP_NAMESPACE::DOMDocument** out);

}  // namespace vqxml

#endif
