#include "access/formats/xbase/index_expression.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "access/formats/xbase/expression_run.h"
#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/moments.h"
#include "access/formats/xbase/number_text.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;
using Type = ExpressionType;

int sign(double a, double b)
{
    return (a > b) - (a < b);
}

int signOfTexts(const ExpressionValue& a, const ExpressionValue& b)
{
    const std::uint32_t la = lengthTrimmed(a), lb = lengthTrimmed(b);
    const int by = std::memcmp(a.text, b.text, std::min(la, lb));
    return by ? by : (la > lb) - (la < lb);
}

/// "=" on texts: the left one begins with the right one.
bool beginsWith(const ExpressionValue& a, const ExpressionValue& b)
{
    const std::uint32_t length = lengthTrimmed(b);
    if (length == 0)
        return lengthTrimmed(a) == 0;
    return a.length >= length && std::memcmp(a.text, b.text, length) == 0;
}

bool within(const ExpressionValue& a, const ExpressionValue& b)
{
    return std::search(b.text, b.text + b.length, a.text, a.text + a.length) != b.text + b.length ||
           a.length == 0;
}

}  // namespace

ExpressionValue ExpressionRun::field(const ExpressionPart& part) const
{
    const DbfField& f = header.fields[part.field];
    const std::uint8_t* p = record + f.offset;
    ExpressionValue made;
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

ExpressionValue ExpressionRun::joined(const ExpressionPart& part) const
{
    const ExpressionValue a = value(part.a), b = value(part.b);
    std::uint8_t* to = placeOf(part);
    const std::uint32_t first = part.op == Op::Join ? a.length : lengthTrimmed(a);
    std::memmove(to, a.text, first);
    std::memmove(to + first, b.text, b.length);
    std::memset(to + first + b.length, ' ', a.length - first);
    return text(to, a.length + b.length);
}

ExpressionValue ExpressionRun::arithmetic(const ExpressionPart& part) const
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

ExpressionValue ExpressionRun::compared(const ExpressionPart& part) const
{
    const ExpressionValue a = value(part.a), b = value(part.b);
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

ExpressionValue ExpressionRun::value(const ExpressionPart& part) const
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
    return ExpressionRun{*header_,     parts_, texts_.get(), upper_.get(),
                         lower_.get(), record, recordNumber}
        .value(parts_.back());
}

bool IndexExpression::hasNull(const std::uint8_t* record) const
{
    return std::any_of(fields_.begin(), fields_.end(), [&](std::size_t n) {
        return isNullByFlag(*header_, header_->fields[n], record);
    });
}

}  // namespace velnor::xbase
