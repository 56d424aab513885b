// The crypto provider's message digests. xml-security-c's own OpenSSL digest
// ignores a failing EVP_DigestInit (OpenSSL 3 allocates there, so it fails when
// memory runs out) and then updates a context that has no digest state, which
// crashes; this one checks every OpenSSL call and raises XSECCryptoException.
#ifndef VQXML_ENGINE_VQTKCRYPTOHASH_HPP
#define VQXML_ENGINE_VQTKCRYPTOHASH_HPP

#include <openssl/evp.h>
#include <xsec/enc/XSECCryptoHash.hpp>

class VQTKCryptoHash : public XSECCryptoHash {
public:
    explicit VQTKCryptoHash(HashType type);
    // OpenSSL's digest for the engine's type; throws XSECCryptoException for others.
    static const EVP_MD* digestFor(HashType type);
    ~VQTKCryptoHash() override;
    VQTKCryptoHash(const VQTKCryptoHash&) = delete;
    VQTKCryptoHash& operator=(const VQTKCryptoHash&) = delete;

    void reset() override;
    void hash(unsigned char* data, unsigned int length) override;
    // Copies at most maxLength bytes of the digest; returns how many.
    unsigned int finish(unsigned char* hash, unsigned int maxLength) override;
    HashType getHashType() const override;
    // A plain digest has no key: always refused.
    void setKey(const XSECCryptoKey* key) override;

private:
    HashType m_type;
    const EVP_MD* m_md;
    EVP_MD_CTX* m_ctx;
};

#endif
