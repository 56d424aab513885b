#include "engine/korean/Neat.hpp"

#include <openssl/crypto.h>

namespace vqxml::korean {
namespace {

// The 128 possible mixes, as published. Row r, digits d0..d7: left words d0 and
// d1 take the XOR of right words d2 and d3; right words d4 and d5 take the XOR of
// left words d6 and d7. No word written is read by another XOR of the same mix,
// so every mix is its own inverse.
const char* const kMixRows[128] = {
    "01012323", "01012332", "01102323", "01102332", "01021332", "01201323", "01201332", "01031223",
    "01031232", "01301223", "01301232", "01120323", "01120332", "01210323", "01210332", "01130223",
    "01130232", "01310223", "01310232", "01230132", "01320123", "02012331", "02102313", "02102331",
    "02021313", "02021331", "02201313", "02201331", "02031213", "02031231", "02301213", "02301231",
    "02120313", "02120331", "02210313", "02210331", "02130213", "02310213", "02310231", "02230113",
    "02230131", "02320113", "02320131", "03012321", "03012312", "03102321", "03102312", "03021321",
    "03021312", "03201321", "03201312", "03031221", "03301221", "03120321", "03120312", "03210321",
    "03210312", "03130221", "03130212", "03310221", "03310212", "03230121", "03230112", "03320121",
    "03320112", "12012303", "12012330", "12102303", "12102330", "12021303", "12021330", "12201303",
    "12201330", "12031230", "12301203", "12301230", "12120303", "12120330", "12210303", "12210330",
    "12130230", "12310203", "12310230", "12230103", "12230130", "12320103", "12320130", "13012302",
    "13102302", "13021302", "13021320", "13201302", "13201320", "13031202", "13031220", "13301202",
    "13301220", "13120302", "13120320", "13210302", "13210320", "13130202", "13130220", "13310202",
    "13310220", "13230120", "13320102", "23012301", "23012310", "23102310", "23021301", "23021310",
    "23201301", "23201310", "23031201", "23031210", "23301201", "23301210", "23120301", "23120310",
    "23210301", "23210310", "23130201", "23130210", "23310210", "23230101", "23230110", "23320110",
};

// The fixed key under which the master key is encrypted to make the round keys.
constexpr std::uint16_t kScheduleKey[4] = {0xfd56, 0xc7d1, 0xe36c, 0xa2dc};

inline std::uint16_t mul(std::uint32_t a, std::uint32_t b) {
    a = a != 0 ? a : 0x10000;
    b = b != 0 ? b : 0x10000;
    return std::uint16_t(std::uint64_t(a) * b % 0x10001);
}

// Multiplicative inverse modulo 2^16+1 by Fermat: a^(2^16-1).
std::uint16_t mulInverse(std::uint16_t a) {
    std::uint16_t result = 1;
    std::uint16_t power = a;
    for (std::uint32_t e = 0xffff; e != 0; e >>= 1) {
        if (e & 1)
            result = mul(result, power);
        power = mul(power, power);
    }
    return result;
}

inline std::uint16_t rotl(std::uint16_t x, unsigned n) {
    n &= 15;
    return std::uint16_t(x << n | x >> ((16 - n) & 15));
}

inline std::uint16_t rotr(std::uint16_t x, unsigned n) {
    return rotl(x, 16 - (n & 15));
}

// F on the left half, keyed by k0, k1.
inline void forward(std::uint16_t* x, std::uint16_t k0, std::uint16_t k1) {
    x[1] ^= x[0];
    x[2] ^= x[3];
    x[0] = std::uint16_t(x[0] + x[2]);
    x[3] = std::uint16_t(x[3] + x[1]);
    x[1] = mul(x[1], k0);
    x[2] = mul(x[2], k1);
    x[0] = rotl(x[0], x[1]);
    x[3] = rotl(x[3], x[2]);
    x[1] = std::uint16_t(x[1] + x[3]);
    x[2] = std::uint16_t(x[2] + x[0]);
}

// The inverse of F (given inverted keys) on the right half, keyed by k2, k3.
inline void backward(std::uint16_t* x, std::uint16_t k2, std::uint16_t k3) {
    x[1] = std::uint16_t(x[1] - x[3]);
    x[2] = std::uint16_t(x[2] - x[0]);
    x[0] = rotr(x[0], x[1]);
    x[3] = rotr(x[3], x[2]);
    x[1] = mul(x[1], k2);
    x[2] = mul(x[2], k3);
    x[0] = std::uint16_t(x[0] - x[2]);
    x[3] = std::uint16_t(x[3] - x[1]);
    x[1] ^= x[0];
    x[2] ^= x[3];
}

inline void halfRound(std::uint16_t* x, const std::uint16_t* k) {
    forward(x, k[0], k[1]);
    backward(x + 4, k[2], k[3]);
}

inline void mix(std::uint16_t* x, const std::uint8_t (*pairs)[2]) {
    for (int i = 0; i < 4; ++i)
        x[pairs[i][0]] ^= x[pairs[i][1]];
}

void mixPairs(unsigned row, std::uint8_t pairs[4][2]) {
    const char* d = kMixRows[row & 0x7f];
    auto digit = [d](int i) { return std::uint8_t(d[i] - '0'); };
    const std::uint8_t table[4][2] = {{digit(0), std::uint8_t(digit(2) + 4)},
                                      {digit(1), std::uint8_t(digit(3) + 4)},
                                      {std::uint8_t(digit(4) + 4), digit(6)},
                                      {std::uint8_t(digit(5) + 4), digit(7)}};
    for (int i = 0; i < 4; ++i) {
        pairs[i][0] = table[i][0];
        pairs[i][1] = table[i][1];
    }
}

void process(const Neat::Schedule& s, const std::uint8_t* in, std::uint8_t* out) {
    std::uint16_t x[8];
    for (int i = 0; i < 8; ++i)
        x[i] = std::uint16_t(in[2 * i] | in[2 * i + 1] << 8);
    for (int r = 0; r < Neat::kRounds; ++r) {
        halfRound(x, s.subkeys[r]);
        mix(x, s.mix[r]);
    }
    halfRound(x, s.subkeys[Neat::kRounds]);
    for (int i = 0; i < 8; ++i) {
        std::uint16_t w = x[(i + 4) & 7];  // the halves change places
        out[2 * i] = std::uint8_t(w);
        out[2 * i + 1] = std::uint8_t(w >> 8);
    }
    OPENSSL_cleanse(x, sizeof x);
}

void makeEncryptSchedule(const std::uint8_t* key, Neat::Schedule& s) {
    std::uint16_t x[8];
    for (int i = 0; i < 8; ++i)
        x[i] = std::uint16_t(key[2 * i] << 8 | key[2 * i + 1]);
    std::uint8_t fixedMix[4][2];
    mixPairs(0, fixedMix);
    // Each pass gives the next two 64-bit round keys, the last pass only one.
    for (int pass = 0; pass < 7; ++pass) {
        halfRound(x, kScheduleKey);
        mix(x, fixedMix);
        for (int i = 0; i < 4; ++i) {
            s.subkeys[2 * pass][i] = x[i];
            if (pass < 6)
                s.subkeys[2 * pass + 1][i] = x[4 + i];
        }
    }
    for (int r = 0; r < Neat::kRounds; ++r)
        mixPairs(s.subkeys[r][0] ^ s.subkeys[r][3], s.mix[r]);
    OPENSSL_cleanse(x, sizeof x);
}

// Decryption runs the same rounds backwards: round keys in reverse order with
// the F and inverse-F keys exchanged and inverted, and the mixes in reverse
// order on swapped halves.
void makeDecryptSchedule(const Neat::Schedule& e, Neat::Schedule& d) {
    for (int r = 0; r <= Neat::kRounds; ++r) {
        const std::uint16_t* k = e.subkeys[Neat::kRounds - r];
        d.subkeys[r][0] = mulInverse(k[2]);
        d.subkeys[r][1] = mulInverse(k[3]);
        d.subkeys[r][2] = mulInverse(k[0]);
        d.subkeys[r][3] = mulInverse(k[1]);
    }
    for (int r = 0; r < Neat::kRounds; ++r)
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 2; ++j)
                d.mix[r][i][j] = e.mix[Neat::kRounds - 1 - r][i][j] ^ 4;
}

}  // namespace

Neat::Neat(const std::uint8_t key[kKeySize]) {
    makeEncryptSchedule(key, m_encrypt);
    makeDecryptSchedule(m_encrypt, m_decrypt);
}

Neat::~Neat() {
    OPENSSL_cleanse(&m_encrypt, sizeof m_encrypt);
    OPENSSL_cleanse(&m_decrypt, sizeof m_decrypt);
}

void Neat::encryptBlock(const std::uint8_t in[kBlockSize], std::uint8_t out[kBlockSize]) const {
    process(m_encrypt, in, out);
}

void Neat::decryptBlock(const std::uint8_t in[kBlockSize], std::uint8_t out[kBlockSize]) const {
    process(m_decrypt, in, out);
}

}  // namespace vqxml::korean
