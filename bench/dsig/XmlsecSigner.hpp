// The same enveloped signatures made and checked with the libxmlsec1 C library.
#ifndef VQXML_BENCH_DSIG_XMLSECSIGNER_HPP
#define VQXML_BENCH_DSIG_XMLSECSIGNER_HPP

#include <string>

#include <libxml/tree.h>
#include <xmlsec/xmlsec.h>

namespace xmlsecbench {

// Starts libxml2, xmlsec and its OpenSSL back end once.
void start();

// The helpers both libxmlsec1 drivers use: text as xmlsec bytes, a parse that
// never touches the network (and takes large documents), the document as text.
inline const xmlSecByte* bytes(const std::string& s) {
    return reinterpret_cast<const xmlSecByte*>(s.data());
}
xmlDocPtr parse(const std::string& text);
std::string dump(xmlDocPtr doc);

// Signs like the library does: Signature before TaxInvoiceDocument (or at the end
// of the root), exclusive C14N, RSA-SHA256, one Reference URI="" with the XPath
// transform "not(ancestor-or-self::ds:Signature)", the certificate in X509Data.
// Parses text and returns the serialised result.
std::string signEnveloped(const std::string& text, const std::string& keyDer, const std::string& certDer);

// Verifies with the signer's certificate; true if valid.
bool verify(const std::string& text, const std::string& certDer);

}  // namespace xmlsecbench

#endif
