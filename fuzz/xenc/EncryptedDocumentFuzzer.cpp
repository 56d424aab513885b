// libFuzzer target for opening encrypted documents from strangers: load, read
// the key information, unwrap the session key as each kind of recipient would
// (RSA private key, key-wrap key, a session key given outright) and decrypt.
// The seeds are encrypted for those keys, so the decryption and the parsing of
// the decrypted fragment are reached, not only the loader.
#include <vqxml/vqxml.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzData.hpp"

namespace {

struct Keys {
    std::string rsaCert = fuzzdata::testFile("testpki/ee-rsa.crt.der");
    std::string rsaKey = fuzzdata::testFile("testpki/ee-rsa.key.der");
    std::string keyWrapKey = "0123456789abcdefFEDCBA98";
    std::string sessionKey = fuzzdata::testFile("interop/xenc/xmlsec-1.2.37/keys/test-des.bin");
};

// As a recipient would: each of the document's keys in turn (the first one is
// read already), as ours under RSA or under the key-wrap key; failing those, the
// session key given outright.
bool unwrapped(void* handle, Keys& keys) {
    using fuzzdata::bytes;
    using fuzzdata::length;
    for (int key = 0; key < 3; ++key) {
        if (key > 0 && VQTK_XMLENC_GetEncKeyInfo(handle) != VQXML_OK)
            break;
        if (VQTK_XMLENC_DecryptKeyWrapKey(handle, bytes(keys.rsaCert), length(keys.rsaCert), bytes(keys.rsaKey),
                                          length(keys.rsaKey)) == VQXML_OK ||
            VQTK_XMLENC_DecryptKeyWrapKey(handle, nullptr, 0, bytes(keys.keyWrapKey), length(keys.keyWrapKey)) ==
                VQXML_OK)
            return true;
    }
    return VQTK_XMLENC_SetSymmKey(handle, bytes(keys.sessionKey), length(keys.sessionKey), 1) == VQXML_OK;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    void* handle = fuzzdata::sharedHandle();
    static Keys keys;
    std::vector<char> exact;
    if (!fuzzdata::copyInput(data, size, &exact))
        return 0;
    if (VQTK_XMLENC_SetEncXMLDocument(handle, exact.data(), static_cast<int>(exact.size())) != VQXML_OK ||
        VQTK_XMLENC_GetEncKeyInfo(handle) != VQXML_OK)
        return 0;
    fuzzdata::readKeyInfo(handle, {VQTK_XMLENC_GetSubjectName, VQTK_XMLENC_GetIssuerSerialNum, VQTK_XMLENC_GetKeyName,
                                   VQTK_XMLENC_GetEncCert});
    if (unwrapped(handle, keys) && VQTK_XMLENC_Decrypt(handle) == VQXML_OK)
        fuzzdata::readResult(handle);
    return 0;
}
