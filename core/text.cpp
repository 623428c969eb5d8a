#include "core/text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "platform/run_error.h"

namespace velnor::text {
namespace {

[[noreturn]] void failCall()
{
    throw RunError(RunErrorNumber::InvalidCall, "Invalid procedure call or argument");
}

[[noreturn]] void failOverflow()
{
    throw RunError(RunErrorNumber::Overflow, "Overflow");
}

/// The text without what a number may hold in between: blanks, tabs, line feeds; cut at the first
/// character that no number holds.
std::string numberCharacters(const QString& s)
{
    std::string out;
    for (const QChar c : s) {
        if (c == u' ' || c == u'\t' || c == u'\n')
            continue;
        if (c.unicode() > 0x7E)
            break;
        out += static_cast<char>(c.unicode());
    }
    return out;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// &HFFFF is -1 and &HFFFFF is not: what fits 16 bits is read as a 16-bit number, then as one
/// of 32.
double radixValue(std::string_view digits, int base)
{
    unsigned long long value = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value, base);
    if (error == std::errc::result_out_of_range || value > 0xFFFFFFFFull)
        failOverflow();
    if (end == digits.begin())
        return 0;
    return value <= 0xFFFF ? static_cast<std::int16_t>(value) : static_cast<std::int32_t>(value);
}

/// Length of the decimal number that the text begins with; 0 when there is none.
std::size_t decimalLength(std::string_view s)
{
    const auto at = [&](std::size_t i) { return i < s.size() ? s[i] : '\0'; };
    std::size_t i = at(0) == '-' || at(0) == '+' ? 1 : 0;
    std::size_t digits = 0;
    for (; isDigit(at(i)); ++i)
        ++digits;
    if (at(i) == '.')
        for (++i; isDigit(at(i)); ++i)
            ++digits;
    if (digits == 0)
        return 0;
    if (const char e = at(i); e == 'E' || e == 'e' || e == 'D' || e == 'd') {
        std::size_t j = i + 1;
        if (at(j) == '+' || at(j) == '-')
            ++j;
        if (isDigit(at(j))) {
            while (isDigit(at(j)))
                ++j;
            i = j;
        }
    }
    return i;
}

/// Digits of a number without zeros at the end, and the power of ten of the first.
struct Digits {
    std::string text;
    int exponent = 0;
};

Digits digitsOf(double magnitude)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.14e", magnitude);
    const std::string_view printed = buffer;
    Digits digits;
    digits.text.assign(printed.substr(0, 1)).append(printed.substr(2, 14));
    digits.text.resize(digits.text.find_last_not_of('0') + 1);
    std::string_view exponent = printed.substr(17);
    if (exponent.starts_with('+'))
        exponent.remove_prefix(1);
    std::from_chars(exponent.begin(), exponent.end(), digits.exponent);
    return digits;
}

std::string scientific(const Digits& digits)
{
    std::string out = digits.text.substr(0, 1);
    if (digits.text.size() > 1)
        out += "." + digits.text.substr(1);
    char exponent[8];
    std::snprintf(exponent, sizeof exponent, "E%+03d", digits.exponent);
    return out + exponent;
}

std::string plain(Digits digits)
{
    if (digits.exponent < 0)
        return "0." + std::string(static_cast<std::size_t>(-digits.exponent - 1), '0') +
               digits.text;
    const auto whole = static_cast<std::size_t>(digits.exponent) + 1;
    if (digits.text.size() <= whole)
        return digits.text + std::string(whole - digits.text.size(), '0');
    return digits.text.insert(whole, ".");
}

constexpr int kMostDigits = 15;

}  // namespace

QString mid(const QString& s, int start, int length)
{
    if (start < 1 || length < 0)
        failCall();
    return s.mid(start - 1, length);
}

QString mid(const QString& s, int start)
{
    return mid(s, start, std::numeric_limits<int>::max());
}

QString left(const QString& s, int length)
{
    if (length < 0)
        failCall();
    return s.left(length);
}

QString right(const QString& s, int length)
{
    if (length < 0)
        failCall();
    return s.right(length);
}

int instr(const QString& s, const QString& what, int start)
{
    if (start < 1)
        failCall();
    if (start > s.size())
        return 0;
    return static_cast<int>(s.indexOf(what, start - 1)) + 1;
}

int instrRev(const QString& s, const QString& what)
{
    return s.isEmpty() ? 0 : static_cast<int>(s.lastIndexOf(what)) + (what.isEmpty() ? 0 : 1);
}

QString ltrim(const QString& s)
{
    qsizetype first = 0;
    while (first < s.size() && s[first] == u' ')
        ++first;
    return s.mid(first);
}

QString rtrim(const QString& s)
{
    qsizetype end = s.size();
    while (end > 0 && s[end - 1] == u' ')
        --end;
    return s.left(end);
}

QString trim(const QString& s)
{
    return ltrim(rtrim(s));
}

double val(const QString& s)
{
    const std::string characters = numberCharacters(s);
    std::string_view rest = characters;
    if (rest.size() >= 2 && rest[0] == '&') {
        const char kind = static_cast<char>(rest[1] | 0x20);
        if (kind == 'h' || kind == 'o')
            return radixValue(rest.substr(2), kind == 'h' ? 16 : 8);
        return 0;
    }
    std::string number(rest.substr(0, decimalLength(rest)));
    if (number.empty())
        return 0;
    for (char& c : number)
        if (c == 'D' || c == 'd')
            c = 'E';
    if (number[0] == '+')
        number.erase(0, 1);
    double value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error == std::errc::result_out_of_range) {
        if (number.find_first_of("eE") != std::string::npos &&
            number.find('-', 1) != std::string::npos)
            return 0;  // too small to be anything else
        failOverflow();
    }
    return value;
}

QString cstr(double number)
{
    if (number == 0)
        return "0";
    if (!std::isfinite(number))
        return std::isnan(number) ? "-1.#IND" : number < 0 ? "-1.#INF" : "1.#INF";
    const Digits digits = digitsOf(std::fabs(number));
    const int decimals = static_cast<int>(digits.text.size()) - 1 - digits.exponent;
    const bool fits = digits.exponent < kMostDigits && decimals <= kMostDigits;
    return QString::fromStdString((number < 0 ? "-" : "") +
                                  (fits ? plain(digits) : scientific(digits)));
}

QString str(double number)
{
    QString out = cstr(number);
    const bool negative = out.startsWith(u'-');
    if (negative)
        out.remove(0, 1);
    if (out.startsWith("0."))
        out.remove(0, 1);
    return (negative ? "-" : " ") + out;
}

short narrow16(long long n)
{
    if (n < std::numeric_limits<short>::min() || n > std::numeric_limits<short>::max())
        failOverflow();
    return static_cast<short>(n);
}

QString thousands(long long n)
{
    QString out = QString::number(n);
    const qsizetype first = n < 0 ? 1 : 0;
    for (qsizetype at = out.size() - 3; at > first; at -= 3)
        out.insert(at, u',');
    return out;
}

}  // namespace velnor::text
