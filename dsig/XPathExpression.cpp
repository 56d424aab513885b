#include "dsig/XPathExpression.hpp"

#include <string>

#include "dsig/XPathTokens.hpp"

namespace vqxml::xpath {

namespace {

// Anything the subset does not take; the caller hands the expression on.
struct Unsupported {};

double toNumber(const XString& text) {
    std::string ascii;
    for (XMLCh c : text)
        ascii.push_back(static_cast<char>(c));
    return std::stod(ascii);
}

class Parser {
public:
    Parser(std::vector<Token> tokens, const PrefixResolver& resolve) : m_tokens(std::move(tokens)), m_resolve(resolve) {}

    Expr parse() {
        Expr e = orExpr();
        if (peek().kind != Tok::End)
            throw Unsupported{};
        return e;
    }

private:
    const Token& peek(size_t ahead = 0) const {
        return m_tokens[std::min(m_at + ahead, m_tokens.size() - 1)];
    }
    bool isSymbol(const char16_t* s, size_t ahead = 0) const {
        return peek(ahead).kind == Tok::Symbol && peek(ahead).text == s;
    }
    bool isName(const char16_t* s) const { return peek().kind == Tok::Name && peek().text == s; }
    bool accept(const char16_t* s) {
        if (!isSymbol(s))
            return false;
        ++m_at;
        return true;
    }
    void expect(const char16_t* s) {
        if (!accept(s))
            throw Unsupported{};
    }

    static Expr node(Op op, Type type, std::vector<Expr> args = {}) {
        Expr e;
        e.op = op;
        e.type = type;
        e.args = std::move(args);
        return e;
    }

    Expr orExpr() {
        Expr left = andExpr();
        while (isName(u"or")) {
            ++m_at;
            left = node(Op::Or, Type::Boolean, {std::move(left), andExpr()});
        }
        return left;
    }

    Expr andExpr() {
        Expr left = equality();
        while (isName(u"and")) {
            ++m_at;
            left = node(Op::And, Type::Boolean, {std::move(left), equality()});
        }
        return left;
    }

    Expr equality() {
        Expr left = relational();
        for (;;) {
            const Op op = isSymbol(u"=") ? Op::Equal : isSymbol(u"!=") ? Op::NotEqual : Op::Literal;
            if (op == Op::Literal)
                return left;
            ++m_at;
            left = comparison(op, std::move(left), relational());
        }
    }

    Expr relational() {
        Expr left = unionExpr();
        for (;;) {
            Op op = Op::Literal;
            for (auto [symbol, which] : {std::pair{u"<", Op::Less}, std::pair{u"<=", Op::LessOrEqual},
                                         std::pair{u">", Op::Greater}, std::pair{u">=", Op::GreaterOrEqual}})
                if (isSymbol(symbol))
                    op = which;
            if (op == Op::Literal)
                return left;
            ++m_at;
            left = comparison(op, std::move(left), unionExpr());
        }
    }

    // Node-sets compare by their members' string values, which the filter has
    // only for attributes: an element's would be its whole text.
    static Expr comparison(Op op, Expr left, Expr right) {
        if (left.type == Type::Nodes || right.type == Type::Nodes)
            throw Unsupported{};
        if (left.type == Type::Attributes && right.type == Type::Attributes)
            throw Unsupported{};
        return node(op, Type::Boolean, {std::move(left), std::move(right)});
    }

    Expr unionExpr() {
        Expr first = pathExpr();
        if (!isSymbol(u"|"))
            return first;
        Expr u = node(Op::Union, Type::Nodes, {});
        u.args.push_back(std::move(first));
        while (accept(u"|"))
            u.args.push_back(pathExpr());
        for (const Expr& member : u.args)
            if (member.type != Type::Nodes && member.type != Type::Attributes)
                throw Unsupported{};
        return u;
    }

    Expr pathExpr() {
        if (isSymbol(u"/") || isSymbol(u"//") || isSymbol(u"-") || isSymbol(u"$"))
            throw Unsupported{};
        Expr e = startsPrimary() ? primary() : step();
        if (isSymbol(u"/") || isSymbol(u"//") || isSymbol(u"["))
            throw Unsupported{};  // paths of several steps; predicates on primaries
        return e;
    }

    bool startsPrimary() const {
        const Token& t = peek();
        if (t.kind == Tok::Literal || t.kind == Tok::Number || isSymbol(u"("))
            return true;
        // A function call, unless the name is a node type test.
        if (t.kind != Tok::Name || !isSymbol(u"(", 1))
            return false;
        return t.text != u"node" && t.text != u"text" && t.text != u"comment" && t.text != u"processing-instruction";
    }

    Expr primary() {
        const Token t = peek();
        ++m_at;
        if (t.kind == Tok::Literal) {
            Expr e = node(Op::Literal, Type::String);
            e.text = t.text;
            return e;
        }
        if (t.kind == Tok::Number) {
            Expr e = node(Op::Number, Type::Number);
            e.number = toNumber(t.text);
            return e;
        }
        if (t.kind == Tok::Symbol) {  // "("
            Expr e = orExpr();
            expect(u")");
            return e;
        }
        return functionCall(t.text);
    }

    Expr functionCall(const XString& name) {
        expect(u"(");
        std::vector<Expr> args;
        if (!accept(u")")) {
            do
                args.push_back(orExpr());
            while (accept(u","));
            expect(u")");
        }
        const auto want = [&](size_t n) {
            if (args.size() != n)
                throw Unsupported{};
        };
        if (name == u"not" || name == u"boolean") {
            want(1);
            return node(name == u"not" ? Op::Not : Op::Boolean, Type::Boolean, std::move(args));
        }
        if (name == u"true" || name == u"false") {
            want(0);
            return node(name == u"true" ? Op::True : Op::False, Type::Boolean);
        }
        if (name == u"name" || name == u"local-name" || name == u"namespace-uri") {
            // Of the context node only: another node-set's first node in document
            // order is not what one pass knows.
            if (args.size() == 1 && args[0].op == Op::Step && args[0].axis == Axis::Self &&
                args[0].test.kind == TestKind::AnyNode && args[0].args.empty())
                args.clear();
            want(0);
            return node(name == u"name" ? Op::Name : name == u"local-name" ? Op::LocalName : Op::NamespaceURI,
                        Type::String);
        }
        if (name == u"count") {
            want(1);
            if (args[0].op != Op::Step)
                throw Unsupported{};
            return node(Op::Count, Type::Number, std::move(args));
        }
        if (name == u"starts-with" || name == u"contains") {
            want(2);
            for (const Expr& a : args)
                if (a.type != Type::String)
                    throw Unsupported{};
            return node(name == u"contains" ? Op::Contains : Op::StartsWith, Type::Boolean, std::move(args));
        }
        throw Unsupported{};  // here(), id(), position(), last(), string functions...
    }

    Expr step() {
        Expr e = node(Op::Step, Type::Nodes);
        if (accept(u".")) {
            e.axis = Axis::Self;
            return slotted(std::move(e));
        }
        if (accept(u"..")) {
            e.axis = Axis::Parent;
            return slotted(std::move(e));
        }
        if (accept(u"@")) {
            e.axis = Axis::Attribute;
        } else if (peek().kind == Tok::Name && isSymbol(u"::", 1)) {
            e.axis = axisNamed(peek().text);
            m_at += 2;
        } else {
            throw Unsupported{};  // the child axis
        }
        e.test = nodeTest();
        while (accept(u"[")) {
            Expr predicate = orExpr();
            // A number would be a position, which depends on the other nodes.
            if (predicate.type == Type::Number)
                throw Unsupported{};
            e.args.push_back(std::move(predicate));
            expect(u"]");
        }
        if (e.axis == Axis::Attribute) {
            e.type = Type::Attributes;
            return e;
        }
        return slotted(std::move(e));
    }

    Expr slotted(Expr e) {
        e.slot = m_slots++;
        return e;
    }

    static Axis axisNamed(const XString& name) {
        if (name == u"self")
            return Axis::Self;
        if (name == u"parent")
            return Axis::Parent;
        if (name == u"ancestor")
            return Axis::Ancestor;
        if (name == u"ancestor-or-self")
            return Axis::AncestorOrSelf;
        if (name == u"attribute")
            return Axis::Attribute;
        throw Unsupported{};
    }

    NodeTest nodeTest() {
        NodeTest test;
        if (accept(u"*")) {
            test.kind = TestKind::AnyName;
            return test;
        }
        if (peek().kind != Tok::Name)
            throw Unsupported{};
        const XString name = peek().text;
        ++m_at;
        if (accept(u"(")) {
            if (name == u"processing-instruction" && peek().kind == Tok::Literal) {
                test.localName = peek().text;
                ++m_at;
            }
            expect(u")");
            if (name == u"node")
                test.kind = TestKind::AnyNode;
            else if (name == u"text")
                test.kind = TestKind::Text;
            else if (name == u"comment")
                test.kind = TestKind::Comment;
            else if (name == u"processing-instruction")
                test.kind = TestKind::ProcessingInstruction;
            else
                throw Unsupported{};
            return test;
        }
        const size_t colon = name.find(u':');
        if (colon == XString::npos) {
            // An unprefixed name is in no namespace, for attributes and elements alike.
            test.kind = TestKind::QName;
            test.localName = name;
            return test;
        }
        const std::optional<XString> uri = m_resolve(name.substr(0, colon));
        if (!uri || uri->empty())
            throw Unsupported{};  // the general engine reports the undeclared prefix
        test.namespaceURI = *uri;
        if (name.compare(colon + 1, XString::npos, u"*") == 0) {
            test.kind = TestKind::AnyInNamespace;
        } else {
            test.kind = TestKind::QName;
            test.localName = name.substr(colon + 1);
        }
        return test;
    }

    std::vector<Token> m_tokens;
    size_t m_at = 0;
    const PrefixResolver& m_resolve;
    int m_slots = 0;
};

// Slots are numbered as the parser met the steps' ends, so a step's predicates'
// steps come before it: computing them in slot order at an element means each
// step finds what its predicates need already computed.
void collectSlots(const Expr& e, std::vector<const Expr*>& slots) {
    for (const Expr& a : e.args)
        collectSlots(a, slots);
    if (e.slot >= 0) {
        if (slots.size() <= static_cast<size_t>(e.slot))
            slots.resize(e.slot + 1, nullptr);
        slots[e.slot] = &e;
    }
}

// Whether a name function in e may be asked of a namespace node: where the
// context may be one (the top, or a predicate of a self:: or ancestor-or-self::
// step whose test, node(), lets namespace nodes through).
bool namesNamespaceNodes(const Expr& e, bool contextMayBeNamespace) {
    if (e.op == Op::Name || e.op == Op::LocalName || e.op == Op::NamespaceURI)
        return contextMayBeNamespace;
    const bool inner = e.op != Op::Step ? contextMayBeNamespace
                                        : contextMayBeNamespace && e.test.kind == TestKind::AnyNode &&
                                              (e.axis == Axis::Self || e.axis == Axis::AncestorOrSelf);
    for (const Expr& a : e.args)
        if (namesNamespaceNodes(a, inner))
            return true;
    return false;
}

void measure(const Expr& e, Filter& filter) {
    ++filter.size;
    if (e.op == Op::Step && e.axis == Axis::Attribute)
        ++filter.attributeSteps;
    for (const Expr& a : e.args)
        measure(a, filter);
}

}  // namespace

std::unique_ptr<Filter> compile(const XString& expression, const PrefixResolver& resolve) {
    try {
        auto filter = std::make_unique<Filter>();
        std::optional<std::vector<Token>> tokens = tokenize(expression);
        if (!tokens)
            return nullptr;
        filter->root = Parser(std::move(*tokens), resolve).parse();
        collectSlots(filter->root, filter->slots);
        filter->namespaceSensitive = namesNamespaceNodes(filter->root, true);
        measure(filter->root, *filter);
        return filter;
    } catch (const Unsupported&) {
        return nullptr;
    } catch (const std::exception&) {  // a number too long to read
        return nullptr;
    }
}

}  // namespace vqxml::xpath
