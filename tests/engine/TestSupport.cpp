#include "TestSupport.hpp"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "engine/VQTKCryptoProvider.hpp"

namespace vqxml::test {
namespace {

// SEED lives in OpenSSL's legacy provider, which the library loads at start-up;
// tests of the primitives alone need it too.
struct OpenSSLProviders : ::testing::Environment {
    void SetUp() override { vqxml::loadOpenSSLProviders(); }
};
const ::testing::Environment* const kProviders = ::testing::AddGlobalTestEnvironment(new OpenSSLProviders);

std::string trim(const std::string& s) {
    std::size_t b = s.find_first_not_of(" \t\r");
    std::size_t e = s.find_last_not_of(" \t\r");
    return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot open " + path);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

const std::string& VectorRecord::text(const std::string& name) const {
    auto it = fields.find(name);
    if (it == fields.end())
        throw std::runtime_error("vector record '" + label + "' has no field " + name);
    return it->second;
}

Bytes VectorRecord::bytes(const std::string& name) const {
    return fromHex(text(name));
}

std::vector<VectorRecord> readVectors(const std::string& fileName) {
    std::ifstream in(std::string(VQXML_SHARED_DIR) + "/testdata/vectors/" + fileName);
    if (!in)
        throw std::runtime_error("cannot open vector file " + fileName);
    std::vector<VectorRecord> records;
    VectorRecord current;
    std::string line;
    bool first = true;
    while (std::getline(in, line)) {
        line = trim(line);
        if (first) {  // the source line
            first = false;
            continue;
        }
        if (line.empty()) {
            if (!current.fields.empty())
                records.push_back(current);
            current = VectorRecord();
        } else if (line[0] == '#') {
            current.label = trim(line.substr(1));
        } else {
            std::size_t eq = line.find('=');
            if (eq != std::string::npos)
                current.fields[trim(line.substr(0, eq))] = trim(line.substr(eq + 1));
        }
    }
    if (!current.fields.empty())
        records.push_back(current);
    return records;
}

Bytes fromHex(const std::string& hex) {
    if (hex.size() % 2 != 0)
        throw std::runtime_error("odd hex length");
    Bytes out(hex.size() / 2);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = std::uint8_t(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return out;
}

std::string toHex(const Bytes& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (std::uint8_t b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

std::string testPkiPath(const std::string& name) {
    return std::string(VQXML_TEST_DATA_DIR) + "/testpki/" + name;
}

Bytes testPkiFile(const std::string& name) {
    return readFile(testPkiPath(name));
}

}  // namespace vqxml::test
