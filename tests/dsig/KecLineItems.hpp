// A KEC standard tax invoice grown to any number of line items by repeating its own
// (the standard allows up to 99 per invoice). Text only, so that the tests and the
// benchmarks can both use it.
#ifndef VQXML_TESTS_DSIG_KECLINEITEMS_HPP
#define VQXML_TESTS_DSIG_KECLINEITEMS_HPP

#include <string>

namespace kecinvoice {

// `invoice` with `items` TaxInvoiceTradeLineItem elements numbered 1 to `items`, each
// on its own lines as its first one; "" when it has no line item.
inline std::string withLineItems(const std::string& invoice, int items) {
    const size_t first = invoice.find("<TaxInvoiceTradeLineItem>");
    const size_t last = invoice.find("</TaxInvoiceTradeLineItem>");
    if (first == std::string::npos || last == std::string::npos)
        return "";
    const size_t begin = invoice.rfind('\n', first) + 1;
    const size_t end = invoice.find('\n', last) + 1;
    const std::string item = invoice.substr(begin, end - begin);
    const std::string numbered = "<SequenceNumeric>1<";
    const size_t number = item.find(numbered) + numbered.size() - 2;
    std::string out = invoice.substr(0, begin);
    for (int i = 1; i <= items; ++i)
        out += item.substr(0, number) + std::to_string(i) + item.substr(number + 1);
    return out + invoice.substr(end);
}

}  // namespace kecinvoice

#endif
