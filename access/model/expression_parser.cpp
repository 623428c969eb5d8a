#include "access/model/expression_parser.h"

#include <algorithm>
#include <utility>

#include "access/model/expression_lexer.h"
#include "platform/paths.h"

namespace velnor::model {
namespace {

using NodePtr = std::unique_ptr<ExpressionNode>;

constexpr int kDeepest = 60;

class Parser {
public:
    Parser(std::string_view text, const std::vector<FieldDef>& fields, int own)
        : lexer_(text), fields_(fields), own_(own)
    {
        advance();
    }
    NodePtr run();

private:
    using Kind = Token::Kind;
    void advance() { token_ = lexer_.next(); }
    bool isWord(const char* word) const
    {
        return token_.kind == Kind::Word && paths::sameName(token_.text, word);
    }
    bool isSign(std::string_view sign) const
    {
        return token_.kind == Kind::Sign && token_.text == sign;
    }
    bool takeWord(const char* word);
    bool takeSign(std::string_view sign);
    void needSign(std::string_view sign);
    NodePtr node(Operation operation, NodePtr a = nullptr, NodePtr b = nullptr);

    NodePtr any();
    NodePtr all();
    NodePtr denied();
    NodePtr compared();
    NodePtr comparisonOf(NodePtr left);
    NodePtr list(NodePtr left);
    NodePtr joined();
    NodePtr sum();
    NodePtr product();
    NodePtr signedValue();
    NodePtr primary();
    NodePtr named(const std::string& name);
    NodePtr function(const std::string& name);
    NodePtr ownField();
    NodePtr constant(const Token& token);
    bool startsComparison() const;

    Lexer lexer_;
    const std::vector<FieldDef>& fields_;
    int own_;
    Token token_;
    int depth_ = 0;
};

struct Comparing {
    const char* sign;
    Operation operation;
};
constexpr Comparing kComparisons[] = {
    {"=", Operation::Equal},         {"<>", Operation::Unequal},      {"<", Operation::Less},
    {"<=", Operation::LessEqual},    {"=<", Operation::LessEqual},    {">", Operation::Greater},
    {">=", Operation::GreaterEqual}, {"=>", Operation::GreaterEqual},
};

struct Function {
    const char* name;
    Operation operation;
    std::size_t least, most;
};
constexpr Function kFunctions[] = {
    {"Date", Operation::Date, 0, 0},     {"Now", Operation::Now, 0, 0},
    {"Time", Operation::Time, 0, 0},     {"Len", Operation::Length, 1, 1},
    {"IsNull", Operation::IsNull, 1, 1}, {"Year", Operation::Year, 1, 1},
    {"Month", Operation::Month, 1, 1},   {"Day", Operation::Day, 1, 1},
    {"UCase", Operation::Upper, 1, 1},   {"LCase", Operation::Lower, 1, 1},
    {"Trim", Operation::Trim, 1, 1},     {"Left", Operation::Left, 2, 2},
    {"Right", Operation::Right, 2, 2},   {"Mid", Operation::Mid, 2, 3},
    {"Int", Operation::Int, 1, 1},       {"Abs", Operation::Abs, 1, 1},
    {"IIf", Operation::If, 3, 3},
};

bool Parser::takeWord(const char* word)
{
    const bool is = isWord(word);
    if (is)
        advance();
    return is;
}

bool Parser::takeSign(std::string_view sign)
{
    const bool is = isSign(sign);
    if (is)
        advance();
    return is;
}

void Parser::needSign(std::string_view sign)
{
    if (!takeSign(sign))
        throw NotUnderstood{};
}

NodePtr Parser::node(Operation operation, NodePtr a, NodePtr b)
{
    auto made = std::make_unique<ExpressionNode>();
    made->operation = operation;
    if (a)
        made->parts.push_back(std::move(a));
    if (b)
        made->parts.push_back(std::move(b));
    return made;
}

NodePtr Parser::run()
{
    if (isSign("=") && own_ < 0)  // a default value may begin with it
        advance();
    NodePtr root = any();
    if (token_.kind != Kind::End)
        throw NotUnderstood{};
    return root;
}

NodePtr Parser::any()
{
    if (++depth_ > kDeepest)
        throw NotUnderstood{};
    NodePtr left = all();
    for (;;) {
        if (takeWord("Or"))
            left = node(Operation::Or, std::move(left), all());
        else if (takeWord("Xor"))
            left = node(Operation::Xor, std::move(left), all());
        else
            break;
    }
    --depth_;
    return left;
}

NodePtr Parser::all()
{
    NodePtr left = denied();
    while (takeWord("And"))
        left = node(Operation::And, std::move(left), denied());
    return left;
}

NodePtr Parser::denied()
{
    if (!isWord("Not"))
        return compared();
    if (++depth_ > kDeepest)
        throw NotUnderstood{};
    advance();
    NodePtr inner = denied();
    --depth_;
    return node(Operation::Not, std::move(inner));
}

bool Parser::startsComparison() const
{
    for (const Comparing& comparison : kComparisons)
        if (isSign(comparison.sign))
            return true;
    return isWord("Between") || isWord("In") || isWord("Like") || isWord("Is");
}

/// A rule need not name its own field: "> 0", and "3 Or 4" for "= 3 Or = 4".
NodePtr Parser::compared()
{
    if (startsComparison())
        return comparisonOf(ownField());
    NodePtr left = joined();
    if (startsComparison() || isWord("Not"))
        return comparisonOf(std::move(left));
    const bool alone =
        left->operation == Operation::Constant || left->operation == Operation::Negate;
    if (alone && own_ >= 0)
        return node(Operation::Equal, ownField(), std::move(left));
    return left;
}

NodePtr Parser::comparisonOf(NodePtr left)
{
    for (const Comparing& comparison : kComparisons)
        if (takeSign(comparison.sign))
            return node(comparison.operation, std::move(left), joined());
    const bool denies = takeWord("Not");
    NodePtr made;
    if (takeWord("Between")) {
        made = node(Operation::Between, std::move(left), joined());
        if (!takeWord("And"))
            throw NotUnderstood{};
        made->parts.push_back(joined());
    } else if (takeWord("Like")) {
        made = node(Operation::Like, std::move(left), joined());
    } else if (takeWord("In")) {
        made = list(std::move(left));
    } else if (!denies && takeWord("Is")) {
        const bool some = takeWord("Not");
        if (!takeWord("Null"))
            throw NotUnderstood{};
        made = node(Operation::IsNull, std::move(left));
        return some ? node(Operation::Not, std::move(made)) : std::move(made);
    } else {
        throw NotUnderstood{};
    }
    return denies ? node(Operation::Not, std::move(made)) : std::move(made);
}

NodePtr Parser::list(NodePtr left)
{
    NodePtr made = node(Operation::In, std::move(left));
    needSign("(");
    do
        made->parts.push_back(joined());
    while (takeSign(",") || takeSign(";"));
    needSign(")");
    return made;
}

NodePtr Parser::joined()
{
    NodePtr left = sum();
    while (takeSign("&"))
        left = node(Operation::Join, std::move(left), sum());
    return left;
}

NodePtr Parser::sum()
{
    NodePtr left = product();
    for (;;) {
        if (takeSign("+"))
            left = node(Operation::Add, std::move(left), product());
        else if (takeSign("-"))
            left = node(Operation::Subtract, std::move(left), product());
        else
            return left;
    }
}

NodePtr Parser::product()
{
    NodePtr left = signedValue();
    for (;;) {
        if (takeSign("*"))
            left = node(Operation::Multiply, std::move(left), signedValue());
        else if (takeSign("/"))
            left = node(Operation::Divide, std::move(left), signedValue());
        else
            return left;
    }
}

NodePtr Parser::signedValue()
{
    while (takeSign("+")) {
    }
    if (!isSign("-"))
        return primary();
    if (++depth_ > kDeepest)
        throw NotUnderstood{};
    advance();
    NodePtr inner = signedValue();
    --depth_;
    return node(Operation::Negate, std::move(inner));
}

NodePtr Parser::constant(const Token& token)
{
    NodePtr made = node(Operation::Constant);
    if (token.kind == Kind::Text) {
        made->text = token.text;
        made->constant = {Operand::Kind::Text, 0, made->text};
    } else {
        made->constant = {Operand::Kind::Number, token.number, {}};
    }
    return made;
}

NodePtr Parser::primary()
{
    const Token token = token_;
    switch (token.kind) {
    case Kind::Number:
    case Kind::Date:
    case Kind::Text:
        advance();
        return constant(token);
    case Kind::Name:
        advance();
        return named(token.text);
    case Kind::Word:
        advance();
        return isSign("(") ? function(token.text) : named(token.text);
    case Kind::Sign:
        if (takeSign("(")) {
            NodePtr inner = any();
            needSign(")");
            return inner;
        }
        [[fallthrough]];
    default:
        throw NotUnderstood{};
    }
}

NodePtr Parser::named(const std::string& name)
{
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (paths::sameName(fields_[i].name, name)) {
            NodePtr made = node(Operation::Field);
            made->field = static_cast<int>(i);
            return made;
        }
    const auto is = [&](const char* word) { return paths::sameName(name, word); };
    if (is("Null"))
        return node(Operation::Constant);
    if (is("True") || is("Yes") || is("On"))
        return constant({Kind::Number, {}, -1});
    if (is("False") || is("No") || is("Off"))
        return constant({Kind::Number, {}, 0});
    throw NotUnderstood{};
}

NodePtr Parser::function(const std::string& name)
{
    needSign("(");
    NodePtr made = node(Operation::Constant);
    // What stands in a function says wholly what it means.
    const int own = std::exchange(own_, -1);
    if (!isSign(")"))
        do
            made->parts.push_back(any());
        while (takeSign(",") || takeSign(";"));
    own_ = own;
    needSign(")");
    for (const Function& known : kFunctions)
        if (paths::sameName(name, known.name) && made->parts.size() >= known.least &&
            made->parts.size() <= known.most) {
            made->operation = known.operation;
            return made;
        }
    throw NotUnderstood{};
}

NodePtr Parser::ownField()
{
    if (own_ < 0)
        throw NotUnderstood{};
    NodePtr made = node(Operation::Field);
    made->field = own_;
    return made;
}

}  // namespace

std::unique_ptr<ExpressionNode> parseExpression(std::string_view text,
                                                const std::vector<FieldDef>& fields, int own)
{
    try {
        return Parser(text, fields, own).run();
    } catch (const NotUnderstood&) {
        return nullptr;
    }
}

}  // namespace velnor::model
