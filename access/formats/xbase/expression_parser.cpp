#include <array>
#include <charconv>
#include <optional>

#include "access/formats/xbase/expression_builder.h"
#include "access/formats/xbase/expression_words.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;
using Type = ExpressionType;

constexpr int kDeepest = 60;

/// By descent: each function reads what binds closer than the one that calls it.
class ExpressionParser {
public:
    ExpressionParser(std::string_view text, IndexExpression& into) : rest_(text), build_(text, into)
    {
    }

    void run()
    {
        if (const int plain = fieldOfName(build_.header(), unquoted(trimmed(rest_)));
            plain >= 0 && !trimmed(rest_).empty()) {
            build_.field(static_cast<std::size_t>(plain));
        } else {
            either();
            skip();
            if (!rest_.empty())
                build_.fail("\"" + std::string(rest_) + "\" is not understood");
        }
        build_.finish();
    }

private:
    void skip()
    {
        while (!rest_.empty() && static_cast<unsigned char>(rest_.front()) <= ' ')
            rest_.remove_prefix(1);
    }

    bool takes(std::string_view mark)
    {
        skip();
        if (!rest_.starts_with(mark))
            return false;
        rest_.remove_prefix(mark.size());
        return true;
    }

    /// ".AND.", and AND as a word of its own.
    bool takesWord(std::string_view word)
    {
        skip();
        const bool dots = rest_.starts_with('.');
        const std::string_view text = rest_.substr(dots);
        if (text.size() < word.size() || !paths::sameName(text.substr(0, word.size()), word))
            return false;
        const std::string_view behind = text.substr(word.size());
        if (dots ? !behind.starts_with('.')
                 : !behind.empty() && (isLetter(behind[0]) || isDigit(behind[0])))
            return false;
        rest_ = behind.substr(dots);
        return true;
    }

    int either()
    {
        if (++depth_ > kDeepest)
            build_.fail("it is too deep");
        int left = both();
        while (takesWord("OR")) {
            const int right = both();
            build_.need(left, Type::Logical), build_.need(right, Type::Logical);
            left = build_.make(Op::Or, Type::Logical, 0, left, right);
        }
        --depth_;
        return left;
    }

    int both()
    {
        int left = negated();
        while (takesWord("AND")) {
            const int right = negated();
            build_.need(left, Type::Logical), build_.need(right, Type::Logical);
            left = build_.make(Op::And, Type::Logical, 0, left, right);
        }
        return left;
    }

    int negated()
    {
        skip();
        const bool mark = rest_.starts_with('!') && !rest_.starts_with("!=");
        if (mark)
            rest_.remove_prefix(1);
        if (!mark && !takesWord("NOT"))
            return comparison();
        if (++depth_ > kDeepest)
            build_.fail("it is too deep");
        const int of = negated();
        --depth_;
        build_.need(of, Type::Logical);
        return build_.make(Op::Not, Type::Logical, 0, of);
    }

    std::optional<Op> comparisonSign()
    {
        static constexpr std::pair<std::string_view, Op> kSigns[] = {
            {"==", Op::Same},      {"<>", Op::Different},    {"!=", Op::Different},
            {"<=", Op::LessEqual}, {">=", Op::GreaterEqual}, {"=", Op::Equal},
            {"#", Op::Different},  {"<", Op::Less},          {">", Op::Greater},
            {"$", Op::Within}};
        for (const auto& [sign, op] : kSigns)
            if (takes(sign))
                return op;
        return std::nullopt;
    }

    int comparison()
    {
        const int left = sum();
        const std::optional<Op> op = comparisonSign();
        if (!op)
            return left;
        const int right = sum();
        const bool alike = build_.part(left).type == build_.part(right).type ||
                           (build_.numeric(left) && build_.numeric(right)) ||
                           (build_.timely(left) && build_.timely(right));
        if (!alike || (*op == Op::Within && build_.part(left).type != Type::Text))
            build_.fail("two values of different types are compared");
        return build_.make(*op, Type::Logical, 0, left, right);
    }

    int sum()
    {
        int left = product();
        for (;;) {
            const bool plus = takes("+");
            if (!plus && !takes("-"))
                return left;
            left = build_.joined(left, product(), plus);
        }
    }

    int product()
    {
        int left = operand();
        for (;;) {
            skip();
            if (rest_.starts_with("**"))
                build_.fail("powers are not understood");
            const bool times = takes("*");
            if (!times && !takes("/"))
                return left;
            const int right = operand();
            build_.needNumber(left), build_.needNumber(right);
            left = build_.make(times ? Op::Multiply : Op::Divide, Type::Number, 0, left, right);
        }
    }

    int operand()
    {
        skip();
        if (rest_.empty())
            build_.fail("it ends too early");
        const char c = rest_.front();
        if (takes("(")) {
            const int inner = either();
            if (!takes(")"))
                build_.fail("a bracket is not closed");
            return inner;
        }
        if (c == '-' || c == '+')
            return signedOperand(c == '-');
        if (isDigit(c) || (c == '.' && rest_.size() > 1 && isDigit(rest_[1])))
            return number();
        if (c == '.')
            return truth();
        if (c == '\'' || c == '"' || c == '[')
            return literal(c == '[' ? ']' : c);
        if (c == ':')
            return quotedField();
        if (isLetter(c))
            return named();
        build_.fail("\"" + std::string(rest_) + "\" is not understood");
    }

    int signedOperand(bool minus)
    {
        rest_.remove_prefix(1);
        if (++depth_ > kDeepest)
            build_.fail("it is too deep");
        const int of = operand();
        --depth_;
        build_.needNumber(of);
        return minus ? build_.make(Op::Negate, Type::Number, 0, of) : of;
    }

    int number()
    {
        ExpressionPart made;
        const auto read = std::from_chars(rest_.data(), rest_.data() + rest_.size(), made.number,
                                          std::chars_format::fixed);
        if (read.ec != std::errc())
            build_.fail("a number is not understood");
        rest_.remove_prefix(static_cast<std::size_t>(read.ptr - rest_.data()));
        return build_.add(std::move(made));
    }

    int truth()
    {
        for (const std::string_view word : {"T", "Y", "TRUE", "F", "N", "FALSE"})
            if (takesWord(word)) {
                const int made = build_.make(Op::TruthLiteral, Type::Logical, 0);
                build_.part(made).number = word[0] == 'T' || word[0] == 'Y';
                return made;
            }
        build_.fail("\"" + std::string(rest_) + "\" is not understood");
    }

    int literal(char end)
    {
        const auto close = rest_.find(end, 1);
        if (close == rest_.npos)
            build_.fail("a text is not closed");
        ExpressionPart made;
        made.op = Op::TextLiteral;
        made.type = Type::Text;
        build_.header().codePage->encode(rest_.substr(1, close - 1), made.literal);
        made.width = static_cast<std::uint32_t>(made.literal.size());
        rest_.remove_prefix(close + 1);
        return build_.add(std::move(made));
    }

    int quotedField()
    {
        const auto close = rest_.find(':', 1);
        if (close == rest_.npos)
            build_.fail("a field name is not closed");
        const std::string_view name = rest_.substr(1, close - 1);
        rest_.remove_prefix(close + 1);
        return fieldNamed(name);
    }

    std::string_view word()
    {
        std::size_t length = 0;
        while (length < rest_.size() && (isLetter(rest_[length]) || isDigit(rest_[length])))
            ++length;
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return taken;
    }

    int named()
    {
        std::string_view name = word();
        if (takes("->")) {
            skip();
            if (rest_.starts_with(':'))
                return quotedField();
            name = word();
        } else if (takes("(")) {
            return call(name);
        }
        return fieldNamed(name);
    }

    int fieldNamed(std::string_view name)
    {
        const int n = fieldOfName(build_.header(), name);
        if (n < 0)
            build_.fail("there is no field \"" + std::string(name) + "\"");
        return build_.field(static_cast<std::size_t>(n));
    }

    int call(std::string_view name)
    {
        const FunctionRow* row = functionOf(name);
        if (!row)
            build_.fail("the function " + std::string(name) + " is not known");
        std::array<int, 3> given{-1, -1, -1};
        int count = 0;
        if (!takes(")"))
            for (;;) {
                if (count == 3)
                    build_.fail("a function has too many values");
                given[static_cast<std::size_t>(count++)] = either();
                if (takes(")"))
                    break;
                if (!takes(","))
                    build_.fail("a bracket is not closed");
            }
        if (count < row->least || count > row->most)
            build_.fail("the function " + std::string(name) + " has a wrong number of values");
        return build_.call(row->op, given);
    }

    std::string_view rest_;
    ExpressionBuilder build_;
    int depth_ = 0;
};

}  // namespace

IndexExpression::IndexExpression(std::string_view utf8, const DbfHeader& header) : header_(&header)
{
    ExpressionParser(utf8, *this).run();
}

IndexExpression::IndexExpression(IndexExpression&&) noexcept = default;
IndexExpression::~IndexExpression() = default;

}  // namespace velnor::xbase
