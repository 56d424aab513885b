#include "engine/OpenSSLInput.hpp"

#include <cstring>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>

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
    X509* cert = nullptr;
    if (looksLikePEM(bytes, len)) {
        BIO* bio = BIO_new_mem_buf(bytes, len);
        cert = bio != nullptr ? PEM_read_bio_X509(bio, nullptr, noPassword, nullptr) : nullptr;
        BIO_free(bio);
    } else {
        const unsigned char* p = bytes;
        cert = d2i_X509(nullptr, &p, len);
        if (cert != nullptr && p != bytes + len) {
            X509_free(cert);
            cert = nullptr;
        }
    }
    ERR_clear_error();
    return std::shared_ptr<X509>(cert, &X509_free);
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
