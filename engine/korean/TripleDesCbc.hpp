// Triple DES (EDE3) CBC. Decryption is bitsliced: each bit position of many blocks
// is held in one machine word, and the S-boxes are gate networks
// (DesSboxCircuits.inc), so 64 blocks (256 with AVX2) go through the cipher
// together. CBC decryption allows this since every plaintext block needs only
// its own ciphertext block and the one before; the table-driven DES of OpenSSL
// handles one block at a time and is several times slower. The decryption has
// no table lookups or branches that depend on the key or the data.
//
// CBC encryption is serial: it goes a block at a time through lookup tables
// (TripleDesCbcEncrypt.cpp), with a shorter chain per round than OpenSSL's.
//
// The key schedule follows FIPS 46-3 and ignores the parity bits, as OpenSSL's
// unchecked key setup does.
#ifndef VQXML_ENGINE_KOREAN_TRIPLEDESCBC_HPP
#define VQXML_ENGINE_KOREAN_TRIPLEDESCBC_HPP

#include <cstddef>
#include <cstdint>

namespace vqxml::korean {

constexpr std::size_t kTripleDesKeySize = 24;
constexpr std::size_t kDesBlockSize = 8;

// Decrypts len bytes (a multiple of 8, else CryptoError) of in into out, with
// the key K1 || K2 || K3 and the IV: P = D_K1(E_K2(D_K3(C))) XOR the ciphertext
// block before (the IV for the first). out may be in itself; no other overlap.
// The widest form the processor runs is used.
void tripleDesCbcDecrypt(const std::uint8_t key[kTripleDesKeySize], const std::uint8_t iv[kDesBlockSize],
                         const std::uint8_t* in, std::size_t len, std::uint8_t* out);

// The same, in the 64-block form every x86-64 processor runs (for tests and
// benchmarks, which compare both forms).
void tripleDesCbcDecryptPortable(const std::uint8_t key[kTripleDesKeySize], const std::uint8_t iv[kDesBlockSize],
                                 const std::uint8_t* in, std::size_t len, std::uint8_t* out);

// Encrypts len bytes (a multiple of 8, else CryptoError) of in into out: C =
// E_K3(D_K2(E_K1(P XOR the ciphertext block before))), the IV before the first.
// out may be in itself; no other overlap.
void tripleDesCbcEncrypt(const std::uint8_t key[kTripleDesKeySize], const std::uint8_t iv[kDesBlockSize],
                         const std::uint8_t* in, std::size_t len, std::uint8_t* out);

// Whether tripleDesCbcDecrypt takes the 256-block AVX2 form here.
bool tripleDesUsesAvx2();

}  // namespace vqxml::korean

#endif
