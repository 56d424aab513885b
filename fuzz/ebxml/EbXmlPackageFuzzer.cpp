// libFuzzer target for verifying ebXML packages from strangers: the MIME
// package, its envelope and attachments go through the loader, the signature
// check over envelope and attachments, the getters and the result package.
#include <vqxml/vqxml.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "FuzzData.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    void* handle = fuzzdata::sharedHandle();
    std::vector<char> exact;
    if (!fuzzdata::copyInput(data, size, &exact))
        return 0;
    if (VQTK_EBXML_SetSOAPSecXMLDocument(handle, exact.data(), static_cast<int>(exact.size())) != VQXML_OK ||
        VQTK_EBXML_Verify(handle) != VQXML_OK)
        return 0;
    fuzzdata::readKeyInfo(handle, {VQTK_EBXML_GetSubjectName, VQTK_EBXML_GetIssuerSerialNum, VQTK_EBXML_GetKeyName,
                                   VQTK_EBXML_GetSignCert});
    fuzzdata::readResult(handle);
    return 0;
}
