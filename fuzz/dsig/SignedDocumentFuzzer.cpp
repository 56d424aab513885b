// libFuzzer target for loading and verifying signed documents from strangers:
// any bytes must give a status, never a crash, a leak or a read outside them.
// One handle lives for the whole run, as in a server, so the engines stay up.
#include <vqxml/vqxml.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static void* handle = [] {
        void* h = nullptr;
        VQTK_XMLAPI_init(&h);
        return h;
    }();
    if (size > static_cast<std::size_t>(INT_MAX))
        return 0;
    std::vector<char> exact(data, data + size);
    if (VQTK_XMLDSIG_SetSignXMLDocument(handle, exact.data(), static_cast<int>(exact.size())) == VQXML_OK)
        VQTK_XMLDSIG_Verify(handle);
    return 0;
}
