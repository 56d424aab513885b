#include "engine/VQTKCryptoSymmetricKey.hpp"

#include <string>
#include <utility>

#include <xercesc/util/XMLString.hpp>

#include "engine/AlgorithmURIs.hpp"
#include "engine/CryptoErrorTranslation.hpp"
#include "engine/VQTKCryptoProvider.hpp"
#include "engine/korean/XmlEncCbc.hpp"

using vqxml::korean::BlockCipherId;

namespace {

struct CipherEntry {
    BlockCipherId cipher;
    int typeCode;
    const XMLCh* uri;
};

const CipherEntry kCiphers[] = {
    {BlockCipherId::Seed, vqxml::kKeySeed, vqxml::uri::kSeedCbc},
    {BlockCipherId::Neat, vqxml::kKeyNeat, vqxml::uri::kNeatCbc},
    {BlockCipherId::Aria128, vqxml::kKeyAria, vqxml::uri::kAria128Cbc},
};

const CipherEntry& entryFor(BlockCipherId cipher) {
    for (const CipherEntry& e : kCiphers)
        if (e.cipher == cipher)
            return e;
    return kCiphers[0];
}

template <class Work>
decltype(auto) symmetric(Work&& work) {
    return vqxml::asCryptoException(XSECCryptoException::SymmetricError, std::forward<Work>(work));
}

}  // namespace

VQTKCryptoSymmetricKey::VQTKCryptoSymmetricKey(BlockCipherId cipher) : m_cipher(cipher) {}

VQTKCryptoSymmetricKey::~VQTKCryptoSymmetricKey() = default;

VQTKCryptoSymmetricKey* VQTKCryptoSymmetricKey::forTypeCode(int type) {
    for (const CipherEntry& e : kCiphers)
        if (e.typeCode == type)
            return new VQTKCryptoSymmetricKey(e.cipher);
    return nullptr;
}

namespace {

const CipherEntry* entryForURI(const XMLCh* uri) {
    for (const CipherEntry& e : kCiphers)
        if (uri != nullptr && XERCES_CPP_NAMESPACE::XMLString::equals(uri, e.uri))
            return &e;
    return nullptr;
}

}  // namespace

bool VQTKCryptoSymmetricKey::cipherForURI(const XMLCh* uri, BlockCipherId& cipher) {
    const CipherEntry* e = entryForURI(uri);
    if (e != nullptr)
        cipher = e->cipher;
    return e != nullptr;
}

int VQTKCryptoSymmetricKey::typeCodeForURI(const XMLCh* uri) {
    const CipherEntry* e = entryForURI(uri);
    return e != nullptr ? e->typeCode : 0;
}

int VQTKCryptoSymmetricKey::getKeyTypeCode() const {
    return entryFor(m_cipher).typeCode;
}

const XMLCh* VQTKCryptoSymmetricKey::getAlgorithmURI() const {
    return entryFor(m_cipher).uri;
}

const XMLCh* VQTKCryptoSymmetricKey::getProviderName() const {
    return VQTKCryptoProvider::providerName();
}

XSECCryptoKey* VQTKCryptoSymmetricKey::clone() const {
    auto* copy = new VQTKCryptoSymmetricKey(m_cipher);
    copy->m_key = m_key;
    return copy;
}

void VQTKCryptoSymmetricKey::setKey(const unsigned char* key, unsigned int keyLen) {
    symmetric([&] { vqxml::korean::requireCipherKey(m_cipher, key, keyLen); });
    m_stream.reset();
    m_key.assign(key, key + keyLen);
}

namespace {

const char* operation(bool encrypt) {
    return encrypt ? "encryption" : "decryption";
}

}  // namespace

bool VQTKCryptoSymmetricKey::begin(bool encrypt, bool doPad, SymmetricKeyMode mode, const unsigned char* iv) {
    if (m_key.empty())
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  "symmetric key used before a key was set");
    if (mode != MODE_CBC)
        throw XSECCryptoException(XSECCryptoException::UnsupportedAlgorithm,
                                  "the Korean block ciphers are offered in CBC mode only");
    using Direction = vqxml::korean::CbcStream::Direction;
    m_stream = symmetric([&] {
        return std::make_unique<vqxml::korean::CbcStream>(encrypt ? Direction::Encrypt : Direction::Decrypt,
                                                          m_cipher, m_key.data(), m_key.size(), iv, doPad);
    });
    m_streamEncrypts = encrypt;
    return true;
}

vqxml::korean::CbcStream& VQTKCryptoSymmetricKey::running(bool encrypt) {
    if (m_stream == nullptr || m_streamEncrypts != encrypt)
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  (std::string(operation(encrypt)) + " was not started").c_str());
    return *m_stream;
}

unsigned int VQTKCryptoSymmetricKey::step(bool encrypt, const unsigned char* in, unsigned int inLength,
                                          unsigned char* out, unsigned int maxOutLength) {
    vqxml::korean::CbcStream& stream = running(encrypt);
    return symmetric([&] { return unsigned(stream.update(in, inLength, out, maxOutLength)); });
}

// The operation ends here whether or not finishing succeeds.
unsigned int VQTKCryptoSymmetricKey::end(bool encrypt, unsigned char* out, unsigned int maxOutLength) {
    running(encrypt);
    std::unique_ptr<vqxml::korean::CbcStream> stream = std::move(m_stream);
    return symmetric([&] { return unsigned(stream->finish(out, maxOutLength)); });
}

bool VQTKCryptoSymmetricKey::decryptInit(bool doPad, SymmetricKeyMode mode, const unsigned char* iv,
                                         const unsigned char*, unsigned int) {
    return begin(false, doPad, mode, iv);
}

unsigned int VQTKCryptoSymmetricKey::decrypt(const unsigned char* inBuf, unsigned char* plainBuf,
                                             unsigned int inLength, unsigned int maxOutLength) {
    return step(false, inBuf, inLength, plainBuf, maxOutLength);
}

unsigned int VQTKCryptoSymmetricKey::decryptFinish(unsigned char* plainBuf, unsigned int maxOutLength) {
    return end(false, plainBuf, maxOutLength);
}

bool VQTKCryptoSymmetricKey::encryptInit(bool doPad, SymmetricKeyMode mode, const unsigned char* iv) {
    return begin(true, doPad, mode, iv);
}

unsigned int VQTKCryptoSymmetricKey::encrypt(const unsigned char* inBuf, unsigned char* cipherBuf,
                                             unsigned int inLength, unsigned int maxOutLength) {
    return step(true, inBuf, inLength, cipherBuf, maxOutLength);
}

unsigned int VQTKCryptoSymmetricKey::encryptFinish(unsigned char* cipherBuf, unsigned int maxOutLength,
                                                   unsigned int) {
    return end(true, cipherBuf, maxOutLength);
}
