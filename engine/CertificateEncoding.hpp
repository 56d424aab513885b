// A certificate's DER bytes.
#ifndef VQXML_ENGINE_CERTIFICATEENCODING_HPP
#define VQXML_ENGINE_CERTIFICATEENCODING_HPP

#include <vector>

#include <openssl/x509.h>

namespace vqxml {

// Written into a buffer of our own: OpenSSL's allocating form of i2d_X509 loses
// its buffer when the second encoding pass fails (as when memory runs out).
// Empty if the certificate cannot be encoded.
std::vector<unsigned char> encodeCertificate(const X509* cert);

}  // namespace vqxml

#endif
