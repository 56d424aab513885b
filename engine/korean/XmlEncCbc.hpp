// The CBC framing of the W3C XML Encryption block cipher algorithms, for SEED,
// ARIA-128 and NEAT:
//  - the 16-byte IV goes in front of the ciphertext;
//  - padding adds 1 to 16 bytes so that the plaintext fills whole blocks; the last
//    pad byte gives their number. We write every pad byte with that number (which
//    PKCS #7 readers such as `openssl enc` also accept); on decryption only the
//    last byte is looked at, and it must be 1 to 16.
// The padding rule is shared with the other CBC ciphers of XML Encryption (AES,
// Triple DES), whose block sizes differ: xmlEncPadding and xmlEncPadCount.
// Streams accept input in pieces of any size; every method that writes checks
// the room it is given and raises CryptoError rather than overflow.
#ifndef VQXML_ENGINE_KOREAN_XMLENCCBC_HPP
#define VQXML_ENGINE_KOREAN_XMLENCCBC_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/korean/CbcCipher.hpp"
#include "engine/korean/SecureBytes.hpp"

namespace vqxml::korean {

class CbcStream {
public:
    enum class Direction { Encrypt, Decrypt };

    // Without an IV (iv null), encryption makes a random one and writes it in
    // front of its first output, and decryption takes the first 16 input bytes.
    // pad false: no padding, the data must fill whole blocks.
    CbcStream(Direction direction, BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
              const std::uint8_t* iv, bool pad);
    ~CbcStream();
    CbcStream(const CbcStream&) = delete;
    CbcStream& operator=(const CbcStream&) = delete;

    // Both return the bytes written to out. finish() raises CryptoError for data
    // that is not whole blocks, a missing IV or bad padding.
    std::size_t update(const std::uint8_t* in, std::size_t len, std::uint8_t* out, std::size_t room);
    std::size_t finish(std::uint8_t* out, std::size_t room);

private:
    std::size_t writeIv(std::uint8_t*& out, std::size_t& room);
    void readIv(const std::uint8_t*& in, std::size_t& len);
    std::size_t processable(std::size_t total) const;
    std::size_t finishEncryption(std::uint8_t* out, std::size_t room);
    std::size_t finishDecryption(std::uint8_t* out, std::size_t room);

    Direction m_direction;
    BlockCipherId m_id;
    SecureBytes m_key;
    bool m_pad;
    std::unique_ptr<CbcCipher> m_cipher;  // null until the IV is known
    std::uint8_t m_iv[kCipherBlockSize];
    std::size_t m_ivLen = 0;              // IV bytes read so far (decryption)
    bool m_ivToWrite = false;             // a generated IV not yet written
    std::uint8_t m_pending[kCipherBlockSize];
    std::size_t m_pendingLen = 0;
};

// The pad bytes that bring len bytes to whole blocks of blockSize (1 to
// blockSize bytes, each holding their number).
std::vector<std::uint8_t> xmlEncPadding(std::size_t len, std::size_t blockSize);
// The number of pad bytes at the end of decrypted whole blocks: their last byte,
// which must be 1 to blockSize (the other pad bytes may hold anything). Raises
// CryptoError otherwise, or for no data.
std::size_t xmlEncPadCount(const std::uint8_t* data, std::size_t len, std::size_t blockSize);

// IV || CBC(padded plaintext) with a fresh random IV.
std::vector<std::uint8_t> xmlEncEncrypt(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                                        const std::uint8_t* plain, std::size_t len);
// The inverse; raises CryptoError on malformed input.
SecureBytes xmlEncDecrypt(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                          const std::uint8_t* data, std::size_t len);

}  // namespace vqxml::korean

#endif
