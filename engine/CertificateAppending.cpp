#include "engine/CertificateAppending.hpp"

#include <xsec/dsig/DSIGKeyInfoX509.hpp>

#include "engine/Base64.hpp"

namespace vqxml {

void appendX509Certificate(DSIGKeyInfoX509& x509, const std::vector<unsigned char>& der, const std::function<void()>& giveUpOwner) {
    const auto text = base64Encode(der);
    try {
        x509.appendX509Certificate(text.c_str());
    } catch (...) {
        giveUpOwner();
        throw;
    }
}

}  // namespace vqxml
