// VQXML_XMLSecurity::decryptPriKey and getRandomFromPriKey: a user's private key
// file and the identity-verification random kept in it.
#include <cstdlib>
#include <cstring>
#include <new>

#include <openssl/crypto.h>

#include "core/ErrorFrame.hpp"
#include "pki/ToolkitSession.hpp"

namespace {

// RSA PKCS #1 v1.5 for the recipient's certificate, as tax authorities expect.
constexpr int kRecipientEncryption = 2;

// A copy of str's bytes followed by one zero byte, for the context to own.
unsigned char* terminatedCopy(const VQTK_BINSTR* str) {
    const size_t n = str->length > 0 ? static_cast<size_t>(str->length) : 0;
    auto* copy = static_cast<unsigned char*>(std::calloc(n + 1, 1));
    if (copy == nullptr)
        throw std::bad_alloc();
    if (n > 0)
        std::memcpy(copy, str->data, n);
    return copy;
}

// Wipes and frees the context's old buffer of n bytes and puts replacement in its place.
void replaceSecret(unsigned char*& field, size_t n, unsigned char* replacement) {
    if (field != nullptr)
        OPENSSL_cleanse(field, n);
    std::free(field);
    field = replacement;
}

}  // namespace

int VQXML_XMLSecurity::decryptPriKey(char* password, unsigned char* key, int keyLen,
                                     int* keyOutLen) {
    return vqxml::guarded(*this, "decryptPriKey > ", [&] {
        vqxml::ToolkitSession toolkit;
        VQTK_BINSTR* encrypted = toolkit.newString();
        VQTK_BINSTR* plain = toolkit.newString();
        toolkit.check(VQTK_BINSTR_SetData(key, keyLen, encrypted));
        toolkit.check(VQTK_PRIKEY_Decrypt(toolkit.handle(), password, encrypted, plain));
        replaceSecret(m_priKeyInfo, static_cast<size_t>(m_priKeyInfoLength), terminatedCopy(plain));
        m_priKeyInfoLength = plain->length;
        if (keyOutLen != nullptr)
            *keyOutLen = plain->length;
    });
}

int VQXML_XMLSecurity::getRandomFromPriKey(char* password, unsigned char* key, int keyLen,
                                           unsigned char* recipientKey, int recipientKeyLen) {
    return vqxml::guarded(*this, "getRandomFromPriKey > ", [&] {
        vqxml::ToolkitSession toolkit;
        VQTK_BINSTR* encrypted = toolkit.newString();
        VQTK_BINSTR* plain = toolkit.newString();
        VQTK_BINSTR* recipient = toolkit.newString();
        VQTK_BINSTR* random = toolkit.newString();
        VQTK_BINSTR* output = toolkit.newString();
        toolkit.check(VQTK_BINSTR_SetData(key, keyLen, encrypted));
        if (password != nullptr)
            toolkit.check(VQTK_PRIKEY_Decrypt(toolkit.handle(), password, encrypted, plain));
        else
            VQTK_BINSTR_SetData(encrypted->data, encrypted->length, plain);
        toolkit.check(VQTK_VID_GetRandomFromPriKey(toolkit.handle(), plain, random));
        if (recipientKey != nullptr && recipientKeyLen > 0) {
            VQTK_BINSTR_SetData(recipientKey, recipientKeyLen, recipient);
            toolkit.check(VQTK_CRYPT_AsymEncrypt(toolkit.handle(), kRecipientEncryption, recipient,
                                                 random, output));
            VQTK_BINSTR_SetData(output->data, output->length, random);
        }
        toolkit.check(VQTK_BASE64_Encode(toolkit.handle(), random, output));
        unsigned char* text = terminatedCopy(output);
        replaceSecret(m_priKeyEncRandom,
                      m_priKeyEncRandom != nullptr
                          ? std::strlen(reinterpret_cast<char*>(m_priKeyEncRandom))
                          : 0,
                      text);
    });
}
