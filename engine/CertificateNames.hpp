// Names and serial numbers of certificates as texts.
//
// A name is written most specific first, the way Korean PKI users read it:
// "cn=Hong Gildong,ou=people,o=Example,c=KR". Attribute types are OpenSSL's short
// names in lower case (an unnamed type is its dotted OID), values are UTF-8,
// multi-valued RDNs are joined by '+', and the RFC 4514 special characters are
// escaped with a backslash. A serial number is its decimal text.
#ifndef VQXML_ENGINE_CERTIFICATENAMES_HPP
#define VQXML_ENGINE_CERTIFICATENAMES_HPP

#include <string>

#include <openssl/x509.h>

namespace vqxml {

std::string certificateSubject(const X509* cert);
std::string certificateIssuer(const X509* cert);
std::string certificateSerialDecimal(const X509* cert);

}  // namespace vqxml

#endif
