#include "engine/VQTKCryptoX509.hpp"

#include <cstdint>
#include <string>
#include <vector>

#include <openssl/evp.h>
#include <xsec/dsig/DSIGConstants.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyDSA.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyEC.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoX509.hpp>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/Base64.hpp"
#include "engine/RecentlyUsed.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"
#include "engine/VQTKCryptoProvider.hpp"

namespace {

using SharedX509 = std::shared_ptr<X509>;

vqxml::RecentlyUsed<std::string, SharedX509, 32> g_certificates;

SharedX509 decodeCertificate(const std::string& der) {
    const unsigned char* at = reinterpret_cast<const unsigned char*>(der.data());
    X509* cert = d2i_X509(nullptr, &at, static_cast<long>(der.size()));
    if (cert == nullptr || at != reinterpret_cast<const unsigned char*>(der.data()) + der.size()) {
        X509_free(cert);
        throw XSECCryptoException(XSECCryptoException::X509Error,
                                  "The X509Certificate is not a DER-encoded certificate");
    }
    return SharedX509(cert, X509_free);
}

std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> publicKeyOf(const X509* cert) {
    if (cert == nullptr)
        throw XSECCryptoException(XSECCryptoException::X509Error, "No certificate has been loaded");
    return {X509_get_pubkey(const_cast<X509*>(cert)), &EVP_PKEY_free};
}

}  // namespace

XSECCryptoKey::KeyType VQTKCryptoX509::getPublicKeyType() const {
    const auto key = publicKeyOf(m_cert.get());
    switch (key ? EVP_PKEY_id(key.get()) : EVP_PKEY_NONE) {
    case EVP_PKEY_RSA:
        return XSECCryptoKey::KEY_RSA_PUBLIC;
    case EVP_PKEY_DSA:
        return XSECCryptoKey::KEY_DSA_PUBLIC;
    case EVP_PKEY_EC:
        return XSECCryptoKey::KEY_EC_PUBLIC;
    default:
        return XSECCryptoKey::KEY_NONE;
    }
}

XSECCryptoKey* VQTKCryptoX509::clonePublicKey() const {
    const auto key = publicKeyOf(m_cert.get());
    switch (key ? EVP_PKEY_id(key.get()) : EVP_PKEY_NONE) {
    case EVP_PKEY_RSA:
        // Ours checks what the engine's RSA constructor does not.
        return VQTKCryptoKeyRSA::publicKeyOf(m_cert.get());
    case EVP_PKEY_DSA:
        return new OpenSSLCryptoKeyDSA(key.get());
    case EVP_PKEY_EC:
        return new OpenSSLCryptoKeyEC(key.get());
    default:
        return nullptr;
    }
}

const XMLCh* VQTKCryptoX509::getProviderName() const {
    return VQTKCryptoProvider::providerName();
}

void VQTKCryptoX509::loadX509Base64Bin(const char* buf, unsigned int len) {
    std::vector<std::uint8_t> bytes;
    const std::string text(buf != nullptr ? buf : "", buf != nullptr ? len : 0);
    if (!vqxml::base64Decode(text.c_str(), bytes) || bytes.empty())
        throw XSECCryptoException(XSECCryptoException::X509Error, "The X509Certificate is not base64 text");
    const std::string der(bytes.begin(), bytes.end());
    m_cert = g_certificates.findOrMake(der, [&] { return decodeCertificate(der); });
    m_base64.sbStrcpyIn(text.c_str());
}

namespace vqxml {

const X509* opensslCertificate(const XSECCryptoX509* cert) {
    if (const auto* ours = dynamic_cast<const VQTKCryptoX509*>(cert))
        return ours->certificate();
    if (const auto* engines = dynamic_cast<const OpenSSLCryptoX509*>(cert))
        return engines->getOpenSSLX509();
    return nullptr;
}

std::shared_ptr<X509> sharedCertificate(const unsigned char* der, std::size_t len) {
    const std::string bytes(reinterpret_cast<const char*>(der), len);
    return g_certificates.findOrMake(bytes, [&] { return decodeCertificate(bytes); });
}

void clearCertificateCache() {
    g_certificates.clear();
}

}  // namespace vqxml
