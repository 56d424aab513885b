// Refusing a certificate: the reason in words and the check it belongs to.
#ifndef VQXML_TOOLKIT_REFUSAL_HPP
#define VQXML_TOOLKIT_REFUSAL_HPP

#include <string>

#include "toolkit/ToolkitInternal.hpp"

namespace vqtk {

// Raises VQTK_ERR_REFUSED, "Certificate refused at depth D (subject): reason",
// with the check (VQTK_CHECK_*) that x509Error, one of OpenSSL's X509_V_ERR
// codes, belongs to.
[[noreturn]] void refuse(const X509* cert, int depth, int x509Error);

// The words for an X509_V_ERR code.
std::string refusalReason(int x509Error);

// The VQTK_CHECK_* an X509_V_ERR code belongs to.
int refusalCheck(int x509Error);

}  // namespace vqtk

#endif
