#include "engine/VQTKCryptoKeyCertified.hpp"

#include <openssl/evp.h>
#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/CertificateEncoding.hpp"
#include "engine/CertificateNames.hpp"
#include "engine/OpenSSLInput.hpp"

namespace {

template <class EngineKey>
struct Kind;
template <>
struct Kind<OpenSSLCryptoKeyEC> {
    static constexpr int kBaseId = EVP_PKEY_EC;
    static constexpr const char* kName = "EC";
    static constexpr XSECCryptoException::XSECCryptoExceptionType kError = XSECCryptoException::ECError;
};
template <>
struct Kind<OpenSSLCryptoKeyDSA> {
    static constexpr int kBaseId = EVP_PKEY_DSA;
    static constexpr const char* kName = "DSA";
    static constexpr XSECCryptoException::XSECCryptoExceptionType kError = XSECCryptoException::DSAError;
};

}  // namespace

template <class EngineKey>
VQTKCryptoKeyCertified<EngineKey>* VQTKCryptoKeyCertified<EngineKey>::load(const unsigned char* cert, int certLen,
                                                                           const unsigned char* key, int keyLen) {
    using K = Kind<EngineKey>;
    return new VQTKCryptoKeyCertified(vqxml::readKeyPair(cert, certLen, key, keyLen, K::kBaseId, K::kName, K::kError));
}

// The engine's constructor copies the key out of the EVP key.
template <class EngineKey>
VQTKCryptoKeyCertified<EngineKey>::VQTKCryptoKeyCertified(vqxml::ParsedKeyPair pair)
    : EngineKey(pair.key.get()), m_pair(std::move(pair)) {
    if (m_pair.cert) {
        m_certDER = vqxml::encodeCertificate(m_pair.cert.get());
        if (m_certDER.empty())
            throw XSECCryptoException(Kind<EngineKey>::kError, "cannot encode the certificate");
    }
}

template <class EngineKey>
XSECCryptoKey* VQTKCryptoKeyCertified<EngineKey>::clone() const {
    return new VQTKCryptoKeyCertified(m_pair);
}

template <class EngineKey>
std::string VQTKCryptoKeyCertified<EngineKey>::subjectName() const {
    return m_pair.cert ? vqxml::certificateSubject(m_pair.cert.get()) : std::string();
}

template <class EngineKey>
std::string VQTKCryptoKeyCertified<EngineKey>::issuerName() const {
    return m_pair.cert ? vqxml::certificateIssuer(m_pair.cert.get()) : std::string();
}

template <class EngineKey>
std::string VQTKCryptoKeyCertified<EngineKey>::serialNumber() const {
    return m_pair.cert ? vqxml::certificateSerialDecimal(m_pair.cert.get()) : std::string();
}

template class VQTKCryptoKeyCertified<OpenSSLCryptoKeyEC>;
template class VQTKCryptoKeyCertified<OpenSSLCryptoKeyDSA>;
