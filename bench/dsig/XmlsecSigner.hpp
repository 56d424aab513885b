// The same enveloped signatures made and checked with the libxmlsec1 C library.
#ifndef VQXML_BENCH_DSIG_XMLSECSIGNER_HPP
#define VQXML_BENCH_DSIG_XMLSECSIGNER_HPP

#include <string>
#include <vector>

#include <libxml/tree.h>
#include <xmlsec/keys.h>
#include <xmlsec/transforms.h>
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

// An RSA key read once, as a service keeps its key: each signature context gets
// a copy of it (libxmlsec1 frees the key of a context with the context). The key
// holds no certificate: copying one (X509_dup decodes it again) would cost more
// than a tenth of a small signature; the signer's certificate is kept as base64
// text for the template instead.
class SignatureKey {
public:
    // The private key (PKCS #8 DER) and its certificate (DER).
    static SignatureKey signer(const std::string& keyDer, const std::string& certDer);
    // The public key of a certificate (DER), for verifying.
    static SignatureKey verifier(const std::string& certDer);
    SignatureKey(SignatureKey&& other) noexcept;
    SignatureKey& operator=(SignatureKey&&) = delete;
    ~SignatureKey();
    xmlSecKeyPtr copy() const;
    // The signer's certificate in base64, for X509Certificate; empty for a verifier.
    const std::string& certificate() const { return m_certificate; }

private:
    SignatureKey(xmlSecKeyPtr key, std::string certificate);
    xmlSecKeyPtr m_key;
    std::string m_certificate;
};

// How a signature reads the document: the canonicalization of SignedInfo, and the
// Reference's transforms in order (an XPath transform takes `xpath`, with the
// prefix ds bound on the Signature element).
struct Recipe {
    xmlSecTransformId signedInfoC14n;
    std::vector<xmlSecTransformId> transforms;
    std::string xpath;
};

// Signs like the library does: ds:Signature before TaxInvoiceDocument (or at the
// end of the root), RSA-SHA256, one Reference URI="" with SHA-256 and the recipe's
// transforms, the certificate in X509Data. Parses text and returns the serialised
// result.
std::string signEnveloped(const std::string& text, const Recipe& recipe, const SignatureKey& signer);

// Verifies the document's first Signature with the key; true if valid.
bool verify(const std::string& text, const SignatureKey& verifier);

}  // namespace xmlsecbench

#endif
