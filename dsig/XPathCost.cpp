#include "dsig/XPathCost.hpp"

#include <algorithm>
#include <vector>

#include "dsig/XPathTokens.hpp"

namespace vqxml::xpath {

namespace {

// Where a path stands while its steps are read.
struct Path {
    bool open = false;
    double reach = 1;         // nodes reached so far
    bool fromContext = true;  // only child steps from the context node so far
    bool smallValues = true;  // its nodes' string values are short (attributes, text), or it has no steps
    bool value = false;       // its nodes are read as strings or numbers
};

// An expression, a predicate, a function's arguments or a parenthesised
// expression: its cost for one evaluation, and how many times it is evaluated
// for one evaluation of the level around it.
struct Level {
    enum Kind { Expression, Predicate, Group, Call, ValueCall, IdCall };
    Kind kind = Expression;
    double times = 1;
    double cost = 0;
    Path path;
};

Level level(Level::Kind kind, double times = 1) {
    Level l;
    l.kind = kind;
    l.times = times;
    return l;
}

bool isSymbol(const Token& t, const char16_t* s) {
    return t.kind == Tok::Symbol && t.text == s;
}

// Functions that read their node-set arguments as strings or numbers.
bool readsValues(const XString& function) {
    for (const char16_t* name : {u"string", u"concat", u"starts-with", u"contains", u"substring-before",
                                 u"substring-after", u"substring", u"string-length", u"normalize-space",
                                 u"translate", u"number", u"sum", u"id"})
        if (function == name)
            return true;
    return false;
}

class Estimate {
public:
    Estimate(const std::vector<Token>& tokens, double nodes, bool atEveryNode)
        : m_tokens(tokens), m_nodes(nodes), m_atEveryNode(atEveryNode), m_levels(1) {
        m_levels.back().cost = static_cast<double>(tokens.size());  // each operator and call once
    }

    double run() {
        while (m_tokens[m_at].kind != Tok::End)
            next();
        while (m_levels.size() > 1)
            close();
        endPath();
        return m_levels.back().cost;
    }

private:
    const Token& peek(size_t ahead = 0) const { return m_tokens[std::min(m_at + ahead, m_tokens.size() - 1)]; }
    Level& top() { return m_levels.back(); }

    void next() {
        const Token t = m_tokens[m_at++];
        const bool operandBefore = m_operandBefore;
        m_operandBefore = false;
        if (t.kind == Tok::Literal || t.kind == Tok::Number) {
            endPath();
            m_operandBefore = true;
        } else if (t.kind == Tok::Name) {
            name(t.text, operandBefore);
        } else if (t.text == u"*" && operandBefore) {
            operation(true);
        } else if (t.text == u"*") {
            step(u"child", false);
        } else if (t.text == u"@") {
            skipNodeTest();
            step(u"attribute", true);
        } else if (t.text == u".") {
            step(u"self", false);
        } else if (t.text == u"..") {
            step(u"parent", false);
        } else if (t.text == u"/" || t.text == u"//") {
            if (!top().path.open) {
                start(1, false);  // from the root, whose string value is all the text
                top().path.smallValues = false;
            }
            if (t.text == u"//")
                step(u"descendant-or-self", false);
            m_operandBefore = false;  // a step follows
        } else if (t.text == u"[") {
            m_levels.push_back(level(Level::Predicate, top().path.open ? top().path.reach : 1));
        } else if (t.text == u"(") {
            m_levels.push_back(level(Level::Group));
        } else if (t.text == u"]" || t.text == u")") {
            if (m_levels.size() > 1)
                close();
            m_operandBefore = true;
        } else if (t.text == u"$") {
            if (peek().kind == Tok::Name)
                ++m_at;
            endPath();
            m_operandBefore = true;
        } else {
            operation(t.text != u"|" && t.text != u",");
        }
    }

    void name(const XString& text, bool operandBefore) {
        if (operandBefore && (text == u"and" || text == u"or" || text == u"div" || text == u"mod")) {
            operation(text == u"div" || text == u"mod");
            return;
        }
        if (isSymbol(peek(), u"::")) {
            ++m_at;
            const bool shortValues = skipNodeTest();
            step(text, shortValues || text == u"attribute" || text == u"namespace");
            return;
        }
        if (isSymbol(peek(), u"(") && text != u"node" && text != u"text" && text != u"comment" &&
            text != u"processing-instruction") {
            ++m_at;
            endPath();
            m_levels.push_back(level(text == u"id" ? Level::IdCall : readsValues(text) ? Level::ValueCall : Level::Call));
            return;
        }
        step(u"child", skipTestArguments(text));
    }

    // An operator between operands; arithmetic and comparisons read both as values.
    void operation(bool readsOperands) {
        if (readsOperands)
            top().path.value = true;
        endPath();
        m_nextIsValue = readsOperands;
    }

    // The node test after an axis or "@": a name, "*", or a node type test;
    // whether it selects nodes with short string values.
    bool skipNodeTest() {
        if (peek().kind != Tok::Name && !isSymbol(peek(), u"*"))
            return false;
        const XString test = peek().text;
        ++m_at;
        return skipTestArguments(test);
    }

    bool skipTestArguments(const XString& test) {
        if (!isSymbol(peek(), u"("))
            return false;
        ++m_at;
        if (peek().kind == Tok::Literal)
            ++m_at;
        if (isSymbol(peek(), u")"))
            ++m_at;
        return test != u"node";
    }

    void start(double reach, bool fromContext) {
        Path& p = top().path;
        p = Path{true, reach, fromContext, true, m_nextIsValue || top().kind == Level::ValueCall ||
                                                      top().kind == Level::IdCall};
        m_nextIsValue = false;
    }

    void step(const XString& axis, bool shortValues) {
        if (!top().path.open)
            start(1, true);
        Path& p = top().path;
        double visits = p.reach;
        if (axis == u"self") {
        } else if (axis == u"parent" || axis == u"ancestor" || axis == u"ancestor-or-self" || axis == u"attribute" ||
                   axis == u"namespace") {
            p.fromContext = false;
        } else if (axis == u"child" && p.fromContext && m_atEveryNode) {
        } else if (axis == u"child") {
            // The children of different nodes are different nodes.
            visits = m_nodes;
            p.fromContext = false;
        } else {
            visits = p.reach * m_nodes;  // descendants, following, preceding: all at worst
            p.fromContext = false;
        }
        p.reach = std::max(std::min(visits, m_nodes), 1.0);
        p.smallValues = shortValues;
        top().cost += visits;
        m_operandBefore = true;
    }

    // Reading a node's string value walks its subtree: the document, at worst,
    // unless the path stays below the context node (each node is below only
    // its ancestors) or ends at attributes or text.
    void endPath() {
        Path& p = top().path;
        if (p.open && p.value && !p.smallValues)
            top().cost += p.fromContext && m_atEveryNode ? p.reach : p.reach * m_nodes;
        p.open = false;
        m_nextIsValue = false;
    }

    void close() {
        endPath();
        const Level inner = m_levels.back();
        m_levels.pop_back();
        Level& outer = top();
        outer.cost += inner.times * inner.cost;
        if (inner.kind == Level::Predicate)
            return;
        // A call or a parenthesised expression may start a path; id() reaches
        // nodes anywhere, after looking through the whole document.
        if (inner.kind == Level::IdCall)
            outer.cost += m_nodes;
        const double reach = inner.kind == Level::IdCall ? m_nodes : std::max(1.0, std::min(inner.cost, m_nodes));
        start(reach, false);
        // What a function gives is short (here()'s node, a string); a
        // parenthesised path's nodes may be anything.
        outer.path.smallValues = inner.kind != Level::Group && inner.kind != Level::IdCall;
    }

    const std::vector<Token>& m_tokens;
    const double m_nodes;
    const bool m_atEveryNode;
    std::vector<Level> m_levels;
    size_t m_at = 0;
    bool m_operandBefore = false;
    bool m_nextIsValue = false;
};

}  // namespace

std::optional<double> evaluationCost(const XString& expression, double nodes, bool atEveryNode) {
    std::optional<std::vector<Token>> tokens = tokenize(expression);
    if (!tokens)
        return std::nullopt;
    return Estimate(*tokens, std::max(nodes, 1.0), atEveryNode).run();
}

}  // namespace vqxml::xpath
