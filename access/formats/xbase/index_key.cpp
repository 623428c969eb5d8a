#include "access/formats/xbase/index_key.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
constexpr double kNoDay = 1e100;
constexpr int kDecimalZero = 0x34;

double numberOf(const ExpressionValue& v)
{
    if (v.type == ExpressionType::Integer)
        return static_cast<double>(v.whole);
    return v.type == ExpressionType::Money ? static_cast<double>(v.whole) / 10000 : v.number;
}

[[noreturn]] void noKey(const char* why)
{
    throw EngineError(EngineErrorNumber::InvalidIndex, why);
}

KeyForm formOf(KeyCoding coding, std::uint32_t length)
{
    KeyForm form;
    form.coding = coding;
    form.length = length;
    return form;
}

}  // namespace

void putOrderedDouble(double value, std::uint8_t* eight)
{
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
    storeBE(eight, bits & kSign ? ~bits : bits | kSign);
}

double orderedDouble(const std::uint8_t* eight)
{
    const auto bits = loadBE<std::uint64_t>(eight);
    return std::bit_cast<double>(bits & kSign ? bits ^ kSign : ~bits);
}

/// Byte 0: 0 below zero, 1 zero, 2 above; byte 1 the exponent, then digits; turned below zero.
void putOrderedDecimal(double value, std::uint8_t* twelve)
{
    std::fill_n(twelve, 12, std::uint8_t{0});
    twelve[0] = 1;
    if (value == 0 || !std::isfinite(value))
        return;
    char text[40];
    const auto made =
        std::to_chars(text, text + sizeof text, std::fabs(value), std::chars_format::scientific);
    const char* mark = std::find(text, made.ptr, 'e');
    int exponent = 0;
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), made.ptr, exponent);
    std::size_t n = 0;
    for (const char* p = text; p != mark && n < 20; ++p)
        if (*p != '.') {
            twelve[2 + n / 2] |= static_cast<std::uint8_t>((*p - '0') << (n % 2 ? 0 : 4));
            ++n;
        }
    twelve[0] = 2;
    twelve[1] = static_cast<std::uint8_t>(std::clamp(kDecimalZero + exponent + 1, 0, 255));
    if (value < 0) {
        twelve[0] = 0;
        for (int i = 1; i < 12; ++i)
            twelve[i] = static_cast<std::uint8_t>(~twelve[i]);
    }
}

void decimalToFile(const std::uint8_t* order, std::uint8_t* file)
{
    std::fill_n(file, 12, std::uint8_t{0});
    file[0] = kDecimalZero;
    file[1] = 1;
    if (order[0] == 1)
        return;
    const std::uint8_t turn = order[0] == 0 ? 0xFF : 0;
    file[0] = order[1] ^ turn;
    int digits = 0;
    for (int i = 0; i < 10; ++i) {
        file[2 + i] = order[2 + i] ^ turn;
        if (file[2 + i])
            digits = 2 * i + (file[2 + i] & 0x0F ? 2 : 1);
    }
    file[1] = static_cast<std::uint8_t>((turn & 0x80) | digits << 2 | 1);
}

void decimalFromFile(const std::uint8_t* file, std::uint8_t* order)
{
    std::fill_n(order, 12, std::uint8_t{0});
    order[0] = 1;
    if (std::all_of(file + 2, file + 12, [](std::uint8_t c) { return c == 0; }))
        return;
    const bool below = file[1] & 0x80;
    const std::uint8_t turn = below ? 0xFF : 0;
    order[0] = below ? 0 : 2;
    order[1] = file[0] ^ turn;
    for (int i = 2; i < 12; ++i)
        order[i] = file[i] ^ turn;
}

KeyMaker::KeyMaker(IndexExpression key, std::optional<IndexExpression> condition,
                   const KeyForm& form)
    : key_(std::move(key)), condition_(std::move(condition)), form_(form)
{
}

bool KeyMaker::caresForDeletion() const
{
    return form_.leavesOutDeleted || key_.namesDeleted() ||
           (condition_ && condition_->namesDeleted());
}

bool KeyMaker::make(const std::uint8_t* record, std::uint32_t recordNumber, std::uint8_t* key) const
{
    if (form_.leavesOutDeleted && record[0] == '*')
        return false;
    if (condition_ && !condition_->evaluate(record, recordNumber).truth)
        return false;
    makeKey(record, recordNumber, key);
    return true;
}

void KeyMaker::makeKey(const std::uint8_t* record, std::uint32_t recordNumber,
                       std::uint8_t* key) const
{
    std::uint8_t* to = key;
    std::uint32_t length = form_.length;
    if (form_.nullByte) {
        if (key_.hasNull(record)) {
            std::fill_n(key, length, std::uint8_t{0});
            return;
        }
        *to++ = 0x80;
        --length;
    }
    const ExpressionValue v = key_.evaluate(record, recordNumber);
    switch (form_.coding) {
    case KeyCoding::Text: {
        const std::uint32_t copied = std::min(v.length, length);
        std::copy_n(v.text, copied, to);
        std::fill(to + copied, to + length, std::uint8_t{' '});
        break;
    }
    case KeyCoding::Double:
        putOrderedDouble(numberOf(v), to);
        break;
    case KeyCoding::LateDay:
        putOrderedDouble(v.number == 0 ? kNoDay : v.number, to);
        break;
    case KeyCoding::Integer:
        storeBE(to, static_cast<std::uint32_t>(v.whole) ^ 0x80000000u);
        break;
    case KeyCoding::Money:
        storeBE(to, static_cast<std::uint64_t>(v.whole) ^ kSign);
        break;
    case KeyCoding::Truth:
        *to = v.truth ? 'T' : 'F';
        break;
    case KeyCoding::Decimal:
        putOrderedDecimal(numberOf(v), to);
        break;
    }
    if (form_.turned)
        for (std::uint32_t i = 0; i < form_.length; ++i)
            key[i] = static_cast<std::uint8_t>(~key[i]);
}

KeyForm foxKeyForm(const IndexExpression& expression)
{
    switch (expression.type()) {
    case ExpressionType::Text:
        if (expression.width() == 0 || expression.width() > 240)
            noKey("A key of this index is longer than 240 bytes, or empty.");
        return formOf(KeyCoding::Text, expression.width());
    case ExpressionType::Integer:
        return formOf(KeyCoding::Integer, 4);
    case ExpressionType::Money:
        return formOf(KeyCoding::Money, 8);
    case ExpressionType::Logical:
        return formOf(KeyCoding::Truth, 1);
    default:
        return formOf(KeyCoding::Double, 8);
    }
}

KeyForm mdxKeyForm(const IndexExpression& expression)
{
    switch (expression.type()) {
    case ExpressionType::Text:
        if (expression.width() == 0 || expression.width() > 100)
            noKey("A key of this index is longer than 100 bytes, or empty.");
        return formOf(KeyCoding::Text, expression.width());
    case ExpressionType::Number:
    case ExpressionType::Money:
        return formOf(KeyCoding::Decimal, 12);
    case ExpressionType::Integer:
        return formOf(KeyCoding::Integer, 4);
    case ExpressionType::Date:
        return formOf(KeyCoding::LateDay, 8);
    default:
        noKey("Fields of this type cannot be the key of a dBASE index.");
    }
}

KeyForm ndxKeyForm(const IndexExpression& expression)
{
    KeyForm form = mdxKeyForm(expression);
    if (form.coding == KeyCoding::Decimal || form.coding == KeyCoding::Integer)
        form = formOf(KeyCoding::Double, 8);
    return form;
}

}  // namespace velnor::xbase
