#include <algorithm>
#include <array>
#include <cmath>

#include "access/value_text.h"
#include "tests/access/random/random_format.h"

namespace velnor::testing {
namespace {

std::string letters(std::size_t length, Random& random)
{
    static constexpr std::string_view kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    std::string text;
    while (text.size() < length)
        text += kLetters[random() % kLetters.size()];
    return text;
}

/// Often a name that others share, so that keys repeat.
std::string shortText(std::size_t most, Random& random)
{
    static constexpr std::array<std::string_view, 6> kNames{"Anna", "anna", "Bert",
                                                            "Zoe",  "M",    "Quentin"};
    std::string text(kNames[random() % kNames.size()]);
    if (below(random, 3))
        text += std::to_string(below(random, 400));
    else if (below(random, 3) == 0)
        text = letters(1 + below(random, static_cast<unsigned>(most)), random);
    text.resize(std::min(text.size(), most));
    return text;
}

std::string longText(Random& random)
{
    switch (below(random, 10)) {
    case 0:
        return letters(3000 + below(random, 9000), random);
    case 1:
    case 2:
        return letters(500 + below(random, 1500), random);
    default:
        return letters(1 + below(random, 120), random);
    }
}

std::string someBytes(std::size_t most, Random& random)
{
    std::string bytes(1 + below(random, static_cast<unsigned>(most)), '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

Value bytesOf(const std::string& bytes)
{
    return Value(
        ValueView::bytes({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
}

std::int64_t whole(Random& random, std::int64_t most)
{
    const std::int64_t n = static_cast<std::int64_t>(random()) % (most + 1);
    return below(random, 2) ? n : -n;
}

Value decimalOf(const FieldDef& field, Random& random)
{
    const int digits = std::clamp<int>(field.precision - field.scale - 1, 1, 8);
    const auto most = static_cast<std::int64_t>(std::pow(10, digits)) - 1;
    std::string text = std::to_string(whole(random, most));
    if (field.scale > 0)
        text += '.' + std::to_string(below(random, 9)) +
                (field.scale > 1 ? std::to_string(1 + below(random, 9)) : "");
    return Value(*parseDecimal(text));
}

std::string guid(Random& random)
{
    static constexpr std::string_view kForm = "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text(kForm);
    for (char& c : text)
        if (c == 'X')
            c = kDigits[random() % 16];
    return text;
}

double numberOf(ValueView v)
{
    switch (v.kind()) {
    case ValueKind::Boolean:
        return v.asBoolean() ? -1 : 0;
    case ValueKind::Currency:
        return static_cast<double>(v.asCurrency()) / 10000;
    default:
        return realOf(v).value_or(0);
    }
}

int blindToCase(std::string_view a, std::string_view b)
{
    const auto fold = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        if (fold(a[i]) != fold(b[i]))
            return static_cast<unsigned char>(fold(a[i])) < static_cast<unsigned char>(fold(b[i]))
                       ? -1
                       : 1;
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace

Value randomValue(const FieldDef& field, Random& random)
{
    switch (field.type) {
    case FieldType::Boolean:
        return Value(ValueView::boolean(below(random, 2)));
    case FieldType::Byte:
        return Value(ValueView::integer(below(random, 256)));
    case FieldType::Integer:
        return Value(ValueView::integer(whole(random, 32767)));
    case FieldType::Long:
    case FieldType::BigInt:
        return Value(ValueView::integer(whole(random, below(random, 2) ? 900 : 2000000000)));
    case FieldType::Currency:
        return Value(ValueView::currency(whole(random, 99999999) * 100));
    case FieldType::Single:
        return Value(ValueView::real(static_cast<double>(whole(random, 100000)) / 8));
    case FieldType::Double:
    case FieldType::Float:
        return Value(ValueView::real(static_cast<double>(whole(random, 100000000)) / 64));
    case FieldType::Numeric:
    case FieldType::Decimal:
        return decimalOf(field, random);
    case FieldType::Date:
        return Value(ValueView::date(20000 + below(random, 30000)));
    case FieldType::Time:
        return Value(ValueView::date(below(random, 86400) / 86400.0));
    case FieldType::TimeStamp:
        return Value(ValueView::date(20000 + below(random, 30000) + below(random, 24) / 24.0));
    case FieldType::Guid:
        return Value(ValueView::text(guid(random)));
    case FieldType::Binary:
    case FieldType::VarBinary:
        return bytesOf(someBytes(static_cast<std::size_t>(field.size), random));
    case FieldType::LongBinary:
        return bytesOf(someBytes(below(random, 8) ? 200 : 9000, random));
    case FieldType::Memo:
        return Value(ValueView::text(longText(random)));
    default:
        return Value(ValueView::text(shortText(static_cast<std::size_t>(field.size), random)));
    }
}

int compareValues(ValueView a, ValueView b)
{
    if (a.isNull() || b.isNull())
        return a.isNull() == b.isNull() ? 0 : a.isNull() ? -1 : 1;
    if (a.kind() == ValueKind::Text)
        return blindToCase(a.asText(), b.asText());
    if (a.kind() == ValueKind::Bytes) {
        const auto x = a.asBytes(), y = b.asBytes();
        return std::lexicographical_compare(x.begin(), x.end(), y.begin(), y.end())   ? -1
               : std::lexicographical_compare(y.begin(), y.end(), x.begin(), x.end()) ? 1
                                                                                      : 0;
    }
    const double x = numberOf(a), y = numberOf(b);
    return x < y ? -1 : x > y ? 1 : 0;
}

}  // namespace velnor::testing
