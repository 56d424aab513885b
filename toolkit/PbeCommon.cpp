// What the password-based schemes share: bounded parameters and CBC decryption.
#include <openssl/evp.h>
#include <openssl/objects.h>

#include "toolkit/PasswordBasedEncryption.hpp"

namespace vqtk {

long checkedIterations(const ASN1_INTEGER* iterations) {
    int64_t count = 0;
    if (iterations == nullptr || !ASN1_INTEGER_get_int64(&count, iterations))
        raise(VQTK_ERR_LIMIT, "The iteration count is missing or out of range");
    if (count < 1 || count > VQTK_MAX_PBE_ITERATIONS)
        raise(VQTK_ERR_LIMIT, "The iteration count " + std::to_string(count) +
                                  " is outside 1.." + std::to_string(VQTK_MAX_PBE_ITERATIONS));
    return static_cast<long>(count);
}

Bytes checkedSalt(const ASN1_OCTET_STRING* salt) {
    const int n = salt != nullptr ? ASN1_STRING_length(salt) : 0;
    if (n < 1 || n > VQTK_MAX_SALT)
        raise(VQTK_ERR_LIMIT, "The salt length " + std::to_string(n) + " is outside 1.." +
                                  std::to_string(VQTK_MAX_SALT));
    return {ASN1_STRING_get0_data(salt), static_cast<std::size_t>(n)};
}

CipherPtr fetchCipher(const std::string& name) {
    CipherPtr cipher(EVP_CIPHER_fetch(nullptr, name.c_str(), nullptr));
    if (!cipher)
        raise(VQTK_ERR_UNSUPPORTED,
              "The cipher " + name + " is not available (is OpenSSL's legacy provider installed?)");
    return cipher;
}

SecretBytes decryptCbc(const CipherSetup& setup, Bytes ciphertext) {
    const CipherPtr cipher = fetchCipher(setup.cipher);
    const std::size_t block = static_cast<std::size_t>(EVP_CIPHER_get_block_size(cipher.get()));
    if (ciphertext.size == 0 || ciphertext.size % block != 0)
        raise(VQTK_ERR_FORMAT, "The encrypted key data is not a whole number of cipher blocks");
    if (setup.key.size() != static_cast<std::size_t>(EVP_CIPHER_get_key_length(cipher.get())) ||
        setup.iv.size() != static_cast<std::size_t>(EVP_CIPHER_get_iv_length(cipher.get())))
        raise(VQTK_ERR_FORMAT, "The key or IV length does not fit " + setup.cipher);

    Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> ctx(EVP_CIPHER_CTX_new());
    if (!ctx)
        throw std::bad_alloc();
    SecretBytes plain(ciphertext.size + block);
    int written = 0;
    int last = 0;
    if (!EVP_DecryptInit_ex2(ctx.get(), cipher.get(), setup.key.data(), setup.iv.data(), nullptr) ||
        !EVP_DecryptUpdate(ctx.get(), plain.data(), &written, ciphertext.data,
                           static_cast<int>(ciphertext.size)))
        raise(VQTK_ERR_CRYPTO, "Decryption with " + setup.cipher + " failed: " + opensslReason());
    if (!EVP_DecryptFinal_ex(ctx.get(), plain.data() + written, &last))
        raise(VQTK_ERR_DECRYPT, "Wrong password, or the encrypted key is damaged (bad padding)");
    plain.resize(static_cast<std::size_t>(written + last));
    return plain;
}

std::string dottedOid(const ASN1_OBJECT* id) {
    char text[128] = {};
    if (id == nullptr || OBJ_obj2txt(text, sizeof text, id, 1) <= 0)
        return "?";
    return text;
}

}  // namespace vqtk
