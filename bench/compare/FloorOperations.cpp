// The floor under every signature: the RSA-2048 operation alone and SHA-256 over
// the document's canonical bytes (exclusive C14N, made once by libxml2), with
// OpenSSL and nothing else.
#include <libxml/c14n.h>
#include <libxml/parser.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <stdexcept>

#include "compare/Implementations.hpp"

namespace compare {

namespace {

const unsigned char kDigest[32] = {1, 2, 3};

std::string canonical(const std::string& text) {
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET);
    xmlChar* out = nullptr;
    int len = doc ? xmlC14NDocDumpMemory(doc, nullptr, XML_C14N_EXCLUSIVE_1_0, nullptr, 0, &out) : -1;
    xmlFreeDoc(doc);
    if (len < 0)
        throw std::runtime_error("libxml2 could not canonicalise the document");
    std::string bytes(reinterpret_cast<char*>(out), static_cast<size_t>(len));
    xmlFree(out);
    return bytes;
}

// An RSA PKCS #1 v1.5 SHA-256 signing or verifying context, made once.
class RsaOperation : public Operation {
public:
    explicit RsaOperation(bool signing) : signing_(signing) {
        const Keys& k = keys();
        const unsigned char* p = reinterpret_cast<const unsigned char*>(signing ? k.keyDer.data() : k.certDer.data());
        long len = static_cast<long>(signing ? k.keyDer.size() : k.certDer.size());
        if (signing) {
            key_ = d2i_AutoPrivateKey(nullptr, &p, len);
        } else {
            X509* cert = d2i_X509(nullptr, &p, len);
            key_ = cert ? X509_get_pubkey(cert) : nullptr;
            X509_free(cert);
        }
        ctx_ = key_ ? EVP_PKEY_CTX_new(key_, nullptr) : nullptr;
        if (ctx_ == nullptr || (signing ? EVP_PKEY_sign_init(ctx_) : EVP_PKEY_verify_init(ctx_)) <= 0 ||
            EVP_PKEY_CTX_set_rsa_padding(ctx_, RSA_PKCS1_PADDING) <= 0 ||
            EVP_PKEY_CTX_set_signature_md(ctx_, EVP_sha256()) <= 0)
            throw std::runtime_error("OpenSSL could not set up RSA");
        size_t sigLen = sizeof signature_;
        if (!signing && !RsaOperation(true).signInto(signature_, &sigLen))
            throw std::runtime_error("OpenSSL could not sign");
        signatureLen_ = sigLen;
    }
    ~RsaOperation() override {
        EVP_PKEY_CTX_free(ctx_);
        EVP_PKEY_free(key_);
    }
    void run() override {
        unsigned char sig[512];
        size_t len = sizeof sig;
        bool ok = signing_ ? signInto(sig, &len)
                           : EVP_PKEY_verify(ctx_, signature_, signatureLen_, kDigest, sizeof kDigest) == 1;
        if (!ok)
            throw std::runtime_error("the RSA operation failed");
    }

private:
    bool signInto(unsigned char* sig, size_t* len) {
        return EVP_PKEY_sign(ctx_, sig, len, kDigest, sizeof kDigest) == 1;
    }
    bool signing_;
    EVP_PKEY* key_ = nullptr;
    EVP_PKEY_CTX* ctx_ = nullptr;
    unsigned char signature_[512] = {};
    size_t signatureLen_ = 0;
};

class CanonicalDigest : public Operation {
public:
    explicit CanonicalDigest(const std::string& doc) : bytes_(canonical(doc)) {}
    void run() override {
        unsigned char md[32];
        unsigned int len = 0;
        if (EVP_Digest(bytes_.data(), bytes_.size(), md, &len, EVP_sha256(), nullptr) != 1)
            throw std::runtime_error("SHA-256 failed");
    }

private:
    std::string bytes_;
};

}  // namespace

std::unique_ptr<Operation> makeFloorOperation(const std::string& kind, const std::string& input) {
    if (kind == "rsa-sign" || kind == "rsa-verify")
        return std::make_unique<RsaOperation>(kind == "rsa-sign");
    if (kind == "sha256-c14n")
        return std::make_unique<CanonicalDigest>(input);
    return nullptr;
}

}  // namespace compare
