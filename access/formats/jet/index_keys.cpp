#include "access/formats/jet/index_keys.h"

#include <array>
#include <bit>
#include <limits>

#include "access/engine_error.h"
#include "access/formats/jet/jet_format.h"
#include "access/storage/byte_reader.h"
#include "access/value_text.h"

namespace velnor::jet {
namespace {

constexpr std::uint8_t kPresent = 0x7F;
constexpr std::uint8_t kNull = 0x00;
constexpr std::uint8_t kChunkFollows = 9;
constexpr std::size_t kChunk = 8;

[[noreturn]] void wrongKind()
{
    throw EngineError(EngineErrorNumber::TypeMismatch,
                      "A key value is not of the type of its field.");
}

[[noreturn]] void doesNotFit()
{
    throw EngineError(EngineErrorNumber::TypeConversion,
                      "A key value does not fit the type of its field.");
}

void put(KeyBytes& key, std::span<const std::uint8_t> bytes, std::uint8_t invert)
{
    for (const std::uint8_t b : bytes)
        key.push_back(b ^ invert);
}

template <class T> void putBig(KeyBytes& key, T value, std::uint8_t invert)
{
    std::uint8_t bytes[sizeof value];
    storeBE(bytes, value);
    put(key, bytes, invert);
}

/// A signed number: the top bit is turned over, so that negative ones come first.
template <class T> void putSigned(KeyBytes& key, std::int64_t value, std::uint8_t invert)
{
    if (value < std::numeric_limits<T>::min() || value > std::numeric_limits<T>::max())
        doesNotFit();
    using Unsigned = std::make_unsigned_t<T>;
    const auto top = static_cast<Unsigned>(Unsigned{1} << (sizeof(T) * 8 - 1));
    putBig(key, static_cast<Unsigned>(static_cast<Unsigned>(value) ^ top), invert);
}

/// An IEEE number as bits: positive ones get the top bit, negative ones are complemented.
template <class Bits> Bits orderedBits(Bits bits)
{
    const auto top = static_cast<Bits>(Bits{1} << (sizeof(Bits) * 8 - 1));
    if (bits == top)
        bits = 0;  // minus zero is zero
    return (bits & top) ? static_cast<Bits>(~bits) : static_cast<Bits>(bits ^ top);
}

std::int64_t integerIn(ValueView value)
{
    if (value.kind() == ValueKind::Integer)
        return value.asInteger();
    if (value.kind() == ValueKind::Text || value.kind() == ValueKind::Bytes)
        wrongKind();
    const auto number = integerOf(value);
    if (!number)
        doesNotFit();
    return *number;
}

std::int64_t currencyIn(ValueView value)
{
    if (value.kind() == ValueKind::Currency)
        return value.asCurrency();
    if (value.kind() == ValueKind::Text || value.kind() == ValueKind::Bytes)
        wrongKind();
    const auto amount = currencyOf(value);
    if (!amount)
        doesNotFit();
    return *amount;
}

double realIn(ValueView value)
{
    if (value.kind() == ValueKind::Real)
        return value.asReal();
    if (value.kind() == ValueKind::Date)
        return value.asDate();
    if (value.kind() == ValueKind::Text || value.kind() == ValueKind::Bytes)
        wrongKind();
    return realOf(value).value_or(0);
}

std::string_view textIn(ValueView value)
{
    if (value.kind() != ValueKind::Text)
        wrongKind();
    return value.asText();
}

using Magnitude = unsigned __int128;

/// The whole number that a Decimal column of this scale stores.
Magnitude magnitudeAt(ValueView decimal, std::uint8_t scale)
{
    Magnitude m = static_cast<Magnitude>(decimal.decimalHigh()) << 64 | decimal.decimalLow();
    for (int i = decimal.decimalScale(); i < scale; ++i) {
        if (m > ~Magnitude{0} / 10)
            doesNotFit();
        m *= 10;
    }
    unsigned last = 0;
    for (int i = decimal.decimalScale(); i > scale; --i) {
        last = static_cast<unsigned>(m % 10);
        m /= 10;
    }
    return last >= 5 ? m + 1 : m;
}

void putDecimal(KeyBytes& key, ValueView value, std::uint8_t scale, std::uint8_t invert)
{
    if (value.kind() == ValueKind::Integer) {
        const std::int64_t i = value.asInteger();
        const std::uint64_t size = i < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(i)
                                         : static_cast<std::uint64_t>(i);
        value = ValueView::decimal(i < 0, 0, size, 0);
    }
    if (value.kind() != ValueKind::Decimal)
        wrongKind();
    const Magnitude m = magnitudeAt(value, scale);
    const bool negative = value.decimalNegative() && m != 0;
    if (negative)
        invert ^= 0xFF;
    key.push_back(0xFF ^ invert);
    putBig(key, static_cast<std::uint64_t>(m >> 64), invert);
    putBig(key, static_cast<std::uint64_t>(m), invert);
}

/// Chunks of eight bytes. The mark that a chunk follows is never inverted.
void putChunks(KeyBytes& key, std::span<const std::uint8_t> bytes, std::uint8_t invert)
{
    while (bytes.size() > kChunk) {
        put(key, bytes.first(kChunk), invert);
        key.push_back(kChunkFollows);
        bytes = bytes.subspan(kChunk);
    }
    if (bytes.empty())
        return;
    put(key, bytes, invert);
    key.insert(key.end(), kChunk - bytes.size(), invert);
    key.push_back(static_cast<std::uint8_t>(bytes.size()) ^ invert);
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The sixteen bytes of a GUID in the order in which it is written.
std::array<std::uint8_t, 16> guidIn(ValueView value)
{
    std::array<std::uint8_t, 16> bytes{};
    std::size_t digits = 0;
    for (const char c : textIn(value)) {
        const int digit = hexDigit(c);
        if (digit < 0 && c != '{' && c != '}' && c != '-')
            doesNotFit();
        if (digit < 0)
            continue;
        if (digits == 32)
            doesNotFit();
        bytes[digits / 2] = static_cast<std::uint8_t>(bytes[digits / 2] << 4 | digit);
        ++digits;
    }
    if (digits != 32)
        doesNotFit();
    return bytes;
}

/// Everything behind the flag byte, of the types that are not text.
void putValue(KeyBytes& key, const KeyColumn& column, ValueView value, std::uint8_t invert)
{
    switch (column.type) {
    case column_type::kByte: {
        const std::int64_t i = integerIn(value);
        if (i < 0 || i > 255)
            doesNotFit();
        key.push_back(static_cast<std::uint8_t>(i) ^ invert);
        return;
    }
    case column_type::kInteger:
        return putSigned<std::int16_t>(key, integerIn(value), invert);
    case column_type::kLong:
        return putSigned<std::int32_t>(key, integerIn(value), invert);
    case column_type::kCurrency:
        return putSigned<std::int64_t>(key, currencyIn(value), invert);
    case column_type::kSingle: {
        const auto single = static_cast<float>(realIn(value));
        return putBig(key, orderedBits(std::bit_cast<std::uint32_t>(single)), invert);
    }
    case column_type::kDouble:
    case column_type::kDate:
        return putBig(key, orderedBits(std::bit_cast<std::uint64_t>(realIn(value))), invert);
    case column_type::kDecimal:
        return putDecimal(key, value, column.scale, invert);
    case column_type::kGuid:
        return putChunks(key, guidIn(value), invert);
    case column_type::kBinary:
        if (value.kind() != ValueKind::Bytes)
            wrongKind();
        return putChunks(key, value.asBytes(), invert);
    default:
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "A field of this type cannot be part of an index.");
    }
}

bool isText(std::uint8_t type)
{
    return type == column_type::kText || type == column_type::kMemo;
}

/// The check value over the bytes that a long key drops: a 16-bit CRC whose last step is left out.
std::uint16_t checkOver(std::span<const std::uint8_t> dropped)
{
    static constexpr std::uint16_t kBits[8] = {0x0580, 0x0F80, 0x1B80, 0x3380,
                                               0x6380, 0xC380, 0x8381, 0x0383};
    unsigned crc = 0;
    for (std::size_t i = 0; i < dropped.size(); ++i) {
        crc ^= static_cast<unsigned>(dropped[i]) << 8;
        if (i + 1 == dropped.size())
            break;
        unsigned folded = 0;
        for (unsigned bit = 0; bit < 8; ++bit)
            if (crc >> bit & 1)
                folded ^= kBits[bit];
        crc = crc >> 8 ^ folded;
    }
    return static_cast<std::uint16_t>(crc);
}

}  // namespace

void shortenKey(KeyBytes& key)
{
    if (key.size() <= kLongestKey)
        return;
    constexpr std::size_t kept = kLongestKey - 2;
    const std::uint16_t check = checkOver(std::span(key).subspan(kept));
    key.resize(kLongestKey);
    storeBE(key.data() + kept, check);
}

KeyBuilder::KeyBuilder(bool jet3, const CodePage* codePage, std::span<const KeyColumn> columns)
{
    for (const KeyColumn& column : columns)
        columns_.push_back({column, TextCollation(jet3, column.order, codePage)});
    key_.reserve(2 * kLongestKey);
}

std::span<const std::uint8_t> KeyBuilder::build(std::span<const ValueView> values)
{
    if (values.size() > columns_.size())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A key has more values than its index has fields.");
    key_.clear();
    sure_ = true;
    nulls_ = 0;
    given_ = static_cast<int>(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        append(columns_[i], values[i]);
    shortenKey(key_);
    return key_;
}

void KeyBuilder::append(Column& column, ValueView value)
{
    const std::uint8_t invert = column.as.descending ? 0xFF : 0x00;
    if (column.as.type == column_type::kBoolean) {  // has no Null
        const bool set =
            !value.isNull() &&
            (value.kind() == ValueKind::Boolean ? value.asBoolean() : integerIn(value) != 0);
        key_.push_back(kPresent ^ invert);
        key_.push_back((set ? 0x00 : 0xFF) ^ invert);
        return;
    }
    if (value.isNull()) {
        ++nulls_;
        key_.push_back(kNull ^ invert);
        return;
    }
    if (isText(column.as.type)) {
        sure_ &= column.text.append(textIn(value), column.as.descending, key_);
        return;
    }
    if (column.as.type == column_type::kDecimal && column.as.descending)
        sure_ = false;  // nobody has seen such a key
    key_.push_back(kPresent ^ invert);
    putValue(key_, column.as, value, invert);
}

bool KeyBuilder::canEncode(int column, ValueView value)
{
    key_.clear();
    sure_ = true;
    append(columns_[static_cast<std::size_t>(column)], value);
    return sure_;
}

}  // namespace velnor::jet
