// EC and DSA signing keys: the engine's key objects, which the EVP signature
// handler signs with, carrying the signer's certificate beside them as the RSA
// key object does (VQTKCryptoKeyRSA.hpp). Certificates are DER or PEM X.509;
// private keys an unencrypted PKCS#8 PrivateKeyInfo or the traditional form
// (SEC1, DSA), DER or PEM; given together, they must belong together.
#ifndef VQXML_ENGINE_VQTKCRYPTOKEYCERTIFIED_HPP
#define VQXML_ENGINE_VQTKCRYPTOKEYCERTIFIED_HPP

#include <string>
#include <vector>

#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyDSA.hpp>
#include <xsec/enc/OpenSSL/OpenSSLCryptoKeyEC.hpp>

#include "engine/KeyCache.hpp"

template <class EngineKey>
class VQTKCryptoKeyCertified : public EngineKey {
public:
    // Either argument may be absent (null or length below 1). Throws
    // XSECCryptoException for bytes it cannot use or a key of another type.
    static VQTKCryptoKeyCertified* load(const unsigned char* cert, int certLen, const unsigned char* key, int keyLen);

    XSECCryptoKey* clone() const override;
    const std::vector<unsigned char>& certificateDER() const { return m_certDER; }
    std::string subjectName() const;
    std::string issuerName() const;
    std::string serialNumber() const;

private:
    explicit VQTKCryptoKeyCertified(vqxml::ParsedKeyPair pair);

    vqxml::ParsedKeyPair m_pair;
    std::vector<unsigned char> m_certDER;
};

using VQTKCryptoKeyEC = VQTKCryptoKeyCertified<OpenSSLCryptoKeyEC>;
using VQTKCryptoKeyDSA = VQTKCryptoKeyCertified<OpenSSLCryptoKeyDSA>;

#endif
