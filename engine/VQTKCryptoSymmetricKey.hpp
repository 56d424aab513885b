// Symmetric keys of the Korean block ciphers for the engine.
//
// xml-security-c's SymmetricKeyType is a closed enum, so these keys report
// KEY_NONE there and carry the library's own key type instead: the crypto
// provider's numeric symmetric key types are 1 (Triple DES, the engine's
// KEY_3DES_192), 2 to 4 (AES, the engine's KEY_AES_*), both as KeyWithBytes, and the three
// Korean ones below. VQTKCryptoProvider::keySymmetric(int)
// makes a key from any of them.
//
// Only CBC is offered. The streaming interface follows the engine's rules for
// its own keys: without an IV, encryption makes a random one and writes it in
// front of the ciphertext, and decryption reads it from the first 16 input
// bytes; padding is that of XML Encryption (engine/korean/XmlEncCbc.hpp).
// Failures raise XSECCryptoException (SymmetricError).
#ifndef VQXML_ENGINE_VQTKCRYPTOSYMMETRICKEY_HPP
#define VQXML_ENGINE_VQTKCRYPTOSYMMETRICKEY_HPP

#include <memory>

#include <xsec/enc/XSECCryptoSymmetricKey.hpp>

#include "engine/korean/CbcCipher.hpp"
#include "engine/korean/SecureBytes.hpp"

namespace vqxml {

enum SymmetricKeyTypeCode : int {
    kKeyTripleDes = 1,
    kKeyAes128 = 2,
    kKeyAes192 = 3,
    kKeyAes256 = 4,
    kKeySeed = 5,
    kKeyNeat = 6,
    kKeyAria = 7,
};

namespace korean {
class CbcStream;
}

}  // namespace vqxml

class VQTKCryptoSymmetricKey : public XSECCryptoSymmetricKey {
public:
    explicit VQTKCryptoSymmetricKey(vqxml::korean::BlockCipherId cipher);
    ~VQTKCryptoSymmetricKey() override;
    VQTKCryptoSymmetricKey(const VQTKCryptoSymmetricKey&) = delete;
    VQTKCryptoSymmetricKey& operator=(const VQTKCryptoSymmetricKey&) = delete;

    // 5, 6 or 7 and the cipher's algorithm URI.
    int getKeyTypeCode() const;
    const XMLCh* getAlgorithmURI() const;
    vqxml::korean::BlockCipherId getCipher() const { return m_cipher; }
    const vqxml::korean::SecureBytes& getKeyBytes() const { return m_key; }

    const XMLCh* getProviderName() const override;
    XSECCryptoKey* clone() const override;  // the key bytes, not a running operation
    SymmetricKeyType getSymmetricKeyType() const override { return KEY_NONE; }

    // Exactly 16 bytes.
    void setKey(const unsigned char* key, unsigned int keyLen) override;

    bool decryptInit(bool doPad = true, SymmetricKeyMode mode = MODE_CBC, const unsigned char* iv = nullptr,
                     const unsigned char* tag = nullptr, unsigned int taglen = 0) override;
    unsigned int decrypt(const unsigned char* inBuf, unsigned char* plainBuf, unsigned int inLength,
                         unsigned int maxOutLength) override;
    unsigned int decryptFinish(unsigned char* plainBuf, unsigned int maxOutLength) override;

    bool encryptInit(bool doPad = true, SymmetricKeyMode mode = MODE_CBC,
                     const unsigned char* iv = nullptr) override;
    unsigned int encrypt(const unsigned char* inBuf, unsigned char* cipherBuf, unsigned int inLength,
                         unsigned int maxOutLength) override;
    unsigned int encryptFinish(unsigned char* cipherBuf, unsigned int maxOutLength,
                               unsigned int taglen = 0) override;

    // The key for a type code (5, 6, 7); null for any other code.
    static VQTKCryptoSymmetricKey* forTypeCode(int type);
    // The cipher whose algorithm URI this is; false if none.
    static bool cipherForURI(const XMLCh* uri, vqxml::korean::BlockCipherId& cipher);
    // The key type code (5, 6, 7) of a Korean cipher's URI; 0 for any other URI.
    static int typeCodeForURI(const XMLCh* uri);

private:
    bool begin(bool encrypt, bool doPad, SymmetricKeyMode mode, const unsigned char* iv);
    unsigned int step(bool encrypt, const unsigned char* in, unsigned int inLength, unsigned char* out,
                      unsigned int maxOutLength);
    unsigned int end(bool encrypt, unsigned char* out, unsigned int maxOutLength);
    vqxml::korean::CbcStream& running(bool encrypt);

    vqxml::korean::BlockCipherId m_cipher;
    vqxml::korean::SecureBytes m_key;
    std::unique_ptr<vqxml::korean::CbcStream> m_stream;
    bool m_streamEncrypts = false;
};

#endif
