// Base of the engine's block cipher handlers for XML Encryption: the plaintext
// or the CipherValue's octets are read in one piece, into memory that is wiped
// when freed, and the result is written in one piece. A subclass states only how
// its cipher turns one into the other.
#ifndef VQXML_ENGINE_WHOLEBUFFERCIPHERHANDLER_HPP
#define VQXML_ENGINE_WHOLEBUFFERCIPHERHANDLER_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/Transcode.hpp"
#include "engine/UnsupportedAlgorithmHandler.hpp"
#include "engine/korean/SecureBytes.hpp"

class WholeBufferCipherHandler : public UnsupportedAlgorithmHandler {
public:
    bool encryptToSafeBuffer(TXFMChain* plainText, XENCEncryptionMethod* encryptionMethod,
                             const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument* doc,
                             safeBuffer& result) const override;
    unsigned int decryptToSafeBuffer(TXFMChain* cipherText, XENCEncryptionMethod* encryptionMethod,
                                     const XSECCryptoKey* key, XERCES_CPP_NAMESPACE::DOMDocument* doc,
                                     safeBuffer& result) const override;
    bool appendDecryptCipherTXFM(TXFMChain* cipherText, XENCEncryptionMethod* encryptionMethod,
                                 const XSECCryptoKey* key,
                                 XERCES_CPP_NAMESPACE::DOMDocument* doc) const override;

    // The CipherValue's octets (IV, then ciphertext) for the size bytes at
    // plain, without the engine's transforms. Raises XSECException for a key
    // that does not fit the method.
    virtual std::vector<std::uint8_t> encryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                                    const std::uint8_t* plain, std::size_t size) const = 0;
    // The plaintext of a CipherValue's base64 text, decoded and decrypted in one
    // piece rather than through the engine's transforms. Raises as below, and
    // XSECException for text that is not base64.
    vqxml::korean::SecureBytes decryptCipherValue(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                                  const XMLCh* base64) const;

protected:
    // The plaintext of the CipherValue's octets. Raises XSECException for a key
    // that does not fit the method and XSECCryptoException for octets that do
    // not decrypt.
    virtual vqxml::korean::SecureBytes decryptOctets(const XENCEncryptionMethod* method, const XSECCryptoKey* key,
                                                     const vqxml::korean::SecureBytes& framed) const = 0;
};

#endif
