#include "access/sql/result_value.h"

#include <cmath>

#include "access/sql/plain_value.h"
#include "access/value_text.h"

namespace velnor::sql {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

double realIn(ValueView v)
{
    return v.kind() == ValueKind::Integer ? static_cast<double>(v.asInteger()) : v.asReal();
}

bool isNumberValue(ValueView v)
{
    return v.kind() == ValueKind::Integer || v.kind() == ValueKind::Real;
}

ValueView textOf(ValueView v, std::string& scratch)
{
    scratch.clear();
    appendText(scratch, v);
    return ValueView::text(scratch);
}

ValueView currencyIn(ValueView v, bool exact)
{
    if (exact && v.kind() == ValueKind::Integer)
        return ValueView::currency(v.asInteger());
    const double units = std::nearbyint(realIn(v) * 10000);
    return std::fabs(units) < kTwoTo63 ? ValueView::currency(static_cast<std::int64_t>(units))
                                       : ValueView::real(realIn(v));
}

ValueView integerIn(ValueView v)
{
    if (v.kind() == ValueKind::Integer)
        return v;
    const double whole = std::nearbyint(v.asReal());
    return std::fabs(whole) < kTwoTo63 && whole == v.asReal()
               ? ValueView::integer(static_cast<std::int64_t>(whole))
               : v;
}

ValueView decimalIn(ValueView v, std::string& scratch)
{
    if (v.kind() != ValueKind::Text)
        v = textOf(v, scratch);
    const auto read = parseDecimal(v.asText());
    return read ? *read : ValueView::real(parseReal(v.asText()).value_or(0));
}

}  // namespace

ValueView resultValue(const OutputColumn& column, ValueView plain, std::string& scratch)
{
    if (plain.isNull())
        return plain;
    const ValueKind kind = valueKindOf(column.field.type);
    if (kind == ValueKind::Decimal && (isNumberValue(plain) || plain.kind() == ValueKind::Text))
        return decimalIn(plain, scratch);
    if (!isNumberValue(plain)) {
        const bool exactText =
            column.exact && plain.kind() == ValueKind::Text && kind == ValueKind::Real;
        return exactText ? ValueView::real(parseReal(plain.asText()).value_or(0)) : plain;
    }
    switch (kind) {
    case ValueKind::Boolean:
        return ValueView::boolean(realIn(plain) != 0);
    case ValueKind::Integer:
        return integerIn(plain);
    case ValueKind::Currency:
        return currencyIn(plain, column.exact);
    case ValueKind::Date:
        return ValueView::date(column.exact ? realIn(plain) : dateOfStraight(realIn(plain)));
    case ValueKind::Text:
        return textOf(plain, scratch);
    default:
        return plain;
    }
}

}  // namespace velnor::sql
