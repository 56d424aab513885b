// unique_ptr for OpenSSL objects, freed by their own free function.
#ifndef VQXML_ENGINE_KOREAN_OPENSSLPTR_HPP
#define VQXML_ENGINE_KOREAN_OPENSSLPTR_HPP

#include <memory>

namespace vqxml::korean {

template <class T, void (*Free)(T*)>
struct OpenSSLFree {
    void operator()(T* p) const { Free(p); }
};

template <class T, void (*Free)(T*)>
using OpenSSLPtr = std::unique_ptr<T, OpenSSLFree<T, Free>>;

}  // namespace vqxml::korean

#endif
