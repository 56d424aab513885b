// The tokens of an XPath 1.0 expression, for the compiler of the linear subset
// (dsig/XPathExpression.hpp) and the cost estimate of whatever it leaves to the
// engine (dsig/XPathCost.hpp).
#ifndef VQXML_DSIG_XPATHTOKENS_HPP
#define VQXML_DSIG_XPATHTOKENS_HPP

#include <optional>
#include <vector>

#include "core/Transcode.hpp"

namespace vqxml::xpath {

enum class Tok { End, Name, Literal, Number, Symbol };

struct Token {
    Tok kind = Tok::End;
    XString text;  // Name: the whole name, "p:*" and "p:n" included; Symbol: the symbol
};

// The tokens, ending with one of kind End; nothing when s cannot be an
// expression (an unclosed literal, a character XPath has no use for).
std::optional<std::vector<Token>> tokenize(const XString& s);

}  // namespace vqxml::xpath

#endif
