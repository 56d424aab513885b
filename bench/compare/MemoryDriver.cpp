// Does N operations of one kind and nothing else, so that /usr/bin/time -v can
// measure the peak memory they need (bench/compare/run.sh runs it):
//   bench_compare_memory prepare DIR SIZE        writes the inputs of a size into DIR
//   bench_compare_memory run DIR IMPL KIND SIZE N  reads them and does N operations
//   bench_compare_memory kinds                    lists the kinds this build compares
// The inputs come from files so that making them (vqxml signs or encrypts the
// document once) does not count; a run with N = 0 measures the baseline: the
// program, its libraries, the started engines and the input in memory.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <sstream>

#include "compare/Operations.hpp"

namespace {

const char* const kParts[] = {"document", "signed", "encrypted"};

std::string* part(compare::Inputs& inputs, int i) {
    std::string* parts[] = {&inputs.document, &inputs.signedDocument, &inputs.encryptedDocument};
    return parts[i];
}

std::string pathOf(const std::string& dir, const std::string& size, int i) {
    return dir + "/" + size + "." + kParts[i] + ".xml";
}

void save(const std::string& dir, const std::string& size) {
    compare::Inputs inputs = compare::makeInputs(size);
    for (int i = 0; i < 3; ++i)
        std::ofstream(pathOf(dir, size, i), std::ios::binary) << *part(inputs, i);
}

compare::Inputs load(const std::string& dir, const std::string& size) {
    compare::Inputs inputs;
    for (int i = 0; i < 3; ++i) {
        std::ifstream in(pathOf(dir, size, i), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        *part(inputs, i) = text.str();
    }
    return inputs;
}

int run(char** argv) {
    const compare::Inputs inputs = load(argv[2], argv[5]);
    auto op = compare::makeOperation(argv[3], argv[4], inputs);
    if (op == nullptr) {
        std::fprintf(stderr, "no operation %s/%s\n", argv[3], argv[4]);
        return 64;
    }
    for (long i = std::atol(argv[6]); i > 0; --i)
        op->run();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 4 && std::strcmp(argv[1], "prepare") == 0) {
            save(argv[2], argv[3]);
            return 0;
        }
        if (argc == 7 && std::strcmp(argv[1], "run") == 0)
            return run(argv);
        if (argc == 2 && std::strcmp(argv[1], "kinds") == 0) {
            for (const std::string& kind : compare::kinds())
                std::printf("%s\n", kind.c_str());
            return 0;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    std::fprintf(stderr, "usage: %s prepare DIR SIZE | run DIR IMPL KIND SIZE N | kinds\n", argv[0]);
    return 64;
}
