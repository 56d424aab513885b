// The CBC framing of the W3C XML Encryption block cipher algorithms, for SEED,
// ARIA-128 and NEAT:
//  - the 16-byte IV goes in front of the ciphertext;
//  - padding adds 1 to 16 bytes so that the plaintext fills whole blocks; the last
//    pad byte gives their number. We write every pad byte with that number (which
//    PKCS #7 readers such as `openssl enc` also accept); on decryption only the
//    last byte is looked at, and it must be 1 to 16.
// Streams accept input in pieces of any size; every method that writes checks
// the room it is given and raises CryptoError rather than overflow.
#ifndef VQXML_ENGINE_KOREAN_XMLENCCBC_HPP
#define VQXML_ENGINE_KOREAN_XMLENCCBC_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/korean/CbcCipher.hpp"
#include "engine/korean/SecureBytes.hpp"

namespace vqxml::korean {

class CbcStream {
public:
    CbcStream(const CbcStream&) = delete;
    CbcStream& operator=(const CbcStream&) = delete;
    virtual ~CbcStream();

    // Returns the bytes written to out.
    std::size_t update(const std::uint8_t* in, std::size_t len, std::uint8_t* out, std::size_t room);
    virtual std::size_t finish(std::uint8_t* out, std::size_t room) = 0;

protected:
    CbcStream(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen, bool encrypt, bool pad);
    // Starts the cipher once the IV is known.
    void start(const std::uint8_t iv[kCipherBlockSize]);
    // Bytes update() may pass through the cipher now, of total buffered + new.
    virtual std::size_t processable(std::size_t total) const = 0;
    // Bytes update() writes before the ciphertext proper (a generated IV), or
    // input bytes it consumes as the IV; both handled by the subclass.
    virtual std::size_t takePrefix(const std::uint8_t*& in, std::size_t& len, std::uint8_t*& out,
                                   std::size_t& room) = 0;

    BlockCipherId m_id;
    SecureBytes m_key;
    bool m_encrypt;
    bool m_pad;
    std::unique_ptr<CbcCipher> m_cipher;
    std::uint8_t m_pending[kCipherBlockSize];
    std::size_t m_pendingLen = 0;
};

class CbcEncryptStream : public CbcStream {
public:
    // iv null: a random IV is made and written in front of the first output.
    CbcEncryptStream(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                     const std::uint8_t* iv, bool pad);
    std::size_t finish(std::uint8_t* out, std::size_t room) override;

private:
    std::size_t processable(std::size_t total) const override;
    std::size_t takePrefix(const std::uint8_t*& in, std::size_t& len, std::uint8_t*& out,
                           std::size_t& room) override;

    std::uint8_t m_iv[kCipherBlockSize];
    bool m_ivToWrite;
};

class CbcDecryptStream : public CbcStream {
public:
    // iv null: the first 16 bytes of the input are the IV.
    CbcDecryptStream(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                     const std::uint8_t* iv, bool pad);
    // Raises CryptoError for a partial block, a missing IV or bad padding.
    std::size_t finish(std::uint8_t* out, std::size_t room) override;

private:
    std::size_t processable(std::size_t total) const override;
    std::size_t takePrefix(const std::uint8_t*& in, std::size_t& len, std::uint8_t*& out,
                           std::size_t& room) override;

    std::uint8_t m_iv[kCipherBlockSize];
    std::size_t m_ivLen;
    bool m_ivFromInput;
};

// IV || CBC(padded plaintext) with a fresh random IV.
std::vector<std::uint8_t> xmlEncEncrypt(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                                        const std::uint8_t* plain, std::size_t len);
// The inverse; raises CryptoError on malformed input.
SecureBytes xmlEncDecrypt(BlockCipherId id, const std::uint8_t* key, std::size_t keyLen,
                          const std::uint8_t* data, std::size_t len);

}  // namespace vqxml::korean

#endif
