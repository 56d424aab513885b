// The 256-block form of the bitsliced Triple DES, compiled for AVX2 and called
// only where the processor has it (tripleDesUsesAvx2). The standard headers come
// first, compiled as everywhere else; only the batch code below the pragma uses
// AVX2.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <openssl/crypto.h>

#include "engine/korean/TripleDesRoundKeys.hpp"

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "engine/korean/TripleDesBitsliced.hpp"

namespace vqxml::korean {

using Avx2Word = std::uint64_t __attribute__((vector_size(32)));

void decryptBatchAvx2(const TripleDesRoundKeys& keys, const std::uint8_t* in, std::size_t blocks,
                      std::uint8_t* out) {
    bitsliced::decryptBatch<Avx2Word>(keys, in, blocks, out);
}

}  // namespace vqxml::korean

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
