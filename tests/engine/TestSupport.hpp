// Helpers of the engine tests: the shared vector files, hex, test PKI files.
#ifndef VQXML_TESTS_ENGINE_TESTSUPPORT_HPP
#define VQXML_TESTS_ENGINE_TESTSUPPORT_HPP

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vqxml::test {

using Bytes = std::vector<std::uint8_t>;

struct VectorRecord {
    std::string label;  // the comment line above the record
    std::map<std::string, std::string> fields;

    bool has(const std::string& name) const { return fields.count(name) != 0; }
    const std::string& text(const std::string& name) const;
    Bytes bytes(const std::string& name) const;  // hex field
};

// The records of a file of /work/shared/testdata/vectors (see its README).
std::vector<VectorRecord> readVectors(const std::string& fileName);

Bytes fromHex(const std::string& hex);
std::string toHex(const Bytes& bytes);

// The bytes of a file under tests/data/testpki.
Bytes testPkiFile(const std::string& name);
std::string testPkiPath(const std::string& name);

}  // namespace vqxml::test

#endif
