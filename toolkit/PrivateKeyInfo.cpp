#include "toolkit/PrivateKeyInfo.hpp"

#include <climits>

namespace vqtk {

PrivateKeyInfoPtr parsePrivateKeyInfo(Bytes der) {
    if (der.size == 0 || der.size > static_cast<std::size_t>(LONG_MAX))
        return nullptr;
    const unsigned char* cursor = der.data;
    PrivateKeyInfoPtr info(d2i_PKCS8_PRIV_KEY_INFO(nullptr, &cursor, static_cast<long>(der.size)));
    if (info && cursor != der.data + der.size)
        info.reset();
    return info;
}

}  // namespace vqtk
