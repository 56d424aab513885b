// libFuzzer target for CMimeBody::Load: any bytes must load without a crash or
// an out-of-bounds read, give a result within the data, and store back within
// the bound that GetLength promises (the ebXML serialiser allocates exactly
// that much).
#include <vqxml/VQXML_Mime.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > static_cast<size_t>(INT_MAX))
        return 0;
    CMimeBody body;
    int taken = body.Load(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (taken > static_cast<int>(size))
        std::abort();
    if (taken < 0)
        return 0;

    std::vector<char> exact(static_cast<size_t>(body.GetLength()));
    int written = body.Store(exact.data(), static_cast<int>(exact.size()));
    std::vector<char> roomy(exact.size() * 2 + 64);
    int roomyWritten = body.Store(roomy.data(), static_cast<int>(roomy.size()));
    if (written != roomyWritten ||
        (written > 0 && std::memcmp(exact.data(), roomy.data(), written) != 0))
        std::abort();  // GetLength was not an upper bound of Store

    CMimeBody::CBodyList leaves;
    body.GetBodyPartList(leaves);
    for (CMimeBody* leaf : leaves) {
        std::vector<unsigned char> text(static_cast<size_t>(leaf->GetTextLen()) + 1);
        leaf->GetText(text.data(), leaf->GetTextLen());
    }
    return 0;
}
