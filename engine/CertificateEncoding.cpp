#include "engine/CertificateEncoding.hpp"

namespace vqxml {

std::vector<unsigned char> encodeCertificate(const X509* cert) {
    const int len = i2d_X509(cert, nullptr);
    if (len <= 0)
        return {};
    std::vector<unsigned char> der(static_cast<size_t>(len));
    unsigned char* at = der.data();
    if (i2d_X509(cert, &at) != len)
        return {};
    return der;
}

}  // namespace vqxml
