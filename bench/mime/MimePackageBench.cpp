// Loading and storing multipart packages of 1, 10 and 50 MB: a 1 MB XML
// envelope plus base64 attachments of about 1 MB each once encoded. Bytes
// processed are the stored package's size, so the rates compare across sizes
// (equal rates: loading is linear in the package size).
#include <vqxml/VQXML_Mime.h>

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

namespace {

const int kMB = 1 << 20;

std::string Envelope() {
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Envelope><Body>\n";
    for (int i = 0; xml.size() < static_cast<size_t>(kMB) - 32; ++i)
        xml += "<Item id=\"" + std::to_string(i) + "\">some order line text</Item>\n";
    return xml + "</Body></Envelope>\n";
}

std::string Attachment(unsigned seed) {
    std::mt19937 rng(seed);
    std::string bytes(kMB * 3 / 4, '\0');
    for (char& c : bytes)
        c = static_cast<char>(rng());
    return bytes;
}

void BuildPackage(CMimeMessage& msg, int megabytes) {
    msg.SetContentType("multipart/related; type=\"text/xml\"; start=\"<soap@bench>\"");
    msg.SetBoundary();
    CMimeBody* soap = msg.CreatePart();
    soap->SetContentType("text/xml; charset=UTF-8");
    soap->SetContentId("<soap@bench>");
    const std::string xml = Envelope();
    soap->SetText(xml.data(), static_cast<int>(xml.size()));
    for (int i = 1; i < megabytes; ++i) {
        CMimeBody* part = msg.CreatePart("application");
        part->SetContentType("application/octet-stream");
        part->SetTransferEncoding("base64");
        part->SetContentId(("<payload-" + std::to_string(i) + "@bench>").c_str());
        const std::string bytes = Attachment(i);
        part->SetText(bytes.data(), static_cast<int>(bytes.size()));
    }
}

std::string StoredPackage(int megabytes) {
    CMimeMessage msg;
    BuildPackage(msg, megabytes);
    std::vector<char> out(msg.GetLength());
    return std::string(out.data(), msg.Store(out.data(), static_cast<int>(out.size())));
}

void BM_LoadPackage(benchmark::State& state) {
    const std::string package = StoredPackage(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        CMimeMessage msg;
        benchmark::DoNotOptimize(msg.Load(package.data(), static_cast<int>(package.size())));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * package.size());
    state.counters["package_MB"] = static_cast<double>(package.size()) / kMB;
}

void BM_StorePackage(benchmark::State& state) {
    CMimeMessage msg;
    BuildPackage(msg, static_cast<int>(state.range(0)));
    std::vector<char> out(msg.GetLength());
    int written = 0;
    for (auto _ : state) {
        written = msg.Store(out.data(), static_cast<int>(out.size()));
        benchmark::DoNotOptimize(written);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * written);
    state.counters["package_MB"] = static_cast<double>(written) / kMB;
}

}  // namespace

BENCHMARK(BM_LoadPackage)->Arg(1)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StorePackage)->Arg(1)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);
