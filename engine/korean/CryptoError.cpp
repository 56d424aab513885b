#include "engine/korean/CryptoError.hpp"

#include <openssl/err.h>

namespace vqxml::korean {

void throwOpenSSLError(const std::string& what) {
    unsigned long code = ERR_get_error();
    ERR_clear_error();
    if (code == 0)
        throw CryptoError(what);
    char reason[256];
    ERR_error_string_n(code, reason, sizeof reason);
    throw CryptoError(what + " (" + reason + ")");
}

}  // namespace vqxml::korean
