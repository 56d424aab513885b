// The known-answer vector files (tests/data/vectors): records of
// "name = hex or text" lines, each under a "# label" line, blank-line separated;
// the file's first line names its source.
#ifndef VQXML_TESTS_TESTVECTORS_HPP
#define VQXML_TESTS_TESTVECTORS_HPP

#include <cstdint>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <openssl/evp.h>

#include "TestFiles.hpp"

namespace testvectors {

using Bytes = std::vector<std::uint8_t>;

inline Bytes fromHex(const std::string& hex) {
    if (hex.size() % 2 != 0)
        throw std::runtime_error("odd hex length");
    Bytes out(hex.size() / 2);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = std::uint8_t(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return out;
}

inline std::string toHex(const Bytes& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (std::uint8_t b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

// Base64 text to bytes by OpenSSL alone, line breaks and spaces skipped; empty
// when malformed.
inline Bytes fromBase64(const std::string& text) {
    std::string clean;
    for (char c : text)
        if (c != '\n' && c != '\r' && c != ' ')
            clean += c;
    Bytes out(clean.size() / 4 * 3 + 3);
    const int n = EVP_DecodeBlock(out.data(), reinterpret_cast<const unsigned char*>(clean.data()),
                                  static_cast<int>(clean.size()));
    if (n < 0)
        return {};
    const std::size_t padding = clean.size() >= 2 ? (clean.end()[-1] == '=') + (clean.end()[-2] == '=') : 0;
    out.resize(static_cast<std::size_t>(n) - padding);
    return out;
}

// Bytes (of a std::string or a byte vector) to base64 on one line, by OpenSSL alone.
template <typename Container>
std::string toBase64(const Container& bytes) {
    std::string out(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    out.resize(static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
                                                        reinterpret_cast<const unsigned char*>(bytes.data()),
                                                        static_cast<int>(bytes.size()))));
    return out;
}

struct Record {
    std::string label;  // the comment line above the record
    std::map<std::string, std::string> fields;

    bool has(const std::string& name) const { return fields.count(name) != 0; }
    const std::string& text(const std::string& name) const {
        auto it = fields.find(name);
        if (it == fields.end())
            throw std::runtime_error("vector record '" + label + "' has no field " + name);
        return it->second;
    }
    Bytes bytes(const std::string& name) const { return fromHex(text(name)); }
};

inline std::string trimmed(const std::string& s) {
    const std::size_t b = s.find_first_not_of(" \t\r");
    const std::size_t e = s.find_last_not_of(" \t\r");
    return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

inline std::vector<Record> records(const std::string& fileName) {
    const std::string path = testfiles::dataPath("vectors/" + fileName);
    std::ifstream in(path);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    std::vector<Record> out;
    Record current;
    std::string line;
    std::getline(in, line);  // the source
    while (std::getline(in, line)) {
        line = trimmed(line);
        if (line.empty()) {
            if (!current.fields.empty())
                out.push_back(current);
            current = Record();
        } else if (line[0] == '#') {
            current.label = trimmed(line.substr(1));
        } else if (const std::size_t eq = line.find('='); eq != std::string::npos) {
            current.fields[trimmed(line.substr(0, eq))] = trimmed(line.substr(eq + 1));
        }
    }
    if (!current.fields.empty())
        out.push_back(current);
    return out;
}

}  // namespace testvectors

#endif
