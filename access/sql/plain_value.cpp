#include "access/sql/plain_value.h"

#include <sqlite3.h>

#include <bit>
#include <cmath>
#include <cstring>

#include "access/formats/driver.h"
#include "access/sql/text_order.h"
#include "access/value_text.h"

namespace velnor::sql {
namespace {

constexpr double kMsPerDay = 86400000;
constexpr double kTwoTo53 = 9007199254740992.0;
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
constexpr double kPowers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11};

ValueView plainDecimal(ValueView v)
{
    const std::uint64_t low = v.decimalLow();
    if (v.decimalHigh() == 0 && low < kExactIntegers && v.decimalScale() < std::size(kPowers)) {
        const auto whole = static_cast<std::int64_t>(v.decimalNegative() ? -low : low);
        if (v.decimalScale() == 0)
            return ValueView::integer(whole);
        return ValueView::real(static_cast<double>(whole) / kPowers[v.decimalScale()]);
    }
    return ValueView::real(decimalToReal(v));
}

int rankOf(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Null:
        return 0;
    case ValueKind::Text:
        return 2;
    case ValueKind::Bytes:
        return 3;
    default:
        return 1;
    }
}

template <class T> int order(T a, T b)
{
    return a < b ? -1 : a > b ? 1 : 0;
}

/// Exact, although neither form holds all values of the other.
int compareMixed(std::int64_t i, double d)
{
    if (d >= kTwoTo63)
        return -1;
    if (d < -kTwoTo63)
        return 1;
    const auto whole = static_cast<std::int64_t>(d);
    if (whole != i)
        return order(i, whole);
    return order(0.0, d - static_cast<double>(whole));
}

int compareNumbers(ValueView a, ValueView b)
{
    const bool first = a.kind() == ValueKind::Integer, second = b.kind() == ValueKind::Integer;
    if (first && second)
        return order(a.asInteger(), b.asInteger());
    if (first)
        return compareMixed(a.asInteger(), b.asReal());
    if (second)
        return -compareMixed(b.asInteger(), a.asReal());
    return order(a.asReal(), b.asReal());
}

int compareBytes(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b)
{
    const std::size_t length = std::min(a.size(), b.size());
    const int first = length ? std::memcmp(a.data(), b.data(), length) : 0;
    return first != 0 ? first : order(a.size(), b.size());
}

}  // namespace

SqlType sqlTypeOf(FieldType type)
{
    switch (type) {
    case FieldType::None:
        return SqlType::Null;
    case FieldType::Boolean:
        return SqlType::Boolean;
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
    case FieldType::BigInt:
        return SqlType::Integer;
    case FieldType::Currency:
        return SqlType::Currency;
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Float:
    case FieldType::Numeric:
    case FieldType::Decimal:
        return SqlType::Real;
    case FieldType::Date:
    case FieldType::Time:
    case FieldType::TimeStamp:
        return SqlType::Date;
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::Char:
    case FieldType::Guid:
        return SqlType::Text;
    case FieldType::Binary:
    case FieldType::VarBinary:
    case FieldType::LongBinary:
        return SqlType::Bytes;
    }
    return SqlType::Unknown;
}

double straightDate(double date)
{
    const double day = std::trunc(date);
    if (day == date)
        return date;
    const double straight = date < 0 ? day + (day - date) : date;
    return std::nearbyint(straight * kMsPerDay) / kMsPerDay;
}

double dateOfStraight(double days)
{
    const double day = std::floor(days);
    return days < 0 ? day - (days - day) : days;
}

ValueView plainValue(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Boolean:
        return ValueView::integer(v.asBoolean() ? -1 : 0);
    case ValueKind::Currency:
        return ValueView::real(static_cast<double>(v.asCurrency()) / 10000);
    case ValueKind::Date:
        return ValueView::real(straightDate(v.asDate()));
    case ValueKind::Decimal:
        return plainDecimal(v);
    case ValueKind::Real:
        return std::isnan(v.asReal()) ? ValueView::null() : v;
    default:
        return v;
    }
}

ValueView exactValue(ValueView v, std::string& scratch)
{
    switch (v.kind()) {
    case ValueKind::Currency:
        return ValueView::integer(v.asCurrency());
    case ValueKind::Date:
        return ValueView::real(v.asDate());
    case ValueKind::Decimal:
        // Fifteen digits pass through a double and come back.
        if (v.decimalHigh() == 0 && v.decimalLow() < 1000000000000000u)
            return plainDecimal(v);
        scratch.clear();
        appendDecimal(scratch, v);
        return ValueView::text(scratch);
    default:
        return plainValue(v);
    }
}

int comparePlain(ValueView a, ValueView b)
{
    const int rank = rankOf(a.kind());
    if (rank != rankOf(b.kind()))
        return order(rank, rankOf(b.kind()));
    switch (rank) {
    case 1:
        return compareNumbers(a, b);
    case 2:
        return compareText(a.asText(), b.asText());
    case 3:
        return compareBytes(a.asBytes(), b.asBytes());
    default:
        return 0;
    }
}

std::uint64_t hashPlain(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Text:
        return hashText(v.asText());
    case ValueKind::Bytes:
        return hashText({reinterpret_cast<const char*>(v.asBytes().data()), v.asBytes().size()});
    case ValueKind::Integer:
    case ValueKind::Real: {
        const double d =
            v.kind() == ValueKind::Real ? v.asReal() : static_cast<double>(v.asInteger());
        const auto bits = std::bit_cast<std::uint64_t>(d == 0 ? 0.0 : d);
        return (bits ^ bits >> 32) * 0x9E3779B97F4A7C15u;
    }
    default:
        return 0;
    }
}

ValueView plainOf(sqlite3_value* value)
{
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
        return ValueView::integer(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
        return ValueView::real(sqlite3_value_double(value));
    case SQLITE_TEXT: {
        // As bytes: asked for as text it would be copied, to end in a zero.
        const auto* text = static_cast<const char*>(sqlite3_value_blob(value));
        return ValueView::text({text, static_cast<std::size_t>(sqlite3_value_bytes(value))});
    }
    case SQLITE_BLOB: {
        const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_value_blob(value));
        return ValueView::bytes({bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))});
    }
    default:
        return {};
    }
}

void setResult(sqlite3_context* context, ValueView plain, bool copied)
{
    const auto kept = copied ? SQLITE_TRANSIENT : SQLITE_STATIC;
    switch (plain.kind()) {
    case ValueKind::Integer:
        return sqlite3_result_int64(context, plain.asInteger());
    case ValueKind::Real:
        return sqlite3_result_double(context, plain.asReal());
    case ValueKind::Text: {
        const std::string_view text = plain.asText();
        // Without characters there may be no address either, and that would be Null.
        return sqlite3_result_text64(context, text.empty() ? "" : text.data(), text.size(), kept,
                                     SQLITE_UTF8);
    }
    case ValueKind::Bytes:
        if (plain.asBytes().empty())
            return sqlite3_result_zeroblob(context, 0);
        return sqlite3_result_blob64(context, plain.asBytes().data(), plain.asBytes().size(), kept);
    default:
        return sqlite3_result_null(context);
    }
}

bool keyOfPlain(const FieldDef& field, ValueView plain, ValueView& key)
{
    const bool whole = plain.kind() == ValueKind::Integer;
    if (!whole && plain.kind() != ValueKind::Real) {
        key = plain;
        return sqlTypeOf(field.type) == SqlType::Text && plain.kind() == ValueKind::Text;
    }
    const double number = whole ? static_cast<double>(plain.asInteger()) : plain.asReal();
    switch (sqlTypeOf(field.type)) {
    case SqlType::Boolean:
        key = ValueView::boolean(number != 0);
        return number == 0 || number == -1;
    case SqlType::Integer:
        if (!whole && (std::trunc(number) != number || std::fabs(number) > kTwoTo53))
            return false;
        key = ValueView::integer(whole ? plain.asInteger() : static_cast<std::int64_t>(number));
        return true;
    case SqlType::Real: {
        if (valueKindOf(field.type) == ValueKind::Decimal) {
            if (!whole)
                return false;
            key = ValueView::decimal(plain.asInteger() < 0, 0,
                                     static_cast<std::uint64_t>(std::llabs(plain.asInteger())), 0);
            return true;
        }
        key = ValueView::real(number);
        return std::isfinite(number);
    }
    case SqlType::Currency: {
        const double units = std::nearbyint(number * 10000);
        if (std::fabs(units) > kTwoTo53 || units / 10000 != number)
            return false;
        key = ValueView::currency(static_cast<std::int64_t>(units));
        return true;
    }
    case SqlType::Date:
        key = ValueView::date(dateOfStraight(number));
        return number >= 1;  // before day 0 the engine's form does not ascend
    default:
        return false;
    }
}

}  // namespace velnor::sql
