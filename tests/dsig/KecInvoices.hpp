// KEC standard tax invoices of any size, made from the public sample by repeating its
// line item.
#ifndef VQXML_TESTS_DSIG_KECINVOICES_HPP
#define VQXML_TESTS_DSIG_KECINVOICES_HPP

#include <string>

#include "KecLineItems.hpp"
#include "TestFiles.hpp"

namespace kecinvoice {

inline const std::string& sample() {
    static const std::string text = testfiles::read(testfiles::dataPath("taxinvoice/kec-sample-unsigned.xml"));
    return text;
}

// The sample with `items` line items; "" when the sample is missing.
inline std::string withLineItems(int items) {
    return withLineItems(sample(), items);
}

}  // namespace kecinvoice

#endif
