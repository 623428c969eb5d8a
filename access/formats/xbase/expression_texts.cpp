// What index expressions make of texts and dates.
#include <charconv>
#include <cstring>

#include "access/formats/xbase/expression_run.h"
#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/moments.h"
#include "access/formats/xbase/number_text.h"
#include "access/value_text.h"

namespace velnor::xbase {
namespace {

using Op = ExpressionOperator;
using Type = ExpressionType;

}  // namespace

/// UPPER and LOWER. In pages of two bytes a character the second byte of a pair is left alone.
ExpressionValue ExpressionRun::changed(const ExpressionPart& part) const
{
    const ExpressionValue a = value(part.a);
    const std::uint8_t* table = part.op == Op::Upper ? upper : lower;
    const bool single = header.codePage->singleByte();
    std::uint8_t* to = placeOf(part);
    for (std::uint32_t i = 0; i < a.length; ++i) {
        to[i] = table[a.text[i]];
        if (!single && a.text[i] >= 0x81 && i + 1 < a.length) {
            ++i;
            to[i] = a.text[i];
        }
    }
    return text(to, a.length);
}

ExpressionValue ExpressionRun::piece(const ExpressionPart& part) const
{
    const ExpressionValue a = value(part.a);
    std::uint32_t from = 0, to = a.length;
    if (part.op == Op::TrimLeft || part.op == Op::TrimBoth)
        while (from < to && a.text[from] == ' ')
            ++from;
    if (part.op == Op::TrimRight || part.op == Op::TrimBoth)
        while (to > from && a.text[to - 1] == ' ')
            --to;
    if (part.op == Op::Left)
        to = countOf(numberOf(value(part.b)), a.length);
    if (part.op == Op::Right)
        from = a.length - countOf(numberOf(value(part.b)), a.length);
    if (part.op == Op::Substring) {
        from = countOf(numberOf(value(part.b)) - 1, a.length);
        if (part.c >= 0)
            to = from + countOf(numberOf(value(part.c)), a.length - from);
    }
    return text(a.text + from, to - from);
}

ExpressionValue ExpressionRun::numberText(const ExpressionPart& part) const
{
    const double n = numberOf(value(part.a));
    const int decimals = part.c < 0 ? 0 : static_cast<int>(std::min(numberOf(value(part.c)), 30.0));
    std::uint8_t* to = placeOf(part);
    char digits[400];
    const auto made =
        std::to_chars(digits, digits + sizeof digits, n, std::chars_format::fixed, decimals);
    const auto length = static_cast<std::size_t>(made.ptr - digits);
    if (made.ec != std::errc() || length > part.width) {
        std::memset(to, '*', part.width);
    } else {
        std::memset(to, ' ', part.width - length);
        std::memcpy(to + part.width - length, digits, length);
    }
    return text(to, part.width);
}

ExpressionValue ExpressionRun::padded(const ExpressionPart& part) const
{
    ExpressionValue a = value(part.a);
    std::uint8_t* to = placeOf(part);
    char digits[32];
    if (a.type != Type::Text) {
        const auto made =
            std::to_chars(digits, digits + sizeof digits,
                          static_cast<std::int64_t>(std::clamp(numberOf(a), -9e18, 9e18)));
        a = text(reinterpret_cast<const std::uint8_t*>(digits),
                 static_cast<std::size_t>(made.ptr - digits));
    }
    const ExpressionValue fill = part.c >= 0 ? value(part.c) : ExpressionValue{};
    const std::uint8_t with = fill.length ? fill.text[0] : ' ';
    const std::uint32_t length = std::min(a.length, part.width);
    const std::uint32_t rest = part.width - length;
    const bool left = part.op == Op::PadLeft;
    std::memmove(to + (left ? rest : 0), a.text, length);
    std::memset(to + (left ? 0 : length), with, rest);
    return text(to, part.width);
}

ExpressionValue ExpressionRun::dayText(const ExpressionPart& part) const
{
    const double julian = value(part.a).number;
    std::uint8_t* to = placeOf(part);
    std::uint8_t eight[8];
    if (julian <= 0 || julian > 1e8 ||
        !writeDay(static_cast<std::int64_t>(julian) - kJulianOfDayZero, eight)) {
        std::memcpy(to, part.op == Op::DayShown ? "  /  /  " : "        ", 8);
    } else if (part.op == Op::DayShown) {
        const std::uint8_t shown[] = {eight[4], eight[5], '/',      eight[6],
                                      eight[7], '/',      eight[2], eight[3]};
        std::memcpy(to, shown, 8);
    } else {
        std::memcpy(to, eight, 8);
    }
    return text(to, 8);
}

ExpressionValue ExpressionRun::calendar(const ExpressionPart& part) const
{
    const double julian = value(part.a).number;
    std::uint8_t eight[8];
    if (julian <= 0 || julian > 1e8 ||
        !writeDay(static_cast<std::int64_t>(julian) - kJulianOfDayZero, eight))
        return number(0);
    const auto digits = [&](int from, int to) {
        int n = 0;
        for (; from < to; ++from)
            n = n * 10 + (eight[from] - '0');
        return number(n);
    };
    return part.op == Op::Year ? digits(0, 4) : part.op == Op::Month ? digits(4, 6) : digits(6, 8);
}

/// Month, day, year of two or four digits.
double dayOfText(const ExpressionValue& v)
{
    int parts[3] = {}, part = 0, yearDigits = 0;
    for (std::uint32_t i = 0; i < v.length; ++i) {
        const std::uint8_t c = v.text[i];
        if (c >= '0' && c <= '9') {
            parts[part] = std::min(parts[part] * 10 + (c - '0'), 99999);
            yearDigits += part == 2;
        } else if (c != ' ' && ++part > 2) {
            return 0;
        }
    }
    const int year = yearDigits <= 2 ? parts[2] + 1900 : parts[2];
    if (!validDay(year, parts[0], parts[1]))
        return 0;
    return static_cast<double>(dayNumber(year, parts[0], parts[1]) + kJulianOfDayZero);
}

ExpressionValue ExpressionRun::descended(const ExpressionPart& part) const
{
    const ExpressionValue a = value(part.a);
    if (a.type == Type::Date)
        return number(5231808 - a.number);
    if (a.type != Type::Text)
        return number(-numberOf(a));
    std::uint8_t* to = placeOf(part);
    for (std::uint32_t i = 0; i < a.length; ++i)
        to[i] = static_cast<std::uint8_t>(0 - a.text[i]);
    return text(to, a.length);
}

ExpressionValue ExpressionRun::empty(const ExpressionPart& part) const
{
    const ExpressionValue a = value(part.a);
    if (a.type == Type::Text)
        return truth(std::all_of(a.text, a.text + a.length,
                                 [](std::uint8_t c) { return c == ' ' || (c >= 9 && c <= 13); }));
    return truth(a.type == Type::Logical ? !a.truth : numberOf(a) == 0);
}

double valOf(const ExpressionValue& v)
{
    std::uint32_t from = 0;
    while (from < v.length && v.text[from] == ' ')
        ++from;
    std::uint32_t to = from;
    while (to < v.length && (v.text[to] == '.' || (v.text[to] >= '0' && v.text[to] <= '9') ||
                             (to == from && (v.text[to] == '-' || v.text[to] == '+'))))
        ++to;
    return realOf(readNumber({v.text + from, to - from})).value_or(0);
}

}  // namespace velnor::xbase
