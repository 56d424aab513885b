#include "engine/korean/XmlEncCbc.hpp"

#include <cstring>

#include <openssl/rand.h>

#include "engine/korean/CryptoError.hpp"

namespace vqxml::korean {
namespace {

void requireRoom(std::size_t room, std::size_t needed) {
    if (room < needed)
        throw CryptoError("output buffer too small for the cipher");
}

// memcpy that tolerates the null pointers of empty input.
void copyBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t n) {
    if (n != 0)
        std::memcpy(to, from, n);
}

}  // namespace

CbcStream::CbcStream(Direction direction, BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                     const std::uint8_t* iv, bool pad)
    : m_direction(direction), m_id(id), m_pad(pad) {
    requireCipherKey(id, key, keyLen);
    m_key.assign(key, key + keyLen);
    if (iv != nullptr) {
        std::memcpy(m_iv, iv, sizeof m_iv);
    } else if (direction == Direction::Encrypt) {
        if (RAND_bytes(m_iv, sizeof m_iv) != 1)
            throwOpenSSLError("cannot make a random IV");
        m_ivToWrite = true;
    } else {
        return;  // the IV comes with the data
    }
    m_cipher = std::make_unique<CbcCipher>(id, key, keyLen, direction == Direction::Encrypt, m_iv);
}

CbcStream::~CbcStream() {
    OPENSSL_cleanse(m_pending, sizeof m_pending);
}

std::size_t CbcStream::writeIv(std::uint8_t*& out, std::size_t& room) {
    if (!m_ivToWrite)
        return 0;
    requireRoom(room, sizeof m_iv);
    std::memcpy(out, m_iv, sizeof m_iv);
    out += sizeof m_iv;
    room -= sizeof m_iv;
    m_ivToWrite = false;
    return sizeof m_iv;
}

void CbcStream::readIv(const std::uint8_t*& in, std::size_t& len) {
    std::size_t take = sizeof m_iv - m_ivLen < len ? sizeof m_iv - m_ivLen : len;
    copyBytes(m_iv + m_ivLen, in, take);
    m_ivLen += take;
    in += take;
    len -= take;
    if (m_ivLen == sizeof m_iv)
        m_cipher = std::make_unique<CbcCipher>(m_id, m_key.data(), m_key.size(), false, m_iv);
}

// Bytes update() may pass through the cipher now, of all buffered and new ones.
// Decryption with padding holds the last whole block back: finish() needs it.
std::size_t CbcStream::processable(std::size_t total) const {
    if (m_direction == Direction::Decrypt && m_pad)
        return total == 0 ? 0 : (total - 1) / kCipherBlockSize * kCipherBlockSize;
    return total - total % kCipherBlockSize;
}

std::size_t CbcStream::update(const std::uint8_t* in, std::size_t len, std::uint8_t* out,
                              std::size_t room) {
    std::size_t written = writeIv(out, room);
    if (m_cipher == nullptr) {
        readIv(in, len);
        if (m_cipher == nullptr)
            return written;
    }
    std::size_t now = processable(m_pendingLen + len);
    requireRoom(room, now);
    if (now == 0) {
        copyBytes(m_pending + m_pendingLen, in, len);
        m_pendingLen += len;
        return written;
    }
    if (m_pendingLen > 0) {
        std::size_t fill = kCipherBlockSize - m_pendingLen;
        std::memcpy(m_pending + m_pendingLen, in, fill);
        in += fill;
        len -= fill;
        m_cipher->process(m_pending, kCipherBlockSize, out);
        out += kCipherBlockSize;
        now -= kCipherBlockSize;
        written += kCipherBlockSize;
        m_pendingLen = 0;
    }
    m_cipher->process(in, now, out);
    written += now;
    copyBytes(m_pending, in + now, len - now);
    m_pendingLen = len - now;
    return written;
}

std::size_t CbcStream::finish(std::uint8_t* out, std::size_t room) {
    if (!m_pad) {
        std::size_t written = writeIv(out, room);
        if (m_cipher == nullptr)
            throw CryptoError("ciphertext is shorter than its IV");
        if (m_pendingLen != 0)
            throw CryptoError("data is not a whole number of blocks and padding is off");
        return written;
    }
    return m_direction == Direction::Encrypt ? finishEncryption(out, room) : finishDecryption(out, room);
}

std::vector<std::uint8_t> xmlEncPadding(std::size_t len, std::size_t blockSize) {
    const std::size_t count = blockSize - len % blockSize;
    return std::vector<std::uint8_t>(count, static_cast<std::uint8_t>(count));
}

std::size_t xmlEncPadCount(const std::uint8_t* data, std::size_t len, std::size_t blockSize) {
    const std::size_t count = len == 0 ? 0 : data[len - 1];
    if (count < 1 || count > blockSize || count > len)
        throw CryptoError("bad padding in decrypted data");
    return count;
}

std::size_t CbcStream::finishEncryption(std::uint8_t* out, std::size_t room) {
    std::size_t written = writeIv(out, room);
    requireRoom(room, kCipherBlockSize);
    const std::vector<std::uint8_t> padding = xmlEncPadding(m_pendingLen, kCipherBlockSize);
    std::memcpy(m_pending + m_pendingLen, padding.data(), padding.size());
    m_cipher->process(m_pending, kCipherBlockSize, out);
    m_pendingLen = 0;
    return written + kCipherBlockSize;
}

std::size_t CbcStream::finishDecryption(std::uint8_t* out, std::size_t room) {
    if (m_cipher == nullptr)
        throw CryptoError("ciphertext is shorter than its IV");
    if (m_pendingLen != kCipherBlockSize)
        throw CryptoError(m_pendingLen == 0 ? "ciphertext has no data after its IV"
                                            : "ciphertext is not a whole number of blocks");
    std::uint8_t block[kCipherBlockSize];
    m_cipher->process(m_pending, kCipherBlockSize, block);
    m_pendingLen = 0;
    std::size_t count = 0;
    try {
        count = xmlEncPadCount(block, sizeof block, kCipherBlockSize);
    } catch (...) {
        OPENSSL_cleanse(block, sizeof block);
        throw;
    }
    std::size_t keep = kCipherBlockSize - count;
    requireRoom(room, keep);
    copyBytes(out, block, keep);
    OPENSSL_cleanse(block, sizeof block);
    return keep;
}

std::vector<std::uint8_t> xmlEncEncrypt(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                                        const std::uint8_t* plain, std::size_t len) {
    CbcStream stream(CbcStream::Direction::Encrypt, id, key, keyLen, nullptr, true);
    std::vector<std::uint8_t> out(kCipherBlockSize + len + kCipherBlockSize);
    std::size_t n = stream.update(plain, len, out.data(), out.size());
    n += stream.finish(out.data() + n, out.size() - n);
    out.resize(n);
    return out;
}

SecureBytes xmlEncDecrypt(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                          const std::uint8_t* data, std::size_t len) {
    CbcStream stream(CbcStream::Direction::Decrypt, id, key, keyLen, nullptr, true);
    SecureBytes out(len);
    std::size_t n = stream.update(data, len, out.data(), out.size());
    n += stream.finish(out.data() + n, out.size() - n);
    out.resize(n);
    return out;
}

}  // namespace vqxml::korean
