// vqxml against libxmlsec1, same machine, same run, same keys and documents: the
// enveloped RSA-2048/SHA-256 signatures of Recipes.hpp (the national tax-invoice
// recipe on the KEC sample and on 99 line items; exclusive C14N with the XPath
// "not(ancestor-or-self::ds:Signature)", alone or after an exclusive C14N
// transform, on 2 KB to 10 MB), libxmlsec1 also with the enveloped-signature
// transform in place of the XPath, and encryption of the document element with
// Triple DES CBC, AES-128-CBC and AES-128-GCM, the session key by RSA-OAEP; plus
// the floor: the RSA operation alone and SHA-256 over the canonical bytes. A row
// whose implementation cannot do the operation (vqxml before it has a cipher)
// is reported as skipped with the status it gave.
//
// Benchmarks are named KIND/IMPL/SIZE (floor/KIND[/SIZE] for the floor), each with
// the counter document_bytes. The report reads the process's CPU time: on a shared
// machine wall-clock time also counts the waits for a core. libxmlsec1's XPath transform grows quadratically
// with the document (15 to 60 s per operation at 1 MB), so its 10 MB runs are left
// out and its 1 MB ones are bounded to one iteration, whatever repetitions the
// command line asks for.
#include <benchmark/benchmark.h>

#include <map>
#include <utility>

#include "compare/Operations.hpp"

namespace {

// Inputs by size and name, made on first use and kept.
const std::string& input(const std::string& size, const std::string& name) {
    static std::map<std::pair<std::string, std::string>, std::string> cache;
    auto it = cache.find({size, name});
    if (it == cache.end())
        it = cache.emplace(std::make_pair(size, name), compare::makeInput(name, size)).first;
    return it->second;
}

void runOperation(benchmark::State& state, const std::string& impl, const std::string& kind, const std::string& size) {
    std::unique_ptr<compare::Operation> op;
    try {
        op = compare::makeOperation(impl, kind, input(size, compare::inputName(impl, kind)));
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
        return;
    }
    for (auto _ : state) {
        try {
            op->run();
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            break;
        }
    }
    const auto documentBytes = static_cast<int64_t>(input(size, "document").size());
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * documentBytes);
    state.counters["document_bytes"] = static_cast<double>(documentBytes);
}

void registerAll() {
    for (const std::string& kind : compare::kinds())
        for (const std::string& size : compare::sizesOf(kind))
            for (const std::string& impl : compare::implementationsOf(kind)) {
                const bool quadratic = compare::quadratic(impl, kind);
                if (quadratic && size == "10m")
                    continue;
                auto* b = benchmark::RegisterBenchmark((kind + "/" + impl + "/" + size).c_str(), runOperation, impl,
                                                       kind, size);
                b->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime();
                if (quadratic && size == "1m")
                    b->Iterations(1)->Repetitions(1);
            }
    for (const char* kind : {"rsa-sign", "rsa-verify"})
        benchmark::RegisterBenchmark((std::string("floor/") + kind).c_str(), runOperation, "openssl", kind, "2k")
            ->Unit(benchmark::kMicrosecond)
            ->MeasureProcessCPUTime();
    for (const std::string& size : compare::sizesOf("xpath-sign"))
        benchmark::RegisterBenchmark(("floor/sha256-c14n/" + size).c_str(), runOperation, "openssl", "sha256-c14n",
                                     size)
            ->Unit(benchmark::kMicrosecond)
            ->MeasureProcessCPUTime();
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
