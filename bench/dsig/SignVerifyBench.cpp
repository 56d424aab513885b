// Enveloped RSA-2048/SHA-256 signatures with exclusive C14N over a 2 KB tax invoice
// and a 1 MB one, through vqxml's C interface and through libxmlsec1, in one binary.
// Each iteration starts from the document's bytes and ends with the result's bytes.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "dsig/XmlsecSigner.hpp"
#include "support/BenchDocuments.hpp"
#include "vqxml/vqxml.h"

namespace {

using benchdata::bytes;
using benchdata::chars;
using benchdata::size;

const std::string& document(int64_t size) {
    static const std::string small = benchdata::invoice();
    static const std::string large = benchdata::largeInvoice(1 << 20);
    return size == 0 ? small : large;
}

// Keeps the engines started across iterations, as a long-running application would.
struct Engines {
    void* handle = nullptr;
    Engines() { VQTK_XMLAPI_init(&handle); }
    ~Engines() { VQTK_XMLAPI_Finish(&handle); }
};

std::string vqxmlSign(void* h, const std::string& doc) {
    int rc = VQTK_XMLDSIG_SetXMLDocument(h, chars(doc), static_cast<int>(doc.size()));
    rc = rc ? rc : VQTK_XMLDSIG_SignatureMethod(h, 5, 3);
    rc = rc ? rc : VQTK_XMLDSIG_createReference(h, nullptr, 3, 0, const_cast<char*>("not(ancestor-or-self::ds:Signature)"));
    rc = rc ? rc : VQTK_XMLDSIG_SetSigner(h, bytes(benchdata::signerCert()), static_cast<int>(benchdata::signerCert().size()),
                                          bytes(benchdata::signerKey()), static_cast<int>(benchdata::signerKey().size()));
    rc = rc ? rc : VQTK_XMLDSIG_sign(h);
    if (rc != 0)
        throw std::runtime_error("vqxml could not sign: " + std::to_string(rc));
    char* out = nullptr;
    int len = 0;
    VQTK_XMLAPI_GetXMLDocument(h, &out, &len);
    return std::string(out, len);
}

void VqxmlSign(benchmark::State& state) {
    Engines engines;
    const std::string& doc = document(state.range(0));
    for (auto _ : state) {
        void* h = nullptr;
        VQTK_XMLAPI_init(&h);
        benchmark::DoNotOptimize(vqxmlSign(h, doc));
        VQTK_XMLAPI_Finish(&h);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(doc.size()));
}

void VqxmlVerify(benchmark::State& state) {
    Engines engines;
    const std::string signedDoc = vqxmlSign(engines.handle, document(state.range(0)));
    for (auto _ : state) {
        void* h = nullptr;
        VQTK_XMLAPI_init(&h);
        int rc = VQTK_XMLDSIG_SetSignXMLDocument(h, chars(signedDoc), static_cast<int>(signedDoc.size()));
        rc = rc ? rc : VQTK_XMLDSIG_Verify(h);
        if (rc != 0)
            state.SkipWithError("vqxml could not verify");
        char* out = nullptr;
        int len = 0;
        VQTK_XMLAPI_GetXMLDocument(h, &out, &len);
        benchmark::DoNotOptimize(out);
        VQTK_XMLAPI_Finish(&h);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(signedDoc.size()));
}

// The same signature through libxmlsec1, its keys read once.
const xmlsecbench::Recipe& xmlsecRecipe() {
    static const xmlsecbench::Recipe recipe{
        xmlSecTransformExclC14NId, {xmlSecTransformXPathId}, "not(ancestor-or-self::ds:Signature)"};
    return recipe;
}

void XmlsecSign(benchmark::State& state) {
    const auto signer = xmlsecbench::SignatureKey::signer(benchdata::signerKey(), benchdata::signerCert());
    const std::string& doc = document(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(xmlsecbench::signEnveloped(doc, xmlsecRecipe(), signer));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(doc.size()));
}

void XmlsecVerify(benchmark::State& state) {
    const auto signer = xmlsecbench::SignatureKey::signer(benchdata::signerKey(), benchdata::signerCert());
    const auto verifier = xmlsecbench::SignatureKey::verifier(benchdata::signerCert());
    const std::string signedDoc = xmlsecbench::signEnveloped(document(state.range(0)), xmlsecRecipe(), signer);
    for (auto _ : state)
        if (!xmlsecbench::verify(signedDoc, verifier))
            state.SkipWithError("xmlsec could not verify");
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(signedDoc.size()));
}

// Argument 0: the 2 KB invoice; 1: the 1 MB invoice.
BENCHMARK(VqxmlSign)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(XmlsecSign)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(VqxmlVerify)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(XmlsecVerify)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace
