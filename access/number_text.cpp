// access/number_text.cpp - the number part of value_text.h.

#include "access/value_text.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace velnor {
namespace {

using Wide = unsigned __int128;

constexpr Wide kDecimalLimit = static_cast<Wide>(1) << 96;
constexpr std::uint8_t kMaxScale = 28;
constexpr double kExactTens[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kExactWhole = std::uint64_t{1} << 53;

Wide magnitudeOf(ValueView v)
{
    return static_cast<Wide>(v.decimalHigh()) << 64 | v.decimalLow();
}

Wide tenTo(int n)
{
    Wide power = 1;
    while (n-- > 0)
        power *= 10;
    return power;
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Digits of `value` in front of `end`, at least `width` of them.
char* putBackwards(char* end, Wide value, int width)
{
    char* p = end;
    while (value > std::numeric_limits<std::uint64_t>::max()) {
        *--p = static_cast<char>('0' + static_cast<int>(value % 10));
        value /= 10;
        --width;
    }
    for (auto low = static_cast<std::uint64_t>(value); low != 0 || width > 0; low /= 10, --width)
        *--p = static_cast<char>('0' + low % 10);
    return p;
}

/// The two digits of each number below 100.
struct DigitPairs {
    char text[200];
    constexpr DigitPairs() : text()
    {
        for (int i = 0; i < 100; ++i) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};
constexpr DigitPairs kPairs;

/// The same for what fits a machine word, two digits a step.
char* putWordBackwards(char* end, std::uint64_t value, int width)
{
    char* p = end;
    for (; value >= 100; value /= 100)
        std::memcpy(p -= 2, kPairs.text + 2 * (value % 100), 2);
    if (value >= 10)
        std::memcpy(p -= 2, kPairs.text + 2 * value, 2);
    else if (value != 0)
        *--p = static_cast<char>('0' + value);
    while (end - p < width)
        *--p = '0';
    return p;
}

/// magnitude / 10^scale for a magnitude of one word and a small scale: what nearly every number is.
char* putScaledWord(char* out, bool negative, std::uint64_t magnitude, int scale)
{
    while (scale > 0 && magnitude % 10 == 0) {
        magnitude /= 10;
        --scale;
    }
    if (negative && magnitude != 0)
        *out++ = '-';
    char buffer[64];
    char* const end = buffer + sizeof buffer;
    const char* const p = putWordBackwards(end, magnitude, scale + 1);
    const auto digits = static_cast<std::size_t>(end - p);
    const std::size_t whole = digits - static_cast<std::size_t>(scale);
    std::memcpy(out, p, digits);
    if (scale == 0)
        return out + digits;
    std::memmove(out + whole + 1, out + whole, static_cast<std::size_t>(scale));
    out[whole] = '.';
    return out + digits + 1;
}

/// magnitude / 10^scale, without zeros at the end behind the point.
char* putScaled(char* out, bool negative, Wide magnitude, int scale)
{
    if (magnitude <= std::numeric_limits<std::uint64_t>::max() && scale <= kMaxScale)
        return putScaledWord(out, negative, static_cast<std::uint64_t>(magnitude), scale);
    while (scale > 0 && magnitude % 10 == 0) {
        magnitude /= 10;
        --scale;
    }
    char buffer[336];  // a Decimal's scale is a byte: a damaged one still fits
    char* const end = buffer + sizeof buffer;
    char* p = putBackwards(end, magnitude, scale + 1);
    if (scale > 0) {
        const auto whole = static_cast<std::size_t>(end - p - scale);
        std::memmove(p - 1, p, whole);
        --p;
        p[whole] = '.';
    }
    if (negative && magnitude != 0)
        *--p = '-';
    const auto length = static_cast<std::size_t>(end - p);
    std::memcpy(out, p, length);
    return out + length;
}

/// Units of 1/10,000 when the number has at most four decimals and few digits: then these digits
/// are the shortest text, since no two numbers of 15 digits share a double.
std::optional<std::int64_t> fewDecimals(double d)
{
    if (!(std::fabs(d) < 1e11))
        return std::nullopt;
    const double units = std::nearbyint(d * 1e4);
    if (units / 1e4 != d)
        return std::nullopt;
    return static_cast<std::int64_t>(units);
}

/// value / divisor, rounded half to even.
Wide divideRounded(Wide value, Wide divisor)
{
    const Wide quotient = value / divisor;
    const Wide rest = value % divisor;
    const Wide gap = divisor - rest;
    return quotient + (rest > gap || (rest == gap && (quotient & 1) != 0) ? 1 : 0);
}

std::optional<std::int64_t> signedOf(bool negative, Wide magnitude)
{
    const Wide most = static_cast<Wide>(std::numeric_limits<std::int64_t>::max());
    if (magnitude > most + (negative ? 1 : 0))
        return std::nullopt;
    const auto low = static_cast<std::uint64_t>(magnitude);
    return static_cast<std::int64_t>(negative ? 0 - low : low);
}

/// The Decimal times 10^places as a whole number, rounded half to even.
std::optional<std::int64_t> decimalUnits(ValueView v, int places)
{
    Wide magnitude = magnitudeOf(v);
    const int scale = v.decimalScale();
    if (scale > places + 38)
        return 0;
    if (scale > places)
        magnitude = divideRounded(magnitude, tenTo(scale - places));
    else
        magnitude *= tenTo(places - scale);
    return signedOf(v.decimalNegative(), magnitude);
}

std::optional<std::int64_t> wholeOfReal(double d)
{
    const double rounded = std::nearbyint(d);  // half to even
    if (!(rounded >= -9223372036854775808.0 && rounded < 9223372036854775808.0))
        return std::nullopt;
    return static_cast<std::int64_t>(rounded);
}

std::optional<std::int64_t> unitsOfText(std::string_view text, int places)
{
    if (const auto exact = parseDecimal(text))
        return decimalUnits(*exact, places);
    if (const auto real = parseReal(text))
        return wholeOfReal(*real * kExactTens[places]);
    return std::nullopt;
}

struct Mantissa {
    std::uint64_t digits = 0;
    int scale = 0;
};

/// The common short form: up to 18 digits with a point among them, nothing else.
std::optional<Mantissa> shortNumber(std::string_view text)
{
    if (text.empty() || text.size() > 19)
        return std::nullopt;
    Mantissa m;
    bool point = false;
    int count = 0;
    for (const char c : text) {
        if (isDigit(c)) {
            m.digits = m.digits * 10 + static_cast<unsigned>(c - '0');
            m.scale += point;
            ++count;
        } else if (c == '.' && !point) {
            point = true;
        } else {
            return std::nullopt;
        }
    }
    if (count == 0 || count > 18)
        return std::nullopt;
    return m;
}

/// Times 10^places; false when the result cannot be a Decimal's magnitude.
bool shiftLeft(Wide& magnitude, int places)
{
    for (; places > 0 && magnitude < kDecimalLimit; --places)
        magnitude *= 10;
    return magnitude < kDecimalLimit;
}

/// Takes the sign off the front: true for a minus.
bool takeSign(std::string_view& text)
{
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    return negative;
}

/// The exponent behind "e"; nothing when it is not a whole number.
std::optional<int> readExponent(std::string_view text)
{
    if (text.size() > 1 && text.front() == '+' && isDigit(text[1]))
        text.remove_prefix(1);
    int exponent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    if (exponent > 1000 || exponent < -1000)
        return std::nullopt;
    return exponent;
}

}  // namespace

char* putInteger(char* p, std::int64_t i)
{
    const auto bits = static_cast<std::uint64_t>(i);
    return putScaledWord(p, i < 0, i < 0 ? 0 - bits : bits, 0);
}

void appendInteger(std::string& out, std::int64_t i)
{
    char buffer[24];
    out.append(buffer, static_cast<std::size_t>(putInteger(buffer, i) - buffer));
}

void appendReal(std::string& out, double d)
{
    if (!std::isfinite(d)) {
        out += std::isnan(d) ? "NaN" : d < 0 ? "-Infinity" : "Infinity";
        return;
    }
    if (const auto units = fewDecimals(d))
        return appendCurrency(out, *units);
    const double size = std::fabs(d);
    const auto form =
        size < 1e15 && size >= 1e-5 ? std::chars_format::fixed : std::chars_format::scientific;
    char buffer[40];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, d, form);
    out.append(buffer, static_cast<std::size_t>(result.ptr - buffer));
}

void appendCurrency(std::string& out, std::int64_t tenThousandths)
{
    const bool negative = tenThousandths < 0;
    const auto bits = static_cast<std::uint64_t>(tenThousandths);
    const std::uint64_t magnitude = negative ? 0 - bits : bits;
    char buffer[32];
    char* p = buffer;
    if (negative)
        *p++ = '-';
    p = std::to_chars(p, buffer + sizeof buffer, magnitude / 10000).ptr;
    if (auto rest = static_cast<unsigned>(magnitude % 10000); rest != 0) {
        *p++ = '.';
        for (unsigned unit = 1000; rest != 0; rest %= unit, unit /= 10)
            *p++ = static_cast<char>('0' + rest / unit);
    }
    out.append(buffer, static_cast<std::size_t>(p - buffer));
}

char* putDecimal(char* p, ValueView decimal)
{
    return putScaled(p, decimal.decimalNegative(), magnitudeOf(decimal), decimal.decimalScale());
}

void appendDecimal(std::string& out, ValueView decimal)
{
    char buffer[kRoomForNumber];
    out.append(buffer, static_cast<std::size_t>(putDecimal(buffer, decimal) - buffer));
}

double decimalToReal(ValueView decimal)
{
    const Wide magnitude = magnitudeOf(decimal);
    const int scale = decimal.decimalScale();
    if (magnitude <= kExactWhole && scale <= 22) {  // both exact: one rounding
        const double d = static_cast<double>(decimal.decimalLow()) / kExactTens[scale];
        return decimal.decimalNegative() ? -d : d;
    }
    char buffer[64];
    char* const end = buffer + 48;
    char* first = putBackwards(end, magnitude, 1);
    end[0] = 'e';
    const auto behind = std::to_chars(end + 1, buffer + sizeof buffer, -scale);
    double d = 0;
    std::from_chars(first, behind.ptr, d);
    return decimal.decimalNegative() ? -d : d;
}

std::optional<double> parseReal(std::string_view text)
{
    text = trimmed(text);
    const bool negative = takeSign(text);
    if (text.empty() || !(isDigit(text.front()) || text.front() == '.'))
        return std::nullopt;
    double d = 0;
    const auto quick = shortNumber(text);
    if (quick && quick->digits <= kExactWhole) {
        d = static_cast<double>(quick->digits) / kExactTens[quick->scale];
        return negative ? -d : d;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), d);
    if (end != text.data() + text.size())
        return std::nullopt;
    if (error == std::errc::result_out_of_range && text.find_first_of("eE") != text.npos &&
        text.find('-') != text.npos)
        d = 0;  // too small for a double
    else if (error != std::errc())
        return std::nullopt;
    return negative ? -d : d;
}

std::optional<ValueView> parseDecimal(std::string_view text)
{
    text = trimmed(text);
    const bool negative = takeSign(text);
    int exponent = 0;
    if (const std::size_t e = text.find_first_of("eE"); e != text.npos) {
        const auto read = readExponent(text.substr(e + 1));
        if (!read)
            return std::nullopt;
        exponent = *read;
        text = text.substr(0, e);
    }
    Wide magnitude = 0;
    int scale = 0, digits = 0, zeros = 0;  // zeros not yet multiplied in: they may end the text
    bool point = false;
    for (const char c : text) {
        if (c == '.' && !point) {
            point = true;
            continue;
        }
        if (!isDigit(c))
            return std::nullopt;
        ++digits;
        scale += point;
        if (magnitude != 0 || c != '0')
            ++zeros;
        if (c == '0')
            continue;
        if (!shiftLeft(magnitude, zeros))
            return std::nullopt;
        magnitude += static_cast<unsigned>(c - '0');
        zeros = 0;
    }
    if (digits == 0)
        return std::nullopt;
    if (magnitude == 0)
        return ValueView::decimal(false, 0, 0, 0);
    scale -= zeros + exponent;  // the zeros at the end are left out of the magnitude
    if (scale > kMaxScale)
        return std::nullopt;
    if (scale < 0 && !shiftLeft(magnitude, -scale))
        return std::nullopt;
    scale = scale < 0 ? 0 : scale;
    if (magnitude >= kDecimalLimit)
        return std::nullopt;
    return ValueView::decimal(negative, static_cast<std::uint32_t>(magnitude >> 64),
                              static_cast<std::uint64_t>(magnitude),
                              static_cast<std::uint8_t>(scale));
}

std::optional<double> realOf(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Boolean:
        return v.asBoolean() ? -1.0 : 0.0;
    case ValueKind::Integer:
        return static_cast<double>(v.asInteger());
    case ValueKind::Currency:
        return static_cast<double>(v.asCurrency()) / 10000.0;
    case ValueKind::Real:
        return v.asReal();
    case ValueKind::Date:
        return v.asDate();
    case ValueKind::Decimal:
        return decimalToReal(v);
    case ValueKind::Text:
        return parseReal(v.asText());
    case ValueKind::Null:
    case ValueKind::Bytes:
        break;
    }
    return std::nullopt;
}

std::optional<std::int64_t> integerOf(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Boolean:
        return v.asBoolean() ? -1 : 0;
    case ValueKind::Integer:
        return v.asInteger();
    case ValueKind::Currency: {
        const auto bits = static_cast<std::uint64_t>(v.asCurrency());
        const bool negative = v.asCurrency() < 0;
        return signedOf(negative, divideRounded(negative ? 0 - bits : bits, 10000));
    }
    case ValueKind::Real:
        return wholeOfReal(v.asReal());
    case ValueKind::Date:
        return wholeOfReal(v.asDate());
    case ValueKind::Decimal:
        return decimalUnits(v, 0);
    case ValueKind::Text:
        return unitsOfText(v.asText(), 0);
    case ValueKind::Null:
    case ValueKind::Bytes:
        break;
    }
    return std::nullopt;
}

std::optional<std::int64_t> currencyOf(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Boolean:
        return v.asBoolean() ? -10000 : 0;
    case ValueKind::Integer: {
        std::int64_t units = 0;
        if (__builtin_mul_overflow(v.asInteger(), std::int64_t{10000}, &units))
            return std::nullopt;
        return units;
    }
    case ValueKind::Currency:
        return v.asCurrency();
    case ValueKind::Real:
        return wholeOfReal(v.asReal() * 10000.0);
    case ValueKind::Date:
        return wholeOfReal(v.asDate() * 10000.0);
    case ValueKind::Decimal:
        return decimalUnits(v, 4);
    case ValueKind::Text:
        return unitsOfText(v.asText(), 4);
    case ValueKind::Null:
    case ValueKind::Bytes:
        break;
    }
    return std::nullopt;
}

}  // namespace velnor
