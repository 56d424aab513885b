// Names of OASIS Web Services Security 1.0/1.1 and the X.509 Token Profile.
#ifndef VQXML_ENGINE_WSSEC_WSSNAMES_HPP
#define VQXML_ENGINE_WSSEC_WSSNAMES_HPP

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
class DOMNode;
XERCES_CPP_NAMESPACE_END

namespace vqxml::wss {

inline constexpr XMLCh kWsse[] = u"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd";
inline constexpr XMLCh kWsu[] = u"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";
inline constexpr XMLCh kDsig[] = u"http://www.w3.org/2000/09/xmldsig#";
inline constexpr XMLCh kXenc[] = u"http://www.w3.org/2001/04/xmlenc#";
inline constexpr XMLCh kXmlns[] = u"http://www.w3.org/2000/xmlns/";
inline constexpr XMLCh kX509v3[] =
    u"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-x509-token-profile-1.0#X509v3";
inline constexpr XMLCh kBase64Binary[] =
    u"http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-soap-message-security-1.0#Base64Binary";
inline constexpr XMLCh kEncryptedKeyToken[] =
    u"http://docs.oasis-open.org/wss/oasis-wss-soap-message-security-1.1#EncryptedKey";

bool isElement(const XERCES_CPP_NAMESPACE::DOMNode* node, const XMLCh* ns, const XMLCh* localName);
// The first child element of parent with that name, or null.
XERCES_CPP_NAMESPACE::DOMElement* childElement(const XERCES_CPP_NAMESPACE::DOMNode* parent, const XMLCh* ns,
                                               const XMLCh* localName);
// The first element in document order below node (node included) with that name.
XERCES_CPP_NAMESPACE::DOMElement* descendant(const XERCES_CPP_NAMESPACE::DOMNode* node, const XMLCh* ns,
                                             const XMLCh* localName);
// The SOAP 1.1 or 1.2 Header and Body of an envelope, or null.
XERCES_CPP_NAMESPACE::DOMElement* soapPart(const XERCES_CPP_NAMESPACE::DOMDocument* doc, const XMLCh* localName);
// Every element of the document whose Id, id or wsu:Id is id (up to two: more
// than one is already a refusal).
int elementsWithId(const XERCES_CPP_NAMESPACE::DOMDocument* doc, const XMLCh* id,
                   XERCES_CPP_NAMESPACE::DOMElement** first);

}  // namespace vqxml::wss

#endif
