#include "access/formats/paradox/field_codec.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

#include "access/engine_error.h"
#include "access/formats/paradox/bcd.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::paradox {
namespace {

constexpr std::int64_t kDayZero = 693594;   // day number of 1899-12-30, when 0001-01-01 is 1
constexpr std::int64_t kLastDay = 3652059;  // 9999-12-31
constexpr std::int64_t kDayMs = 86'400'000;
constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
constexpr std::uint64_t kHighBits = 0x8080808080808080u;

bool allZero(const std::uint8_t* bytes, std::size_t length)
{
    return std::all_of(bytes, bytes + length, [](std::uint8_t b) { return b == 0; });
}

ValueView dateOf(std::int64_t days, std::int64_t milliseconds)
{
    const double day = static_cast<double>(days - kDayZero);
    const double time = static_cast<double>(milliseconds) / static_cast<double>(kDayMs);
    return ValueView::date(day < 0 ? day - time : day + time);
}

std::optional<double> doubleAt(const std::uint8_t* bytes)
{
    const auto bits = loadBE<std::uint64_t>(bytes);
    if (bits == 0)
        return std::nullopt;
    const double value = std::bit_cast<double>(bits & kSign ? bits ^ kSign : ~bits);
    if (!std::isfinite(value))
        return std::nullopt;
    return value;
}

/// Money is shown to the ten-thousandth; an amount with more digits, which other programs can
/// write, stays the number that it is.
ValueView moneyOf(double amount)
{
    const double units = amount * 10000;
    if (std::fabs(units) < 9e15) {
        const double whole = std::nearbyint(units);
        if (whole / 10000 == amount)
            return ValueView::currency(static_cast<std::int64_t>(whole));
    }
    return ValueView::real(amount);
}

/// Numbers with few digits behind the point are handed out as decimals, which are quicker to write
/// as text.
ValueView numberOf(double number)
{
    if (std::fabs(number) < 1e13) {
        const auto whole = static_cast<std::int64_t>(number);
        if (static_cast<double>(whole) == number)
            return ValueView::integer(whole);
        const double hundreds = std::nearbyint(number * 100);
        if (hundreds / 100 == number) {
            const auto units = static_cast<std::int64_t>(hundreds);
            return ValueView::decimal(units < 0, 0, static_cast<std::uint64_t>(std::abs(units)), 2);
        }
    }
    return ValueView::real(number);
}

ValueView decodeTimeStamp(const std::uint8_t* bytes)
{
    const auto value = doubleAt(bytes);
    if (!value || !(*value >= kDayMs - 0.5) ||
        !(*value < static_cast<double>((kLastDay + 1) * kDayMs)))
        return {};
    const std::int64_t milliseconds = std::llround(*value);
    return dateOf(milliseconds / kDayMs, milliseconds % kDayMs);
}

ValueView decodeDay(std::int64_t day)
{
    return day >= 1 && day <= kLastDay ? dateOf(day, 0) : ValueView::null();
}

ValueView decodeTime(std::int64_t milliseconds)
{
    return milliseconds >= 0 && milliseconds < kDayMs ? dateOf(kDayZero, milliseconds)
                                                      : ValueView::null();
}

}  // namespace

std::int64_t integerAt(const std::uint8_t* bytes, std::size_t length)
{
    if (length == 2)
        return static_cast<std::int64_t>(loadBE<std::uint16_t>(bytes)) - 0x8000;
    return static_cast<std::int64_t>(loadBE<std::uint32_t>(bytes)) - 0x80000000ll;
}

ValueView decodeText(std::string_view text, const CodePage& page, std::string& scratch)
{
    const char* p = text.data();
    std::size_t left = text.size();
    std::uint64_t seen = 0;
    for (; left >= 8; p += 8, left -= 8)
        seen |= loadLE<std::uint64_t>(reinterpret_cast<const std::uint8_t*>(p));
    for (; left; ++p, --left)
        seen |= static_cast<std::uint8_t>(*p);
    return ValueView::text((seen & kHighBits) == 0 ? text : page.decode(text, scratch));
}

ValueView decodeField(const StoredField& field, const std::uint8_t* bytes, const CodePage& page,
                      std::string& scratch)
{
    if (field.code == FieldCode::Alpha) {
        if (*bytes == 0)
            return {};
        const char* text = reinterpret_cast<const char*>(bytes);
        const void* end = std::memchr(text, 0, field.length);
        return decodeText(
            {text,
             end ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : field.length},
            page, scratch);
    }
    if (field.code == FieldCode::Bcd)
        return decodeBcd(bytes);
    if (allZero(bytes, field.length))
        return {};
    switch (field.code) {
    case FieldCode::Short:
    case FieldCode::Long:
    case FieldCode::Autonumber:
        return ValueView::integer(integerAt(bytes, field.length));
    case FieldCode::Date:
        return decodeDay(integerAt(bytes, 4));
    case FieldCode::Time:
        return decodeTime(integerAt(bytes, 4));
    case FieldCode::TimeStamp:
        return decodeTimeStamp(bytes);
    case FieldCode::Money: {
        const auto amount = doubleAt(bytes);
        return amount ? moneyOf(*amount) : ValueView::null();
    }
    case FieldCode::Number: {
        const auto number = doubleAt(bytes);
        return number ? numberOf(*number) : ValueView::null();
    }
    case FieldCode::Logical:
        return ValueView::boolean(*bytes & 1);
    default:
        return ValueView::bytes({bytes, field.length});
    }
}

namespace {

[[noreturn]] void unfit(const StoredField& field)
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "The field " + field.name + " cannot hold this value.");
}

/// Writes a number between `least` and `most` of a field whose lowest pattern means Null.
bool putInteger(const StoredField& field, std::int64_t value, std::uint8_t* bytes, Fit fit)
{
    const std::int64_t most = field.length == 2 ? 0x7FFF : 0x7FFFFFFF;
    bool same = true;
    if (value < -most || value > most) {
        if (fit == Fit::Refuse)
            unfit(field);
        value = std::clamp(value, -most, most);
        same = false;
    }
    if (field.length == 2)
        storeBE(bytes, static_cast<std::uint16_t>(value + 0x8000));
    else
        storeBE(bytes, static_cast<std::uint32_t>(value + 0x80000000ll));
    return same;
}

void putDouble(double value, std::uint8_t* bytes)
{
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
    storeBE(bytes, bits & kSign ? ~bits : bits | kSign);
}

bool putReal(const StoredField& field, ValueView value, std::uint8_t* bytes, Fit fit)
{
    const auto number = realOf(value);
    if (number && std::isfinite(*number)) {
        putDouble(*number, bytes);
        return true;
    }
    if (fit == Fit::Refuse || !number || std::isnan(*number))
        unfit(field);
    putDouble(std::copysign(1.7976931348623157e308, *number), bytes);
    return false;
}

/// Day number and milliseconds of a date value.
struct Moment {
    std::int64_t day, milliseconds;
};

Moment momentOf(const StoredField& field, ValueView value)
{
    const auto date = realOf(value);
    if (!date || !(std::fabs(*date) < 4e6))
        unfit(field);
    // Before day 0 the fraction counts on from the day, too.
    std::int64_t day = static_cast<std::int64_t>(*date);
    std::int64_t milliseconds =
        std::llround(std::fabs(*date - static_cast<double>(day)) * static_cast<double>(kDayMs));
    if (milliseconds >= kDayMs) {
        milliseconds -= kDayMs;
        ++day;
    }
    return {day + kDayZero, milliseconds};
}

bool putDate(const StoredField& field, ValueView value, std::uint8_t* bytes, Fit fit)
{
    Moment moment = momentOf(field, value);
    bool same = true;
    if (field.code == FieldCode::Time) {
        storeBE(bytes, static_cast<std::uint32_t>(moment.milliseconds + 0x80000000ll));
        return true;
    }
    if (moment.day < 1 || moment.day > kLastDay) {
        if (fit == Fit::Refuse)
            unfit(field);
        moment = {std::clamp<std::int64_t>(moment.day, 1, kLastDay), 0};
        same = false;
    }
    if (field.code == FieldCode::Date) {
        storeBE(bytes, static_cast<std::uint32_t>(moment.day + 0x80000000ll));
        return same;
    }
    putDouble(static_cast<double>(moment.day * kDayMs + moment.milliseconds), bytes);
    return same;
}

/// The text up to a zero character, which ends it in the file.
bool putText(const StoredField& field, ValueView value, const CodePage& page, std::uint8_t* bytes,
             std::string& scratch, Fit fit)
{
    std::string own;
    std::string_view text = value.asText();
    if (value.kind() != ValueKind::Text) {
        appendText(own, value);
        text = own;
    }
    bool same = true;
    if (!isAscii(text)) {
        scratch.clear();
        same = page.encode(text, scratch);
        if (!same && fit == Fit::Refuse)
            throw EngineError(EngineErrorNumber::TypeConversion,
                              "The text has characters that the code page of the table, " +
                                  std::to_string(page.number()) + ", does not have (field " +
                                  field.name + ").");
        text = scratch;
    }
    if (text.find('\0') != text.npos) {
        if (fit == Fit::Refuse)
            unfit(field);
        text = text.substr(0, text.find('\0'));
        same = false;
    }
    if (text.size() > field.length) {
        if (fit == Fit::Refuse)
            throw EngineError(EngineErrorNumber::ValueTooLong,
                              "The value is too long for field " + field.name + ".");
        text = text.substr(0, field.length);
        same = false;
    }
    std::memcpy(bytes, text.data(), text.size());
    std::memset(bytes + text.size(), 0, field.length - text.size());
    return same;
}

bool putBytes(const StoredField& field, ValueView value, std::uint8_t* bytes, Fit fit)
{
    if (value.kind() != ValueKind::Bytes)
        unfit(field);
    const auto data = value.asBytes();
    if (data.size() > field.length && fit == Fit::Refuse)
        throw EngineError(EngineErrorNumber::ValueTooLong,
                          "The value is too long for field " + field.name + ".");
    const std::size_t count = std::min<std::size_t>(data.size(), field.length);
    std::copy_n(data.begin(), count, bytes);
    std::memset(bytes + count, 0, field.length - count);
    return count == data.size();
}

bool putBcd(const StoredField& field, ValueView value, std::uint8_t* bytes, Fit fit)
{
    const bool same = encodeBcd(value, field.sizeByte, bytes);
    if (!same && fit == Fit::Refuse)
        unfit(field);
    return same;
}

}  // namespace

bool encodeField(const StoredField& field, ValueView value, const CodePage& page,
                 std::uint8_t* bytes, std::string& scratch, Fit fit)
{
    if (value.isNull()) {
        std::memset(bytes, 0, field.length);
        return true;
    }
    switch (field.code) {
    case FieldCode::Alpha:
        return putText(field, value, page, bytes, scratch, fit);
    case FieldCode::Short:
    case FieldCode::Long:
    case FieldCode::Autonumber: {
        const auto number = integerOf(value);
        if (!number)
            unfit(field);
        return putInteger(field, *number, bytes, fit);
    }
    case FieldCode::Money:
    case FieldCode::Number:
        return putReal(field, value, bytes, fit);
    case FieldCode::Date:
    case FieldCode::Time:
    case FieldCode::TimeStamp:
        return putDate(field, value, bytes, fit);
    case FieldCode::Logical:
        *bytes = realOf(value).value_or(0) != 0 ? 0x81 : 0x80;
        return true;
    case FieldCode::Bcd:
        return putBcd(field, value, bytes, fit);
    case FieldCode::Bytes:
        return putBytes(field, value, bytes, fit);
    default:
        unfit(field);
    }
}

}  // namespace velnor::paradox
