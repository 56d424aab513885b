// What XML Encryption says about which EncryptedKey serves which EncryptedData,
// and which xml-security-c 2.0 neither writes nor reads: the EncryptedKey's
// ReferenceList of DataReference URIs ("#" and the EncryptedData's Id).
#ifndef VQXML_ENGINE_XENCREFERENCES_HPP
#define VQXML_ENGINE_XENCREFERENCES_HPP

#include <vector>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
class DOMNode;
XERCES_CPP_NAMESPACE_END

class XENCEncryptedKey;

namespace vqxml::xenc {

// The attribute that identifies EncryptedData and EncryptedKey elements.
inline constexpr XMLCh kIdAttribute[] = u"Id";

// Declares the Id attribute of every XML Encryption element of doc an ID, as
// XML Encryption's schema has it, so that the engine finds an EncryptedKey a
// ds:RetrievalMethod names (Santuario's and .NET's way to point at a
// document-level key) as the library's own checks do (SameDocumentIds.hpp).
void declareIds(XERCES_CPP_NAMESPACE::DOMDocument* doc);

// The elements of XML Encryption's namespace named localName under root, in
// document order.
std::vector<XERCES_CPP_NAMESPACE::DOMElement*> xencElements(XERCES_CPP_NAMESPACE::DOMNode* root,
                                                           const XMLCh* localName);

// Whether element stands somewhere inside a ds:KeyInfo.
bool insideKeyInfo(const XERCES_CPP_NAMESPACE::DOMElement* element);

// Adds a DataReference to "#id" to the key's ReferenceList, which is made where
// XML Encryption puts it (after CipherData and EncryptionProperties, before
// CarriedKeyName) in the key's own namespace prefix when it has none yet.
void addDataReference(XENCEncryptedKey& key, const XMLCh* id, bool prettyPrint);

// Whether the key's ReferenceList holds a DataReference to "#id".
bool refersTo(const XENCEncryptedKey& key, const XMLCh* id);

}  // namespace vqxml::xenc

#endif
