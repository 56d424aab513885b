// The key object a signature method signs or verifies with, made from a
// certificate and/or a private key (DER or PEM): KCDSA, RSA (also for RSA-PSS),
// EC or DSA, by the engine's signature method code (engine/Algorithms.def). Every
// family's SetSigner and the SOAP SetVerifyCert take their keys here.
#ifndef VQXML_ENGINE_SIGNERKEYS_HPP
#define VQXML_ENGINE_SIGNERKEYS_HPP

#include "engine/VQTKCryptoKeyCertified.hpp"
#include "engine/VQTKCryptoKeyKCDSA.hpp"
#include "engine/VQTKCryptoKeyRSA.hpp"

namespace vqxml {

// Calls take with the new key object (of its own type, which take then owns);
// false, without calling it, for a method that takes no such key (HMAC).
// Throws XSECCryptoException for bytes that are not a key of that kind.
template <class Take>
bool withSignerKey(int signatureMethod, const unsigned char* cert, int certLen, const unsigned char* key, int keyLen,
                   Take&& take) {
    switch (signatureMethod) {
    case 5:
        take(createKCDSAKey(cert, certLen, key, keyLen));
        return true;
    case 3:  // RSA
    case 6:  // RSA-PSS
        take(VQTKCryptoKeyRSA::load(cert, certLen, key, keyLen));
        return true;
    case 4:
        take(VQTKCryptoKeyEC::load(cert, certLen, key, keyLen));
        return true;
    case 1:
        take(VQTKCryptoKeyDSA::load(cert, certLen, key, keyLen));
        return true;
    default:
        return false;
    }
}

}  // namespace vqxml

#endif
