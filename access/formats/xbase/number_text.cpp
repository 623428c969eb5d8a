#include "access/formats/xbase/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

namespace velnor::xbase {
namespace {

constexpr int kExactDigits = 15;
constexpr int kMostDecimals = 18;

bool isDigit(std::uint8_t c)
{
    return static_cast<std::uint8_t>(c - '0') <= 9;
}
bool isPadding(std::uint8_t c)
{
    return c == ' ' || c == 0;
}

/// The numeric prefix as a plain text for the converter; false when it holds no digit.
bool numericPrefix(const std::uint8_t* p, const std::uint8_t* end, char* text, std::size_t& size)
{
    const auto put = [&](std::uint8_t c) { text[size++] = static_cast<char>(c); };
    const auto digits = [&] {
        const std::uint8_t* from = p;
        for (; p != end && isDigit(*p); ++p)
            put(*p);
        return p != from;
    };
    if (p != end && (*p == '-' || *p == '+')) {
        if (*p == '-')
            put('-');
        ++p;
    }
    bool any = digits();
    if (p != end && (*p == '.' || *p == ',')) {
        put('.');
        ++p;
        any |= digits();
    }
    if (!any)
        return false;
    if (p != end && (*p == 'e' || *p == 'E')) {
        const std::size_t before = size;
        put('e');
        ++p;
        if (p != end && (*p == '-' || *p == '+'))
            put(*p++);
        if (!digits())
            size = before;
    }
    return true;
}

/// Everything that the quick road does not take: exponents, rubbish behind the number, many digits.
ValueView readSlowly(const std::uint8_t* p, const std::uint8_t* end)
{
    char text[260];
    std::size_t size = 0;
    if (!numericPrefix(p, end, text, size))
        return {};
    double d = 0;
    if (std::from_chars(text, text + size, d).ec != std::errc{})
        return {};
    return ValueView::real(d);
}

/// A number as (-1)^negative * magnitude / 10^scale.
__extension__ using Wide = unsigned __int128;
struct DecimalParts {
    Wide magnitude = 0;
    int scale = 0;
    bool negative = false;
};

constexpr Wide powerOfTen(int n)
{
    Wide power = 1;
    while (n-- > 0)
        power *= 10;
    return power;
}

constexpr double kTens[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                            1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};

/// The digits of the shortest text that reads back as the same double.
DecimalParts shortestDigits(double d)
{
    char text[32];
    const char* end =
        std::to_chars(text, text + sizeof text, std::fabs(d), std::chars_format::scientific).ptr;
    DecimalParts parts;
    parts.negative = std::signbit(d);
    const char* p = text;
    for (bool behindPoint = false; p != end && *p != 'e'; ++p) {
        if (*p == '.') {
            behindPoint = true;
            continue;
        }
        parts.magnitude = parts.magnitude * 10 + static_cast<unsigned>(*p - '0');
        parts.scale += behindPoint;
    }
    int exponent = 0;
    if (p != end) {
        p += p[1] == '+' ? 2 : 1;
        std::from_chars(p, end, exponent);
    }
    parts.scale -= exponent;
    return parts;
}

DecimalParts partsOfReal(double d, int decimals)
{
    // A double that came from a decimal text of that many places is the double nearest to it: one
    // multiplication finds the digits again, and one division proves them.
    const double scaled = std::nearbyint(std::fabs(d) * kTens[decimals]);
    if (scaled < 9007199254740992.0 && scaled / kTens[decimals] == std::fabs(d))
        return {static_cast<std::uint64_t>(scaled), decimals, std::signbit(d)};
    return shortestDigits(d);
}

std::optional<DecimalParts> partsOf(ValueView v, int decimals)
{
    const auto whole = [](std::int64_t i, int scale) {
        const auto bits = static_cast<std::uint64_t>(i);
        return DecimalParts{i < 0 ? 0 - bits : bits, scale, i < 0};
    };
    switch (v.kind()) {
    case ValueKind::Integer:
        return whole(v.asInteger(), 0);
    case ValueKind::Currency:
        return whole(v.asCurrency(), 4);
    case ValueKind::Decimal:
        return DecimalParts{static_cast<Wide>(v.decimalHigh()) << 64 | v.decimalLow(),
                            v.decimalScale(), v.decimalNegative()};
    case ValueKind::Real:
        if (!std::isfinite(v.asReal()))
            return std::nullopt;
        return partsOfReal(v.asReal(), decimals);
    default:
        return std::nullopt;
    }
}

/// Brings the magnitude to `decimals` places; nothing when it is too large for any field.
std::optional<std::uint64_t> rescaled(const DecimalParts& parts, int decimals, bool& tooLarge)
{
    Wide magnitude = parts.magnitude;
    const int shift = decimals - parts.scale;
    if (shift >= 0) {
        if (magnitude != 0 && (shift > 20 || magnitude > powerOfTen(38) / powerOfTen(shift)))
            tooLarge = true;
        else
            magnitude *= powerOfTen(magnitude ? shift : 0);
    } else if (-shift > 37) {
        magnitude = 0;
    } else {
        const Wide unit = powerOfTen(-shift);
        magnitude = magnitude / unit + (magnitude % unit >= unit - magnitude % unit);
    }
    if (tooLarge || magnitude > ~std::uint64_t{0}) {
        tooLarge = true;
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(magnitude);
}

/// The digits from the right, with the point; returns where they begin in `text`.
std::size_t layOut(std::uint64_t magnitude, int decimals, bool negative, char (&text)[48])
{
    std::size_t at = sizeof text;
    for (int i = 0; i < decimals; ++i, magnitude /= 10)
        text[--at] = static_cast<char>('0' + magnitude % 10);
    if (decimals)
        text[--at] = '.';
    do {
        text[--at] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (negative)
        text[--at] = '-';
    return at;
}

}  // namespace

ValueView readNumber(std::span<const std::uint8_t> field)
{
    const std::uint8_t* p = field.data();
    const std::uint8_t* end = p + field.size();
    for (; end - p >= 4; p += 4) {  // numbers stand at the right: step over the blanks in front
        std::uint32_t four;
        std::memcpy(&four, p, 4);
        if (four != 0x20202020u)
            break;
    }
    while (p != end && isPadding(*p))
        ++p;
    if (p == end)
        return {};
    const std::uint8_t* const begin = p;
    while (isPadding(end[-1]))
        --end;
    const bool negative = *p == '-';
    if (negative || *p == '+')
        ++p;
    std::uint64_t magnitude = 0;
    const std::uint8_t* const first = p;
    while (p != end && isDigit(*p))
        magnitude = magnitude * 10 + (*p++ - '0');
    auto digits = p - first;
    std::uint8_t scale = 0;
    if (p != end && (*p == '.' || *p == ',')) {
        const std::uint8_t* const fraction = ++p;
        while (p != end && isDigit(*p))
            magnitude = magnitude * 10 + (*p++ - '0');
        digits += p - fraction;
        scale = static_cast<std::uint8_t>(std::min<std::ptrdiff_t>(p - fraction, 255));
    }
    if (p != end || digits == 0 || digits > kExactDigits)
        return readSlowly(begin, end);
    if (scale == 0) {
        const auto value = static_cast<std::int64_t>(magnitude);
        return ValueView::integer(negative ? -value : value);
    }
    return ValueView::decimal(negative && magnitude, 0, magnitude, scale);
}

NumberFit writeNumber(ValueView value, int decimals, std::span<std::uint8_t> field)
{
    if (decimals > kMostDecimals)
        return NumberFit::TooLarge;
    const auto parts = partsOf(value, decimals);
    if (!parts)
        return NumberFit::NoNumber;
    bool tooLarge = false;
    const auto magnitude = rescaled(*parts, decimals, tooLarge);
    if (!magnitude)
        return NumberFit::TooLarge;
    char text[48];
    const bool negative = parts->negative && *magnitude != 0;
    std::size_t at = layOut(*magnitude, decimals, negative, text);
    std::size_t size = sizeof text - at;
    const bool zeroInFront = decimals && text[at + negative] == '0';
    if (size == field.size() + 1 && zeroInFront) {  // ".50" where "0.50" is one too long
        ++at;
        --size;
        if (negative)
            text[at] = '-';
    }
    if (size > field.size())
        return NumberFit::TooLarge;
    std::memset(field.data(), ' ', field.size() - size);
    std::memcpy(field.data() + field.size() - size, text + at, size);
    return NumberFit::Written;
}

}  // namespace velnor::xbase
