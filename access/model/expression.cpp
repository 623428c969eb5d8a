#include "access/model/expression.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "access/model/expression_parser.h"
#include "access/model/like_pattern.h"
#include "access/value_text.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::model {
namespace {

using Kind = Operand::Kind;

Operand number(double value)
{
    return {Kind::Number, value, {}};
}
Operand truth(bool value)
{
    return number(value ? -1 : 0);
}

std::optional<bool> truthOf(const Operand& o)
{
    if (o.kind == Kind::Number)
        return o.number != 0;
    if (o.kind == Kind::Text)
        if (const auto value = parseReal(o.text))
            return *value != 0;
    return std::nullopt;
}

std::optional<double> numberOf(const Operand& o)
{
    if (o.kind == Kind::Number)
        return o.number;
    return o.kind == Kind::Text ? parseReal(o.text) : std::nullopt;
}

double nowAsDate()
{
    const Clock& clock = host().clock ? *host().clock : systemClock();
    const LocalTime t = clock.now();
    return dateFromCivil({t.year, t.month, t.day, t.hour, t.minute, t.second, 0});
}

/// The bytes of the first n characters, of the text behind them.
std::string_view firstCharacters(std::string_view text, double n)
{
    return n <= 0 ? text.substr(0, 0)
                  : textPrefix(text, static_cast<std::size_t>(std::min(n, 1e9)));
}
std::string_view behindCharacters(std::string_view text, double n)
{
    return text.substr(firstCharacters(text, n).size());
}

class Evaluation {
public:
    Evaluation(const FieldReader& fields, std::deque<std::string>& scratch)
        : fields_(fields), scratch_(scratch)
    {
    }
    Operand of(const ExpressionNode& node);

private:
    Operand part(const ExpressionNode& node, std::size_t n) { return of(*node.parts[n]); }
    Operand fieldValue(int field);
    Operand logical(const ExpressionNode& node);
    Operand comparison(Operation operation, const Operand& a, const Operand& b);
    std::optional<int> order(const Operand& a, const Operand& b);
    Operand arithmetic(const ExpressionNode& node);
    Operand textFunction(const ExpressionNode& node);
    Operand dateFunction(const ExpressionNode& node);
    Operand between(const ExpressionNode& node);
    Operand oneOf(const ExpressionNode& node);
    std::string_view textOf(const Operand& o);
    Operand kept(std::string text);

    const FieldReader& fields_;
    std::deque<std::string>& scratch_;
};

Operand Evaluation::kept(std::string text)
{
    scratch_.push_back(std::move(text));
    return {Kind::Text, 0, scratch_.back()};
}

std::string_view Evaluation::textOf(const Operand& o)
{
    if (o.kind != Kind::Number)
        return o.text;
    std::string text;
    appendReal(text, o.number);
    return kept(std::move(text)).text;
}

Operand Evaluation::fieldValue(int field)
{
    const ValueView v = fields_(field);
    switch (v.kind()) {
    case ValueKind::Null:
    case ValueKind::Bytes:
        return {};
    case ValueKind::Text:
        return {Kind::Text, 0, v.asText()};
    default:
        return number(realOf(v).value_or(0));
    }
}

/// Texts that are compared with numbers count as the numbers they show; Null orders nothing.
std::optional<int> Evaluation::order(const Operand& a, const Operand& b)
{
    if (a.kind == Kind::Text && b.kind == Kind::Text) {
        const std::string x = paths::foldName(a.text), y = paths::foldName(b.text);
        return x < y ? -1 : x > y;
    }
    const auto x = numberOf(a), y = numberOf(b);
    if (!x || !y)
        return std::nullopt;
    return *x < *y ? -1 : *x > *y;
}

Operand Evaluation::comparison(Operation operation, const Operand& a, const Operand& b)
{
    const auto o = order(a, b);
    if (!o)
        return {};
    switch (operation) {
    case Operation::Equal:
        return truth(*o == 0);
    case Operation::Unequal:
        return truth(*o != 0);
    case Operation::Less:
        return truth(*o < 0);
    case Operation::LessEqual:
        return truth(*o <= 0);
    case Operation::Greater:
        return truth(*o > 0);
    default:
        return truth(*o >= 0);
    }
}

Operand Evaluation::between(const ExpressionNode& node)
{
    const Operand value = part(node, 0);
    Operand low = part(node, 1), high = part(node, 2);
    if (order(low, high).value_or(0) > 0)
        std::swap(low, high);
    const auto above = order(value, low), below = order(value, high);
    if (!above || !below)
        return {};
    return truth(*above >= 0 && *below <= 0);
}

Operand Evaluation::oneOf(const ExpressionNode& node)
{
    const Operand value = part(node, 0);
    if (value.kind == Kind::Null)
        return {};
    for (std::size_t i = 1; i < node.parts.size(); ++i)
        if (order(value, part(node, i)) == 0)
            return truth(true);
    return truth(false);
}

Operand Evaluation::logical(const ExpressionNode& node)
{
    const auto a = truthOf(part(node, 0));
    if (node.operation == Operation::Not)
        return a ? truth(!*a) : Operand{};
    const bool settles = node.operation == Operation::Or;
    if (node.operation != Operation::Xor && a == settles)
        return truth(settles);
    const auto b = truthOf(part(node, 1));
    if (node.operation != Operation::Xor && b == settles)
        return truth(settles);
    if (!a || !b)
        return {};
    return truth(node.operation == Operation::Xor ? *a != *b : !settles);
}

Operand Evaluation::arithmetic(const ExpressionNode& node)
{
    const Operand left = part(node, 0);
    if (node.operation == Operation::Negate || node.operation == Operation::Int ||
        node.operation == Operation::Abs) {
        const auto n = numberOf(left);
        if (!n)
            return {};
        return number(node.operation == Operation::Negate ? -*n
                      : node.operation == Operation::Int  ? std::floor(*n)
                                                          : std::fabs(*n));
    }
    const Operand right = part(node, 1);
    if (node.operation == Operation::Join) {
        if (left.kind == Kind::Null && right.kind == Kind::Null)
            return {};
        return kept(std::string(textOf(left)) + std::string(textOf(right)));
    }
    if (node.operation == Operation::Add && left.kind == Kind::Text && right.kind == Kind::Text)
        return kept(std::string(left.text) + std::string(right.text));
    const auto a = numberOf(left), b = numberOf(right);
    if (!a || !b)
        return {};
    switch (node.operation) {
    case Operation::Add:
        return number(*a + *b);
    case Operation::Subtract:
        return number(*a - *b);
    case Operation::Multiply:
        return number(*a * *b);
    default:
        return *b == 0 ? Operand{} : number(*a / *b);
    }
}

Operand Evaluation::textFunction(const ExpressionNode& node)
{
    const Operand value = part(node, 0);
    if (value.kind == Kind::Null)
        return {};
    const std::string_view text = textOf(value);
    const auto argument = [&](std::size_t n) {
        return n < node.parts.size() ? numberOf(part(node, n)).value_or(0) : 1e9;
    };
    switch (node.operation) {
    case Operation::Length:
        return number(static_cast<double>(textLength(text)));
    case Operation::Upper:
        return kept(paths::foldName(text));
    case Operation::Lower: {
        std::string lower(text);
        std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
            return static_cast<char>(c < 0x80 ? std::tolower(c) : c);
        });
        return kept(std::move(lower));
    }
    case Operation::Trim: {
        const std::size_t first = text.find_first_not_of(' ');
        return {Kind::Text, 0,
                first == text.npos ? std::string_view()
                                   : text.substr(first, text.find_last_not_of(' ') - first + 1)};
    }
    case Operation::Left:
        return {Kind::Text, 0, firstCharacters(text, argument(1))};
    case Operation::Right:
        return {Kind::Text, 0,
                behindCharacters(text, static_cast<double>(textLength(text)) - argument(1))};
    default:
        return {Kind::Text, 0,
                firstCharacters(behindCharacters(text, argument(1) - 1), argument(2))};
    }
}

Operand Evaluation::dateFunction(const ExpressionNode& node)
{
    switch (node.operation) {
    case Operation::Date:
        return number(std::floor(nowAsDate()));
    case Operation::Now:
        return number(nowAsDate());
    case Operation::Time:
        return number(nowAsDate() - std::floor(nowAsDate()));
    default:
        break;
    }
    const auto date = numberOf(part(node, 0));
    if (!date)
        return {};
    const CivilTime t = civilTime(*date);
    return number(node.operation == Operation::Year    ? t.year
                  : node.operation == Operation::Month ? t.month
                                                       : t.day);
}

Operand Evaluation::of(const ExpressionNode& node)
{
    switch (node.operation) {
    case Operation::Constant:
        return node.constant;
    case Operation::Field:
        return fieldValue(node.field);
    case Operation::Or:
    case Operation::And:
    case Operation::Xor:
    case Operation::Not:
        return logical(node);
    case Operation::Between:
        return between(node);
    case Operation::In:
        return oneOf(node);
    case Operation::Like: {
        const Operand value = part(node, 0), pattern = part(node, 1);
        if (value.kind == Kind::Null || pattern.kind == Kind::Null)
            return {};
        return truth(likePattern(textOf(value), textOf(pattern)));
    }
    case Operation::IsNull:
        return truth(part(node, 0).kind == Kind::Null);
    case Operation::If:
        return part(node, truthOf(part(node, 0)).value_or(false) ? 1 : 2);
    case Operation::Add:
    case Operation::Subtract:
    case Operation::Multiply:
    case Operation::Divide:
    case Operation::Join:
    case Operation::Negate:
    case Operation::Int:
    case Operation::Abs:
        return arithmetic(node);
    case Operation::Date:
    case Operation::Now:
    case Operation::Time:
    case Operation::Year:
    case Operation::Month:
    case Operation::Day:
        return dateFunction(node);
    case Operation::Length:
    case Operation::Upper:
    case Operation::Lower:
    case Operation::Trim:
    case Operation::Left:
    case Operation::Right:
    case Operation::Mid:
        return textFunction(node);
    default:
        return comparison(node.operation, part(node, 0), part(node, 1));
    }
}

}  // namespace

Expression::Expression(std::unique_ptr<ExpressionNode> root) : root_(std::move(root)) {}
Expression::Expression(Expression&&) noexcept = default;
Expression& Expression::operator=(Expression&&) noexcept = default;
Expression::~Expression() = default;

std::optional<Expression> Expression::parse(std::string_view text,
                                            const std::vector<FieldDef>& fields, int own)
{
    auto root = parseExpression(text, fields, own);
    if (!root)
        return std::nullopt;
    return Expression(std::move(root));
}

Operand Expression::evaluate(const FieldReader& fields) const
{
    scratch_.clear();
    return Evaluation(fields, scratch_).of(*root_);
}

bool Expression::refuses(const FieldReader& fields) const
{
    const auto verdict = truthOf(evaluate(fields));
    return verdict && !*verdict;
}

}  // namespace velnor::model
