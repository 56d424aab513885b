#include "ebxml/XmlProlog.hpp"

#include <cstring>
#include <string>
#include <string_view>

#include "vqxml/VQXML_Mime.h"

namespace vqxml::ebxml {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isNameStart(char c) {
    const auto u = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' || u >= 0x80;
}

// The encoding an XML declaration names: empty when none.
std::string_view declaredEncoding(std::string_view declaration) {
    const size_t name = declaration.find("encoding");
    if (name == std::string_view::npos)
        return std::string_view();
    size_t at = name + 8;
    while (at < declaration.size() && (isSpace(declaration[at]) || declaration[at] == '='))
        ++at;
    if (at >= declaration.size() || (declaration[at] != '"' && declaration[at] != '\''))
        return "?";
    const size_t close = declaration.find(declaration[at], at + 1);
    return close == std::string_view::npos ? "?" : declaration.substr(at + 1, close - at - 1);
}

bool isUtf8Name(std::string_view encoding) {
    const auto is = [encoding](std::string_view name) {
        return encoding.size() == name.size() &&
               vqmime::memicmp(encoding.data(), name.data(), static_cast<int>(name.size())) == 0;
    };
    return encoding.empty() || is("UTF-8") || is("US-ASCII");
}

}  // namespace

bool hasPlainProlog(const unsigned char* data, int len) {
    if (data == nullptr || len <= 0)
        return false;
    const std::string_view text(reinterpret_cast<const char*>(data), static_cast<size_t>(len));
    size_t at = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    if (text.compare(at, 5, "<?xml") == 0) {
        const size_t close = text.find("?>", at);
        if (close == std::string_view::npos || !isUtf8Name(declaredEncoding(text.substr(at, close - at))))
            return false;
        at = close + 2;
    }
    while (at < text.size()) {
        if (isSpace(text[at])) {
            ++at;
        } else if (text.compare(at, 4, "<!--") == 0) {
            const size_t close = text.find("-->", at + 4);
            if (close == std::string_view::npos)
                return false;
            at = close + 3;
        } else if (text.compare(at, 2, "<?") == 0) {
            const size_t close = text.find("?>", at + 2);
            if (close == std::string_view::npos)
                return false;
            at = close + 2;
        } else {
            return text[at] == '<' && at + 1 < text.size() && isNameStart(text[at + 1]);
        }
    }
    return false;
}

}  // namespace vqxml::ebxml
