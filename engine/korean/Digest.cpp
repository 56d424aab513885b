#include "engine/korean/Digest.hpp"

#include <openssl/evp.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/Has160.hpp"

namespace vqxml::korean {

std::size_t digestSize(HashAlgorithm alg) {
    switch (alg) {
    case HashAlgorithm::Sha224:
        return 28;
    case HashAlgorithm::Sha256:
        return 32;
    default:
        return 20;
    }
}

std::size_t digestBlockSize(HashAlgorithm) {
    return 64;
}

class Digest::Engine {
public:
    virtual ~Engine() = default;
    virtual void update(const std::uint8_t* data, std::size_t len) = 0;
    virtual void finish(std::uint8_t* out) = 0;
};

namespace {

class Has160Engine : public Digest::Engine {
public:
    void update(const std::uint8_t* data, std::size_t len) override { m_hash.update(data, len); }
    void finish(std::uint8_t* out) override { m_hash.finish(out); }

private:
    Has160 m_hash;
};

class EvpEngine : public Digest::Engine {
public:
    explicit EvpEngine(const EVP_MD* md) : m_md(md), m_ctx(EVP_MD_CTX_new()) {
        if (m_ctx == nullptr)
            throwOpenSSLError("cannot allocate a digest context");
        try {
            restart();
        } catch (...) {
            EVP_MD_CTX_free(m_ctx);
            throw;
        }
    }
    ~EvpEngine() override { EVP_MD_CTX_free(m_ctx); }
    void update(const std::uint8_t* data, std::size_t len) override {
        if (EVP_DigestUpdate(m_ctx, data, len) != 1)
            throwOpenSSLError("digest update failed");
    }
    void finish(std::uint8_t* out) override {
        if (EVP_DigestFinal_ex(m_ctx, out, nullptr) != 1)
            throwOpenSSLError("digest final failed");
        restart();
    }

private:
    void restart() {
        if (EVP_DigestInit_ex(m_ctx, m_md, nullptr) != 1)
            throwOpenSSLError("digest init failed");
    }
    const EVP_MD* m_md;
    EVP_MD_CTX* m_ctx;
};

const EVP_MD* evpDigest(HashAlgorithm alg) {
    switch (alg) {
    case HashAlgorithm::Sha1:
        return EVP_sha1();
    case HashAlgorithm::Sha224:
        return EVP_sha224();
    default:
        return EVP_sha256();
    }
}

}  // namespace

Digest::Digest(HashAlgorithm alg) : m_alg(alg) {
    if (alg == HashAlgorithm::Has160)
        m_engine = std::make_unique<Has160Engine>();
    else
        m_engine = std::make_unique<EvpEngine>(evpDigest(alg));
}

Digest::~Digest() = default;

void Digest::update(const std::uint8_t* data, std::size_t len) {
    if (len > 0)
        m_engine->update(data, len);
}

std::vector<std::uint8_t> Digest::finish() {
    std::vector<std::uint8_t> out(size());
    m_engine->finish(out.data());
    return out;
}

std::vector<std::uint8_t> Digest::of(HashAlgorithm alg, const std::uint8_t* data, std::size_t len,
                                     const std::uint8_t* more, std::size_t moreLen) {
    Digest d(alg);
    d.update(data, len);
    d.update(more, moreLen);
    return d.finish();
}

}  // namespace vqxml::korean
