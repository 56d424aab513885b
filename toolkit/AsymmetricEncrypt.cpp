// VQTK_CRYPT_AsymEncrypt: RSA encryption for a certificate's holder.
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include "toolkit/Certificates.hpp"

namespace {

int paddingFor(int selector) {
    switch (selector) {
    case 1: return RSA_PKCS1_OAEP_PADDING;
    case 2: return RSA_PKCS1_PADDING;
    default:
        vqtk::raise(VQTK_ERR_ARGUMENT, "Unknown encryption selector " + std::to_string(selector) +
                                           " (1 = RSA-OAEP, 2 = RSA PKCS #1 v1.5)");
    }
}

}  // namespace

extern "C" {

int VQTK_CRYPT_AsymEncrypt(VQTK_Toolkit* handle, int selector, const VQTK_BINSTR* recipient,
                           const VQTK_BINSTR* in, VQTK_BINSTR* out) {
    return vqtk::guarded(handle, [&] {
        vqtk::require(handle, "The toolkit handle");
        vqtk::require(recipient, "The recipient string");
        vqtk::require(in, "The input string");
        vqtk::require(out, "The output string");
        const int padding = paddingFor(selector);
        const vqtk::X509Ptr cert =
            vqtk::parseCertificate(vqtk::bytesOf(recipient), "The recipient's certificate");
        EVP_PKEY* key = X509_get0_pubkey(cert.get());
        if (key == nullptr || !EVP_PKEY_is_a(key, "RSA"))
            vqtk::raise(VQTK_ERR_UNSUPPORTED, "The recipient's key is not RSA (" +
                                                  vqtk::subjectOf(cert.get()) + ")");
        const vqtk::Bytes plain = vqtk::bytesOf(in);
        if (plain.size == 0)
            vqtk::raise(VQTK_ERR_ARGUMENT, "Nothing to encrypt: the input is empty");

        vqtk::Owned<EVP_PKEY_CTX, EVP_PKEY_CTX_free> ctx(EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr));
        if (!ctx)
            throw std::bad_alloc();
        std::size_t size = 0;
        if (EVP_PKEY_encrypt_init(ctx.get()) != 1 ||
            EVP_PKEY_CTX_set_rsa_padding(ctx.get(), padding) != 1 ||
            EVP_PKEY_encrypt(ctx.get(), nullptr, &size, plain.data, plain.size) != 1)
            vqtk::raise(VQTK_ERR_CRYPTO, "RSA encryption could not start: " + vqtk::opensslReason());
        std::vector<unsigned char> cipher(size);
        if (EVP_PKEY_encrypt(ctx.get(), cipher.data(), &size, plain.data, plain.size) != 1)
            vqtk::raise(VQTK_ERR_ARGUMENT, "RSA encryption refused the input (" +
                                               std::to_string(plain.size) +
                                               " bytes; too long for the key?): " +
                                               vqtk::opensslReason());
        vqtk::store(out, cipher.data(), size);
        return VQTK_OK;
    });
}

}  // extern "C"
