#include "engine/OpenSSLInput.hpp"

#include <cstring>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/VQTKCryptoX509.hpp"

namespace vqxml {

namespace {

bool looksLikePEM(const unsigned char* bytes, int len) {
    static const char kMarker[] = "-----BEGIN ";
    const int n = static_cast<int>(sizeof kMarker) - 1;
    for (int i = 0; i + n <= len && i < 4096; ++i)
        if (std::memcmp(bytes + i, kMarker, n) == 0)
            return true;
    return false;
}

// A PEM reader must never prompt on the terminal for a pass phrase.
int noPassword(char*, int, int, void*) {
    return -1;
}

}  // namespace

std::shared_ptr<X509> readCertificate(const unsigned char* bytes, int len) {
    if (bytes == nullptr || len <= 0)
        return nullptr;
    if (looksLikePEM(bytes, len)) {
        BIO* bio = BIO_new_mem_buf(bytes, len);
        X509* cert = bio != nullptr ? PEM_read_bio_X509(bio, nullptr, noPassword, nullptr) : nullptr;
        BIO_free(bio);
        ERR_clear_error();
        return std::shared_ptr<X509>(cert, &X509_free);
    }
    // The same recipients and signers come back again and again, and decoding
    // a certificate's public key costs more than using it.
    try {
        return sharedCertificate(bytes, static_cast<std::size_t>(len));
    } catch (const XSECCryptoException&) {
        ERR_clear_error();
        return nullptr;
    }
}

PKeyPtr readPrivateKey(const unsigned char* bytes, int len) {
    EVP_PKEY* key = nullptr;
    if (looksLikePEM(bytes, len)) {
        BIO* bio = BIO_new_mem_buf(bytes, len);
        key = bio != nullptr ? PEM_read_bio_PrivateKey(bio, nullptr, noPassword, nullptr) : nullptr;
        BIO_free(bio);
    } else {
        const unsigned char* p = bytes;
        key = d2i_AutoPrivateKey(nullptr, &p, len);
    }
    ERR_clear_error();
    return PKeyPtr(key);
}

}  // namespace vqxml
