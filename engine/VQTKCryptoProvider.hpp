// The library's crypto provider: xml-security-c's OpenSSL provider, extended with
// the algorithms the engine does not know by itself.
#ifndef VQXML_ENGINE_VQTKCRYPTOPROVIDER_HPP
#define VQXML_ENGINE_VQTKCRYPTOPROVIDER_HPP

#include <xsec/enc/OpenSSL/OpenSSLCryptoProvider.hpp>

class VQTKCryptoKeyKCDSA;

class VQTKCryptoProvider : public OpenSSLCryptoProvider {
public:
    const XMLCh* getProviderName() const override;
    static const XMLCh* providerName();

    using OpenSSLCryptoProvider::keySymmetric;
    // A symmetric key of the library's numeric key type: 1 Triple DES and 2 to 4
    // AES-128/192/256 (a KeyWithBytes), 5 SEED, 6 NEAT, 7 ARIA-128 (a
    // VQTKCryptoSymmetricKey); null for any other type. The caller owns it.
    XSECCryptoSymmetricKey* keySymmetric(int type) const;

    // A digest that reports OpenSSL's failures (VQTKCryptoHash.hpp says why).
    XSECCryptoHash* hash(XSECCryptoHash::HashType type) const override;

    // A certificate object that shares decoded certificates (VQTKCryptoX509).
    XSECCryptoX509* X509() const override;

    // An empty KCDSA key object to load a certificate and/or private key into.
    VQTKCryptoKeyKCDSA* keyKCDSA() const;
};

namespace vqxml {

// Teaches xml-security-c the engine's algorithms (AlgorithmURIs.hpp): SEED, ARIA
// and NEAT in CBC mode, AES in CBC and GCM mode, AES key wrap and RSA-OAEP on
// OpenSSL EVP (AesCipherHandlers.hpp, KeyTransportHandlers.hpp), the HAS-160
// digest, the KCDSA signatures, HMAC with a correct truncation rule, and RSA-PSS,
// ECDSA and DSA-SHA256 on OpenSSL's EVP (EvpSignatureHandler.hpp). The engine
// forgets its handlers when it terminates, so this belongs right after every
// XSECPlatformUtils::Initialise (defined in AlgorithmRegistration.cpp).
void registerAlgorithmHandlers();

}  // namespace vqxml

#endif
