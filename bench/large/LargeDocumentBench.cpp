// Time of loading, signing (enveloped, RSA-2048/SHA-256, exclusive C14N) and
// verifying one tax invoice grown with line items to 1, 10 and 100 MB, each
// step on its own; with the sizes ten times apart, linear work shows as times
// ten times apart. Peak memory: run one size under /usr/bin/time -v, e.g.
//   bench_large_document --benchmark_filter='/100/'
#include <benchmark/benchmark.h>

#include <string>

#include "support/BenchDocuments.hpp"
#include "vqxml/vqxml.h"

namespace {

using benchdata::bytes;
using benchdata::chars;
using benchdata::size;

struct Handle {
    void* h = nullptr;
    Handle() { VQTK_XMLAPI_init(&h); }
    ~Handle() { VQTK_XMLAPI_Finish(&h); }
};

const std::string& invoiceOf(int64_t megabytes) {
    static std::string text;
    static int64_t made = -1;
    if (made != megabytes) {
        text = benchdata::largeInvoice(static_cast<size_t>(megabytes) << 20);
        made = megabytes;
    }
    return text;
}

// Signs doc on h; 0 or the failing status.
int sign(void* h, const std::string& doc) {
    const std::string& cert = benchdata::signerCert();
    const std::string& key = benchdata::signerKey();
    int rc = VQTK_XMLDSIG_SetXMLDocument(h, chars(doc), size(doc));
    rc = rc ? rc : VQTK_XMLDSIG_SignatureMethod(h, 5, 3);
    rc = rc ? rc : VQTK_XMLDSIG_createReference(h, nullptr, 3, 0, const_cast<char*>("not(ancestor-or-self::ds:Signature)"));
    rc = rc ? rc : VQTK_XMLDSIG_SetSigner(h, bytes(cert), size(cert), bytes(key), size(key));
    return rc ? rc : VQTK_XMLDSIG_sign(h);
}

std::string resultOf(void* h) {
    char* out = nullptr;
    int len = 0;
    VQTK_XMLAPI_GetXMLDocument(h, &out, &len);
    return out != nullptr ? std::string(out, static_cast<size_t>(len)) : std::string();
}

void Load(benchmark::State& state) {
    const std::string& doc = invoiceOf(state.range(0));
    Handle h;
    for (auto _ : state)
        if (VQTK_XMLDSIG_SetXMLDocument(h.h, chars(doc), size(doc)) != 0)
            state.SkipWithError("the document did not load");
    state.SetBytesProcessed(state.iterations() * size(doc));
}

void Sign(benchmark::State& state) {
    const std::string& doc = invoiceOf(state.range(0));
    Handle h;
    for (auto _ : state)
        if (sign(h.h, doc) != 0)
            state.SkipWithError("the document was not signed");
    state.SetBytesProcessed(state.iterations() * size(doc));
}

void Verify(benchmark::State& state) {
    Handle h;
    if (sign(h.h, invoiceOf(state.range(0))) != 0) {
        state.SkipWithError("the document was not signed");
        return;
    }
    const std::string signedDoc = resultOf(h.h);
    for (auto _ : state)
        if (VQTK_XMLDSIG_SetSignXMLDocument(h.h, chars(signedDoc), size(signedDoc)) != 0 ||
            VQTK_XMLDSIG_Verify(h.h) != 0)
            state.SkipWithError("the signature did not verify");
    state.SetBytesProcessed(state.iterations() * size(signedDoc));
}

// One iteration each at 10 and 100 MB: a single pass is what a caller sees.
BENCHMARK(Load)->Arg(1)->Arg(10)->Arg(100)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Sign)->Arg(1)->Arg(10)->Arg(100)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Verify)->Arg(1)->Arg(10)->Arg(100)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
