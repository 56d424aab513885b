#include "engine/korean/DesKeySchedule.hpp"

#include <openssl/crypto.h>

namespace vqxml::korean {

namespace {

// PC-1 picks 56 of the key's bits, both 28-bit halves turn left before each
// round, PC-2 picks 48.
constexpr int kPC1[56] = {57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18, 10, 2,  59, 51, 43,
                          35, 27, 19, 11, 3,  60, 52, 44, 36, 63, 55, 47, 39, 31, 23, 15, 7,  62, 54,
                          46, 38, 30, 22, 14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr int kPC2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                          26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                          51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr int kShifts[kDesRounds] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

}  // namespace

void desSubkeys(const std::uint8_t key[8], std::uint64_t subkeys[kDesRounds]) {
    std::uint64_t k = 0;
    for (int i = 0; i < 8; ++i)
        k = (k << 8) | key[i];
    std::uint8_t cd[56];  // C then D, one bit each
    for (int i = 0; i < 56; ++i)
        cd[i] = std::uint8_t((k >> (64 - kPC1[i])) & 1);
    int shift = 0;
    for (int round = 0; round < kDesRounds; ++round) {
        shift += kShifts[round];
        std::uint64_t subkey = 0;
        for (int j = 0; j < kDesSubkeyBits; ++j) {
            const int bit = kPC2[j] - 1;  // of C || D after the turns
            const int half = bit < 28 ? 0 : 28;
            subkey = (subkey << 1) | cd[half + (bit - half + shift) % 28];
        }
        subkeys[round] = subkey;
    }
    OPENSSL_cleanse(&k, sizeof k);
    OPENSSL_cleanse(cd, sizeof cd);
}

}  // namespace vqxml::korean
