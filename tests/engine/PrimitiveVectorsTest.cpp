// The shared known-answer vectors for HAS-160, SEED, ARIA-128 and NEAT.
#include <gtest/gtest.h>

#include "TestSupport.hpp"
#include "engine/korean/CbcCipher.hpp"
#include "engine/korean/CryptoError.hpp"
#include "engine/korean/Digest.hpp"
#include "engine/korean/Has160.hpp"

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
