// The one exception the Korean algorithm primitives raise: bad keys, bad
// parameters, malformed input and OpenSSL failures all end here, with a text
// that names what was wrong. Callers above the primitives translate it into
// their own exception kind.
#ifndef VQXML_ENGINE_KOREAN_CRYPTOERROR_HPP
#define VQXML_ENGINE_KOREAN_CRYPTOERROR_HPP

#include <stdexcept>
#include <string>

namespace vqxml::korean {

class CryptoError : public std::runtime_error {
public:
    explicit CryptoError(const std::string& what) : std::runtime_error(what) {}
};

// Raises CryptoError with the text and, if OpenSSL queued one, its first error.
[[noreturn]] void throwOpenSSLError(const std::string& what);

}  // namespace vqxml::korean

#endif
