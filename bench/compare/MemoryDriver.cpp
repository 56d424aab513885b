// Does N operations of one kind and nothing else, so that /usr/bin/time -v can
// measure the peak memory they need (bench/compare/run.sh runs it):
//   bench_compare_memory prepare DIR SIZE          writes the inputs of a size into DIR
//   bench_compare_memory run DIR IMPL KIND SIZE N  reads one and does N operations
//   bench_compare_memory sizes                     lists the document sizes
//   bench_compare_memory kinds SIZE                lists the kinds measured at a size
// The inputs come from files so that making them (signing or encrypting the
// document once) does not count; a run with N = 0 measures the baseline: the
// program, its libraries, the started engines and the input in memory. Memory is
// measured for vqxml and for libxmlsec1 told the same recipe. An input that
// cannot be made is left out with a note; a run whose operation fails exits
// with 3.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <set>
#include <sstream>

#include "compare/Operations.hpp"

namespace {

const char* const kImplementations[] = {"vqxml", "xmlsec"};

bool measuredAt(const std::string& kind, const std::string& size) {
    const std::vector<std::string> sizes = compare::sizesOf(kind);
    return std::find(sizes.begin(), sizes.end(), size) != sizes.end();
}

std::string pathOf(const std::string& dir, const std::string& size, const std::string& name) {
    return dir + "/" + size + "." + name + ".xml";
}

void prepare(const std::string& dir, const std::string& size) {
    std::set<std::string> made;
    for (const std::string& kind : compare::kinds())
        for (const char* impl : kImplementations) {
            const std::string name = compare::inputName(impl, kind);
            if (!measuredAt(kind, size) || !made.insert(name).second)
                continue;
            try {
                const std::string input = compare::makeInput(name, size);
                std::ofstream(pathOf(dir, size, name), std::ios::binary) << input;
            } catch (const std::exception& e) {
                std::fprintf(stderr, "no input %s at %s: %s\n", name.c_str(), size.c_str(), e.what());
            }
        }
}

int run(char** argv) {
    std::ifstream in(pathOf(argv[2], argv[5], compare::inputName(argv[3], argv[4])), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    const std::string input = text.str();
    auto op = compare::makeOperation(argv[3], argv[4], input);
    if (op == nullptr) {
        std::fprintf(stderr, "no operation %s/%s\n", argv[3], argv[4]);
        return 64;
    }
    try {
        for (long i = std::atol(argv[6]); i > 0; --i)
            op->run();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s/%s at %s: %s\n", argv[3], argv[4], argv[5], e.what());
        return 3;
    }
    return 0;
}

void list(const std::vector<std::string>& names) {
    for (const std::string& name : names)
        std::printf("%s\n", name.c_str());
}

std::vector<std::string> allSizes() {
    std::vector<std::string> sizes;
    for (const std::string& kind : compare::kinds())
        for (const std::string& size : compare::sizesOf(kind))
            if (std::find(sizes.begin(), sizes.end(), size) == sizes.end())
                sizes.push_back(size);
    return sizes;
}

std::vector<std::string> kindsAt(const std::string& size) {
    std::vector<std::string> kinds;
    for (const std::string& kind : compare::kinds())
        if (measuredAt(kind, size))
            kinds.push_back(kind);
    return kinds;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 4 && std::strcmp(argv[1], "prepare") == 0) {
            prepare(argv[2], argv[3]);
            return 0;
        }
        if (argc == 7 && std::strcmp(argv[1], "run") == 0)
            return run(argv);
        if (argc == 2 && std::strcmp(argv[1], "sizes") == 0) {
            list(allSizes());
            return 0;
        }
        if (argc == 3 && std::strcmp(argv[1], "kinds") == 0) {
            list(kindsAt(argv[2]));
            return 0;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    std::fprintf(stderr, "usage: %s prepare DIR SIZE | run DIR IMPL KIND SIZE N | sizes | kinds SIZE\n", argv[0]);
    return 64;
}
