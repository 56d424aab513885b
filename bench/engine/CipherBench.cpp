// CBC throughput of SEED, ARIA-128 and NEAT beside OpenSSL's AES-128-CBC and
// Triple DES CBC, on 64 KiB buffers (no padding: the ciphers alone), the
// XML Encryption one-shot (IV, padding, copy) for the three Korean ciphers, and
// our bitsliced Triple DES decryption (both forms) beside OpenSSL's on 100 KiB
// and 1 MiB.
#include <vector>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include "engine/VQTKCryptoProvider.hpp"
#include "engine/korean/OpenSSLProviders.hpp"
#include "engine/korean/CbcCipher.hpp"
#include "engine/korean/TripleDesCbc.hpp"
#include "engine/korean/XmlEncCbc.hpp"

using vqxml::korean::BlockCipherId;

namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
const unsigned char kKey[24] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24};
const unsigned char kIv[16] = {};

void korean(benchmark::State& state, BlockCipherId id, bool encrypt) {
    vqxml::loadOpenSSLProviders();
    std::vector<std::uint8_t> buffer(kBufferSize, 0x5a);
    vqxml::korean::CbcCipher cipher(id, kKey, 16, encrypt, kIv);
    for (auto _ : state) {
        cipher.process(buffer.data(), buffer.size(), buffer.data());
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kBufferSize));
}

void openssl(benchmark::State& state, const char* name, bool encrypt, std::size_t size = kBufferSize) {
    std::vector<std::uint8_t> buffer(size, 0x5a);
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
    EVP_CipherInit_ex2(ctx, cipher, kKey, kIv, encrypt ? 1 : 0, nullptr);
    EVP_CIPHER_CTX_set_padding(ctx, 0);
    int written = 0;
    for (auto _ : state) {
        EVP_CipherUpdate(ctx, buffer.data(), &written, buffer.data(), int(buffer.size()));
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(size));
    EVP_CIPHER_free(cipher);
    EVP_CIPHER_CTX_free(ctx);
}

using TripleDesFunction = void (*)(const std::uint8_t*, const std::uint8_t*, const std::uint8_t*, std::size_t,
                                  std::uint8_t*);

void tripleDes(benchmark::State& state, TripleDesFunction run, std::size_t size) {
    std::vector<std::uint8_t> buffer(size, 0x5a);
    for (auto _ : state) {
        run(kKey, kIv, buffer.data(), buffer.size(), buffer.data());
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(size));
}

void xmlEncEncrypt(benchmark::State& state, BlockCipherId id) {
    vqxml::loadOpenSSLProviders();
    std::vector<std::uint8_t> plain(kBufferSize, 0x5a);
    for (auto _ : state) {
        auto framed = vqxml::korean::xmlEncEncrypt(id, kKey, 16, plain.data(), plain.size());
        benchmark::DoNotOptimize(framed.data());
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(kBufferSize));
}

}  // namespace

BENCHMARK_CAPTURE(korean, SEED_CBC_encrypt, BlockCipherId::Seed, true);
BENCHMARK_CAPTURE(korean, SEED_CBC_decrypt, BlockCipherId::Seed, false);
BENCHMARK_CAPTURE(korean, ARIA128_CBC_encrypt, BlockCipherId::Aria128, true);
BENCHMARK_CAPTURE(korean, ARIA128_CBC_decrypt, BlockCipherId::Aria128, false);
BENCHMARK_CAPTURE(korean, NEAT_CBC_encrypt, BlockCipherId::Neat, true);
BENCHMARK_CAPTURE(korean, NEAT_CBC_decrypt, BlockCipherId::Neat, false);
BENCHMARK_CAPTURE(openssl, AES128_CBC_encrypt, "AES-128-CBC", true);
BENCHMARK_CAPTURE(openssl, AES128_CBC_decrypt, "AES-128-CBC", false);
BENCHMARK_CAPTURE(openssl, DES_EDE3_CBC_encrypt, "DES-EDE3-CBC", true);
BENCHMARK_CAPTURE(openssl, DES_EDE3_CBC_decrypt, "DES-EDE3-CBC", false);
BENCHMARK_CAPTURE(xmlEncEncrypt, SEED, BlockCipherId::Seed);
BENCHMARK_CAPTURE(xmlEncEncrypt, ARIA128, BlockCipherId::Aria128);
BENCHMARK_CAPTURE(xmlEncEncrypt, NEAT, BlockCipherId::Neat);
BENCHMARK_CAPTURE(openssl, DES_EDE3_CBC_decrypt_100KiB, "DES-EDE3-CBC", false, 100 << 10);
BENCHMARK_CAPTURE(openssl, DES_EDE3_CBC_decrypt_1MiB, "DES-EDE3-CBC", false, 1 << 20);
BENCHMARK_CAPTURE(openssl, DES_EDE3_CBC_encrypt_100KiB, "DES-EDE3-CBC", true, 100 << 10);
BENCHMARK_CAPTURE(tripleDes, tables_encrypt_100KiB, vqxml::korean::tripleDesCbcEncrypt, 100 << 10);
BENCHMARK_CAPTURE(tripleDes, bitsliced_widest_100KiB, vqxml::korean::tripleDesCbcDecrypt, 100 << 10);
BENCHMARK_CAPTURE(tripleDes, bitsliced_widest_1MiB, vqxml::korean::tripleDesCbcDecrypt, 1 << 20);
BENCHMARK_CAPTURE(tripleDes, bitsliced_portable_100KiB, vqxml::korean::tripleDesCbcDecryptPortable, 100 << 10);
BENCHMARK_CAPTURE(tripleDes, bitsliced_portable_1MiB, vqxml::korean::tripleDesCbcDecryptPortable, 1 << 20);
