// The same encryption done with the libxmlsec1 C library: an element replaced by
// an EncryptedData (Triple DES CBC, AES-128-CBC or AES-128-GCM) whose KeyInfo
// carries an EncryptedKey (RSA-OAEP with MGF1 and SHA-1) with the recipient's
// certificate.
#ifndef VQXML_BENCH_XENC_XMLSECCIPHER_HPP
#define VQXML_BENCH_XENC_XMLSECCIPHER_HPP

#include <string>

namespace xmlsecbench {

// A keys manager holding one RSA key, made from DER certificate or PKCS#8 bytes.
class Keys {
public:
    Keys(const std::string& der, bool isCertificate);
    ~Keys();
    Keys(const Keys&) = delete;
    Keys& operator=(const Keys&) = delete;
    void* manager() const { return m_manager; }

private:
    void* m_manager;
};

enum class SessionCipher { TripleDes, Aes128Cbc, Aes128Gcm };

// Parses text, encrypts its first element with the local name target for the
// recipient in keys (its certificate, written into X509Data) with a new session
// key of the cipher, serialises.
std::string encryptElement(const std::string& text, const char* target, const Keys& recipient,
                           SessionCipher cipher = SessionCipher::TripleDes);

// Parses text, decrypts its first EncryptedData with the private key in keys,
// serialises.
std::string decrypt(const std::string& text, const Keys& recipient);

}  // namespace xmlsecbench

#endif
