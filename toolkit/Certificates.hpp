// Reading certificates and CRLs for the toolkit: strict DER, names for texts, key kinds.
#ifndef VQXML_TOOLKIT_CERTIFICATES_HPP
#define VQXML_TOOLKIT_CERTIFICATES_HPP

#include <string>

#include "toolkit/ToolkitInternal.hpp"

namespace vqtk {

// Exactly one DER certificate, nothing after it; raises VQTK_ERR_FORMAT naming what.
X509Ptr parseCertificate(Bytes der, const std::string& what);

// Zero or more DER certificates one after the other.
X509StackPtr parseCertificateList(Bytes der, const std::string& what);

// Zero or more DER CRLs one after the other.
X509CrlStackPtr parseCrlList(Bytes der, const std::string& what);

// The subject in RFC 2253 form, in EUC-KR (see eucKrFromUtf8).
std::string subjectOf(const X509* cert);

// Whether the certificate's key is KCDSA, which OpenSSL cannot decode.
bool hasKcdsaKey(const X509* cert);

}  // namespace vqtk

#endif
