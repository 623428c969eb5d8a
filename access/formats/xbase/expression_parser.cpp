#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "access/engine_error.h"
#include "access/formats/xbase/expression_part.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;
using Type = ExpressionType;

constexpr int kDeepest = 60;
constexpr std::size_t kMostParts = 500;
constexpr std::uint32_t kWidestText = 4096;

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || (c & 0x80);
}
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ')
        text.remove_prefix(1);
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    return text;
}

/// ":Long Name:" and "\"Long Name\"" without their marks.
std::string_view unquoted(std::string_view text)
{
    if (text.size() > 2 && text.front() == text.back() && (text[0] == ':' || text[0] == '"'))
        return text.substr(1, text.size() - 2);
    return text;
}

struct FunctionRow {
    std::string_view name;
    Op op;
    int least, most;  // arguments
};
constexpr FunctionRow kFunctions[] = {
    {"UPPER", Op::Upper, 1, 1},      {"LOWER", Op::Lower, 1, 1},
    {"LTRIM", Op::TrimLeft, 1, 1},   {"RTRIM", Op::TrimRight, 1, 1},
    {"TRIM", Op::TrimRight, 1, 1},   {"ALLTRIM", Op::TrimBoth, 1, 1},
    {"LEFT", Op::Left, 2, 2},        {"RIGHT", Op::Right, 2, 2},
    {"SUBSTR", Op::Substring, 2, 3}, {"STR", Op::NumberText, 1, 3},
    {"VAL", Op::NumberOfText, 1, 1}, {"DTOS", Op::DayText, 1, 1},
    {"DTOC", Op::DayShown, 1, 2},    {"CTOD", Op::DayOfText, 1, 1},
    {"DELETED", Op::Deleted, 0, 0},  {"RECNO", Op::RecordNumber, 0, 0},
    {"EMPTY", Op::Empty, 1, 1},      {"ISBLANK", Op::Empty, 1, 1},
    {"IIF", Op::Choose, 3, 3},       {"IF", Op::Choose, 3, 3},
    {"PADL", Op::PadLeft, 2, 3},     {"PADR", Op::PadRight, 2, 3},
    {"SPACE", Op::Space, 1, 1},      {"YEAR", Op::Year, 1, 1},
    {"MONTH", Op::Month, 1, 1},      {"DAY", Op::Day, 1, 1},
    {"CHR", Op::Character, 1, 1},    {"ABS", Op::Absolute, 1, 1},
    {"INT", Op::Whole, 1, 1},        {"DESCEND", Op::Descend, 1, 1},
};

/// Names may be cut to four letters.
const FunctionRow* functionOf(std::string_view name)
{
    const std::string folded = paths::foldName(name);
    for (const FunctionRow& row : kFunctions)
        if (row.name == folded)
            return &row;
    for (const FunctionRow& row : kFunctions)
        if (folded.size() >= 4 && row.name.starts_with(folded))
            return &row;
    return nullptr;
}

}  // namespace

class ExpressionParser {
public:
    ExpressionParser(std::string_view text, IndexExpression& into)
        : whole_(text), rest_(text), into_(into), header_(*into.header_)
    {
    }

    void run()
    {
        if (const int plain = fieldOfName(header_, unquoted(trimmed(rest_)));
            plain >= 0 && !trimmed(rest_).empty()) {
            field(static_cast<std::size_t>(plain));
        } else {
            either();
            skip();
            if (!rest_.empty())
                fail("\"" + std::string(rest_) + "\" is not understood");
        }
        placeTexts();
    }

private:
    [[noreturn]] void fail(const std::string& why) const
    {
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "The index expression \"" + std::string(whole_) + "\": " + why + ".");
    }

    ExpressionPart& part(int n) { return into_.parts_[static_cast<std::size_t>(n)]; }

    int add(ExpressionPart made)
    {
        if (into_.parts_.size() >= kMostParts)
            fail("it is too long");
        if (made.width > kWidestText)
            fail("its text gets too wide");
        into_.parts_.push_back(std::move(made));
        return static_cast<int>(into_.parts_.size()) - 1;
    }

    int make(Op op, Type type, std::uint32_t width, int a = -1, int b = -1, int c = -1)
    {
        ExpressionPart made;
        made.op = op;
        made.type = type;
        made.width = width;
        made.a = a;
        made.b = b;
        made.c = c;
        return add(std::move(made));
    }

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

    void need(int n, Type type)
    {
        if (part(n).type != type)
            fail("a value has the wrong type");
    }
    bool numeric(int n)
    {
        const Type type = part(n).type;
        return type == Type::Number || type == Type::Integer || type == Type::Money;
    }
    bool timely(int n) { return part(n).type == Type::Date || part(n).type == Type::Moment; }
    void needDay(int n)
    {
        if (!timely(n))
            fail("a value is not a date");
    }
    void needNumber(int n)
    {
        if (!numeric(n))
            fail("a value is not a number");
    }

    int either()
    {
        if (++depth_ > kDeepest)
            fail("it is too deep");
        int left = both();
        while (takesWord("OR")) {
            const int right = both();
            need(left, Type::Logical), need(right, Type::Logical);
            left = make(Op::Or, Type::Logical, 0, left, right);
        }
        --depth_;
        return left;
    }

    int both()
    {
        int left = negated();
        while (takesWord("AND")) {
            const int right = negated();
            need(left, Type::Logical), need(right, Type::Logical);
            left = make(Op::And, Type::Logical, 0, left, right);
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
            fail("it is too deep");
        const int of = negated();
        --depth_;
        need(of, Type::Logical);
        return make(Op::Not, Type::Logical, 0, of);
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
        const bool alike = part(left).type == part(right).type ||
                           (numeric(left) && numeric(right)) || (timely(left) && timely(right));
        if (!alike || (*op == Op::Within && part(left).type != Type::Text))
            fail("two values of different types are compared");
        return make(*op, Type::Logical, 0, left, right);
    }

    int sum()
    {
        int left = product();
        for (;;) {
            const bool plus = takes("+");
            if (!plus && !takes("-"))
                return left;
            left = joined(left, product(), plus);
        }
    }

    int joined(int left, int right, bool plus)
    {
        const Type a = part(left).type, b = part(right).type;
        if (a == Type::Text && b == Type::Text)
            return make(plus ? Op::Join : Op::JoinTrimmed, Type::Text,
                        part(left).width + part(right).width, left, right);
        Type made = Type::Number;
        if (timely(left) && numeric(right))
            made = a;
        else if (plus && numeric(left) && timely(right))
            made = b;
        else if (!(numeric(left) && numeric(right)) && !(!plus && timely(left) && timely(right)))
            fail("two values of different types are joined");
        return make(plus ? Op::Add : Op::Subtract, made, 0, left, right);
    }

    int product()
    {
        int left = operand();
        for (;;) {
            skip();
            if (rest_.starts_with("**"))
                fail("powers are not understood");
            const bool times = takes("*");
            if (!times && !takes("/"))
                return left;
            const int right = operand();
            needNumber(left), needNumber(right);
            left = make(times ? Op::Multiply : Op::Divide, Type::Number, 0, left, right);
        }
    }

    int operand()
    {
        skip();
        if (rest_.empty())
            fail("it ends too early");
        const char c = rest_.front();
        if (takes("(")) {
            const int inner = either();
            if (!takes(")"))
                fail("a bracket is not closed");
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
        fail("\"" + std::string(rest_) + "\" is not understood");
    }

    int signedOperand(bool minus)
    {
        rest_.remove_prefix(1);
        if (++depth_ > kDeepest)
            fail("it is too deep");
        const int of = operand();
        --depth_;
        needNumber(of);
        return minus ? make(Op::Negate, Type::Number, 0, of) : of;
    }

    int number()
    {
        ExpressionPart made;
        const auto read = std::from_chars(rest_.data(), rest_.data() + rest_.size(), made.number,
                                          std::chars_format::fixed);
        if (read.ec != std::errc())
            fail("a number is not understood");
        rest_.remove_prefix(static_cast<std::size_t>(read.ptr - rest_.data()));
        return add(std::move(made));
    }

    int truth()
    {
        for (const std::string_view word : {"T", "Y", "TRUE", "F", "N", "FALSE"})
            if (takesWord(word)) {
                const int made = make(Op::TruthLiteral, Type::Logical, 0);
                part(made).number = word[0] == 'T' || word[0] == 'Y';
                return made;
            }
        fail("\"" + std::string(rest_) + "\" is not understood");
    }

    int literal(char end)
    {
        const auto close = rest_.find(end, 1);
        if (close == rest_.npos)
            fail("a text is not closed");
        ExpressionPart made;
        made.op = Op::TextLiteral;
        made.type = Type::Text;
        header_.codePage->encode(rest_.substr(1, close - 1), made.literal);
        made.width = static_cast<std::uint32_t>(made.literal.size());
        rest_.remove_prefix(close + 1);
        return add(std::move(made));
    }

    int quotedField()
    {
        const auto close = rest_.find(':', 1);
        if (close == rest_.npos)
            fail("a field name is not closed");
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
        const int n = fieldOfName(header_, name);
        if (n < 0)
            fail("there is no field \"" + std::string(name) + "\"");
        return field(static_cast<std::size_t>(n));
    }

    Type typeOf(const DbfField& of)
    {
        switch (of.coding) {
        case Coding::Character:
        case Coding::Varchar:
            return Type::Text;
        case Coding::Number:
        case Coding::RealLE:
            return Type::Number;
        case Coding::Logical:
            return Type::Logical;
        case Coding::Day:
            return Type::Date;
        case Coding::IntegerLE:
        case Coding::Integer7:
            return Type::Integer;
        case Coding::MoneyLE:
            return Type::Money;
        case Coding::MomentLE:
            return Type::Moment;
        default:
            fail("the field " + of.name + " is of a type that cannot be a key");
        }
    }

    int field(std::size_t n)
    {
        const DbfField& of = header_.fields[n];
        const Type type = typeOf(of);
        const int made = make(Op::Field, type, type == Type::Text ? of.length : 0);
        part(made).field = n;
        if (std::find(into_.fields_.begin(), into_.fields_.end(), n) == into_.fields_.end())
            into_.fields_.push_back(n);
        return made;
    }

    int call(std::string_view name)
    {
        const FunctionRow* row = functionOf(name);
        if (!row)
            fail("the function " + std::string(name) + " is not known");
        std::array<int, 3> given{-1, -1, -1};
        int count = 0;
        if (!takes(")"))
            for (;;) {
                if (count == 3)
                    fail("a function has too many values");
                given[static_cast<std::size_t>(count++)] = either();
                if (takes(")"))
                    break;
                if (!takes(","))
                    fail("a bracket is not closed");
            }
        if (count < row->least || count > row->most)
            fail("the function " + std::string(name) + " has a wrong number of values");
        return made(row->op, given);
    }

    /// A whole number that is written out; widths depend on it.
    std::uint32_t constant(int n)
    {
        const ExpressionPart& of = part(n);
        if (of.op != Op::NumberLiteral || of.number < 0 || of.number > kWidestText)
            fail("a width is not a plain number");
        return static_cast<std::uint32_t>(of.number);
    }
    bool isConstant(int n) { return part(n).op == Op::NumberLiteral && part(n).number >= 0; }

    int made(Op op, const std::array<int, 3>& given)
    {
        const auto [a, b, c] = given;
        switch (op) {
        case Op::Upper:
            into_.upper_ = std::make_unique<std::uint8_t[]>(256);
            return textOf(op, a, part(a).width);
        case Op::Lower:
            into_.lower_ = std::make_unique<std::uint8_t[]>(256);
            return textOf(op, a, part(a).width);
        case Op::TrimLeft:
        case Op::TrimRight:
        case Op::TrimBoth:
            return textOf(op, a, part(a).width);
        case Op::Left:
        case Op::Right:
            needNumber(b);
            return textOf(op, a, cut(a, b), b);
        case Op::Substring:
            return substring(a, b, c);
        case Op::NumberText:
            needNumber(a);
            return make(op, Type::Text, b < 0 ? 10 : constant(b), a, b, c < 0 ? -1 : checked(c));
        case Op::NumberOfText:
            need(a, Type::Text);
            return make(op, Type::Number, 0, a);
        case Op::DayOfText:
            need(a, Type::Text);
            return make(op, Type::Date, 0, a);
        case Op::DayText:
            needDay(a);
            return make(op, Type::Text, 8, a);
        case Op::DayShown:
            needDay(a);
            return make(b < 0 ? op : Op::DayText, Type::Text, 8, a);
        case Op::Deleted:
            into_.namesDeleted_ = true;
            return make(op, Type::Logical, 0);
        case Op::RecordNumber:
            return make(op, Type::Number, 0);
        case Op::Empty:
            return make(op, Type::Logical, 0, a);
        case Op::Choose:
            need(a, Type::Logical), need(c, part(b).type);
            return make(op, part(b).type, std::max(part(b).width, part(c).width), a, b, c);
        case Op::PadLeft:
        case Op::PadRight:
            if (c >= 0)
                need(c, Type::Text);
            if (part(a).type != Type::Text)
                needNumber(a);
            return make(op, Type::Text, constant(b), a, b, c);
        case Op::Space:
            return make(op, Type::Text, constant(a), a);
        case Op::Year:
        case Op::Month:
        case Op::Day:
            needDay(a);
            return make(op, Type::Number, 0, a);
        case Op::Character:
            needNumber(a);
            return make(op, Type::Text, 1, a);
        case Op::Descend:
            if (part(a).type == Type::Logical)
                fail("a value has the wrong type");
            return make(op, part(a).type == Type::Text ? Type::Text : Type::Number, part(a).width,
                        a);
        default:  // Absolute, Whole
            needNumber(a);
            return make(op, Type::Number, 0, a);
        }
    }

    int checked(int n)
    {
        constant(n);
        return n;
    }
    std::uint32_t cut(int text, int number)
    {
        return isConstant(number) ? std::min(part(text).width, constant(number)) : part(text).width;
    }
    int textOf(Op op, int a, std::uint32_t width, int b = -1)
    {
        need(a, Type::Text);
        return make(op, Type::Text, width, a, b);
    }
    int substring(int a, int b, int c)
    {
        need(a, Type::Text), needNumber(b);
        std::uint32_t width = part(a).width;
        if (isConstant(b))
            width -= std::min(width, std::max(1u, constant(b)) - 1);
        if (c >= 0) {
            needNumber(c);
            width = isConstant(c) ? std::min(width, constant(c)) : width;
        }
        return make(Op::Substring, Type::Text, width, a, b, c);
    }

    void placeTexts();
    void caseTables();

    std::string_view whole_, rest_;
    IndexExpression& into_;
    const DbfHeader& header_;
    int depth_ = 0;
};

void ExpressionParser::placeTexts()
{
    std::uint32_t place = 0;
    for (ExpressionPart& of : into_.parts_) {
        of.place = place;
        if (of.type == Type::Text)
            place += of.width;
    }
    into_.texts_ = std::make_unique<std::uint8_t[]>(place + 1);
    caseTables();
}

/// Letters change their case byte for byte, where the page has both.
void ExpressionParser::caseTables()
{
    if (!into_.upper_ && !into_.lower_)
        return;
    std::array<std::uint8_t, 256> upper;
    std::string scratch, back;
    for (unsigned c = 0; c < 256; ++c) {
        upper[c] = static_cast<std::uint8_t>(c);
        if (c >= 'a' && c <= 'z')
            upper[c] = static_cast<std::uint8_t>(c - 32);
        if (c < 0x80 || !header_.codePage->singleByte())
            continue;
        const char byte = static_cast<char>(c);
        const std::string folded = paths::foldName(header_.codePage->decode({&byte, 1}, scratch));
        back.clear();
        if (header_.codePage->encode(folded, back) && back.size() == 1)
            upper[c] = static_cast<std::uint8_t>(back[0]);
    }
    std::array<std::uint8_t, 256> lower;
    for (unsigned c = 0; c < 256; ++c)
        lower[c] = static_cast<std::uint8_t>(c);
    for (unsigned c = 256; c-- > 0;)
        if (upper[c] != c)
            lower[upper[c]] = static_cast<std::uint8_t>(c);
    if (into_.upper_)
        std::copy(upper.begin(), upper.end(), into_.upper_.get());
    if (into_.lower_)
        std::copy(lower.begin(), lower.end(), into_.lower_.get());
}

IndexExpression::IndexExpression(std::string_view utf8, const DbfHeader& header) : header_(&header)
{
    ExpressionParser(utf8, *this).run();
}

IndexExpression::IndexExpression(IndexExpression&&) noexcept = default;
IndexExpression::~IndexExpression() = default;

int fieldOfName(const DbfHeader& header, std::string_view name)
{
    name = trimmed(name);
    const auto& fields = header.fields;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (paths::sameName(fields[i].name, name))
            return static_cast<int>(i);
    if (name.size() > 10)
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (paths::sameName(fields[i].name, name.substr(0, 10)))
                return static_cast<int>(i);
    int found = -1;
    if (name.size() > 10)
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (fields[i].name.size() == 10 &&
                paths::sameName(fields[i].name.substr(0, 8), name.substr(0, 8))) {
                if (found >= 0)
                    return -1;
                found = static_cast<int>(i);
            }
    return found;
}

std::vector<std::size_t> fieldsOfExpression(std::string_view utf8, const DbfHeader& header)
{
    std::vector<std::size_t> found;
    const auto take = [&](std::string_view name) {
        const int n = fieldOfName(header, name);
        if (n >= 0 && std::find(found.begin(), found.end(), std::size_t(n)) == found.end())
            found.push_back(static_cast<std::size_t>(n));
    };
    take(unquoted(trimmed(utf8)));
    if (!found.empty())
        return found;
    for (std::size_t at = 0; at < utf8.size();) {
        const char c = utf8[at];
        if (c == '\'' || c == '"' || c == '[' || c == ':') {
            const auto close = utf8.find(c == '[' ? ']' : c, at + 1);
            if (close == utf8.npos)
                break;
            if (c == ':')
                take(utf8.substr(at + 1, close - at - 1));
            at = close + 1;
        } else if (isLetter(c)) {
            std::size_t end = at;
            while (end < utf8.size() && (isLetter(utf8[end]) || isDigit(utf8[end])))
                ++end;
            const std::string_view behind = trimmed(utf8.substr(end));
            if (!behind.starts_with('(') && !behind.starts_with("->"))
                take(utf8.substr(at, end - at));
            at = end;
        } else {
            ++at;
        }
    }
    return found;
}

std::string expressionOfFields(const std::vector<std::size_t>& fields, const DbfHeader& header)
{
    const auto refuse = [](const std::string& why) {
        throw EngineError(EngineErrorNumber::InvalidIndex, why);
    };
    if (fields.empty())
        refuse("An index needs a field.");
    std::string text;
    for (const std::size_t n : fields) {
        const DbfField& field = header.fields[n];
        const std::string name = paths::foldName(field.name);
        const bool whole = field.coding == Coding::IntegerLE || field.coding == Coding::Integer7;
        if (!text.empty())
            text += '+';
        if (fields.size() == 1 || field.coding == Coding::Character)
            text += name;
        else if (field.coding == Coding::Number)
            text += "STR(" + name + "," + std::to_string(field.length) + "," +
                    std::to_string(field.decimals) + ")";
        else if (field.coding == Coding::Day)
            text += "DTOS(" + name + ")";
        else if (whole)
            text += "STR(" + name + ",11)";
        else if (field.coding == Coding::Logical)
            text += "IIF(" + name + ",\"T\",\"F\")";
        else
            refuse("The field " + field.name + " cannot be part of an index over several fields.");
    }
    return text;
}

}  // namespace velnor::xbase
