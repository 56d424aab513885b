#include "engine/VQTKCryptoSymmetricKey.hpp"

#include <xercesc/util/XMLString.hpp>
#include <xsec/utils/XSECPlatformUtils.hpp>

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

bool VQTKCryptoSymmetricKey::cipherForURI(const XMLCh* uri, BlockCipherId& cipher) {
    for (const CipherEntry& e : kCiphers)
        if (uri != nullptr && XERCES_CPP_NAMESPACE::XMLString::equals(uri, e.uri)) {
            cipher = e.cipher;
            return true;
        }
    return false;
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

void VQTKCryptoSymmetricKey::requireKey() const {
    if (m_key.empty())
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  "symmetric key used before a key was set");
}

vqxml::korean::CbcStream& VQTKCryptoSymmetricKey::stream(bool encrypting) {
    if (m_stream == nullptr || m_streamEncrypts != encrypting)
        throw XSECCryptoException(XSECCryptoException::SymmetricError,
                                  encrypting ? "encrypt called before encryptInit"
                                             : "decrypt called before decryptInit");
    return *m_stream;
}

namespace {

void requireCbc(XSECCryptoSymmetricKey::SymmetricKeyMode mode) {
    if (mode != XSECCryptoSymmetricKey::MODE_CBC)
        throw XSECCryptoException(XSECCryptoException::UnsupportedAlgorithm,
                                  "the Korean block ciphers are offered in CBC mode only");
}

}  // namespace

bool VQTKCryptoSymmetricKey::decryptInit(bool doPad, SymmetricKeyMode mode, const unsigned char* iv,
                                         const unsigned char*, unsigned int) {
    requireKey();
    requireCbc(mode);
    m_stream = symmetric([&] {
        return std::make_unique<vqxml::korean::CbcDecryptStream>(m_cipher, m_key.data(), m_key.size(),
                                                                 iv, doPad);
    });
    m_streamEncrypts = false;
    return true;
}

unsigned int VQTKCryptoSymmetricKey::decrypt(const unsigned char* inBuf, unsigned char* plainBuf,
                                             unsigned int inLength, unsigned int maxOutLength) {
    auto& s = stream(false);
    return symmetric([&] { return unsigned(s.update(inBuf, inLength, plainBuf, maxOutLength)); });
}

unsigned int VQTKCryptoSymmetricKey::decryptFinish(unsigned char* plainBuf, unsigned int maxOutLength) {
    auto& s = stream(false);
    unsigned int n = symmetric([&] { return unsigned(s.finish(plainBuf, maxOutLength)); });
    m_stream.reset();
    return n;
}

bool VQTKCryptoSymmetricKey::encryptInit(bool doPad, SymmetricKeyMode mode, const unsigned char* iv) {
    requireKey();
    requireCbc(mode);
    m_stream = symmetric([&] {
        return std::make_unique<vqxml::korean::CbcEncryptStream>(m_cipher, m_key.data(), m_key.size(),
                                                                 iv, doPad);
    });
    m_streamEncrypts = true;
    return true;
}

unsigned int VQTKCryptoSymmetricKey::encrypt(const unsigned char* inBuf, unsigned char* cipherBuf,
                                             unsigned int inLength, unsigned int maxOutLength) {
    auto& s = stream(true);
    return symmetric([&] { return unsigned(s.update(inBuf, inLength, cipherBuf, maxOutLength)); });
}

unsigned int VQTKCryptoSymmetricKey::encryptFinish(unsigned char* cipherBuf, unsigned int maxOutLength,
                                                   unsigned int) {
    auto& s = stream(true);
    unsigned int n = symmetric([&] { return unsigned(s.finish(cipherBuf, maxOutLength)); });
    m_stream.reset();
    return n;
}
