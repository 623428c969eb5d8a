#include "access/formats/text/text_value.h"

#include <charconv>
#include <limits>

#include "access/formats/driver.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr int kMostWholeDigits = 15, kMostDigits = 17;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

std::size_t digitsAt(std::string_view text)
{
    std::size_t n = 0;
    while (n < text.size() && isDigit(text[n]))
        ++n;
    return n;
}

bool fitsLong(std::string_view number)
{
    std::int32_t value = 0;
    const char* end = number.data() + number.size();
    const auto read = std::from_chars(number.data(), end, value);
    return read.ec == std::errc() && read.ptr == end;
}

bool isExponent(std::string_view text)
{
    text.remove_prefix(1);
    if (!text.empty() && (text.front() == '-' || text.front() == '+'))
        text.remove_prefix(1);
    return !text.empty() && text.size() <= 3 && digitsAt(text) == text.size();
}

/// A number that a double gives back: no zeros in front, no more digits than it has.
unsigned numberKinds(std::string_view number, char point)
{
    std::string_view rest = number;
    if (rest.front() == '-')
        rest.remove_prefix(1);
    const std::size_t whole = digitsAt(rest);
    if (whole == 0 || (whole > 1 && rest.front() == '0'))
        return 0;
    rest.remove_prefix(whole);
    if (rest.empty()) {
        if (number == "-0" || whole > kMostWholeDigits)
            return 0;
        return fitsLong(number) ? kLong | kDouble : kDouble;
    }
    std::size_t behind = 0;
    if (rest.front() == point) {
        rest.remove_prefix(1);
        behind = digitsAt(rest);
        rest.remove_prefix(behind);
        if (behind == 0)
            return 0;
    }
    const bool exponent = !rest.empty() && (rest.front() == 'e' || rest.front() == 'E');
    if (whole + behind > kMostDigits || (!rest.empty() && !(exponent && isExponent(rest))))
        return 0;
    return kDouble;
}

/// A whole day, perhaps with a time: "2004-02-29", "2/29/2004 1:30:00 PM".
bool isDate(std::string_view text, const TextForm& form)
{
    double date = 0;
    if (!form.dateFormat.empty())
        return parseDateAs(form.dateFormat, text, date);
    if (text.size() < 8 || text.find_first_of("-/") == text.npos)
        return false;
    return parseDate(text).has_value();
}

bool isWord(std::string_view text, std::string_view word)
{
    return text.size() == word.size() && paths::sameName(text, word);
}

ValueView readBoolean(std::string_view text)
{
    for (const std::string_view yes : {"True", "Yes", "1", "-1"})
        if (isWord(text, yes))
            return ValueView::boolean(true);
    for (const std::string_view no : {"False", "No", "0"})
        if (isWord(text, no))
            return ValueView::boolean(false);
    return {};
}

ValueView readDate(std::string_view text, const TextForm& form)
{
    double date = 0;
    if (!form.dateFormat.empty() && parseDateAs(form.dateFormat, text, date))
        return ValueView::date(date);
    const auto plain = parseDate(text);  // what another program has added
    return plain ? ValueView::date(*plain) : ValueView();
}

/// Digits, sign and point only: the sign of a currency and marks between thousands are left out.
std::string_view plainMoney(std::string_view text, char point, std::string& scratch)
{
    scratch.clear();
    for (const char c : text)
        if (isDigit(c) || c == '-')
            scratch += c;
        else if (c == point)
            scratch += '.';
    if (!text.empty() && text.front() == '(')
        scratch.insert(0, "-");
    return scratch;
}

std::string_view withPoint(std::string_view text, const TextForm& form, std::string& scratch)
{
    if (form.decimalPoint == '.')
        return text;
    scratch.assign(text);
    for (char& c : scratch)
        if (c == form.decimalPoint)
            c = '.';
    return scratch;
}

ValueView readInteger(FieldType type, std::string_view number)
{
    const auto value = integerOf(ValueView::text(number));
    if (!value)
        return {};
    const auto within = [&](std::int64_t least, std::int64_t most) {
        return *value >= least && *value <= most ? ValueView::integer(*value) : ValueView();
    };
    switch (type) {
    case FieldType::Byte:
        return within(0, 255);
    case FieldType::Integer:
        return within(-32768, 32767);
    case FieldType::Long:
        return within(std::numeric_limits<std::int32_t>::min(),
                      std::numeric_limits<std::int32_t>::max());
    default:
        return ValueView::integer(*value);
    }
}

}  // namespace

unsigned kindsOf(std::string_view text, const TextForm& form)
{
    text = trimmed(text);
    if (text.empty() || text.size() > 64)
        return 0;
    const char first = text.front();
    if (first == 'T' || first == 't' || first == 'F' || first == 'f')
        return isWord(text, "True") || isWord(text, "False") ? kBoolean : 0;
    if (!isDigit(first) && first != '-' && form.dateFormat.empty())
        return 0;
    const unsigned number =
        isDigit(first) || first == '-' ? numberKinds(text, form.decimalPoint) : 0;
    return number ? number : isDate(text, form) ? kDate : 0;
}

ValueView readValue(FieldType type, std::string_view text, const TextForm& form,
                    std::string& scratch)
{
    if (valueKindOf(type) == ValueKind::Text)
        return ValueView::text(text);
    text = trimmed(text);
    if (text.empty())
        return {};
    switch (valueKindOf(type)) {
    case ValueKind::Boolean:
        return readBoolean(text);
    case ValueKind::Integer:
        return readInteger(type, withPoint(text, form, scratch));
    case ValueKind::Currency: {
        const auto units =
            currencyOf(ValueView::text(plainMoney(text, form.decimalPoint, scratch)));
        return units ? ValueView::currency(*units) : ValueView();
    }
    case ValueKind::Real: {
        const auto real = parseReal(withPoint(text, form, scratch));
        return real ? ValueView::real(*real) : ValueView();
    }
    case ValueKind::Decimal:
        return parseDecimal(withPoint(text, form, scratch)).value_or(ValueView());
    case ValueKind::Date:
        return readDate(text, form);
    default:
        return {};
    }
}

void appendValue(std::string& out, FieldType type, ValueView value, const TextForm& form)
{
    const std::size_t start = out.size();
    switch (value.kind()) {
    case ValueKind::Date:
        return form.dateFormat.empty() ? appendIsoDate(out, value.asDate())
                                       : appendDateAs(out, form.dateFormat, value.asDate());
    case ValueKind::Real:
        if (type == FieldType::Single) {
            char buffer[64];
            const auto done =
                std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(value.asReal()));
            out.append(buffer, done.ptr);
            break;
        }
        appendReal(out, value.asReal());
        break;
    case ValueKind::Text:
        out += value.asText();
        return;
    default:
        appendText(out, value);
    }
    if (form.decimalPoint != '.' && value.kind() != ValueKind::Boolean)
        for (std::size_t i = start; i < out.size(); ++i)
            if (out[i] == '.')
                out[i] = form.decimalPoint;
}

}  // namespace velnor::text
