#include "engine/VQTKCryptoHash.hpp"

#include <cstring>

#include <xsec/enc/XSECCryptoException.hpp>

namespace {

void check(int ok, const char* what) {
    if (ok != 1)
        throw XSECCryptoException(XSECCryptoException::MDError, what);
}

}  // namespace

const EVP_MD* VQTKCryptoHash::digestFor(HashType type) {
    switch (type) {
    case XSECCryptoHash::HASH_SHA1:
        return EVP_sha1();
    case XSECCryptoHash::HASH_MD5:
        return EVP_md5();
    case XSECCryptoHash::HASH_SHA224:
        return EVP_sha224();
    case XSECCryptoHash::HASH_SHA256:
        return EVP_sha256();
    case XSECCryptoHash::HASH_SHA384:
        return EVP_sha384();
    case XSECCryptoHash::HASH_SHA512:
        return EVP_sha512();
    default:
        throw XSECCryptoException(XSECCryptoException::MDError, "OpenSSL:Hash - unknown digest");
    }
}

VQTKCryptoHash::VQTKCryptoHash(HashType type) : m_type(type), m_md(digestFor(type)), m_ctx(EVP_MD_CTX_new()) {
    if (m_ctx == nullptr)
        throw XSECCryptoException(XSECCryptoException::MDError, "OpenSSL:Hash - cannot allocate a digest context");
    try {
        reset();
    } catch (...) {
        EVP_MD_CTX_free(m_ctx);
        throw;
    }
}

VQTKCryptoHash::~VQTKCryptoHash() {
    EVP_MD_CTX_free(m_ctx);
}

void VQTKCryptoHash::reset() {
    check(EVP_DigestInit_ex(m_ctx, m_md, nullptr), "OpenSSL:Hash - cannot start the digest");
}

void VQTKCryptoHash::hash(unsigned char* data, unsigned int length) {
    check(EVP_DigestUpdate(m_ctx, data, length), "OpenSSL:Hash - cannot digest the data");
}

unsigned int VQTKCryptoHash::finish(unsigned char* hash, unsigned int maxLength) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    check(EVP_DigestFinal_ex(m_ctx, digest, &length), "OpenSSL:Hash - cannot finish the digest");
    const unsigned int copied = maxLength < length ? maxLength : length;
    std::memcpy(hash, digest, copied);
    return copied;
}

XSECCryptoHash::HashType VQTKCryptoHash::getHashType() const {
    return m_type;
}

void VQTKCryptoHash::setKey(const XSECCryptoKey*) {
    throw XSECCryptoException(XSECCryptoException::MDError, "OpenSSL:Hash - a digest takes no key");
}
