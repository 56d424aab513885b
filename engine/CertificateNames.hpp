// Names and serial numbers of X.509 certificates as the library hands them out
// (X509SubjectName, X509IssuerName, the getters of the C interface).
//
// A name is written in RFC 4514 form in the order Korean PKI users read it, the
// most specific attribute first (the reverse of the DER order):
//     cn=홍길동()0012345,ou=개발팀,o=VQXML 테스트,c=KR
//  - relative distinguished names are separated by ",", the attributes of a
//    multi-valued one by "+", with no spaces around either;
//  - attribute names are OpenSSL's short names in lower case ("cn", "ou", "o",
//    "c", "l", "st", "emailaddress", "serialnumber", "dc", "uid", ...); an
//    attribute OpenSSL does not know is written as its dotted OID;
//  - string values are UTF-8, whatever their ASN.1 string type; values that are
//    not strings are written "#" and the hex of their DER encoding;
//  - escaping is RFC 4514's: a backslash before , + " \ < > ; anywhere, before a
//    leading "#" or space and a trailing space; NUL as "\00". Other bytes,
//    UTF-8 sequences included, are written as they are.
// An empty name gives "".
//
// The serial number is written in decimal ("-" first if negative).
#ifndef VQXML_ENGINE_CERTIFICATENAMES_HPP
#define VQXML_ENGINE_CERTIFICATENAMES_HPP

#include <string>

#include <openssl/x509.h>

namespace vqxml {

std::string certificateSubject(const X509* cert);
std::string certificateIssuer(const X509* cert);
std::string certificateSerialDecimal(const X509* cert);

// The name formatting above, for any X509_NAME.
std::string formatName(const X509_NAME* name);

}  // namespace vqxml

#endif
