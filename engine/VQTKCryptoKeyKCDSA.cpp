#include "engine/VQTKCryptoKeyKCDSA.hpp"

#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/CryptoErrorTranslation.hpp"
#include "engine/VQTKCryptoProvider.hpp"
#include "engine/korean/KcdsaEncoding.hpp"

using vqxml::korean::KcdsaKey;

namespace {

template <class Work>
decltype(auto) dsa(Work&& work) {
    return vqxml::asCryptoException(XSECCryptoException::DSAError, std::forward<Work>(work));
}

}  // namespace

VQTKCryptoKeyKCDSA::VQTKCryptoKeyKCDSA() = default;
VQTKCryptoKeyKCDSA::~VQTKCryptoKeyKCDSA() = default;

VQTKCryptoKeyKCDSA::VQTKCryptoKeyKCDSA(const VQTKCryptoKeyKCDSA& other)
    : XSECCryptoKey(), VQTKCertificateInfo(other) {
    if (other.m_certificateKey)
        m_certificateKey = std::make_unique<KcdsaKey>(*other.m_certificateKey);
    if (other.m_privateKey)
        m_privateKey = std::make_unique<KcdsaKey>(*other.m_privateKey);
}

XSECCryptoKey* VQTKCryptoKeyKCDSA::clone() const {
    return dsa([this] { return new VQTKCryptoKeyKCDSA(*this); });
}

const XMLCh* VQTKCryptoKeyKCDSA::getProviderName() const {
    return VQTKCryptoProvider::providerName();
}

void VQTKCryptoKeyKCDSA::loadCertificate(const unsigned char* der, int len) {
    X509Ptr cert = parseCertificateDER(der, len);
    const X509_PUBKEY* spki = X509_get_X509_PUBKEY(cert.get());
    if (!vqxml::korean::isKcdsaPublicKey(spki))
        throw XSECCryptoException(XSECCryptoException::DSAError,
                                  "certificate does not carry a KCDSA public key");
    auto key = dsa([spki] { return std::make_unique<KcdsaKey>(vqxml::korean::kcdsaKeyFromPublicKeyInfo(spki)); });
    if (m_privateKey && !m_privateKey->samePublicKey(*key))
        throw XSECCryptoException(XSECCryptoException::DSAError,
                                  "certificate does not belong to the loaded private key");
    setCertificate(std::move(cert));
    m_certificateKey = std::move(key);
}

void VQTKCryptoKeyKCDSA::loadPrivateKey(const unsigned char* der, int len) {
    if (der == nullptr || len <= 0)
        throw XSECCryptoException(XSECCryptoException::DSAError, "no private key bytes given");
    auto key = dsa([=] {
        return std::make_unique<KcdsaKey>(vqxml::korean::kcdsaKeyFromPrivateKeyInfo(der, std::size_t(len)));
    });
    if (m_certificateKey && !m_certificateKey->samePublicKey(*key))
        throw XSECCryptoException(XSECCryptoException::DSAError,
                                  "private key does not belong to the loaded certificate");
    m_privateKey = std::move(key);
}

bool VQTKCryptoKeyKCDSA::hasPrivateKey() const {
    return m_privateKey != nullptr;
}

bool VQTKCryptoKeyKCDSA::hasPublicKey() const {
    return m_certificateKey != nullptr || m_privateKey != nullptr;
}

const KcdsaKey& VQTKCryptoKeyKCDSA::signingKey() const {
    if (!m_privateKey)
        throw XSECCryptoException(XSECCryptoException::DSAError, "KCDSA key has no private key to sign with");
    return *m_privateKey;
}

const KcdsaKey& VQTKCryptoKeyKCDSA::verificationKey() const {
    if (m_certificateKey)
        return *m_certificateKey;
    if (m_privateKey)
        return *m_privateKey;
    throw XSECCryptoException(XSECCryptoException::DSAError, "KCDSA key has neither certificate nor key");
}

namespace vqxml {

VQTKCryptoKeyKCDSA* createKCDSAKey(const unsigned char* cert, int certLen, const unsigned char* key,
                                   int keyLen) {
    std::unique_ptr<VQTKCryptoKeyKCDSA> k(new VQTKCryptoKeyKCDSA());
    if (cert != nullptr && certLen >= 1)
        k->loadCertificate(cert, certLen);
    if (key != nullptr && keyLen >= 1)
        k->loadPrivateKey(key, keyLen);
    return k.release();
}

}  // namespace vqxml
