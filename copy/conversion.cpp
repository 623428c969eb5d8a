#include "copy/conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "access/layout.h"
#include "access/value_text.h"
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

/// The characters of a number, taken from a text in which blanks don't count.
class NumberReader {
public:
    explicit NumberReader(std::string_view text) : text_(text) {}

    double read()
    {
        if (peek() == '&')
            return radixNumber();
        if (peek() == '-' || peek() == '+')
            sign();
        digits();
        if (peek() == '.') {
            keep('.');
            ++at_;
            digits();
        }
        exponent();
        return value();
    }

private:
    char peek()
    {
        while (at_ < text_.size() &&
               (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '\n'))
            ++at_;
        return at_ < text_.size() ? text_[at_] : '\0';
    }
    void keep(char c)
    {
        if (length_ == kept_.size())
            throw RunError(RunErrorNumber::Overflow, "The number has too many digits");
        kept_[length_++] = c;
    }
    void sign()
    {
        negative_ = peek() == '-';
        ++at_;
    }
    void digits()
    {
        for (char c = peek(); c >= '0' && c <= '9'; c = peek()) {
            keep(c);
            hasDigits_ = true;
            ++at_;
        }
    }
    void exponent()
    {
        const char c = peek();
        if (!hasDigits_ || (c != 'e' && c != 'E' && c != 'd' && c != 'D'))
            return;
        ++at_;
        const std::size_t mantissa = length_;
        keep('e');
        if (peek() == '-' || peek() == '+') {
            keep(peek());
            ++at_;
        }
        const std::size_t before = length_;
        digits();
        if (length_ == before)
            length_ = mantissa;  // "5 eggs" is 5
    }
    double value() const
    {
        if (!hasDigits_)
            return 0;
        double number = 0;
        const auto read = std::from_chars(kept_.data(), kept_.data() + length_, number);
        if (read.ec == std::errc::result_out_of_range && !isTiny())
            throw RunError(RunErrorNumber::Overflow, "The number is too large");
        return negative_ ? -number : number;
    }
    bool isTiny() const
    {
        const std::string_view kept(kept_.data(), length_);
        return kept.find("e-") != std::string_view::npos ||
               kept.find_first_of("123456789e") > kept.find('.');
    }
    double radixNumber()
    {
        ++at_;
        const char kind = peek();
        const int radix = kind == 'H' || kind == 'h' ? 16 : kind == 'O' || kind == 'o' ? 8 : 0;
        if (radix == 0)
            return 0;
        ++at_;
        std::uint64_t number = 0;
        for (int digit = digitOf(peek()); digit >= 0 && digit < radix; digit = digitOf(peek())) {
            if (number > UINT32_MAX / static_cast<unsigned>(radix) + 1)
                throw RunError(RunErrorNumber::Overflow, "The number is too large");
            number = number * static_cast<unsigned>(radix) + static_cast<unsigned>(digit);
            ++at_;
        }
        // Four hexadecimal digits are a 16-bit number with its sign, unless a "&" closes them.
        if (number <= UINT16_MAX && peek() != '&')
            return static_cast<std::int16_t>(number);
        return static_cast<std::int32_t>(number);
    }
    static int digitOf(char c)
    {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::array<char, 512> kept_{};
    std::size_t length_ = 0;
    bool negative_ = false;
    bool hasDigits_ = false;
};

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

double leadingNumber(std::string_view text)
{
    return NumberReader(text).read();
}

}  // namespace velnor
