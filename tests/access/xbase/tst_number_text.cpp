// The text of N and F fields.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "access/formats/xbase/number_text.h"
#include "access/value_text.h"

using namespace velnor;
using namespace velnor::xbase;

namespace {

ValueView readText(std::string_view text)
{
    return readNumber({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::string readAs(std::string_view text)
{
    const ValueView v = readText(text);
    if (v.isNull())
        return "Null";
    std::string out;
    appendText(out, v);
    return out;
}

/// What writeNumber puts into a field; "!" when it is too large, "?" when it is no number.
std::string writtenAs(ValueView value, int width, int decimals)
{
    std::string field(static_cast<std::size_t>(width), '#');
    switch (writeNumber(value, decimals,
                        {reinterpret_cast<std::uint8_t*>(field.data()), field.size()})) {
    case NumberFit::Written:
        return field;
    case NumberFit::TooLarge:
        return field.find_first_not_of('#') == field.npos ? "!" : "field was changed";
    case NumberFit::NoNumber:
        return "?";
    }
    return {};
}

std::string writtenAs(double d, int width, int decimals)
{
    return writtenAs(ValueView::real(d), width, decimals);
}

}  // namespace

TEST(NumberText, readsPlainNumbers)
{
    EXPECT_EQ(readAs("     12.50"), "12.5");
    EXPECT_EQ(readAs("-7"), "-7");
    EXPECT_EQ(readAs("+7.0"), "7");
    EXPECT_EQ(readAs(".5"), "0.5");
    EXPECT_EQ(readAs("5."), "5");
    EXPECT_EQ(readAs("-0.00"), "0");
    EXPECT_EQ(readAs("000123"), "123");
}

TEST(NumberText, readsTheLongestNumericPrefix)
{
    EXPECT_EQ(readAs("0   ."), "0");
    EXPECT_EQ(readAs("12abc"), "12");
    EXPECT_EQ(readAs("1,5"), "1.5");
    EXPECT_EQ(readAs("1,200.00"), "1.2");
    EXPECT_EQ(readAs("1.5E3"), "1500");
    EXPECT_EQ(readAs("1.5E"), "1.5");
    EXPECT_EQ(readAs(std::string_view("\0\0 42\0 ", 7)), "42");
}

TEST(NumberText, withoutADigitIsNull)
{
    for (const char* text : {"", "      ", "*****", "-", ".", "-.", "NaN", "e5"})
        EXPECT_EQ(readAs(text), "Null") << text;
}

TEST(NumberText, upToFifteenDigitsAreExactAndMakeNoDouble)
{
    EXPECT_EQ(readText("1234567890123.45").kind(), ValueKind::Decimal);
    EXPECT_EQ(readText("123456789012345").kind(), ValueKind::Integer);
    EXPECT_EQ(readText("1234567890123456").kind(), ValueKind::Real);
    EXPECT_EQ(readAs("12345678901234567890"), "1.2345678901234567e+19");
}

TEST(NumberText, writesTheDeclaredDecimalsAtTheRight)
{
    EXPECT_EQ(writtenAs(12.5, 10, 2), "     12.50");
    EXPECT_EQ(writtenAs(-3, 6, 0), "    -3");
    EXPECT_EQ(writtenAs(0, 4, 2), "0.00");
    EXPECT_EQ(writtenAs(ValueView::integer(-42), 8, 3), " -42.000");
    EXPECT_EQ(writtenAs(ValueView::currency(1234567), 10, 2), "    123.46");
    EXPECT_EQ(writtenAs(ValueView::decimal(true, 0, 12345, 3), 8, 1), "   -12.3");
}

TEST(NumberText, roundsHalvesAwayFromZeroOnTheDecimalDigits)
{
    EXPECT_EQ(writtenAs(2.675, 6, 2), "  2.68");  // the double is a little below
    EXPECT_EQ(writtenAs(-2.675, 6, 2), " -2.68");
    EXPECT_EQ(writtenAs(1.005, 6, 2), "  1.01");
    EXPECT_EQ(writtenAs(0.1 + 0.2, 8, 4), "  0.3000");
    EXPECT_EQ(writtenAs(ValueView::decimal(false, 0, 2675, 3), 6, 2), "  2.68");
    EXPECT_EQ(writtenAs(0.004, 6, 2), "  0.00");
    EXPECT_EQ(writtenAs(-0.004, 6, 2), "  0.00");
}

TEST(NumberText, whatDoesNotFitIsRefusedAndTheFieldLeftAlone)
{
    EXPECT_EQ(writtenAs(12345, 4, 0), "!");
    EXPECT_EQ(writtenAs(-1234, 4, 0), "!");
    EXPECT_EQ(writtenAs(99.995, 5, 2), "!");
    EXPECT_EQ(writtenAs(1e300, 20, 5), "!");
    EXPECT_EQ(writtenAs(ValueView::decimal(false, 0xFFFFFFFF, ~0ull, 0), 20, 0), "!");
    EXPECT_EQ(writtenAs(99999999999999.99999, 20, 5), "!");
    EXPECT_EQ(writtenAs(NAN, 20, 5), "?");
    EXPECT_EQ(writtenAs(INFINITY, 20, 5), "?");
    EXPECT_EQ(writtenAs(ValueView::boolean(true), 20, 5), "?");
}

TEST(NumberText, theZeroInFrontOfThePointGoesWhenOnlyThatHelps)
{
    EXPECT_EQ(writtenAs(0.5, 3, 2), ".50");
    EXPECT_EQ(writtenAs(-0.5, 4, 2), "-.50");
    EXPECT_EQ(writtenAs(1.5, 3, 2), "!");
}

TEST(NumberText, decimalNumbersComeBackAsTheyWere)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const int decimals = static_cast<int>(random() % 6);
        const auto digits = static_cast<std::int64_t>(random() % 1000000000000ull) - 500000000000;
        const double d = static_cast<double>(digits) / std::pow(10, decimals);
        const std::string field = writtenAs(d, 20, decimals);
        const ValueView back = readText(field);
        ASSERT_EQ(realOf(back), d) << field;
    }
}

TEST(NumberText, bothRoadsOfWritingAgree)
{
    std::mt19937_64 random(9);
    for (int i = 0; i < 20000; ++i) {
        // As a double with more digits than the field, and as the same decimal number.
        const auto digits = static_cast<std::int64_t>(random() % 10000000000ull);
        const double d = static_cast<double>(digits) / 1e6;
        const auto decimal = ValueView::decimal(false, 0, static_cast<std::uint64_t>(digits), 6);
        ASSERT_EQ(writtenAs(d, 12, 3), writtenAs(decimal, 12, 3)) << digits;
    }
}
