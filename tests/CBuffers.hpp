// The C interface takes non-const buffers and int lengths; the tests and the
// benchmarks hand it std::string contents through these.
#ifndef VQXML_TESTS_CBUFFERS_HPP
#define VQXML_TESTS_CBUFFERS_HPP

#include <string>

namespace cbuffers {

inline char* chars(const std::string& s) {
    return const_cast<char*>(s.data());
}

inline unsigned char* bytes(const std::string& s) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(s.data()));
}

inline int size(const std::string& s) {
    return static_cast<int>(s.size());
}

}  // namespace cbuffers

#endif
