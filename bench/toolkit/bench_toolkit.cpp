// Costs of the certificate and private-key operations, and of the bound on
// password-based iteration counts.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "toolkit/PasswordBasedEncryption.hpp"
#include "toolkit/vqtk_toolkit.h"
#include "vqxml/vqxml.h"

namespace {

using ByteVector = std::vector<unsigned char>;

ByteVector fixture(const std::string& name) {
    std::ifstream in(std::string(VQXML_TEST_DATA_DIR) + "/toolkit/" + name, std::ios::binary);
    return ByteVector(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void decryptKey(benchmark::State& state, const char* name) {
    VQTK_Toolkit* tk = nullptr;
    VQTK_API_Init(&tk, ".");
    const ByteVector key = fixture(name);
    VQTK_BINSTR in, out;
    VQTK_BINSTR_Create(&in);
    VQTK_BINSTR_Create(&out);
    VQTK_BINSTR_SetData(key.data(), static_cast<int>(key.size()), &in);
    for (auto _ : state)
        if (VQTK_PRIKEY_Decrypt(tk, "vqxml-test-1234", &in, &out) != VQTK_OK)
            state.SkipWithError("decryption failed");
    VQTK_BINSTR_Delete(&in);
    VQTK_BINSTR_Delete(&out);
    VQTK_API_Finish(&tk);
}

// 2048 iterations, as NPKI key files use.
void BM_DecryptSeedSha1Key(benchmark::State& state) { decryptKey(state, "user_key_seedsha1.der"); }
void BM_DecryptPbes2SeedKey(benchmark::State& state) { decryptKey(state, "openssl_seed.der"); }
void BM_DecryptPbes2AesKey(benchmark::State& state) { decryptKey(state, "openssl_aes256.der"); }

// The worst a hostile key file can ask of the 1.15 scheme.
void BM_Pbkdf1AtTheIterationBound(benchmark::State& state) {
    const unsigned char password[] = "password", salt[] = "saltsalt";
    for (auto _ : state)
        benchmark::DoNotOptimize(
            vqtk::pbkdf1Sha1({password, 8}, {salt, 8}, VQTK_MAX_PBE_ITERATIONS));
}

// A whole library call: toolkit handle, the roots decoded and added, the check.
void BM_VerifyCertThroughTheLibrary(benchmark::State& state) {
    void* handle = nullptr;
    VQTK_XMLAPI_init(&handle);
    ByteVector cert = fixture("leaf.der");
    for (auto _ : state)
        benchmark::DoNotOptimize(
            VQTK_XMLAPI_VerifyCert(handle, cert.data(), static_cast<int>(cert.size())));
    VQTK_XMLAPI_Finish(&handle);
}

void BM_GetRandomForRecipient(benchmark::State& state) {
    void* handle = nullptr;
    VQTK_XMLAPI_init(&handle);
    ByteVector key = fixture("user_key_plain.der");
    ByteVector cert = fixture("leaf.der");
    unsigned char* out = nullptr;
    for (auto _ : state)
        if (VQTK_XMLAPI_GetRandomFromPriKey(handle, nullptr, key.data(), static_cast<int>(key.size()),
                                            cert.data(), static_cast<int>(cert.size()), &out) != 0)
            state.SkipWithError("no random");
    VQTK_XMLAPI_Finish(&handle);
}

}  // namespace

BENCHMARK(BM_DecryptSeedSha1Key)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecryptPbes2SeedKey)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecryptPbes2AesKey)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pbkdf1AtTheIterationBound)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_VerifyCertThroughTheLibrary)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetRandomForRecipient)->Unit(benchmark::kMillisecond);
