// Namespace URIs the library looks for that the engine has no constant for.
#ifndef VQXML_CORE_NAMESPACES_HPP
#define VQXML_CORE_NAMESPACES_HPP

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

inline constexpr XMLCh kSoap11Namespace[] = u"http://schemas.xmlsoap.org/soap/envelope/";
inline constexpr XMLCh kSoap12Namespace[] = u"http://www.w3.org/2003/05/soap-envelope";
inline constexpr XMLCh kDsigNamespace[] = u"http://www.w3.org/2000/09/xmldsig#";
inline constexpr XMLCh kXmlNamespace[] = u"http://www.w3.org/XML/1998/namespace";
inline constexpr XMLCh kXmlnsNamespace[] = u"http://www.w3.org/2000/xmlns/";
// Exclusive canonicalization's own namespace (its InclusiveNamespaces element).
inline constexpr XMLCh kExcC14nNamespace[] = u"http://www.w3.org/2001/10/xml-exc-c14n#";

}  // namespace vqxml

#endif
