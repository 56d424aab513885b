#include "engine/korean/CbcCipher.hpp"

#include <climits>
#include <cstring>
#include <string>

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include "engine/korean/CryptoError.hpp"
#include "engine/korean/Neat.hpp"

namespace vqxml::korean {

const char* blockCipherName(BlockCipherId id) {
    switch (id) {
    case BlockCipherId::Seed:
        return "SEED";
    case BlockCipherId::Aria128:
        return "ARIA-128";
    default:
        return "NEAT";
    }
}

void requireCipherKey(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen) {
    if (key == nullptr || keyLen != kCipherKeySize)
        throw CryptoError(std::string(blockCipherName(id)) + " needs a key of 16 bytes, not " +
                          std::to_string(key == nullptr ? 0 : keyLen));
}

class CbcCipher::Engine {
public:
    virtual ~Engine() = default;
    virtual void process(const std::uint8_t* in, std::size_t len, std::uint8_t* out) = 0;
};

namespace {

class EvpCbc : public CbcCipher::Engine {
public:
    EvpCbc(const char* name, const std::uint8_t* key, bool encrypt, const std::uint8_t* iv)
        : m_ctx(EVP_CIPHER_CTX_new()) {
        if (m_ctx == nullptr)
            throwOpenSSLError("cannot allocate a cipher context");
        EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
        if (cipher == nullptr) {
            EVP_CIPHER_CTX_free(m_ctx);
            throwOpenSSLError(std::string(name) + " is not available from OpenSSL");
        }
        int ok = EVP_CipherInit_ex2(m_ctx, cipher, key, iv, encrypt ? 1 : 0, nullptr);
        EVP_CIPHER_free(cipher);
        if (ok != 1 || EVP_CIPHER_CTX_set_padding(m_ctx, 0) != 1) {
            EVP_CIPHER_CTX_free(m_ctx);
            throwOpenSSLError(std::string("cannot start ") + name);
        }
    }
    ~EvpCbc() override { EVP_CIPHER_CTX_free(m_ctx); }

    void process(const std::uint8_t* in, std::size_t len, std::uint8_t* out) override {
        constexpr std::size_t kChunk = (INT_MAX / kCipherBlockSize) * kCipherBlockSize;
        while (len > 0) {
            int n = int(len < kChunk ? len : kChunk);
            int written = 0;
            if (EVP_CipherUpdate(m_ctx, out, &written, in, n) != 1 || written != n)
                throwOpenSSLError("block cipher failed");
            in += n;
            out += n;
            len -= std::size_t(n);
        }
    }

private:
    EVP_CIPHER_CTX* m_ctx;
};

class NeatCbc : public CbcCipher::Engine {
public:
    NeatCbc(const std::uint8_t* key, bool encrypt, const std::uint8_t* iv)
        : m_neat(key), m_encrypt(encrypt) {
        std::memcpy(m_chain, iv, sizeof m_chain);
    }
    ~NeatCbc() override { OPENSSL_cleanse(m_chain, sizeof m_chain); }

    void process(const std::uint8_t* in, std::size_t len, std::uint8_t* out) override {
        std::uint8_t block[kCipherBlockSize];
        for (; len >= kCipherBlockSize; in += kCipherBlockSize, out += kCipherBlockSize,
                                        len -= kCipherBlockSize) {
            if (m_encrypt) {
                for (std::size_t i = 0; i < kCipherBlockSize; ++i)
                    block[i] = in[i] ^ m_chain[i];
                m_neat.encryptBlock(block, out);
                std::memcpy(m_chain, out, kCipherBlockSize);
            } else {
                std::uint8_t cipherText[kCipherBlockSize];
                std::memcpy(cipherText, in, kCipherBlockSize);
                m_neat.decryptBlock(cipherText, block);
                for (std::size_t i = 0; i < kCipherBlockSize; ++i)
                    out[i] = block[i] ^ m_chain[i];
                std::memcpy(m_chain, cipherText, kCipherBlockSize);
            }
        }
        OPENSSL_cleanse(block, sizeof block);
    }

private:
    Neat m_neat;
    bool m_encrypt;
    std::uint8_t m_chain[kCipherBlockSize];
};

}  // namespace

CbcCipher::CbcCipher(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen, bool encrypt,
                     const std::uint8_t iv[kCipherBlockSize]) {
    requireCipherKey(id, key, keyLen);
    switch (id) {
    case BlockCipherId::Seed:
        m_engine = std::make_unique<EvpCbc>("SEED-CBC", key, encrypt, iv);
        break;
    case BlockCipherId::Aria128:
        m_engine = std::make_unique<EvpCbc>("ARIA-128-CBC", key, encrypt, iv);
        break;
    case BlockCipherId::Neat:
        m_engine = std::make_unique<NeatCbc>(key, encrypt, iv);
        break;
    }
}

CbcCipher::~CbcCipher() = default;

void CbcCipher::process(const std::uint8_t* in, std::size_t len, std::uint8_t* out) {
    if (len % kCipherBlockSize != 0)
        throw CryptoError("CBC input is not a whole number of blocks");
    m_engine->process(in, len, out);
}

}  // namespace vqxml::korean
