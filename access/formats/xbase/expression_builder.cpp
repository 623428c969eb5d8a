#include "access/formats/xbase/expression_builder.h"

#include <algorithm>

#include "access/engine_error.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;
using Type = ExpressionType;

constexpr std::size_t kMostParts = 500;
constexpr std::uint32_t kWidestText = 4096;

}  // namespace

void ExpressionBuilder::fail(const std::string& why) const
{
    throw EngineError(EngineErrorNumber::InvalidIndex,
                      "The index expression \"" + std::string(whole_) + "\": " + why + ".");
}

int ExpressionBuilder::add(ExpressionPart made)
{
    if (into_.parts_.size() >= kMostParts)
        fail("it is too long");
    if (made.width > kWidestText)
        fail("its text gets too wide");
    into_.parts_.push_back(std::move(made));
    return static_cast<int>(into_.parts_.size()) - 1;
}

int ExpressionBuilder::make(Op op, Type type, std::uint32_t width, int a, int b, int c)
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

void ExpressionBuilder::need(int n, Type type)
{
    if (part(n).type != type)
        fail("a value has the wrong type");
}

bool ExpressionBuilder::numeric(int n)
{
    const Type type = part(n).type;
    return type == Type::Number || type == Type::Integer || type == Type::Money;
}

bool ExpressionBuilder::timely(int n)
{
    return part(n).type == Type::Date || part(n).type == Type::Moment;
}
void ExpressionBuilder::needDay(int n)
{
    if (!timely(n))
        fail("a value is not a date");
}

void ExpressionBuilder::needNumber(int n)
{
    if (!numeric(n))
        fail("a value is not a number");
}

int ExpressionBuilder::joined(int left, int right, bool plus)
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

Type ExpressionBuilder::typeOf(const DbfField& of)
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

int ExpressionBuilder::field(std::size_t n)
{
    const DbfField& of = header_.fields[n];
    const Type type = typeOf(of);
    const int made = make(Op::Field, type, type == Type::Text ? of.length : 0);
    part(made).field = n;
    if (std::find(into_.fields_.begin(), into_.fields_.end(), n) == into_.fields_.end())
        into_.fields_.push_back(n);
    return made;
}

/// A whole number that is written out; widths depend on it.
std::uint32_t ExpressionBuilder::constant(int n)
{
    const ExpressionPart& of = part(n);
    if (of.op != Op::NumberLiteral || of.number < 0 || of.number > kWidestText)
        fail("a width is not a plain number");
    return static_cast<std::uint32_t>(of.number);
}

bool ExpressionBuilder::isConstant(int n)
{
    return part(n).op == Op::NumberLiteral && part(n).number >= 0;
}

int ExpressionBuilder::call(Op op, const std::array<int, 3>& given)
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
        return make(op, part(a).type == Type::Text ? Type::Text : Type::Number, part(a).width, a);
    default:  // Absolute, Whole
        needNumber(a);
        return make(op, Type::Number, 0, a);
    }
}

int ExpressionBuilder::checked(int n)
{
    constant(n);
    return n;
}

std::uint32_t ExpressionBuilder::cut(int text, int number)
{
    return isConstant(number) ? std::min(part(text).width, constant(number)) : part(text).width;
}

int ExpressionBuilder::textOf(Op op, int a, std::uint32_t width, int b)
{
    need(a, Type::Text);
    return make(op, Type::Text, width, a, b);
}

int ExpressionBuilder::substring(int a, int b, int c)
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

void ExpressionBuilder::finish()
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
void ExpressionBuilder::caseTables()
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

}  // namespace velnor::xbase
