// Signing and verifying an ebXML package (envelope, an XML attachment, a binary
// attachment) through the C interface: RSA-2048/SHA-256, C14N. The argument is the
// size of each attachment. Each iteration starts from the package's bytes and ends
// with the result's bytes.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "support/BenchDocuments.hpp"
#include "vqxml/VQXML_Mime.h"
#include "vqxml/vqxml.h"

namespace {

using benchdata::bytes;
using benchdata::chars;
using benchdata::size;

const char kXPath[] =
    "not(ancestor-or-self::ds:Signature"
    " | ancestor-or-self::node()[@SOAP:actor=\"http://schemas.xmlsoap.org/soap/actor/next\"])";

std::string package(size_t attachmentBytes) {
    CMimeMessage msg;
    msg.SetContentType("multipart/related; type=\"text/xml\"");
    msg.SetBoundary("bench-boundary");
    const std::string envelope = benchdata::read("ebxml/envelope.xml");
    const std::string xml = benchdata::largeInvoice(attachmentBytes);
    std::string binary(attachmentBytes, '\0');
    for (size_t i = 0; i < binary.size(); ++i)
        binary[i] = static_cast<char>(i * 131 + 7);
    const std::string* contents[] = {&envelope, &xml, &binary};
    const char* types[] = {"text/xml", "text/xml", "application/octet-stream"};
    const char* ids[] = {"<soap@bench>", "<order@example.kr>", "<scan@example.kr>"};
    for (int i = 0; i < 3; ++i) {
        CMimeBody* part = msg.CreatePart();
        part->SetContentType(types[i]);
        part->SetContentId(ids[i]);
        part->SetTransferEncoding("binary");
        part->SetText(contents[i]->data(), static_cast<int>(contents[i]->size()));
    }
    std::string out(static_cast<size_t>(msg.GetLength()), '\0');
    out.resize(static_cast<size_t>(msg.Store(&out[0], static_cast<int>(out.size()))));
    return out;
}

std::string result(void* h, int rc, const char* what) {
    if (rc != 0)
        throw std::runtime_error(std::string(what) + " failed: " + std::to_string(rc));
    char* out = nullptr;
    int len = 0;
    VQTK_XMLAPI_GetXMLDocument(h, &out, &len);
    return std::string(out, len);
}

std::string sign(const std::string& data) {
    void* h = nullptr;
    VQTK_XMLAPI_init(&h);
    int rc = VQTK_EBXML_SetSOAPDocument(h, chars(data), static_cast<int>(data.size()));
    rc = rc ? rc : VQTK_EBXML_SignatureMethod(h, 5, 1);
    rc = rc ? rc : VQTK_EBXML_createReference(h, const_cast<char*>(""), 3, 1, const_cast<char*>(kXPath));
    rc = rc ? rc : VQTK_EBXML_SetSigner(h, bytes(benchdata::signerCert()), static_cast<int>(benchdata::signerCert().size()),
                                        bytes(benchdata::signerKey()), static_cast<int>(benchdata::signerKey().size()));
    rc = rc ? rc : VQTK_EBXML_Sign(h);
    std::string out = result(h, rc, "signing");
    VQTK_XMLAPI_Finish(&h);
    return out;
}

std::string verify(const std::string& data) {
    void* h = nullptr;
    VQTK_XMLAPI_init(&h);
    int rc = VQTK_EBXML_SetSOAPSecXMLDocument(h, chars(data), static_cast<int>(data.size()));
    rc = rc ? rc : VQTK_EBXML_Verify(h);
    std::string out = result(h, rc, "verification");
    VQTK_XMLAPI_Finish(&h);
    return out;
}

// Keeps the engines started across iterations, as a long-running application would.
struct Engines {
    void* handle = nullptr;
    Engines() { VQTK_XMLAPI_init(&handle); }
    ~Engines() { VQTK_XMLAPI_Finish(&handle); }
};

void EbXmlSign(benchmark::State& state) {
    Engines engines;
    const std::string data = package(static_cast<size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(sign(data));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(data.size()));
}

void EbXmlVerify(benchmark::State& state) {
    Engines engines;
    const std::string data = sign(package(static_cast<size_t>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(verify(data));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(data.size()));
}

BENCHMARK(EbXmlSign)->Arg(1 << 10)->Arg(1 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK(EbXmlVerify)->Arg(1 << 10)->Arg(1 << 20)->Unit(benchmark::kMillisecond);

}  // namespace
