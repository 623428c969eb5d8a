#include "access/formats/xbase/field_decode.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "access/formats/xbase/moments.h"
#include "access/formats/xbase/number_text.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::uint64_t kEightBlanks = 0x2020202020202020u, kHighBits = 0x8080808080808080u;

std::uint64_t eightBytes(const std::uint8_t* p)
{
    return loadLE<std::uint64_t>(p);
}

bool allAscii(const std::uint8_t* p, std::size_t n)
{
    std::uint64_t seen = 0;
    for (; n >= 8; p += 8, n -= 8)
        seen |= eightBytes(p);
    for (; n; ++p, --n)
        seen |= *p;
    return (seen & kHighBits) == 0;
}

ValueView dateOrNull(std::optional<double> date)
{
    return date ? ValueView::date(*date) : ValueView::null();
}

ValueView decodeLogical(std::uint8_t c)
{
    switch (c) {
    case 'T':
    case 't':
    case 'Y':
    case 'y':
        return ValueView::boolean(true);
    case 'F':
    case 'f':
    case 'N':
    case 'n':
        return ValueView::boolean(false);
    default:
        return {};
    }
}

ValueView decodeMomentLE(const std::uint8_t* p)
{
    const auto julian = loadLE<std::int32_t>(p);
    if (julian <= 0)
        return {};
    return dateOrNull(dateOf({julian - kJulianOfDayZero, loadLE<std::int32_t>(p + 4)}));
}

ValueView decodeMoment7(const std::uint8_t* p)
{
    const auto bits = loadBE<std::uint64_t>(p);
    const double milliseconds = std::bit_cast<double>(bits);
    if (bits == 0 || !(std::fabs(milliseconds) < 1e15))
        return {};
    return dateOrNull(dateOf({kFirstDay - 1, std::llround(milliseconds)}));
}

ValueView decodeReal7(const std::uint8_t* p)
{
    const auto bits = loadBE<std::uint64_t>(p);
    if (bits == 0)
        return {};
    const std::uint64_t sign = std::uint64_t{1} << 63;
    return ValueView::real(std::bit_cast<double>(bits & sign ? bits ^ sign : ~bits));
}

ValueView decodeInteger7(const std::uint8_t* p)
{
    const auto bits = loadBE<std::uint32_t>(p);
    return bits == 0 ? ValueView::null() : ValueView::integer(std::int64_t{bits} - 0x80000000ll);
}

bool bitOf(const DbfHeader& header, std::int32_t bit, const std::uint8_t* record)
{
    return record[header.nullFlagsOffset + static_cast<std::uint32_t>(bit) / 8] >> (bit % 8) & 1;
}

/// The bytes of a Varchar or Varbinary: its last byte is its length when the length bit says so.
std::span<const std::uint8_t> variableBytes(const DbfHeader& header, const DbfField& field,
                                            const std::uint8_t* record)
{
    const std::uint8_t* p = record + field.offset;
    std::size_t length = field.length;
    if (length && field.lengthBit >= 0 && bitOf(header, field.lengthBit, record))
        length = std::min<std::size_t>(p[length - 1], length - 1);
    else if (field.lengthBit < 0)
        length = lengthWithoutPadding(p, length);
    return {p, length};
}

}  // namespace

std::size_t lengthWithoutPadding(const std::uint8_t* bytes, std::size_t length)
{
    while (length >= 8) {
        const std::uint64_t rest = eightBytes(bytes + length - 8) ^ kEightBlanks;
        if (rest != 0) {
            length -= static_cast<std::size_t>(std::countl_zero(rest)) / 8;
            break;
        }
        length -= 8;
    }
    while (length && (bytes[length - 1] == ' ' || bytes[length - 1] == 0))
        --length;
    return length;
}

ValueView decodeText(std::span<const std::uint8_t> bytes, const CodePage& page,
                     std::string& scratch)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (allAscii(bytes.data(), bytes.size()))
        return ValueView::text(text);
    return ValueView::text(page.decode(text, scratch));
}

bool isNullByFlag(const DbfHeader& header, const DbfField& field, const std::uint8_t* record)
{
    return field.nullBit >= 0 && bitOf(header, field.nullBit, record);
}

namespace {

/// Every type, and Null flags.
[[gnu::noinline]] ValueView decodeAny(const DbfHeader& header, const DbfField& field,
                                      const std::uint8_t* record, std::string& scratch)
{
    if (isNullByFlag(header, field, record))
        return {};
    const std::uint8_t* p = record + field.offset;
    switch (field.coding) {
    case Coding::Character:
        return decodeText({p, lengthWithoutPadding(p, field.length)}, *header.codePage, scratch);
    case Coding::Number:
        return readNumber({p, field.length});
    case Coding::Logical:
        return decodeLogical(*p);
    case Coding::Day: {
        const auto day = readDay(p);
        return day ? ValueView::date(*day) : ValueView::null();
    }
    case Coding::RealLE:
        return ValueView::real(loadLE<double>(p));
    case Coding::IntegerLE:
        return ValueView::integer(loadLE<std::int32_t>(p));
    case Coding::MoneyLE:
        return ValueView::currency(loadLE<std::int64_t>(p));
    case Coding::MomentLE:
        return decodeMomentLE(p);
    case Coding::Varchar:
        return decodeText(variableBytes(header, field, record), *header.codePage, scratch);
    case Coding::Varbinary:
        return ValueView::bytes(variableBytes(header, field, record));
    case Coding::Integer7:
        return decodeInteger7(p);
    case Coding::Real7:
        return decodeReal7(p);
    case Coding::Moment7:
        return decodeMoment7(p);
    case Coding::Raw:
        return ValueView::bytes({p, field.length});
    case Coding::MemoText:
    case Coding::MemoBytes:
        break;
    }
    return {};
}

}  // namespace

// Texts and numbers are most fields of most tables: a road of their own, without a frame.
ValueView decodeField(const DbfHeader& header, const DbfField& field, const std::uint8_t* record,
                      std::string& scratch)
{
    const std::uint8_t* p = record + field.offset;
    if (field.coding == Coding::Number && field.nullBit < 0)
        return readNumber({p, field.length});
    if (field.coding == Coding::Character && field.nullBit < 0)
        return decodeText({p, lengthWithoutPadding(p, field.length)}, *header.codePage, scratch);
    return decodeAny(header, field, record, scratch);
}

std::uint64_t memoBlock(const DbfHeader& header, const DbfField& field, const std::uint8_t* record)
{
    if (isNullByFlag(header, field, record))
        return 0;
    const std::uint8_t* p = record + field.offset;
    if (field.length == 4)
        return loadLE<std::uint32_t>(p);
    const std::uint8_t* end = p + lengthWithoutPadding(p, field.length);
    while (p != end && (*p == ' ' || *p == 0))
        ++p;
    if (end - p > 10)
        return kBadPointer;
    std::uint64_t block = 0;
    for (; p != end; ++p) {
        if (*p < '0' || *p > '9')
            return kBadPointer;
        block = block * 10 + (*p - '0');
    }
    return block;
}

}  // namespace velnor::xbase
