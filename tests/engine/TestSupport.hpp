// Helpers of the engine tests: the shared vector files, hex, test PKI files.
#ifndef VQXML_TESTS_ENGINE_TESTSUPPORT_HPP
#define VQXML_TESTS_ENGINE_TESTSUPPORT_HPP

#include <string>

#include "TestVectors.hpp"

namespace vqxml::test {

using testvectors::Bytes;
using testvectors::fromHex;
using testvectors::toHex;
using VectorRecord = testvectors::Record;

inline std::vector<VectorRecord> readVectors(const std::string& fileName) {
    return testvectors::records(fileName);
}

// The bytes of a file under tests/data/testpki.
inline std::string testPkiPath(const std::string& name) {
    return testfiles::dataPath("testpki/" + name);
}

inline Bytes testPkiFile(const std::string& name) {
    const std::string bytes = testfiles::read(testPkiPath(name));
    if (bytes.empty())
        throw std::runtime_error("cannot read " + name);
    return Bytes(bytes.begin(), bytes.end());
}

}  // namespace vqxml::test

#endif
