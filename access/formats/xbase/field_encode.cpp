#include "access/formats/xbase/field_encode.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/moments.h"
#include "access/formats/xbase/number_text.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::xbase {
namespace {

[[noreturn]] void tooLarge(const DbfField& field, ValueView value)
{
    std::string text;
    if (value.kind() == ValueKind::Text || value.kind() == ValueKind::Bytes)
        text = "The text";
    else {
        text = "The value ";
        appendText(text, value);
    }
    throw EngineError(EngineErrorNumber::ValueTooLong, text + " is too large for the field " +
                                                           field.name + ", which is " +
                                                           field.nativeType() + ".");
}

[[noreturn]] void wrongType(const DbfField& field)
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "The value does not fit the type of the field " + field.name + ", which is " +
                          field.nativeType() + ".");
}

void setBit(const DbfHeader& header, std::int32_t bit, bool on, std::uint8_t* record)
{
    const auto mask = static_cast<std::uint8_t>(1u << (bit % 8));
    std::uint8_t& byte = record[header.nullFlagsOffset + static_cast<std::uint32_t>(bit) / 8];
    byte = static_cast<std::uint8_t>(on ? byte | mask : byte & ~mask);
}

/// The byte of an unset field: zero in binary ones, else a blank.
std::uint8_t fillerOf(const DbfField& field)
{
    switch (field.coding) {
    case Coding::Character:
    case Coding::Number:
    case Coding::Logical:
    case Coding::Day:
        return ' ';
    case Coding::MemoText:
    case Coding::MemoBytes:
        return field.length == 4 ? 0 : ' ';
    default:
        return 0;
    }
}

void blankField(const DbfField& field, std::uint8_t* record)
{
    std::memset(record + field.offset, fillerOf(field), field.length);
}

std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void encodeCharacter(const DbfHeader& header, const DbfField& field, ValueView value,
                     std::uint8_t* to, std::string& scratch)
{
    if (value.kind() != ValueKind::Text)
        wrongType(field);
    const auto bytes = encodeText(value.asText(), *header.codePage, scratch);
    std::size_t length = bytes.size();
    if (length > field.length)
        length = lengthWithoutPadding(bytes.data(), length);
    if (length > field.length)
        tooLarge(field, value);
    if (length)
        std::memcpy(to, bytes.data(), length);
    std::memset(to + length, ' ', field.length - length);
}

/// A shorter value keeps its length in the last byte of the field.
void encodeVariable(const DbfHeader& header, const DbfField& field, ValueView value,
                    std::uint8_t* record, std::string& scratch)
{
    const bool text = field.coding == Coding::Varchar;
    if (value.kind() != (text ? ValueKind::Text : ValueKind::Bytes))
        wrongType(field);
    const auto bytes =
        text ? encodeText(value.asText(), *header.codePage, scratch) : value.asBytes();
    if (bytes.size() > field.length)
        tooLarge(field, value);
    std::uint8_t* to = record + field.offset;
    if (!bytes.empty())
        std::memcpy(to, bytes.data(), bytes.size());
    const bool shorter = bytes.size() < field.length;
    if (shorter) {
        std::memset(to + bytes.size(), text && field.lengthBit < 0 ? ' ' : 0,
                    field.length - bytes.size());
        if (field.lengthBit >= 0)
            to[field.length - 1] = static_cast<std::uint8_t>(bytes.size());
    }
    if (field.lengthBit >= 0)
        setBit(header, field.lengthBit, shorter, record);
}

void encodeNumber(const DbfField& field, ValueView value, std::uint8_t* to)
{
    switch (writeNumber(value, field.decimals, {to, field.length})) {
    case NumberFit::Written:
        return;
    case NumberFit::TooLarge:
        tooLarge(field, value);
    case NumberFit::NoNumber:
        wrongType(field);
    }
}

std::int32_t wholeNumber(const DbfField& field, ValueView value)
{
    const auto number = value.kind() == ValueKind::Text ? std::nullopt : integerOf(value);
    if (!number)
        wrongType(field);
    if (*number < std::numeric_limits<std::int32_t>::min() ||
        *number > std::numeric_limits<std::int32_t>::max())
        tooLarge(field, value);
    return static_cast<std::int32_t>(*number);
}

double realNumber(const DbfField& field, ValueView value)
{
    const auto number = value.kind() == ValueKind::Text ? std::nullopt : realOf(value);
    if (!number)
        wrongType(field);
    return *number;
}

Moment moment(const DbfField& field, ValueView value)
{
    if (value.kind() != ValueKind::Date)
        wrongType(field);
    const auto parts = momentOf(value.asDate());
    if (!parts)
        tooLarge(field, value);
    return *parts;
}

void encodeMomentLE(const Moment& at, std::uint8_t* to)
{
    storeLE(to, static_cast<std::int32_t>(at.day + kJulianOfDayZero));
    storeLE(to + 4, static_cast<std::int32_t>(at.millisecond));
}

void encodeMoment7(const Moment& at, std::uint8_t* to)
{
    const auto milliseconds =
        static_cast<double>((at.day - kFirstDay + 1) * kDayMilliseconds + at.millisecond);
    storeBE(to, std::bit_cast<std::uint64_t>(milliseconds));
}

void encodeReal7(double d, std::uint8_t* to)
{
    const auto bits = std::bit_cast<std::uint64_t>(d == 0 ? 0.0 : d);
    const std::uint64_t sign = std::uint64_t{1} << 63;
    storeBE(to, bits & sign ? ~bits : bits ^ sign);
}

void encodeMoney(const DbfField& field, ValueView value, std::uint8_t* to)
{
    const auto money = value.kind() == ValueKind::Text ? std::nullopt : currencyOf(value);
    if (!money)
        wrongType(field);
    storeLE(to, *money);
}

}  // namespace

std::span<const std::uint8_t> encodeText(std::string_view utf8, const CodePage& page,
                                         std::string& scratch)
{
    if (isAscii(utf8))
        return bytesOf(utf8);
    scratch.clear();
    page.encode(utf8, scratch);
    return bytesOf(scratch);
}

void blankRecord(const DbfHeader& header, std::span<std::uint8_t> record)
{
    std::memset(record.data(), ' ', record.size());
    if (header.nullFlagsLength)
        std::memset(record.data() + header.nullFlagsOffset, 0, header.nullFlagsLength);
    for (const DbfField& field : header.fields) {
        blankField(field, record.data());
        if (field.lengthBit >= 0)
            setBit(header, field.lengthBit, true, record.data());
    }
}

void encodeField(const DbfHeader& header, const DbfField& field, ValueView value,
                 std::uint8_t* record, std::string& scratch)
{
    std::uint8_t* to = record + field.offset;
    if (value.isNull()) {
        blankField(field, record);
        if (field.lengthBit >= 0)
            setBit(header, field.lengthBit, true, record);
        if (field.nullBit >= 0)
            setBit(header, field.nullBit, true, record);
        return;
    }
    switch (field.coding) {
    case Coding::Character:
        encodeCharacter(header, field, value, to, scratch);
        break;
    case Coding::Number:
        encodeNumber(field, value, to);
        break;
    case Coding::Logical:
        if (value.kind() != ValueKind::Boolean)
            wrongType(field);
        *to = value.asBoolean() ? 'T' : 'F';
        break;
    case Coding::Day:
        writeDay(moment(field, value).day, to);
        break;
    case Coding::RealLE:
        storeLE(to, realNumber(field, value));
        break;
    case Coding::IntegerLE:
        storeLE(to, wholeNumber(field, value));
        break;
    case Coding::MoneyLE:
        encodeMoney(field, value, to);
        break;
    case Coding::MomentLE:
        encodeMomentLE(moment(field, value), to);
        break;
    case Coding::Varchar:
    case Coding::Varbinary:
        encodeVariable(header, field, value, record, scratch);
        break;
    case Coding::Integer7:
        storeBE(to, static_cast<std::uint32_t>(wholeNumber(field, value)) ^ 0x80000000u);
        break;
    case Coding::Real7:
        encodeReal7(realNumber(field, value), to);
        break;
    case Coding::Moment7:
        encodeMoment7(moment(field, value), to);
        break;
    case Coding::Raw:
    case Coding::MemoText:
    case Coding::MemoBytes:
        wrongType(field);
    }
    if (field.nullBit >= 0)
        setBit(header, field.nullBit, false, record);
}

void putMemoBlock(const DbfHeader& header, const DbfField& field, std::uint32_t block,
                  std::uint8_t* record)
{
    std::uint8_t* to = record + field.offset;
    blankField(field, record);
    if (field.length == 4) {
        storeLE(to, block);
    } else {
        std::uint8_t* p = to + field.length;
        for (std::uint32_t rest = block; rest && p != to; rest /= 10)
            *--p = static_cast<std::uint8_t>('0' + rest % 10);
    }
    if (field.nullBit >= 0)
        setBit(header, field.nullBit, block == 0, record);
}

}  // namespace velnor::xbase
