// The FIPS 46-3 key schedule, shared by both Triple DES forms (the bitsliced
// decryption and the table-driven encryption), which lay the subkeys out
// differently.
#ifndef VQXML_ENGINE_KOREAN_DESKEYSCHEDULE_HPP
#define VQXML_ENGINE_KOREAN_DESKEYSCHEDULE_HPP

#include <cstdint>

namespace vqxml::korean {

constexpr int kDesRounds = 16;
constexpr int kDesSubkeyBits = 48;

// The 16 subkeys of one DES key in round order, 48 bits each, PC-2's first bit
// the highest (bit 47). PC-1 leaves the key's parity bits out, as OpenSSL's
// unchecked key setup does. The key's bits are moved by shifts and masks only.
void desSubkeys(const std::uint8_t key[8], std::uint64_t subkeys[kDesRounds]);

}  // namespace vqxml::korean

#endif
