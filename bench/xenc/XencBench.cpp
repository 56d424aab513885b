// Encrypting and decrypting a 1 MB element (a tax invoice grown with line items,
// inside an envelope) with RSA-OAEP key transport: Triple DES, SEED and ARIA
// through vqxml's C interface, and Triple DES through libxmlsec1, in one binary.
// Each iteration starts from the document's bytes and ends with the result's
// bytes; the handle (vqxml) and the keys manager (xmlsec) live across iterations.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "support/BenchDocuments.hpp"
#include "vqxml/vqxml.h"
#include "xenc/XmlsecCipher.hpp"

namespace {

using benchdata::bytes;
using benchdata::chars;
using benchdata::size;

const std::string& document() {
    static const std::string text = [] {
        const std::string invoice = benchdata::largeInvoice(1 << 20);
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Envelope><Header>vqxml bench</Header>" +
               invoice.substr(invoice.find("<TaxInvoice")) + "</Envelope>";
    }();
    return text;
}

const std::string& cert() {
    static const std::string der = benchdata::read("testpki/ee-rsa.crt.der");
    return der;
}

const std::string& key() {
    static const std::string der = benchdata::read("testpki/ee-rsa.key.der");
    return der;
}

std::string result(void* h) {
    char* out = nullptr;
    int len = 0;
    VQTK_XMLAPI_GetXMLDocument(h, &out, &len);
    return std::string(out, static_cast<size_t>(len));
}

struct Handle {
    void* h = nullptr;
    Handle() { VQTK_XMLAPI_init(&h); }
    ~Handle() { VQTK_XMLAPI_Finish(&h); }
};

std::string vqxmlEncrypt(void* h, int symmetric) {
    int rc = VQTK_XMLENC_SetXMLDocument(h, chars(document()), size(document()));
    rc = rc ? rc : VQTK_XMLENC_SetSymmAlg(h, symmetric);
    rc = rc ? rc : VQTK_XMLENC_EncryptElement(h, const_cast<char*>("TaxInvoice"), 2);
    rc = rc ? rc : VQTK_XMLENC_EncryptKeyWrapKey(h, bytes(cert()), size(cert()), 3);
    rc = rc ? rc : VQTK_XMLENC_Encrypt(h);
    if (rc != 0)
        throw std::runtime_error("vqxml could not encrypt: " + std::to_string(rc));
    return result(h);
}

std::string vqxmlDecrypt(void* h, const std::string& encrypted) {
    int rc = VQTK_XMLENC_SetEncXMLDocument(h, chars(encrypted), size(encrypted));
    rc = rc ? rc : VQTK_XMLENC_GetEncKeyInfo(h);
    rc = rc ? rc : VQTK_XMLENC_DecryptKeyWrapKey(h, bytes(cert()), size(cert()), bytes(key()), size(key()));
    rc = rc ? rc : VQTK_XMLENC_Decrypt(h);
    if (rc != 0)
        throw std::runtime_error("vqxml could not decrypt: " + std::to_string(rc));
    return result(h);
}

// Argument: the symmetric selector (1 Triple DES, 2 SEED, 4 ARIA).
void VqxmlEncrypt(benchmark::State& state) {
    Handle handle;
    for (auto _ : state)
        benchmark::DoNotOptimize(vqxmlEncrypt(handle.h, static_cast<int>(state.range(0))));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document().size()));
}

void VqxmlDecrypt(benchmark::State& state) {
    Handle handle;
    const std::string encrypted = vqxmlEncrypt(handle.h, static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(vqxmlDecrypt(handle.h, encrypted));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document().size()));
}

void XmlsecEncrypt(benchmark::State& state) {
    const xmlsecbench::Keys recipient(cert(), true);
    for (auto _ : state)
        benchmark::DoNotOptimize(xmlsecbench::encryptElement(document(), "TaxInvoice", recipient));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document().size()));
}

void XmlsecDecrypt(benchmark::State& state) {
    const xmlsecbench::Keys recipient(key(), false);
    const std::string encrypted = xmlsecbench::encryptElement(document(), "TaxInvoice", xmlsecbench::Keys(cert(), true));
    for (auto _ : state)
        benchmark::DoNotOptimize(xmlsecbench::decrypt(encrypted, recipient));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document().size()));
}

BENCHMARK(VqxmlEncrypt)->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(XmlsecEncrypt)->Unit(benchmark::kMillisecond);
BENCHMARK(VqxmlDecrypt)->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(XmlsecDecrypt)->Unit(benchmark::kMillisecond);

}  // namespace
