// KEC standard tax invoices of any size, made from the public sample by repeating its
// line item (the standard allows up to 99 per invoice).
#ifndef VQXML_TESTS_DSIG_KECINVOICES_HPP
#define VQXML_TESTS_DSIG_KECINVOICES_HPP

#include <string>

#include "TestFiles.hpp"

namespace kecinvoice {

inline const std::string& sample() {
    static const std::string text = testfiles::read(testfiles::dataPath("taxinvoice/kec-sample-unsigned.xml"));
    return text;
}

// The sample with `items` TaxInvoiceTradeLineItem elements numbered 1 to `items`, each
// on its own lines as in the sample; "" when the sample is missing.
inline std::string withLineItems(int items) {
    const std::string& base = sample();
    const size_t first = base.find("<TaxInvoiceTradeLineItem>");
    const size_t last = base.find("</TaxInvoiceTradeLineItem>");
    if (first == std::string::npos || last == std::string::npos)
        return "";
    const size_t begin = base.rfind('\n', first) + 1;
    const size_t end = base.find('\n', last) + 1;
    const std::string item = base.substr(begin, end - begin);
    const std::string numbered = "<SequenceNumeric>1<";
    const size_t number = item.find(numbered) + numbered.size() - 2;
    std::string out = base.substr(0, begin);
    for (int i = 1; i <= items; ++i)
        out += item.substr(0, number) + std::to_string(i) + item.substr(number + 1);
    return out + base.substr(end);
}

}  // namespace kecinvoice

#endif
