#include "copy/conversion.h"

#include <array>
#include <charconv>
#include <optional>

#include "access/layout.h"
#include "access/value_text.h"
#include "core/text.h"
#include "platform/run_error.h"

namespace velnor {
namespace {

constexpr int kInteger = static_cast<int>(FieldType::Integer);
constexpr int kLong = static_cast<int>(FieldType::Long);
constexpr int kSingle = static_cast<int>(FieldType::Single);
constexpr int kDouble = static_cast<int>(FieldType::Double);
constexpr int kDate = static_cast<int>(FieldType::Date);
constexpr int kText = static_cast<int>(FieldType::Text);

constexpr bool isPair(int a, int b, int x, int y)
{
    return (a == x && b == y) || (a == y && b == x);
}

/// The number with as many digits as people gave it: 7 for a Single, whose neighbours in a double
/// show digits that nobody typed, 15 for a Double.
double asShown(double number, bool single)
{
    std::array<char, 64> buffer;
    const auto end = buffer.data() + buffer.size();
    const auto made =
        single ? std::to_chars(buffer.data(), end, static_cast<float>(number))
               : std::to_chars(buffer.data(), end, number, std::chars_format::general, 15);
    double shown = number;
    std::from_chars(buffer.data(), made.ptr, shown);
    return shown;
}

void appendAsText(std::string& out, ValueView source, int sourceType)
{
    if (source.kind() == ValueKind::Real && (sourceType == kSingle || sourceType == kDouble))
        appendReal(out, asShown(source.asReal(), sourceType == kSingle));
    else
        appendText(out, source);
}

/// The whole text as a plain number; nothing for the rarer forms, which text::val reads.
std::optional<double> plainNumber(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return 0;
    text = text.substr(first, text.find_last_not_of(' ') + 1 - first);
    if (text.find_first_not_of("-.0123456789") != std::string_view::npos)
        return std::nullopt;
    double number = 0;
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end)
        return std::nullopt;
    return number;
}

ValueView leadingNumberOf(ValueView source, int sourceType, std::string& scratch)
{
    if (source.isNull())
        throw RunError(RunErrorNumber::InvalidUseOfNull, "A number is wanted, the text is Null");
    if (source.kind() == ValueKind::Text)
        return ValueView::real(leadingNumber(source.asText()));
    scratch.clear();
    appendAsText(scratch, source, sourceType);
    return ValueView::real(leadingNumber(scratch));
}

}  // namespace

Conversion conversionFor(int sourceType, int targetType)
{
    const int S = sourceType;
    const int T = targetType;
    if (S == T)
        return T == kText ? Conversion::CutText : Conversion::AsItIs;
    if (T == kText)
        return Conversion::ToText;
    if (isPair(S, T, kDouble, kDate) || isPair(S, T, kDouble, kLong) ||
        isPair(S, T, kDouble, kInteger))
        return Conversion::AsItIs;
    if (S == kText && (T == kDouble || T == kLong || T == kInteger))
        return Conversion::LeadingNumber;
    return Conversion::NotWritten;
}

bool convert(ValueView source, Conversion how, int sourceType, int targetSize, std::string& scratch,
             ValueView& out)
{
    switch (how) {
    case Conversion::NotWritten:
        return false;
    case Conversion::AsItIs:
        out = source;
        return true;
    case Conversion::CutText:
        out =
            source.kind() == ValueKind::Text
                ? ValueView::text(textPrefix(source.asText(), static_cast<std::size_t>(targetSize)))
                : source;
        return true;
    case Conversion::ToText:
        out = source;
        if (source.isNull() || source.kind() == ValueKind::Text)
            return true;
        scratch.clear();
        appendAsText(scratch, source, sourceType);
        out = ValueView::text(scratch);
        return true;
    case Conversion::LeadingNumber:
        out = leadingNumberOf(source, sourceType, scratch);
        return true;
    }
    return false;
}

double leadingNumber(std::string_view utf8)
{
    if (const auto plain = plainNumber(utf8))
        return *plain;
    return text::val(QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())));
}

}  // namespace velnor
