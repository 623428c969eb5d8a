#include "access/formats/xbase/index_expression.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "access/formats/xbase/expression_part.h"
#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/moments.h"
#include "access/formats/xbase/number_text.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;
using Type = ExpressionType;
using Value_ = ExpressionValue;

/// One evaluation: the record and where texts go.
struct Run {
    const DbfHeader& header;
    const std::vector<ExpressionPart>& parts;
    std::uint8_t* texts;
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    const std::uint8_t* record;
    std::uint32_t recordNumber;

    Value_ value(int n) const { return value(parts[static_cast<std::size_t>(n)]); }
    Value_ value(const ExpressionPart& part) const;
    Value_ field(const ExpressionPart& part) const;
    Value_ joined(const ExpressionPart& part) const;
    Value_ arithmetic(const ExpressionPart& part) const;
    Value_ compared(const ExpressionPart& part) const;
    Value_ changed(const ExpressionPart& part) const;
    Value_ piece(const ExpressionPart& part) const;
    Value_ numberText(const ExpressionPart& part) const;
    Value_ padded(const ExpressionPart& part) const;
    Value_ dayText(const ExpressionPart& part) const;
    Value_ calendar(const ExpressionPart& part) const;
    Value_ descended(const ExpressionPart& part) const;
    Value_ empty(const ExpressionPart& part) const;
    std::uint8_t* placeOf(const ExpressionPart& part) const { return texts + part.place; }
};

Value_ text(const std::uint8_t* bytes, std::size_t length)
{
    Value_ made;
    made.type = Type::Text;
    made.text = bytes;
    made.length = static_cast<std::uint32_t>(length);
    return made;
}
Value_ number(double n, Type type = Type::Number)
{
    Value_ made;
    made.type = type;
    made.number = n;
    return made;
}
Value_ truth(bool t)
{
    Value_ made;
    made.type = Type::Logical;
    made.truth = t;
    return made;
}

double numberOf(const Value_& v)
{
    if (v.type == Type::Integer)
        return static_cast<double>(v.whole);
    return v.type == Type::Money ? static_cast<double>(v.whole) / 10000 : v.number;
}

std::uint32_t lengthTrimmed(const Value_& v)
{
    std::uint32_t length = v.length;
    while (length && v.text[length - 1] == ' ')
        --length;
    return length;
}

/// A count of characters out of a number, within bounds.
std::uint32_t countOf(double n, std::uint32_t most)
{
    return n >= 1 ? static_cast<std::uint32_t>(std::min<double>(n, most)) : 0;
}

Value_ Run::field(const ExpressionPart& part) const
{
    const DbfField& f = header.fields[part.field];
    const std::uint8_t* p = record + f.offset;
    Value_ made;
    made.type = part.type;
    switch (f.coding) {
    case Coding::Character:
        return text(p, f.length);
    case Coding::Varchar: {
        std::uint8_t* to = placeOf(part);
        std::memset(to, ' ', f.length);
        std::uint32_t length = f.length;
        const auto bit = static_cast<std::uint32_t>(std::max(f.lengthBit, 0));
        if (f.lengthBit >= 0 && (record[header.nullFlagsOffset + bit / 8] >> (bit % 8) & 1))
            length = std::min<std::uint32_t>(p[f.length - 1], f.length - 1);
        std::memcpy(to, p, length);
        return text(to, f.length);
    }
    case Coding::Number:
        made.number = realOf(readNumber({p, f.length})).value_or(0);
        break;
    case Coding::RealLE:
        made.number = loadLE<double>(p);
        break;
    case Coding::Logical:
        made.truth = *p == 'T' || *p == 't' || *p == 'Y' || *p == 'y';
        break;
    case Coding::Day: {
        const auto day = readDay(p);
        made.number = day ? static_cast<double>(*day + kJulianOfDayZero) : 0;
        break;
    }
    case Coding::IntegerLE:
        made.whole = loadLE<std::int32_t>(p);
        break;
    case Coding::Integer7: {
        const auto bits = loadBE<std::uint32_t>(p);
        made.whole = bits == 0 ? 0 : std::int64_t{bits} - 0x80000000ll;
        break;
    }
    case Coding::MoneyLE:
        made.whole = loadLE<std::int64_t>(p);
        break;
    case Coding::MomentLE:
        made.number = loadLE<std::int32_t>(p) + loadLE<std::int32_t>(p + 4) / 86400000.0;
        break;
    default:
        break;
    }
    return made;
}

Value_ Run::joined(const ExpressionPart& part) const
{
    const Value_ a = value(part.a), b = value(part.b);
    std::uint8_t* to = placeOf(part);
    const std::uint32_t first = part.op == Op::Join ? a.length : lengthTrimmed(a);
    std::memmove(to, a.text, first);
    std::memmove(to + first, b.text, b.length);
    std::memset(to + first + b.length, ' ', a.length - first);
    return text(to, a.length + b.length);
}

Value_ Run::arithmetic(const ExpressionPart& part) const
{
    const double a = numberOf(value(part.a)), b = numberOf(value(part.b));
    switch (part.op) {
    case Op::Add:
        return number(a + b, part.type);
    case Op::Subtract:
        return number(a - b, part.type);
    case Op::Multiply:
        return number(a * b);
    default:
        return number(b == 0 ? 0 : a / b);
    }
}

int sign(double a, double b)
{
    return (a > b) - (a < b);
}

int signOfTexts(const Value_& a, const Value_& b)
{
    const std::uint32_t la = lengthTrimmed(a), lb = lengthTrimmed(b);
    const int by = std::memcmp(a.text, b.text, std::min(la, lb));
    return by ? by : (la > lb) - (la < lb);
}

/// "=" on texts: the left one begins with the right one.
bool beginsWith(const Value_& a, const Value_& b)
{
    const std::uint32_t length = lengthTrimmed(b);
    if (length == 0)
        return lengthTrimmed(a) == 0;
    return a.length >= length && std::memcmp(a.text, b.text, length) == 0;
}

bool within(const Value_& a, const Value_& b)
{
    return std::search(b.text, b.text + b.length, a.text, a.text + a.length) != b.text + b.length ||
           a.length == 0;
}

Value_ Run::compared(const ExpressionPart& part) const
{
    const Value_ a = value(part.a), b = value(part.b);
    const bool texts_ = a.type == Type::Text;
    if (texts_ && part.op == Op::Within)
        return truth(within(a, b));
    if (texts_ && (part.op == Op::Equal || part.op == Op::Different))
        return truth(beginsWith(a, b) == (part.op == Op::Equal));
    if (texts_ && part.op == Op::Same)
        return truth(a.length == b.length && std::memcmp(a.text, b.text, a.length) == 0);
    const int by = texts_                    ? signOfTexts(a, b)
                   : a.type == Type::Logical ? a.truth - b.truth
                                             : sign(numberOf(a), numberOf(b));
    switch (part.op) {
    case Op::Different:
        return truth(by != 0);
    case Op::Less:
        return truth(by < 0);
    case Op::Greater:
        return truth(by > 0);
    case Op::LessEqual:
        return truth(by <= 0);
    case Op::GreaterEqual:
        return truth(by >= 0);
    default:
        return truth(by == 0);
    }
}

/// UPPER and LOWER. In pages of two bytes a character the second byte of a pair is left alone.
Value_ Run::changed(const ExpressionPart& part) const
{
    const Value_ a = value(part.a);
    const std::uint8_t* table = part.op == Op::Upper ? upper : lower;
    const bool single = header.codePage->singleByte();
    std::uint8_t* to = placeOf(part);
    for (std::uint32_t i = 0; i < a.length; ++i) {
        to[i] = table[a.text[i]];
        if (!single && a.text[i] >= 0x81 && i + 1 < a.length) {
            ++i;
            to[i] = a.text[i];
        }
    }
    return text(to, a.length);
}

Value_ Run::piece(const ExpressionPart& part) const
{
    const Value_ a = value(part.a);
    std::uint32_t from = 0, to = a.length;
    if (part.op == Op::TrimLeft || part.op == Op::TrimBoth)
        while (from < to && a.text[from] == ' ')
            ++from;
    if (part.op == Op::TrimRight || part.op == Op::TrimBoth)
        while (to > from && a.text[to - 1] == ' ')
            --to;
    if (part.op == Op::Left)
        to = countOf(numberOf(value(part.b)), a.length);
    if (part.op == Op::Right)
        from = a.length - countOf(numberOf(value(part.b)), a.length);
    if (part.op == Op::Substring) {
        from = countOf(numberOf(value(part.b)) - 1, a.length);
        if (part.c >= 0)
            to = from + countOf(numberOf(value(part.c)), a.length - from);
    }
    return text(a.text + from, to - from);
}

Value_ Run::numberText(const ExpressionPart& part) const
{
    const double n = numberOf(value(part.a));
    const int decimals = part.c < 0 ? 0 : static_cast<int>(std::min(numberOf(value(part.c)), 30.0));
    std::uint8_t* to = placeOf(part);
    char digits[400];
    const auto made =
        std::to_chars(digits, digits + sizeof digits, n, std::chars_format::fixed, decimals);
    const auto length = static_cast<std::size_t>(made.ptr - digits);
    if (made.ec != std::errc() || length > part.width) {
        std::memset(to, '*', part.width);
    } else {
        std::memset(to, ' ', part.width - length);
        std::memcpy(to + part.width - length, digits, length);
    }
    return text(to, part.width);
}

Value_ Run::padded(const ExpressionPart& part) const
{
    Value_ a = value(part.a);
    std::uint8_t* to = placeOf(part);
    char digits[32];
    if (a.type != Type::Text) {
        const auto made =
            std::to_chars(digits, digits + sizeof digits,
                          static_cast<std::int64_t>(std::clamp(numberOf(a), -9e18, 9e18)));
        a = text(reinterpret_cast<const std::uint8_t*>(digits),
                 static_cast<std::size_t>(made.ptr - digits));
    }
    const Value_ fill = part.c >= 0 ? value(part.c) : Value_{};
    const std::uint8_t with = fill.length ? fill.text[0] : ' ';
    const std::uint32_t length = std::min(a.length, part.width);
    const std::uint32_t rest = part.width - length;
    const bool left = part.op == Op::PadLeft;
    std::memmove(to + (left ? rest : 0), a.text, length);
    std::memset(to + (left ? 0 : length), with, rest);
    return text(to, part.width);
}

Value_ Run::dayText(const ExpressionPart& part) const
{
    const double julian = value(part.a).number;
    std::uint8_t* to = placeOf(part);
    std::uint8_t eight[8];
    if (julian <= 0 || julian > 1e8 ||
        !writeDay(static_cast<std::int64_t>(julian) - kJulianOfDayZero, eight)) {
        std::memcpy(to, part.op == Op::DayShown ? "  /  /  " : "        ", 8);
    } else if (part.op == Op::DayShown) {
        const std::uint8_t shown[] = {eight[4], eight[5], '/',      eight[6],
                                      eight[7], '/',      eight[2], eight[3]};
        std::memcpy(to, shown, 8);
    } else {
        std::memcpy(to, eight, 8);
    }
    return text(to, 8);
}

Value_ Run::calendar(const ExpressionPart& part) const
{
    const double julian = value(part.a).number;
    std::uint8_t eight[8];
    if (julian <= 0 || julian > 1e8 ||
        !writeDay(static_cast<std::int64_t>(julian) - kJulianOfDayZero, eight))
        return number(0);
    const auto digits = [&](int from, int to) {
        int n = 0;
        for (; from < to; ++from)
            n = n * 10 + (eight[from] - '0');
        return number(n);
    };
    return part.op == Op::Year ? digits(0, 4) : part.op == Op::Month ? digits(4, 6) : digits(6, 8);
}

/// Month, day, year of two or four digits.
double dayOfText(const Value_& v)
{
    int parts[3] = {}, part = 0, yearDigits = 0;
    for (std::uint32_t i = 0; i < v.length; ++i) {
        const std::uint8_t c = v.text[i];
        if (c >= '0' && c <= '9') {
            parts[part] = std::min(parts[part] * 10 + (c - '0'), 99999);
            yearDigits += part == 2;
        } else if (c != ' ' && ++part > 2) {
            return 0;
        }
    }
    const int year = yearDigits <= 2 ? parts[2] + 1900 : parts[2];
    if (!validDay(year, parts[0], parts[1]))
        return 0;
    return static_cast<double>(dayNumber(year, parts[0], parts[1]) + kJulianOfDayZero);
}

Value_ Run::descended(const ExpressionPart& part) const
{
    const Value_ a = value(part.a);
    if (a.type == Type::Date)
        return number(5231808 - a.number);
    if (a.type != Type::Text)
        return number(-numberOf(a));
    std::uint8_t* to = placeOf(part);
    for (std::uint32_t i = 0; i < a.length; ++i)
        to[i] = static_cast<std::uint8_t>(0 - a.text[i]);
    return text(to, a.length);
}

Value_ Run::empty(const ExpressionPart& part) const
{
    const Value_ a = value(part.a);
    if (a.type == Type::Text)
        return truth(std::all_of(a.text, a.text + a.length,
                                 [](std::uint8_t c) { return c == ' ' || (c >= 9 && c <= 13); }));
    return truth(a.type == Type::Logical ? !a.truth : numberOf(a) == 0);
}

double valOf(const Value_& v)
{
    std::uint32_t from = 0;
    while (from < v.length && v.text[from] == ' ')
        ++from;
    std::uint32_t to = from;
    while (to < v.length && (v.text[to] == '.' || (v.text[to] >= '0' && v.text[to] <= '9') ||
                             (to == from && (v.text[to] == '-' || v.text[to] == '+'))))
        ++to;
    return realOf(readNumber({v.text + from, to - from})).value_or(0);
}

Value_ Run::value(const ExpressionPart& part) const
{
    switch (part.op) {
    case Op::Field:
        return field(part);
    case Op::TextLiteral:
        return text(reinterpret_cast<const std::uint8_t*>(part.literal.data()),
                    part.literal.size());
    case Op::NumberLiteral:
        return number(part.number);
    case Op::TruthLiteral:
        return truth(part.number != 0);
    case Op::Join:
    case Op::JoinTrimmed:
        return joined(part);
    case Op::Add:
    case Op::Subtract:
    case Op::Multiply:
    case Op::Divide:
        return arithmetic(part);
    case Op::Negate:
        return number(-numberOf(value(part.a)));
    case Op::Equal:
    case Op::Same:
    case Op::Different:
    case Op::Less:
    case Op::Greater:
    case Op::LessEqual:
    case Op::GreaterEqual:
    case Op::Within:
        return compared(part);
    case Op::And:
        return truth(value(part.a).truth && value(part.b).truth);
    case Op::Or:
        return truth(value(part.a).truth || value(part.b).truth);
    case Op::Not:
        return truth(!value(part.a).truth);
    case Op::Upper:
    case Op::Lower:
        return changed(part);
    case Op::TrimLeft:
    case Op::TrimRight:
    case Op::TrimBoth:
    case Op::Left:
    case Op::Right:
    case Op::Substring:
        return piece(part);
    case Op::NumberText:
        return numberText(part);
    case Op::NumberOfText:
        return number(valOf(value(part.a)));
    case Op::DayText:
    case Op::DayShown:
        return dayText(part);
    case Op::DayOfText:
        return number(dayOfText(value(part.a)), Type::Date);
    case Op::Deleted:
        return truth(record[0] == '*');
    case Op::RecordNumber:
        return number(recordNumber);
    case Op::Empty:
        return empty(part);
    case Op::Choose:
        return value(value(part.a).truth ? part.b : part.c);
    case Op::PadLeft:
    case Op::PadRight:
        return padded(part);
    case Op::Space:
        std::memset(placeOf(part), ' ', part.width);
        return text(placeOf(part), part.width);
    case Op::Year:
    case Op::Month:
    case Op::Day:
        return calendar(part);
    case Op::Character:
        *placeOf(part) = static_cast<std::uint8_t>(countOf(numberOf(value(part.a)), 255));
        return text(placeOf(part), 1);
    case Op::Absolute:
        return number(std::fabs(numberOf(value(part.a))));
    case Op::Whole:
        return number(std::trunc(numberOf(value(part.a))));
    case Op::Descend:
        return descended(part);
    }
    return {};
}

}  // namespace

ExpressionType IndexExpression::type() const
{
    return parts_.back().type;
}

std::uint32_t IndexExpression::width() const
{
    return parts_.back().width;
}

const DbfField* IndexExpression::plainField() const
{
    return parts_.back().op == Op::Field ? &header_->fields[parts_.back().field] : nullptr;
}

ExpressionValue IndexExpression::evaluate(const std::uint8_t* record,
                                          std::uint32_t recordNumber) const
{
    return Run{*header_, parts_, texts_.get(), upper_.get(), lower_.get(), record, recordNumber}
        .value(parts_.back());
}

bool IndexExpression::hasNull(const std::uint8_t* record) const
{
    return std::any_of(fields_.begin(), fields_.end(), [&](std::size_t n) {
        return isNullByFlag(*header_, header_->fields[n], record);
    });
}

}  // namespace velnor::xbase
