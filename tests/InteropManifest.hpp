// The interop samples (tests/data/interop) and their manifest (one tab-separated
// row per sample: path, kind, expected verdict, key source, algorithms, notes).
#ifndef VQXML_TESTS_INTEROPMANIFEST_HPP
#define VQXML_TESTS_INTEROPMANIFEST_HPP

#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "TestFiles.hpp"

namespace interop {

struct Row {
    std::string path;
    std::string kind;
    bool valid = false;
    std::string keySource;
    std::string algorithms;
};

inline void PrintTo(const Row& row, std::ostream* os) {
    *os << row.path << " [" << row.keySource << "]";
}

// The bytes of a sample, by its path inside the interop folder.
inline std::string file(const std::string& relative) {
    return testfiles::read(testfiles::dataPath("interop/" + relative));
}

// The manifest's rows of one kind ("dsig-verify", "xenc-decrypt", "ebxml-verify").
// Without a manifest, one row naming it: the tests that walk the rows then fail
// on reading it, saying which file is missing, rather than checking nothing.
inline std::vector<Row> rows(const std::string& kind) {
    std::ifstream in(testfiles::dataPath("interop/MANIFEST.tsv"));
    if (!in)
        return {Row{"MANIFEST.tsv", kind, false, "", ""}};
    std::vector<Row> out;
    std::string line;
    std::getline(in, line);  // the column names
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        Row row;
        std::string expected;
        std::getline(fields, row.path, '\t');
        std::getline(fields, row.kind, '\t');
        std::getline(fields, expected, '\t');
        std::getline(fields, row.keySource, '\t');
        std::getline(fields, row.algorithms, '\t');
        row.valid = expected == "valid";
        if (row.kind == kind)
            out.push_back(row);
    }
    return out;
}

}  // namespace interop

#endif
