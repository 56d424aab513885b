// What XML Encryption says about which EncryptedKey serves which EncryptedData,
// and which xml-security-c 2.0 neither writes nor reads: the EncryptedKey's
// ReferenceList of DataReference URIs ("#" and the EncryptedData's Id).
#ifndef VQXML_ENGINE_XENCREFERENCES_HPP
#define VQXML_ENGINE_XENCREFERENCES_HPP

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

class XENCEncryptedKey;

namespace vqxml::xenc {

// The attribute that identifies EncryptedData and EncryptedKey elements.
inline constexpr XMLCh kIdAttribute[] = u"Id";

// Whether element stands somewhere inside a ds:KeyInfo.
bool insideKeyInfo(const XERCES_CPP_NAMESPACE::DOMElement* element);

// Adds a DataReference to "#id" to the key's ReferenceList, which is made where
// XML Encryption puts it (after CipherData and EncryptionProperties, before
// CarriedKeyName) in the key's own namespace prefix when it has none yet.
void addDataReference(XENCEncryptedKey& key, const XMLCh* id, bool prettyPrint);

// Whether the key's ReferenceList holds a DataReference to "#id".
bool refersTo(const XENCEncryptedKey& key, const XMLCh* id);

// The engine follows a ds:RetrievalMethod into the element it names and loads
// that element's own key information, recursively and without a limit: this
// throws XSECException unless every chain of same-document RetrievalMethods
// that starts inside element is shorter than kMaxRetrievalChain and free of
// loops. Names resolve as the engine resolves them (declared ID attributes).
inline constexpr int kMaxRetrievalChain = 8;
void checkRetrievalChains(const XERCES_CPP_NAMESPACE::DOMElement* element);

}  // namespace vqxml::xenc

#endif
