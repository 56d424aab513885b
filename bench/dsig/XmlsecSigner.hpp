// The same enveloped signatures made and checked with the libxmlsec1 C library.
#ifndef VQXML_BENCH_DSIG_XMLSECSIGNER_HPP
#define VQXML_BENCH_DSIG_XMLSECSIGNER_HPP

#include <string>

namespace xmlsecbench {

// Starts libxml2, xmlsec and its OpenSSL back end once.
void start();

// Signs like the library does: Signature before TaxInvoiceDocument (or at the end
// of the root), exclusive C14N, RSA-SHA256, one Reference URI="" with the XPath
// transform "not(ancestor-or-self::ds:Signature)", the certificate in X509Data.
// Parses text and returns the serialised result.
std::string signEnveloped(const std::string& text, const std::string& keyDer, const std::string& certDer);

// Verifies with the signer's certificate; true if valid.
bool verify(const std::string& text, const std::string& certDer);

}  // namespace xmlsecbench

#endif
