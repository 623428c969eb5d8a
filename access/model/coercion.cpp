#include "access/model/coercion.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

#include "access/engine_error.h"
#include "access/formats/driver.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::model {
namespace {

constexpr double kFirstDay = -657434;     // 0100-01-01
constexpr double kPastLastDay = 2958466;  // behind 9999-12-31

[[noreturn]] void unfit(const FieldDef& field)
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "The value does not fit the type of field " + field.name + ".");
}

[[noreturn]] void tooLong(const FieldDef& field)
{
    throw EngineError(EngineErrorNumber::ValueTooLong,
                      "The value is too long for field " + field.name + ".");
}

struct Range {
    std::int64_t least, most;
};

Range rangeOf(FieldType type)
{
    switch (type) {
    case FieldType::Byte:
        return {0, 255};
    case FieldType::Integer:
        return {-32768, 32767};
    case FieldType::Long:
        return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    default:
        return {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    }
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<bool> booleanOf(ValueView v)
{
    if (v.kind() == ValueKind::Boolean)
        return v.asBoolean();
    if (v.kind() == ValueKind::Text) {
        const std::string_view word = trimmed(v.asText());
        for (const char* yes : {"True", "Yes", "On"})
            if (paths::sameName(word, yes))
                return true;
        for (const char* no : {"False", "No", "Off"})
            if (paths::sameName(word, no))
                return false;
    }
    const auto number = realOf(v);
    return number ? std::optional<bool>(*number != 0) : std::nullopt;
}

ValueView toReal(const FieldDef& field, ValueView v, bool bounded)
{
    const auto number = v.kind() == ValueKind::Real ? v.asReal() : realOf(v);
    if (!number)
        unfit(field);
    if (!bounded || field.type != FieldType::Single)
        return ValueView::real(*number);
    if (std::fabs(*number) > std::numeric_limits<float>::max() && !std::isinf(*number))
        unfit(field);
    return ValueView::real(static_cast<double>(static_cast<float>(*number)));
}

ValueView toDate(const FieldDef& field, ValueView v, bool bounded)
{
    std::optional<double> days;
    if (v.kind() == ValueKind::Text) {
        days = parseDate(v.asText());
    } else {
        days = realOf(v);
    }
    if (!days || (bounded && !(*days >= kFirstDay && *days < kPastLastDay)))
        unfit(field);
    return ValueView::date(*days);
}

std::optional<ValueView> decimalOf(ValueView v, std::string& scratch)
{
    switch (v.kind()) {
    case ValueKind::Decimal:
        return v;
    case ValueKind::Text:
        return parseDecimal(v.asText());
    case ValueKind::Null:
    case ValueKind::Bytes:
        return std::nullopt;
    case ValueKind::Boolean:
        v = ValueView::integer(v.asBoolean() ? -1 : 0);
        break;
    case ValueKind::Date:
        v = ValueView::real(v.asDate());
        break;
    default:
        break;
    }
    scratch.clear();
    appendText(scratch, v);
    return parseDecimal(scratch);
}

using Wide = unsigned __int128;

/// Rounded half to even to the field's scale; a magnitude of more digits than its precision is
/// refused.
ValueView toDecimal(const FieldDef& field, ValueView v, std::string& scratch, bool bounded)
{
    const auto read = decimalOf(v, scratch);
    if (!read)
        unfit(field);
    if (!bounded || field.precision == 0)
        return *read;
    Wide magnitude = static_cast<Wide>(read->decimalHigh()) << 64 | read->decimalLow();
    int scale = read->decimalScale();
    bool below = false;  // something was cut off behind the digit that decides
    for (; scale > field.scale + 1; --scale, magnitude /= 10)
        below = below || magnitude % 10 != 0;
    if (scale > field.scale) {
        const auto last = static_cast<int>(magnitude % 10);
        magnitude /= 10;
        --scale;
        if (last > 5 || (last == 5 && (below || magnitude % 2 != 0)))
            ++magnitude;
    }
    Wide limit = 1;
    const int digits = field.precision - (field.scale - scale);
    for (int i = 0; i < digits; ++i)
        limit *= 10;
    if (digits < 0 || (digits <= 28 && magnitude >= limit))
        unfit(field);
    return ValueView::decimal(read->decimalNegative(), static_cast<std::uint32_t>(magnitude >> 64),
                              static_cast<std::uint64_t>(magnitude),
                              static_cast<std::uint8_t>(scale));
}

bool isHex(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" in upper case; the braces may be left out.
ValueView toGuid(const FieldDef& field, ValueView v, std::string& scratch)
{
    static constexpr std::string_view kForm = "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    if (v.kind() != ValueKind::Text)
        unfit(field);
    std::string_view text = trimmed(v.asText());
    if (text.size() == kForm.size() && text.front() == '{' && text.back() == '}')
        text = text.substr(1, text.size() - 2);
    if (text.size() != kForm.size() - 2)
        unfit(field);
    std::string made = "{";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool fits = kForm[i + 1] == '-' ? text[i] == '-' : isHex(text[i]);
        if (!fits)
            unfit(field);
        made += text[i] >= 'a' ? static_cast<char>(text[i] - 'a' + 'A') : text[i];
    }
    made += '}';
    scratch = made;
    return ValueView::text(scratch);
}

ValueView toText(const FieldDef& field, ValueView v, std::string& scratch, bool bounded)
{
    if (field.type == FieldType::Guid)
        return toGuid(field, v, scratch);
    if (v.kind() != ValueKind::Text) {
        scratch.clear();
        appendText(scratch, v);
        v = ValueView::text(scratch);
    }
    const auto most = static_cast<std::size_t>(field.size);
    if (bounded && field.type != FieldType::Memo && field.size > 0 && v.asText().size() > most &&
        textLength(v.asText()) > most)
        tooLong(field);
    return v;
}

ValueView toBytes(const FieldDef& field, ValueView v, bool bounded)
{
    if (v.kind() != ValueKind::Bytes)
        unfit(field);
    if (bounded && field.type != FieldType::LongBinary && field.size > 0 &&
        v.asBytes().size() > static_cast<std::size_t>(field.size))
        tooLong(field);
    return v;
}

ValueView toInteger(const FieldDef& field, ValueView v, bool bounded)
{
    const auto number = v.kind() == ValueKind::Integer ? v.asInteger() : integerOf(v);
    if (!number)
        unfit(field);
    const Range range = rangeOf(field.type);
    if (bounded && (*number < range.least || *number > range.most))
        unfit(field);
    return ValueView::integer(*number);
}

ValueView convert(const FieldDef& field, ValueView v, std::string& scratch, bool bounded)
{
    if (v.isNull())
        return v;
    switch (valueKindOf(field.type)) {
    case ValueKind::Boolean:
        if (const auto b = booleanOf(v))
            return ValueView::boolean(*b);
        unfit(field);
    case ValueKind::Integer:
        return toInteger(field, v, bounded);
    case ValueKind::Currency:
        if (const auto units = currencyOf(v))
            return ValueView::currency(*units);
        unfit(field);
    case ValueKind::Real:
        return toReal(field, v, bounded);
    case ValueKind::Date:
        return toDate(field, v, bounded);
    case ValueKind::Decimal:
        return toDecimal(field, v, scratch, bounded);
    case ValueKind::Text:
        return toText(field, v, scratch, bounded);
    case ValueKind::Bytes:
        return toBytes(field, v, bounded);
    case ValueKind::Null:
        break;
    }
    unfit(field);
}

/// The text between its quotes, doubled ones made single; nothing when it is not one quoted text.
std::optional<std::string> unquoted(std::string_view text)
{
    if (text.size() < 2 || (text.front() != '"' && text.front() != '\'') ||
        text.back() != text.front())
        return std::nullopt;
    const char quote = text.front();
    text = text.substr(1, text.size() - 2);
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == quote) {
            if (i + 1 >= text.size() || text[i + 1] != quote)
                return std::nullopt;
            ++i;
        }
        plain += text[i];
    }
    return plain;
}

}  // namespace

ValueView coerce(const FieldDef& field, ValueView v, std::string& scratch)
{
    return convert(field, v, scratch, true);
}

ValueView coerceKey(const FieldDef& field, ValueView v, std::string& scratch)
{
    return convert(field, v, scratch, false);
}

Value defaultOf(const FieldDef& field)
{
    std::string_view text = trimmed(field.defaultValue);
    if (!text.empty() && text.front() == '=')
        text = trimmed(text.substr(1));
    if (text.empty())
        return {};
    const auto quoted = unquoted(text);
    const ValueView given = ValueView::text(quoted ? std::string_view(*quoted) : text);
    const bool constant = quoted || parseReal(text) || booleanOf(given);
    if (!constant)
        return {};
    std::string scratch;
    try {
        return Value(coerce(field, given, scratch));
    } catch (const EngineError&) {
        return {};  // a default that does not fit its own field counts as none
    }
}

}  // namespace velnor::model
