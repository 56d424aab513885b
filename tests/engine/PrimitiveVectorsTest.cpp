// The shared known-answer vectors for HAS-160, SEED, ARIA-128 and NEAT, and the
// bitsliced Triple DES against published vectors and OpenSSL.
#include <gtest/gtest.h>

#include <random>

#include <openssl/evp.h>

#include "TestSupport.hpp"
#include "engine/Base64.hpp"
#include "engine/korean/CbcCipher.hpp"
#include "engine/korean/CryptoError.hpp"
#include "engine/korean/Digest.hpp"
#include "engine/korean/Has160.hpp"
#include "engine/korean/TripleDesCbc.hpp"

using namespace vqxml::korean;
using namespace vqxml::test;

namespace {

Bytes has160(const Bytes& message, std::size_t chunk) {
    Has160 h;
    for (std::size_t i = 0; i < message.size(); i += chunk)
        h.update(message.data() + i, std::min(chunk, message.size() - i));
    Bytes digest(Has160::kDigestSize);
    h.finish(digest.data());
    return digest;
}

Bytes message(const VectorRecord& r) {
    if (r.has("message_repeat"))
        return Bytes(std::stoul(r.text("repeat")), r.bytes("message_repeat").at(0));
    return r.bytes("message");
}

}  // namespace

TEST(Has160Vectors, StandardExamplesInAnyChunking) {
    auto records = readVectors("has160.txt");
    ASSERT_EQ(records.size(), 8u);
    for (const VectorRecord& r : records) {
        Bytes m = message(r);
        for (std::size_t chunk : {std::size_t(1), std::size_t(63), std::size_t(64), std::size_t(65), m.size() + 1})
            EXPECT_EQ(toHex(has160(m, chunk)), r.text("digest")) << r.label << ", chunk " << chunk;
        EXPECT_EQ(toHex(Digest::of(HashAlgorithm::Has160, m.data(), m.size())), r.text("digest")) << r.label;
    }
}

struct CipherFile {
    const char* name;
    const char* file;
    BlockCipherId id;
    std::size_t records;
};

void PrintTo(const CipherFile& f, std::ostream* os) {
    *os << f.name;
}

class BlockCipherVectors : public ::testing::TestWithParam<CipherFile> {};

TEST_P(BlockCipherVectors, EncryptAndDecryptEveryRecord) {
    auto records = readVectors(GetParam().file);
    ASSERT_EQ(records.size(), GetParam().records);
    for (const VectorRecord& r : records) {
        Bytes key = r.bytes("key"), plain = r.bytes("plaintext"), cipher = r.bytes("ciphertext");
        // One block of CBC under a zero IV is ECB.
        Bytes iv = r.has("iv") ? r.bytes("iv") : Bytes(kCipherBlockSize, 0);
        Bytes out(plain.size());
        CbcCipher(GetParam().id, key.data(), key.size(), true, iv.data()).process(plain.data(), plain.size(), out.data());
        EXPECT_EQ(toHex(out), r.text("ciphertext")) << r.label;
        CbcCipher(GetParam().id, key.data(), key.size(), false, iv.data()).process(cipher.data(), cipher.size(), out.data());
        EXPECT_EQ(toHex(out), r.text("plaintext")) << r.label;
    }
}

INSTANTIATE_TEST_SUITE_P(KoreanCiphers, BlockCipherVectors,
                         ::testing::Values(CipherFile{"SEED", "seed.txt", BlockCipherId::Seed, 6},
                                           CipherFile{"ARIA", "aria.txt", BlockCipherId::Aria128, 2},
                                           CipherFile{"NEAT", "neat.txt", BlockCipherId::Neat, 6}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Neat, AllZeroKeyAndBlockRoundTrip) {
    // The case where both multiplication operands are 0; with 0 standing for
    // 2^16 the product is 1 and decryption must still invert encryption.
    Bytes zero(16, 0), out(16), back(16);
    CbcCipher(BlockCipherId::Neat, zero.data(), 16, true, zero.data()).process(zero.data(), 16, out.data());
    CbcCipher(BlockCipherId::Neat, zero.data(), 16, false, zero.data()).process(out.data(), 16, back.data());
    EXPECT_EQ(back, zero);
    EXPECT_NE(out, zero);
}

TEST(CbcCipher, RefusesWrongKeyLengthAndPartialBlocks) {
    Bytes key(16), iv(16), data(20);
    for (BlockCipherId id : {BlockCipherId::Seed, BlockCipherId::Aria128, BlockCipherId::Neat}) {
        EXPECT_THROW(CbcCipher(id, key.data(), 15, true, iv.data()), CryptoError);
        EXPECT_THROW(CbcCipher(id, key.data(), 24, true, iv.data()), CryptoError);
        EXPECT_THROW(CbcCipher(id, nullptr, 16, true, iv.data()), CryptoError);
        CbcCipher c(id, key.data(), 16, true, iv.data());
        EXPECT_THROW(c.process(data.data(), data.size(), data.data()), CryptoError);
    }
}

namespace {

using TripleDesDecrypt = void (*)(const std::uint8_t*, const std::uint8_t*, const std::uint8_t*, std::size_t,
                                  std::uint8_t*);
// Both forms, whichever the processor would pick (the AVX2 one where it has it).
const std::pair<const char*, TripleDesDecrypt> kTripleDesForms[] = {{"widest", tripleDesCbcDecrypt},
                                                                    {"portable", tripleDesCbcDecryptPortable}};

Bytes openSslTripleDes(bool encrypt, const Bytes& key, const Bytes& iv, const Bytes& in) {
    Bytes out(in.size() + 8);
    int n = 0;
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    EXPECT_EQ(EVP_CipherInit_ex(ctx, EVP_des_ede3_cbc(), nullptr, key.data(), iv.data(), encrypt ? 1 : 0), 1);
    EVP_CIPHER_CTX_set_padding(ctx, 0);
    EXPECT_EQ(EVP_CipherUpdate(ctx, out.data(), &n, in.data(), int(in.size())), 1);
    EVP_CIPHER_CTX_free(ctx);
    out.resize(std::size_t(n));
    return out;
}

}  // namespace

// The lines a CipherValue is written in are OpenSSL's coder's, at every length
// around the end of a group and of a line.
TEST(Base64Lines, AsOpenSSLWritesThemAndBack) {
    std::mt19937 random(76);
    for (std::size_t n = 0; n <= 3 * 57 + 3; ++n) {
        std::vector<unsigned char> bytes(n);
        for (auto& b : bytes)
            b = static_cast<unsigned char>(random());
        std::string expected;
        for (std::size_t at = 0; at < n; at += 57) {
            unsigned char line[80];
            const std::size_t take = std::min<std::size_t>(57, n - at);
            expected.append(reinterpret_cast<char*>(line), std::size_t(EVP_EncodeBlock(line, &bytes[at], int(take))));
            if (take == 57)
                expected += '\n';
        }
        EXPECT_EQ(vqxml::base64Text(bytes), expected) << n << " bytes";
        EXPECT_EQ(vqxml::base64Encode(bytes), vqxml::XString(expected.begin(), expected.end())) << n << " bytes";
        std::vector<std::uint8_t> back;
        EXPECT_TRUE(vqxml::base64Decode(expected.c_str(), back) && back == bytes) << n << " bytes";
    }
}

TEST(TripleDesCbc, PublishedVectorsInBothForms) {
    const struct {
        const char* source;
        const char* key;
        const char* iv;  // empty: ECB, block by block (one block of CBC under a zero IV)
        const char* cipher;
        const char* plain;
    } vectors[] = {
        {"NIST SP 800-67 Rev. 1, appendix B (three keys, \"The qufck brown fox jump\")",
         "0123456789ABCDEF23456789ABCDEF01456789ABCDEF0123", "",
         "A826FD8CE53B855FCCE21C8112256FE668D5C05DD9B6B900", "54686520717566636B2062726F776E20666F78206A756D70"},
        {"FIPS 81 CBC example (one key three times is DES)", "0123456789ABCDEF0123456789ABCDEF0123456789ABCDEF",
         "1234567890ABCDEF", "E5C7CDDE872BF27C43E934008C389C0F683788499A7C05F6",
         "4E6F77206973207468652074696D6520666F7220616C6C20"},
        {"NIST SP 800-20, variable plaintext, first entry", "010101010101010101010101010101010101010101010101", "",
         "95F8A5E5DD31D900", "8000000000000000"},
    };
    for (const auto& [form, decrypt] : kTripleDesForms)
        for (const auto& v : vectors) {
            const Bytes key = fromHex(v.key), cipher = fromHex(v.cipher);
            const bool ecb = *v.iv == 0;
            const Bytes iv = ecb ? Bytes(8, 0) : fromHex(v.iv);
            Bytes out = cipher;  // decrypted in place, then encrypted back
            for (std::size_t at = 0; at < out.size(); at += ecb ? 8 : out.size())
                decrypt(key.data(), iv.data(), out.data() + at, ecb ? 8 : out.size(), out.data() + at);
            EXPECT_EQ(toHex(out), toHex(fromHex(v.plain))) << form << ": " << v.source;
            for (std::size_t at = 0; at < out.size(); at += ecb ? 8 : out.size())
                tripleDesCbcEncrypt(key.data(), iv.data(), out.data() + at, ecb ? 8 : out.size(), out.data() + at);
            EXPECT_EQ(toHex(out), toHex(cipher)) << "encryption: " << v.source;
        }
}

// Decryption at every batch boundary of both forms; encryption at the same
// lengths.
TEST(TripleDesCbc, MatchesOpenSSLOnEveryBatchBoundary) {
    std::mt19937 random(20260);
    const auto randomBytes = [&](std::size_t n) {
        Bytes b(n);
        for (auto& x : b)
            x = std::uint8_t(random());
        return b;
    };
    for (std::size_t blocks : {1, 2, 63, 64, 65, 127, 255, 256, 257, 511, 513, 1000, 3001}) {
        const Bytes key = randomBytes(24), iv = randomBytes(8), cipher = randomBytes(blocks * 8);
        const Bytes expected = openSslTripleDes(false, key, iv, cipher);
        Bytes otherParity = key;  // the low bit of each byte is DES's parity bit, which the key schedule skips
        for (auto& x : otherParity)
            x ^= 1;
        for (const auto& [form, decrypt] : kTripleDesForms) {
            Bytes out(cipher.size());
            decrypt(key.data(), iv.data(), cipher.data(), cipher.size(), out.data());
            EXPECT_EQ(out, expected) << form << ", " << blocks << " blocks";
            decrypt(otherParity.data(), iv.data(), cipher.data(), cipher.size(), out.data());
            EXPECT_EQ(out, expected) << form << ", " << blocks << " blocks, other parity bits";
        }
        Bytes encrypted(cipher.size());
        tripleDesCbcEncrypt(otherParity.data(), iv.data(), cipher.data(), cipher.size(), encrypted.data());
        EXPECT_EQ(encrypted, openSslTripleDes(true, key, iv, cipher)) << "encryption, " << blocks << " blocks";
    }
    Bytes key(24), iv(8), data(12);
    for (const auto& [form, decrypt] : kTripleDesForms)
        EXPECT_THROW(decrypt(key.data(), iv.data(), data.data(), data.size(), data.data()), CryptoError) << form;
    EXPECT_THROW(tripleDesCbcEncrypt(key.data(), iv.data(), data.data(), data.size(), data.data()), CryptoError);
}
