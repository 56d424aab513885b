// The XML Encryption CBC framing: IV in front, padding written in full and read
// by its last byte only, streams in pieces of any size, clean refusals.
#include <gtest/gtest.h>

#include "TestSupport.hpp"
#include "engine/korean/CryptoError.hpp"
#include "engine/korean/XmlEncCbc.hpp"

using namespace vqxml::korean;
using namespace vqxml::test;

namespace {

const BlockCipherId kAll[] = {BlockCipherId::Seed, BlockCipherId::Aria128, BlockCipherId::Neat};

Bytes key16() {
    Bytes k(16);
    for (std::size_t i = 0; i < k.size(); ++i)
        k[i] = std::uint8_t(0x30 + i);
    return k;
}

Bytes pattern(std::size_t n) {
    Bytes b(n);
    for (std::size_t i = 0; i < n; ++i)
        b[i] = std::uint8_t(i * 7 + 1);
    return b;
}

// Raw CBC of a block string the test builds itself (padding included).
Bytes rawCbc(BlockCipherId id, const Bytes& iv, const Bytes& blocks) {
    Bytes key = key16(), out(blocks.size());
    CbcCipher(id, key.data(), key.size(), true, iv.data()).process(blocks.data(), blocks.size(), out.data());
    Bytes framed = iv;
    framed.insert(framed.end(), out.begin(), out.end());
    return framed;
}

Bytes decrypt(BlockCipherId id, const Bytes& data) {
    Bytes key = key16();
    SecureBytes plain = xmlEncDecrypt(id, key.data(), key.size(), data.data(), data.size());
    return Bytes(plain.begin(), plain.end());
}

}  // namespace

TEST(XmlEncCbc, RoundTripsEveryLengthAroundTheBlockSize) {
    Bytes key = key16();
    for (BlockCipherId id : kAll)
        for (std::size_t n = 0; n <= 49; ++n) {
            Bytes plain = pattern(n);
            std::vector<std::uint8_t> framed = xmlEncEncrypt(id, key.data(), key.size(), plain.data(), n);
            EXPECT_EQ(framed.size(), 16 + (n / 16 + 1) * 16) << blockCipherName(id) << " " << n;
            EXPECT_EQ(decrypt(id, Bytes(framed.begin(), framed.end())), plain) << blockCipherName(id) << " " << n;
        }
}

TEST(XmlEncCbc, PaddingIsWrittenInFullAndIvIsFresh) {
    Bytes key = key16(), plain = pattern(5);
    std::vector<std::uint8_t> a = xmlEncEncrypt(BlockCipherId::Seed, key.data(), 16, plain.data(), plain.size());
    std::vector<std::uint8_t> b = xmlEncEncrypt(BlockCipherId::Seed, key.data(), 16, plain.data(), plain.size());
    EXPECT_NE(Bytes(a.begin(), a.begin() + 16), Bytes(b.begin(), b.begin() + 16));
    // Decrypt without unpadding to see the pad bytes.
    CbcStream raw(CbcStream::Direction::Decrypt, BlockCipherId::Seed, key.data(), 16, nullptr, false);
    Bytes out(32);
    std::size_t n = raw.update(a.data(), a.size(), out.data(), out.size());
    n += raw.finish(out.data() + n, out.size() - n);
    ASSERT_EQ(n, 16u);
    EXPECT_EQ(Bytes(out.begin() + 5, out.begin() + 16), Bytes(11, 11));
}

TEST(XmlEncCbc, OnlyTheLastPadByteCounts) {
    Bytes iv = pattern(16);
    for (BlockCipherId id : kAll) {
        // Arbitrary pad bytes before a valid count are accepted.
        Bytes blocks = pattern(16);
        Bytes last = {'a', 'b', 'c', 0xde, 0xad, 0xbe, 0xef, 0, 0, 0, 0, 0, 0, 0, 0x99, 13};
        blocks.insert(blocks.end(), last.begin(), last.end());
        Bytes expected = pattern(16);
        expected.insert(expected.end(), {'a', 'b', 'c'});
        EXPECT_EQ(decrypt(id, rawCbc(id, iv, blocks)), expected);
        // A whole block of padding.
        Bytes full = pattern(16);
        full.insert(full.end(), 16, 16);
        EXPECT_EQ(decrypt(id, rawCbc(id, iv, full)), pattern(16));
        // Counts of 0 and of more than a block are refused.
        for (std::uint8_t bad : {std::uint8_t(0), std::uint8_t(17), std::uint8_t(0xff)}) {
            Bytes b = pattern(16);
            b.back() = bad;
            EXPECT_THROW(decrypt(id, rawCbc(id, iv, b)), CryptoError) << int(bad);
        }
    }
}

TEST(XmlEncCbc, MalformedCiphertextIsRefused) {
    Bytes key = key16(), plain = pattern(40);
    for (BlockCipherId id : kAll) {
        std::vector<std::uint8_t> good = xmlEncEncrypt(id, key.data(), 16, plain.data(), plain.size());
        Bytes framed(good.begin(), good.end());
        EXPECT_THROW(decrypt(id, Bytes(framed.begin(), framed.end() - 1)), CryptoError);  // not whole blocks
        EXPECT_THROW(decrypt(id, Bytes(framed.begin(), framed.begin() + 16)), CryptoError);  // IV only
        EXPECT_THROW(decrypt(id, Bytes(framed.begin(), framed.begin() + 9)), CryptoError);   // part of an IV
        EXPECT_THROW(decrypt(id, Bytes()), CryptoError);
    }
}

TEST(XmlEncCbc, WrongKeyLengthsAreRefused) {
    Bytes key(32), data = pattern(32);
    for (BlockCipherId id : kAll)
        for (std::size_t len : {std::size_t(0), std::size_t(8), std::size_t(15), std::size_t(17), std::size_t(32)}) {
            EXPECT_THROW(xmlEncEncrypt(id, key.data(), len, data.data(), data.size()), CryptoError);
            EXPECT_THROW(xmlEncDecrypt(id, key.data(), len, data.data(), data.size()), CryptoError);
        }
}

TEST(XmlEncCbc, StreamsInAnyPiecesMatchOneShot) {
    Bytes key = key16(), iv = pattern(16), plain = pattern(1000);
    for (BlockCipherId id : kAll)
        for (std::size_t piece : {std::size_t(1), std::size_t(15), std::size_t(16), std::size_t(17), std::size_t(333)}) {
            CbcStream enc(CbcStream::Direction::Encrypt, id, key.data(), 16, iv.data(), true);
            Bytes cipher((plain.size() / 16 + 1) * 16);
            std::size_t n = 0;
            for (std::size_t i = 0; i < plain.size(); i += piece)
                n += enc.update(plain.data() + i, std::min(piece, plain.size() - i), cipher.data() + n, cipher.size() - n);
            n += enc.finish(cipher.data() + n, cipher.size() - n);
            ASSERT_EQ(n, cipher.size());

            Bytes framed = iv;
            framed.insert(framed.end(), cipher.begin(), cipher.end());
            CbcStream dec(CbcStream::Direction::Decrypt, id, key.data(), 16, nullptr, true);
            Bytes back(framed.size());
            std::size_t m = 0;
            for (std::size_t i = 0; i < framed.size(); i += piece)
                m += dec.update(framed.data() + i, std::min(piece, framed.size() - i), back.data() + m, back.size() - m);
            m += dec.finish(back.data() + m, back.size() - m);
            back.resize(m);
            EXPECT_EQ(back, plain) << blockCipherName(id) << " piece " << piece;
        }
}

TEST(XmlEncCbc, TooLittleOutputRoomIsRefused) {
    Bytes key = key16(), plain = pattern(64), out(64);
    CbcStream enc(CbcStream::Direction::Encrypt, BlockCipherId::Neat, key.data(), 16, nullptr, true);
    EXPECT_THROW(enc.update(plain.data(), plain.size(), out.data(), 40), CryptoError);
    CbcStream enc2(CbcStream::Direction::Encrypt, BlockCipherId::Aria128, key.data(), 16, pattern(16).data(), true);
    EXPECT_EQ(enc2.update(plain.data(), 10, out.data(), 0), 0u);
    EXPECT_THROW(enc2.finish(out.data(), 15), CryptoError);
}

TEST(XmlEncCbc, UnpaddedStreamsNeedWholeBlocks) {
    Bytes key = key16(), iv = pattern(16), plain = pattern(20), out(64);
    CbcStream enc(CbcStream::Direction::Encrypt, BlockCipherId::Seed, key.data(), 16, iv.data(), false);
    EXPECT_EQ(enc.update(plain.data(), plain.size(), out.data(), out.size()), 16u);
    EXPECT_THROW(enc.finish(out.data(), out.size()), CryptoError);
}
