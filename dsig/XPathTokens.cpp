#include "dsig/XPathTokens.hpp"

namespace vqxml::xpath {

namespace {

bool nameStart(XMLCh c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || c == u'_' || c >= 0xC0;
}

bool nameChar(XMLCh c) {
    return nameStart(c) || (c >= u'0' && c <= u'9') || c == u'-' || c == u'.' || c == 0xB7;
}

bool space(XMLCh c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

}  // namespace

std::optional<std::vector<Token>> tokenize(const XString& s) {
    std::vector<Token> out;
    size_t i = 0;
    const auto symbol = [&](size_t n) {
        out.push_back({Tok::Symbol, s.substr(i, n)});
        i += n;
    };
    while (i < s.size()) {
        const XMLCh c = s[i];
        const XMLCh next = i + 1 < s.size() ? s[i + 1] : 0;
        if (space(c)) {
            ++i;
        } else if (c == u'"' || c == u'\'') {
            const size_t end = s.find(c, i + 1);
            if (end == XString::npos)
                return std::nullopt;
            out.push_back({Tok::Literal, s.substr(i + 1, end - i - 1)});
            i = end + 1;
        } else if ((c >= u'0' && c <= u'9') || (c == u'.' && next >= u'0' && next <= u'9')) {
            size_t end = i;
            while (end < s.size() && ((s[end] >= u'0' && s[end] <= u'9') || s[end] == u'.'))
                ++end;
            out.push_back({Tok::Number, s.substr(i, end - i)});
            i = end;
        } else if (nameStart(c)) {
            size_t end = i;
            while (end < s.size() && nameChar(s[end]))
                ++end;
            // prefix:local or prefix:* (but not the axis separator ::)
            if (end + 1 < s.size() && s[end] == u':' && s[end + 1] != u':') {
                if (s[end + 1] == u'*') {
                    end += 2;
                } else if (nameStart(s[end + 1])) {
                    ++end;
                    while (end < s.size() && nameChar(s[end]))
                        ++end;
                }
            }
            out.push_back({Tok::Name, s.substr(i, end - i)});
            i = end;
        } else if ((c == u'.' && next == u'.') || (c == u':' && next == u':') || (c == u'/' && next == u'/') ||
                   (c == u'!' && next == u'=') || (c == u'<' && next == u'=') || (c == u'>' && next == u'=')) {
            symbol(2);
        } else if (XString(u"()[].@,|=<>*/+-$").find(c) != XString::npos) {
            symbol(1);
        } else {
            return std::nullopt;
        }
    }
    out.push_back({Tok::End, {}});
    return out;
}

}  // namespace vqxml::xpath
