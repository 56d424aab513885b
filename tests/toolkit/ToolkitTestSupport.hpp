// Fixtures and owned toolkit objects for the toolkit and pki tests.
#ifndef VQXML_TESTS_TOOLKIT_TOOLKITTESTSUPPORT_HPP
#define VQXML_TESTS_TOOLKIT_TOOLKITTESTSUPPORT_HPP

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include "TestFiles.hpp"
#include "TestVectors.hpp"
#include "toolkit/vqtk_toolkit.h"

namespace vqtktest {

using ByteVector = std::vector<unsigned char>;

inline ByteVector readFile(const std::string& path) {
    const std::string bytes = testfiles::read(path);
    if (bytes.empty())
        throw std::runtime_error("cannot read " + path);
    return ByteVector(bytes.begin(), bytes.end());
}

inline ByteVector fixture(const std::string& name) {
    return readFile(testfiles::dataPath("toolkit/" + name));
}

inline std::string text(const ByteVector& bytes) { return std::string(bytes.begin(), bytes.end()); }

using testvectors::fromBase64;
using testvectors::toBase64;

// DER items one after the other.
inline ByteVector operator+(ByteVector a, const ByteVector& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A byte string that deletes itself.
class String {
public:
    String() { VQTK_BINSTR_Create(&m_str); }
    explicit String(const ByteVector& bytes) : String() { set(bytes); }
    ~String() { VQTK_BINSTR_Delete(&m_str); }
    String(const String&) = delete;
    String& operator=(const String&) = delete;

    void set(const ByteVector& bytes) {
        VQTK_BINSTR_SetData(bytes.data(), static_cast<int>(bytes.size()), &m_str);
    }
    ByteVector bytes() const { return ByteVector(m_str.data, m_str.data + m_str.length); }
    VQTK_BINSTR* get() { return &m_str; }

private:
    VQTK_BINSTR m_str;
};

// A toolkit handle that closes itself.
class Toolkit {
public:
    Toolkit() {
        if (VQTK_API_Init(&m_handle, ".") != VQTK_OK)
            throw std::runtime_error("toolkit did not open");
    }
    ~Toolkit() { VQTK_API_Finish(&m_handle); }
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;

    VQTK_Toolkit* get() const { return m_handle; }
    std::string error() const {
        char buffer[VQTK_ERROR_TEXT_SIZE] = {};
        VQTK_API_GetErrInfo(m_handle, sizeof buffer, buffer);
        return buffer;
    }
    int addAnchor(const ByteVector& der) {
        String anchor(der);
        return VQTK_CERT_AddTrustedCert(m_handle, anchor.get());
    }

private:
    VQTK_Toolkit* m_handle = nullptr;
};

struct PkeyFree {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using PrivateKey = std::unique_ptr<EVP_PKEY, PkeyFree>;

inline PrivateKey loadPemKey(const std::string& fixtureName) {
    const ByteVector pem = fixture(fixtureName);
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                  BIO_free);
    return PrivateKey(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr));
}

// RSA decryption with OpenSSL alone, as the recipient would do it.
inline ByteVector rsaDecrypt(EVP_PKEY* key, int padding, const ByteVector& cipher) {
    std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(EVP_PKEY_CTX_new(key, nullptr),
                                                                    EVP_PKEY_CTX_free);
    size_t size = 0;
    if (EVP_PKEY_decrypt_init(ctx.get()) != 1 || EVP_PKEY_CTX_set_rsa_padding(ctx.get(), padding) != 1 ||
        EVP_PKEY_decrypt(ctx.get(), nullptr, &size, cipher.data(), cipher.size()) != 1)
        return {};
    ByteVector plain(size);
    if (EVP_PKEY_decrypt(ctx.get(), plain.data(), &size, cipher.data(), cipher.size()) != 1)
        return {};
    plain.resize(size);
    return plain;
}

}  // namespace vqtktest

#endif
