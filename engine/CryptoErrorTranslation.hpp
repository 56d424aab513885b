// The algorithm primitives raise vqxml::korean::CryptoError; the engine's
// callers expect XSECCryptoException. This runs a piece of work and translates.
#ifndef VQXML_ENGINE_CRYPTOERRORTRANSLATION_HPP
#define VQXML_ENGINE_CRYPTOERRORTRANSLATION_HPP

#include <xsec/enc/XSECCryptoException.hpp>

#include "engine/korean/CryptoError.hpp"

namespace vqxml {

template <class Work>
decltype(auto) asCryptoException(XSECCryptoException::XSECCryptoExceptionType type, Work&& work) {
    try {
        return work();
    } catch (const korean::CryptoError& e) {
        throw XSECCryptoException(type, e.what());
    }
}

}  // namespace vqxml

#endif
