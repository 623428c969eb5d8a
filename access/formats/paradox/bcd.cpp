#include "access/formats/paradox/bcd.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

#include "access/value_text.h"

namespace velnor::paradox {
namespace {

constexpr int kDigits = 32;
constexpr int kExactDigits = 17;  // more than these are no longer a number that was typed
constexpr int kMostScale = 28;

using Digits = std::array<std::uint8_t, kDigits>;

/// The number as "123.45" with all its digits, without exponent.
std::string plainText(ValueView value)
{
    std::string text;
    if (value.kind() == ValueKind::Real && std::fabs(value.asReal()) < 1e33) {
        char buffer[80];
        text.assign(buffer, static_cast<std::size_t>(
                                std::snprintf(buffer, sizeof buffer, "%.17g", value.asReal())));
        if (text.find('e') == text.npos) {  // the shortest text that is the same number
            text.clear();
            appendReal(text, value.asReal());
        }
        if (text.find('e') != text.npos)
            text.assign(buffer, static_cast<std::size_t>(
                                    std::snprintf(buffer, sizeof buffer, "%.33f", value.asReal())));
        return text;
    }
    if (const auto number = value.kind() == ValueKind::Date ? realOf(value) : std::nullopt)
        value = ValueView::real(*number);
    if (value.kind() == ValueKind::Boolean)
        value = ValueView::integer(value.asBoolean() ? -1 : 0);
    appendText(text, value);
    return text;
}

/// Adds one to the last digit; false when it runs over.
bool increment(Digits& digits)
{
    for (int i = kDigits; i-- > 0;) {
        if (digits[static_cast<std::size_t>(i)] < 9) {
            ++digits[static_cast<std::size_t>(i)];
            return true;
        }
        digits[static_cast<std::size_t>(i)] = 0;
    }
    return false;
}

}  // namespace

ValueView decodeBcd(const std::uint8_t* bytes)
{
    if ((bytes[0] & 0xC0) == 0)
        return {};
    const bool negative = (bytes[0] & 0x80) == 0;
    int scale = bytes[0] & 0x3F;
    Digits digits{};
    for (std::size_t i = 0; i < kDigits; ++i) {
        std::uint8_t byte = bytes[1 + i / 2];
        byte = negative ? static_cast<std::uint8_t>(~byte) : byte;
        digits[i] = i % 2 ? byte & 15 : byte >> 4;
    }
    if (const auto bad = std::find_if(digits.begin(), digits.end(), [](int d) { return d > 9; });
        bad != digits.end())
        std::fill(bad, digits.end(), std::uint8_t{0});
    std::size_t end = kDigits;
    for (; end > 0 && scale > 0 && digits[end - 1] == 0; --end, --scale)
        continue;
    std::size_t first = 0;
    while (first < end && digits[first] == 0)
        ++first;
    if (static_cast<int>(end - first) <= kExactDigits && scale <= kMostScale) {
        std::uint64_t number = 0;
        for (std::size_t i = first; i < end; ++i)
            number = number * 10 + digits[i];
        return ValueView::decimal(negative && number != 0, 0, number,
                                  static_cast<std::uint8_t>(scale));
    }
    std::string text;
    for (std::size_t i = first; i < end; ++i)
        text += static_cast<char>('0' + digits[i]);
    text += "e-" + std::to_string(scale);
    const double number = parseReal(text).value_or(0);
    return ValueView::real(negative ? -number : number);
}

bool encodeBcd(ValueView value, int decimals, std::uint8_t* bytes)
{
    const std::string text = plainText(value);
    const bool negative = !text.empty() && text[0] == '-';
    std::string_view rest = std::string_view(text).substr(negative ? 1 : 0);
    if (rest.empty() || rest.find_first_not_of("0123456789.") != rest.npos)
        return false;
    const std::size_t point = std::min(rest.find('.'), rest.size());
    std::string_view whole = rest.substr(0, point);
    const std::string_view part = rest.substr(std::min(point + 1, rest.size()));
    whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
    if (static_cast<int>(whole.size()) > kDigits - decimals)
        return false;
    Digits digits{};
    const auto wholeEnd = static_cast<std::size_t>(kDigits - decimals);
    for (std::size_t i = 0; i < whole.size(); ++i)
        digits[wholeEnd - whole.size() + i] = static_cast<std::uint8_t>(whole[i] - '0');
    for (std::size_t i = 0; i < std::min<std::size_t>(part.size(), kDigits - wholeEnd); ++i)
        digits[wholeEnd + i] = static_cast<std::uint8_t>(part[i] - '0');
    if (part.size() > kDigits - wholeEnd && part[kDigits - wholeEnd] >= '5' && !increment(digits))
        return false;
    const bool zero = std::all_of(digits.begin(), digits.end(), [](int d) { return d == 0; });
    const bool below = negative && !zero;
    bytes[0] = static_cast<std::uint8_t>((below ? 0x40 : 0xC0) + decimals);
    for (std::size_t i = 0; i < kDigits; i += 2) {
        const auto byte = static_cast<std::uint8_t>(digits[i] << 4 | digits[i + 1]);
        bytes[1 + i / 2] = below ? static_cast<std::uint8_t>(~byte) : byte;
    }
    return true;
}

}  // namespace velnor::paradox
