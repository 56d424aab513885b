// Certificates and CRLs as callers hand them in: DER or PEM, one or several.
#ifndef VQXML_PKI_CERTIFICATEINPUT_HPP
#define VQXML_PKI_CERTIFICATEINPUT_HPP

#include <cstddef>
#include <vector>

namespace vqxml {

using Der = std::vector<unsigned char>;

// Bounds of what one call reads (vqxml.h states them).
constexpr std::size_t kMaxCertificateBytes = 64 * 1024;
constexpr std::size_t kMaxChainBytes = 1024 * 1024;
constexpr std::size_t kMaxCrlBytes = 64 * 1024 * 1024;

// What one input is and how it may come.
struct InputKind {
    const char* what;      // "The certificate", "The intermediates", "The CRLs"
    const char* pemLabel;  // "CERTIFICATE", "X509 CRL"
    std::size_t limit;
};
extern const InputKind kCertificateInput;
extern const InputKind kChainInput;
extern const InputKind kCrlInput;

// The DER items of bytes[0..len), one after the other: bytes without PEM are
// taken as DER as they are (the toolkit reads them strictly); otherwise PEM
// blocks of the kind's label and DER items may follow each other, and text
// between and after PEM blocks is skipped. Null bytes or a length of 0 give no
// item. Raises VQXML_ERR_CERT_INPUT, "<what>: <why>", for a negative length,
// more than the kind's bound, a PEM block that does not decode, is encrypted
// or has another label, and DER that does not say its own length.
Der derItems(const unsigned char* bytes, int len, const InputKind& kind);

}  // namespace vqxml

#endif
