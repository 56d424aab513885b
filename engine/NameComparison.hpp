// Whether two distinguished names written as text name the same entity.
//
// Peers write names differently ("CN=A,O=B,C=XX" from Java, "cn=A,o=B,c=XX"
// from this library, spaces after commas from others), so names are compared
// as X.509 names: both texts are read as RFC 4514 names (attribute types by
// short name, long name or dotted OID, in any case; "#" hex values; escapes)
// and compared with OpenSSL's canonical name comparison, which ignores case
// and repeated spaces in string values. A text that cannot be read as a name
// matches only the identical text.
#ifndef VQXML_ENGINE_NAMECOMPARISON_HPP
#define VQXML_ENGINE_NAMECOMPARISON_HPP

#include <string>

#include <xercesc/util/XercesDefs.hpp>

namespace vqxml {

// Both texts in UTF-8.
bool sameDistinguishedName(const std::string& a, const std::string& b);
// Null names nothing and matches nothing.
bool sameDistinguishedName(const XMLCh* a, const XMLCh* b);

}  // namespace vqxml

#endif
