#include "engine/OpenSSLInput.hpp"

#include <cstring>
#include <string>

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

ParsedKeyPair readKeyPair(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen, int baseId,
                          const char* kind, XSECCryptoException::XSECCryptoExceptionType error) {
    const auto fail = [error](const std::string& why) { throw XSECCryptoException(error, why.c_str()); };
    std::shared_ptr<X509> x509;
    if (cert != nullptr && certLen > 0) {
        x509 = readCertificate(cert, certLen);
        if (!x509)
            fail("The certificate is neither DER nor PEM X.509");
    }
    PKeyPtr pkey;
    if (key != nullptr && keyLen > 0) {
        pkey = readPrivateKey(key, keyLen);
        if (!pkey)
            fail(std::string("The private key is neither an unencrypted PKCS#8 nor a traditional ") + kind +
                 " key (DER or PEM)");
        if (x509 && X509_check_private_key(x509.get(), pkey.get()) != 1)
            fail("The private key does not belong to the certificate");
    } else if (x509) {
        pkey.reset(X509_get_pubkey(x509.get()));
    }
    if (!pkey || EVP_PKEY_get_base_id(pkey.get()) != baseId)
        fail(std::string("The key is not a key of type ") + kind);
    return {std::shared_ptr<EVP_PKEY>(pkey.release(), &EVP_PKEY_free), std::move(x509)};
}

}  // namespace vqxml
