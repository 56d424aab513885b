// The standard text of every code the library raises without a text of its own.
#include <algorithm>
#include <cstddef>
#include <iterator>

#include "core/VQXMLException.hpp"

namespace {

struct CodeText {
    int code;
    const char* text;
};

// In the order of Statuses.def, which is sorted by code.
constexpr CodeText kTexts[] = {
#define VQXML_STATUS(name, code, section, text, docs) {code, text},
#include "core/Statuses.def"
#undef VQXML_STATUS
};

constexpr bool sortedByCode() {
    for (std::size_t i = 1; i < std::size(kTexts); ++i)
        if (kTexts[i - 1].code >= kTexts[i].code)
            return false;
    return true;
}
static_assert(sortedByCode(), "Statuses.def must list each code once, in ascending order");

}  // namespace

namespace vqxml {

const char* standardErrorText(int code) {
    auto it = std::lower_bound(std::begin(kTexts), std::end(kTexts), code,
                               [](const CodeText& entry, int c) { return entry.code < c; });
    return it != std::end(kTexts) && it->code == code ? it->text : "Error";
}

}  // namespace vqxml

namespace vqxml {

const char kUnknownErrorText[] = "\xBE\xCB\xBC\xF6" " " "\xBE\xF8\xB4\xC2" " "
                                 "\xBF\xC0\xB7\xF9\xC0\xD4\xB4\xCF\xB4\xD9" ".";
const char kInitFailedText[] = "VQTKXML API " "\xC3\xCA\xB1\xE2\xC8\xAD" " " "\xBD\xC7\xC6\xD0";

}  // namespace vqxml
