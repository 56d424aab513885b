// Documents and keys the benchmarks share.
#ifndef VQXML_BENCH_SUPPORT_BENCHDOCUMENTS_HPP
#define VQXML_BENCH_SUPPORT_BENCHDOCUMENTS_HPP

#include <fstream>
#include <sstream>
#include <string>

#include "tests/CBuffers.hpp"
#include "tests/dsig/KecLineItems.hpp"

namespace benchdata {

using cbuffers::bytes;
using cbuffers::chars;
using cbuffers::size;

inline std::string read(const std::string& relative) {
    std::ifstream in(std::string(VQXML_TEST_DATA_DIR) + "/" + relative, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// The sample tax invoice, about 2.5 KB.
inline const std::string& invoice() {
    static const std::string text = read("dsig/taxinvoice.xml");
    return text;
}

// The invoice grown with line items to at least `bytes` bytes.
inline std::string largeInvoice(size_t bytes) {
    const std::string& base = invoice();
    const size_t open = base.find("  <TaxInvoiceTradeLineItem>");
    const size_t close = base.find("</TaxInvoice>");
    const std::string item = base.substr(open, close - open);
    std::string out = base.substr(0, close);
    while (out.size() < bytes)
        out += item;
    return out + base.substr(close);
}

// The public KEC sample tax invoice (about 3.6 KB), or the same with `items` line items.
inline std::string kecInvoice(int items) {
    static const std::string sample = read("taxinvoice/kec-sample-unsigned.xml");
    return items == 1 ? sample : kecinvoice::withLineItems(sample, items);
}

inline const std::string& signerCert() {
    static const std::string der = read("dsig/signer-cert.der");
    return der;
}

inline const std::string& signerKey() {
    static const std::string der = read("dsig/signer-key.pk8.der");
    return der;
}

}  // namespace benchdata

#endif
