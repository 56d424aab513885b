// Elements made by a parser, their names interned once per name.
//
// Xerces interns an element's qualified name, prefix, local name and namespace
// URI in the document's string pool for every element it makes, hashing the
// whole URI (often 60 to 80 characters) each time: a tenth of parsing or of
// decrypting into a document went there. A maker remembers the interned strings
// of the first element of each name and namespace and gives them to the later
// ones, so that only the short qualified name is looked up. Where the scanner
// names the element by an object of its own (its declaration, one for each
// qualified name in a parse), not even that: the element is found by that
// object's address.
#ifndef VQXML_CORE_ADAPTER_ELEMENTMAKER_HPP
#define VQXML_CORE_ADAPTER_ELEMENTMAKER_HPP

#include <string>
#include <unordered_map>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace vqxml {

// Lives no longer than one parse: the namespace URIs it keys on are the
// scanner's, whose text stays put while it runs.
class ElementMaker {
public:
    // doc: a document Xerces made.
    explicit ElementMaker(XERCES_CPP_NAMESPACE::DOMDocument* doc) : m_doc(doc) {}

    // An element of doc, in no tree yet, named qName in namespace uri (null or
    // empty: none). The names are not checked again: the scanner has.
    XERCES_CPP_NAMESPACE::DOMElement* make(const XMLCh* uri, const XMLCh* qName);
    // The same for an element the scanner names by key, an object that stands
    // for one prefix and local name (or one namespace and local name) for the
    // whole parse; prefix null or empty: none.
    XERCES_CPP_NAMESPACE::DOMElement* make(const void* key, const XMLCh* uri, const XMLCh* prefix,
                                           const XMLCh* localName);

private:
    struct Names {
        const XMLCh* scannerUri;
        const XMLCh* uri;
        const XMLCh* localName;
        const XMLCh* prefix;
        const XMLCh* qName;
    };

    // Gives element (of the DOM's namespace-aware kind) the names of the first
    // of its name, all but the qualified name.
    static void giveNames(XERCES_CPP_NAMESPACE::DOMElement* element, const Names& names);
    static Names namesOf(const XMLCh* scannerUri, const XERCES_CPP_NAMESPACE::DOMElement* element);

    XERCES_CPP_NAMESPACE::DOMDocument* m_doc;
    // By the interned qualified name.
    std::unordered_map<const XMLCh*, std::vector<Names>> m_names;
    // By the scanner's key.
    std::unordered_map<const void*, std::vector<Names>> m_keyed;
    std::basic_string<XMLCh> m_qName;
};

}  // namespace vqxml

#endif
