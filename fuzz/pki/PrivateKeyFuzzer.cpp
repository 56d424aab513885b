// libFuzzer target for users' private key files: the password-based decryption
// (pbeWithSHA1AndSEED-CBC, PBES2), the PrivateKeyInfo inside and the
// identity-verification random kept with it. The input is tried as an
// encrypted key under the test PKI's password, and as a plain PrivateKeyInfo.
#include <vqxml/vqxml.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzData.hpp"

namespace {

char kPassword[] = "vqxml-test";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    void* handle = fuzzdata::sharedHandle();
    static std::string recipient = fuzzdata::testFile("testpki/ee-rsa.crt.der");
    std::vector<char> exact;
    if (!fuzzdata::copyInput(data, size, &exact))
        return 0;
    auto* key = reinterpret_cast<unsigned char*>(exact.data());
    const int keyLen = static_cast<int>(exact.size());

    unsigned char* plain = nullptr;
    int plainLen = 0;
    if (VQTK_XMLAPI_DecryptPriKey(handle, kPassword, key, keyLen, &plain, &plainLen) == VQXML_OK) {
        // The decrypted key as the next call would take it.
        std::vector<unsigned char> opened(plain, plain + plainLen);
        unsigned char* random = nullptr;
        VQTK_XMLAPI_GetRandomFromPriKey(handle, nullptr, opened.data(), plainLen, fuzzdata::bytes(recipient),
                                        fuzzdata::length(recipient), &random);
    }
    unsigned char* random = nullptr;
    VQTK_XMLAPI_GetRandomFromPriKey(handle, nullptr, key, keyLen, nullptr, 0, &random);
    return 0;
}
