#include "engine/CertificateAppending.hpp"

#include <new>

#include <xsec/dsig/DSIGKeyInfoX509.hpp>

#include "engine/Base64.hpp"

namespace vqxml {

void appendX509Certificate(DSIGKeyInfoX509& x509, const std::vector<unsigned char>& der, const std::function<void()>& giveUpOwner) {
    const auto text = base64Encode(der);
    const int listed = x509.getCertificateListSize();
    try {
        x509.appendX509Certificate(text.c_str());
    } catch (const std::bad_alloc&) {
        // Only the making of the certificate object fails this way once the holder
        // is listed; later failures (decoding) come after the pointer is set.
        if (x509.getCertificateListSize() > listed)
            giveUpOwner();
        throw;
    }
}

}  // namespace vqxml
