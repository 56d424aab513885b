// libFuzzer target for processing secured SOAP messages from strangers: load,
// read the signing and encryption key information, unwrap the session key for
// one of two recipients (the test PKI's, the interop samples') and process
// (decrypt and verify in the sender's order).
#include <vqxml/vqxml.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzData.hpp"

namespace {

struct Recipient {
    std::string cert, key;
};

const std::vector<Recipient>& recipients() {
    static const std::vector<Recipient> all = {
        {fuzzdata::testFile("testpki/ee-rsa.crt.der"), fuzzdata::testFile("testpki/ee-rsa.key.der")},
        {fuzzdata::testFile("interop/wss/keys/recipient-cert.der"),
         fuzzdata::testFile("interop/wss/keys/recipient-key.pk8.der")},
    };
    return all;
}

const fuzzdata::KeyInfoGetters kGetters = {VQTK_SOAPSEC_GetSubjectName, VQTK_SOAPSEC_GetIssuerSerialNum,
                                           VQTK_SOAPSEC_GetKeyName, VQTK_SOAPSEC_GetSignCert};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    void* handle = fuzzdata::sharedHandle();
    std::vector<char> exact;
    if (!fuzzdata::copyInput(data, size, &exact))
        return 0;
    if (VQTK_SOAPSEC_SetSOAPSecXMLDocument(handle, exact.data(), static_cast<int>(exact.size())) != VQXML_OK)
        return 0;
    int flag = 0;
    if (VQTK_SOAPSEC_GetSignKeyInfo(handle, &flag) == VQXML_OK && flag != 0)
        fuzzdata::readKeyInfo(handle, kGetters);
    // One round per encrypted key, bounded as a receiver would bound it.
    for (int round = 0; round < 4; ++round) {
        flag = 0;
        if (VQTK_SOAPSEC_GetEncKeyInfo(handle, &flag) != VQXML_OK || flag == 0)
            break;
        fuzzdata::readKeyInfo(handle, kGetters);
        bool opened = false;
        for (Recipient r : recipients())  // copies: the interface takes non-const keys
            opened = opened || VQTK_SOAPSEC_DecryptKeyWrapKey(handle, fuzzdata::bytes(r.cert), fuzzdata::length(r.cert),
                                                              fuzzdata::bytes(r.key),
                                                              fuzzdata::length(r.key)) == VQXML_OK;
        if (opened)
            break;
    }
    if (VQTK_SOAPSEC_ProcessSOAP(handle) == VQXML_OK)
        fuzzdata::readResult(handle);
    return 0;
}
