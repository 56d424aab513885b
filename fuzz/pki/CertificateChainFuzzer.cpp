// libFuzzer target for what certificate verification reads from callers: the
// input as the certificate, as its intermediates and as its CRLs (DER or PEM,
// one or several), around the toolkit tests' leaf, intermediate and CRL.
#include <vqxml/vqxml.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzData.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    void* handle = fuzzdata::sharedHandle();
    static std::string leaf = fuzzdata::testFile("toolkit/leaf.der");
    static std::string intermediate = fuzzdata::testFile("toolkit/intermediate.der");
    static std::string crl = fuzzdata::testFile("toolkit/intermediate.crl.der");
    std::vector<char> exact;
    if (!fuzzdata::copyInput(data, size, &exact))
        return 0;
    auto* input = reinterpret_cast<unsigned char*>(exact.data());
    const int inputLen = static_cast<int>(exact.size());

    VQTK_XMLAPI_VerifyCertChain(handle, input, inputLen, fuzzdata::bytes(intermediate),
                                fuzzdata::length(intermediate), fuzzdata::bytes(crl), fuzzdata::length(crl));
    VQTK_XMLAPI_VerifyCertChain(handle, fuzzdata::bytes(leaf), fuzzdata::length(leaf), input, inputLen,
                                fuzzdata::bytes(crl), fuzzdata::length(crl));
    VQTK_XMLAPI_VerifyCertChain(handle, fuzzdata::bytes(leaf), fuzzdata::length(leaf),
                                fuzzdata::bytes(intermediate), fuzzdata::length(intermediate), input, inputLen);
    return 0;
}
