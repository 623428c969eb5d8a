// Values as texts and numbers.
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "access/value.h"
#include "access/value_text.h"

namespace velnor {
namespace {

using ::testing::Eq;
using ::testing::Optional;

std::string real(double d)
{
    std::string out;
    appendReal(out, d);
    return out;
}

std::string text(ValueView v)
{
    std::string out;
    appendText(out, v);
    return out;
}

std::string iso(double date)
{
    std::string out;
    appendIsoDate(out, date);
    return out;
}

std::string decimalText(std::string_view from)
{
    const auto read = parseDecimal(from);
    if (!read)
        return "nothing";
    std::string out;
    appendDecimal(out, *read);
    return out;
}

TEST(ValueText, everyDayFromYear1To9999IsWrittenAsItsCalendarDay)
{
    std::string quick;
    for (double day = -693593; day <= 2958465; ++day) {
        quick.clear();
        appendIsoDate(quick, day);
        const CivilTime t = civilTime(day);
        char text[32];
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", t.year, t.month, t.day);
        ASSERT_EQ(quick, text);
    }
}

TEST(RealText, isTheShortestThatReadsBack)
{
    EXPECT_EQ(real(0), "0");
    EXPECT_EQ(real(-17), "-17");
    EXPECT_EQ(real(0.1), "0.1");
    EXPECT_EQ(real(-12.25), "-12.25");
    EXPECT_EQ(real(1234567.8901), "1234567.8901");
    EXPECT_EQ(real(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(real(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(real(99999999999.9999), "99999999999.9999");
}

TEST(RealText, hasNoExponentBelow1e15AndFrom1em5On)
{
    EXPECT_EQ(real(999999999999999), "999999999999999");
    EXPECT_EQ(real(1e15), "1e+15");
    EXPECT_EQ(real(0.00001), "0.00001");
    EXPECT_EQ(real(0.000009), "9e-06");
    EXPECT_EQ(real(1e300), "1e+300");
}

TEST(RealText, namesWhatIsNoNumber)
{
    EXPECT_EQ(real(std::numeric_limits<double>::infinity()), "Infinity");
    EXPECT_EQ(real(-std::numeric_limits<double>::infinity()), "-Infinity");
    EXPECT_EQ(real(std::nan("")), "NaN");
}

TEST(RealText, readsBackAsTheSameDouble)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const int places = static_cast<int>(random() % 12);
        const auto digits = static_cast<double>(static_cast<std::int64_t>(random()) >> (i % 60));
        const double d = digits / std::pow(10, places);
        ASSERT_THAT(parseReal(real(d)), Optional(d)) << real(d);
    }
}

TEST(CurrencyText, dropsZerosAtTheEnd)
{
    EXPECT_EQ(text(ValueView::currency(12345000)), "1234.5");
    EXPECT_EQ(text(ValueView::currency(-1)), "-0.0001");
    EXPECT_EQ(text(ValueView::currency(0)), "0");
    EXPECT_EQ(text(ValueView::currency(70000)), "7");
    EXPECT_EQ(text(ValueView::currency(std::numeric_limits<std::int64_t>::min())),
              "-922337203685477.5808");
}

TEST(DecimalText, isExact)
{
    EXPECT_EQ(decimalText("79228162514264337593543950335"), "79228162514264337593543950335");
    EXPECT_EQ(decimalText("79228162514264337593543950336"), "nothing");
    EXPECT_EQ(decimalText("-0.0000000000000000000000000001"), "-0.0000000000000000000000000001");
    EXPECT_EQ(decimalText("0.00000000000000000000000000001"), "nothing");
    EXPECT_EQ(decimalText("7.9228162514264337593543950335"), "7.9228162514264337593543950335");
    EXPECT_EQ(decimalText(" 001.500 "), "1.5");
    EXPECT_EQ(decimalText("100"), "100");
    EXPECT_EQ(decimalText("1e5"), "100000");
    EXPECT_EQ(decimalText("12.5E-3"), "0.0125");
    EXPECT_EQ(decimalText("-0"), "0");
    EXPECT_EQ(decimalText("0.000000000000000000000000000000000000"), "0");
    EXPECT_EQ(decimalText("1e29"), "nothing");
    EXPECT_EQ(decimalText("1.2.3"), "nothing");
    EXPECT_EQ(decimalText("."), "nothing");
    EXPECT_EQ(decimalText("--1"), "nothing");
    EXPECT_EQ(decimalText(""), "nothing");
    EXPECT_EQ(decimalText("1" + std::string(5000, '0')), "nothing");
}

TEST(DecimalText, aScaleFromDamagedBytesIsNoHarm)
{
    EXPECT_EQ(text(ValueView::decimal(true, ~0u, ~0ull, 255)).size(), 258u);
    EXPECT_THAT(integerOf(ValueView::decimal(true, ~0u, ~0ull, 255)), Optional(0));
}

TEST(DecimalReal, isCorrectlyRounded)
{
    EXPECT_EQ(decimalToReal(*parseDecimal("0.1")), 0.1);
    EXPECT_EQ(decimalToReal(*parseDecimal("-79228162514264337593543950335")),
              -79228162514264337593543950335.0);
    EXPECT_EQ(decimalToReal(*parseDecimal("9007199254740993")), 9007199254740992.0);
    EXPECT_EQ(decimalToReal(*parseDecimal("1.2345678901234567890123456789")),
              1.2345678901234567890123456789);
}

TEST(ParseReal, readsTheWholeTextOrNothing)
{
    EXPECT_THAT(parseReal("123"), Optional(123.0));
    EXPECT_THAT(parseReal(" -1.50 "), Optional(-1.5));
    EXPECT_THAT(parseReal("+2"), Optional(2.0));
    EXPECT_THAT(parseReal("1e5"), Optional(1e5));
    EXPECT_THAT(parseReal(".5"), Optional(0.5));
    EXPECT_THAT(parseReal("123456789012345678901234567890"), Optional(1.2345678901234568e29));
    EXPECT_THAT(parseReal("1e-999"), Optional(0.0));
    EXPECT_EQ(parseReal("1e999"), std::nullopt);
    for (const char* bad : {"", " ", "12abc", "abc", "1,5", "0x10", "inf", "nan", "-", "1 2", "."})
        EXPECT_EQ(parseReal(bad), std::nullopt) << bad;
}

TEST(IntegerOf, roundsHalfToEven)
{
    EXPECT_THAT(integerOf(ValueView::real(2.5)), Optional(2));
    EXPECT_THAT(integerOf(ValueView::real(3.5)), Optional(4));
    EXPECT_THAT(integerOf(ValueView::real(-2.5)), Optional(-2));
    EXPECT_THAT(integerOf(ValueView::currency(25000)), Optional(2));
    EXPECT_THAT(integerOf(ValueView::currency(-35000)), Optional(-4));
    EXPECT_THAT(integerOf(ValueView::text("2.5000000000000000001")), Optional(3));
    EXPECT_THAT(integerOf(*parseDecimal("-2.5")), Optional(-2));
    EXPECT_THAT(integerOf(ValueView::boolean(true)), Optional(-1));
    EXPECT_THAT(integerOf(ValueView::text("9223372036854775807")),
                Optional(std::numeric_limits<std::int64_t>::max()));
}

TEST(IntegerOf, hasNothingForWhatIsNoNumber)
{
    EXPECT_EQ(integerOf(ValueView::null()), std::nullopt);
    EXPECT_EQ(integerOf(ValueView::text("x")), std::nullopt);
    EXPECT_EQ(integerOf(ValueView::bytes({})), std::nullopt);
    EXPECT_EQ(integerOf(ValueView::real(9.3e18)), std::nullopt);
    EXPECT_EQ(integerOf(ValueView::real(std::nan(""))), std::nullopt);
    EXPECT_EQ(integerOf(ValueView::text("9223372036854775808")), std::nullopt);
}

TEST(CurrencyOf, isExactForDecimalsAndTexts)
{
    EXPECT_THAT(currencyOf(ValueView::text("922337203685477.5807")),
                Optional(std::numeric_limits<std::int64_t>::max()));
    EXPECT_THAT(currencyOf(ValueView::text("0.00005")), Optional(0));
    EXPECT_THAT(currencyOf(ValueView::text("0.00015")), Optional(2));
    EXPECT_THAT(currencyOf(ValueView::real(1.1)), Optional(11000));
    EXPECT_THAT(currencyOf(ValueView::integer(-3)), Optional(-30000));
    EXPECT_EQ(currencyOf(ValueView::integer(1'000'000'000'000'000)), std::nullopt);
}

TEST(Days, countFrom1899_12_30)
{
    EXPECT_EQ(dayNumber(1899, 12, 30), 0);
    EXPECT_EQ(dayNumber(1900, 1, 1), 2);
    EXPECT_EQ(dayNumber(1970, 1, 1), 25569);
    EXPECT_EQ(dayNumber(9999, 12, 31), 2958465);
    EXPECT_EQ(dayNumber(100, 1, 1), -657434);
    EXPECT_TRUE(validDay(2000, 2, 29));
    EXPECT_FALSE(validDay(1900, 2, 29));
    EXPECT_FALSE(validDay(2001, 13, 1));
    EXPECT_FALSE(validDay(2001, 4, 31));
}

TEST(Days, eachDayOfFourCenturiesComesBack)
{
    for (std::int64_t day = dayNumber(1700, 1, 1); day < dayNumber(2101, 1, 1); ++day) {
        const CivilTime t = civilTime(static_cast<double>(day));
        ASSERT_TRUE(validDay(t.year, t.month, t.day)) << day;
        ASSERT_EQ(dayNumber(t.year, t.month, t.day), day);
    }
}

TEST(Dates, theTimeBeforeDayZeroIsAPositiveAmount)
{
    EXPECT_EQ(iso(-1.25), "1899-12-29 06:00:00");
    EXPECT_EQ(iso(1.25), "1899-12-31 06:00:00");
    EXPECT_EQ(dateFromCivil({1899, 12, 29, 6, 0, 0, 0}), -1.25);
}

TEST(Dates, aTimeThatRoundsUpToMidnightIsTheNextDay)
{
    EXPECT_EQ(iso(37987.999999), "2004-01-02");
    EXPECT_EQ(civilTime(37987.99999999999).day, 2);
    EXPECT_EQ(iso(-1.9999999), "1899-12-30");
}

TEST(Dates, wildNumbersStayWithinBounds)
{
    EXPECT_FALSE(iso(1e300).empty());
    EXPECT_FALSE(iso(-1e300).empty());
    EXPECT_EQ(iso(std::nan("")), "1899-12-30");
}

TEST(Dates, readTheirForms)
{
    const double day = static_cast<double>(dayNumber(2004, 3, 15));
    EXPECT_THAT(parseDate("2004-03-15"), Optional(day));
    EXPECT_THAT(parseDate(" 3/15/2004 "), Optional(day));
    EXPECT_THAT(parseDate("2004-03-15 12:00"), Optional(day + 0.5));
    EXPECT_THAT(parseDate("2004-03-15 18:00:00"), Optional(day + 0.75));
    EXPECT_THAT(parseDate("3/15/2004 6:00:00 PM"), Optional(day + 0.75));
    EXPECT_THAT(parseDate("3/15/2004 12:00 am"), Optional(day));
    EXPECT_THAT(parseDate("6:00 PM"), Optional(0.75));
    EXPECT_THAT(parseDate("06:00"), Optional(0.25));
    for (const char* bad : {"", "x", "2004-02-30", "13/1/2004", "3/15/04", "3/15/2004 25:00",
                            "3/15/2004 13:00 PM", "12", "2004-03-15 1", "2004-03-15x", "1/1/20045"})
        EXPECT_EQ(parseDate(bad), std::nullopt) << bad;
}

TEST(ValueText, showsEachKindAsPeopleSeeIt)
{
    EXPECT_EQ(text(ValueView::null()), "");
    EXPECT_EQ(text(ValueView::boolean(true)), "True");
    EXPECT_EQ(text(ValueView::boolean(false)), "False");
    EXPECT_EQ(text(ValueView::integer(-42)), "-42");
    EXPECT_EQ(text(ValueView::date(static_cast<double>(dayNumber(2004, 3, 5)))), "3/5/2004");
    EXPECT_EQ(text(ValueView::date(static_cast<double>(dayNumber(2004, 3, 5)) + 0.5)),
              "3/5/2004 12:00:00 PM");
    EXPECT_EQ(text(ValueView::date(static_cast<double>(dayNumber(2004, 3, 5)) + 0.0625)),
              "3/5/2004 1:30:00 AM");
    const std::uint8_t bytes[] = {0x00, 0xAF, 0x10};
    EXPECT_EQ(text(ValueView::bytes(bytes)), "00af10");
}

TEST(TextLength, countsPairsBeyondTheBasicPlaneTwice)
{
    EXPECT_EQ(textLength("abc"), 3u);
    EXPECT_EQ(textLength("äö€"), 3u);
    EXPECT_EQ(textLength("a😀"), 3u);
    EXPECT_EQ(textPrefix("äöü", 2), "äö");
    EXPECT_EQ(textPrefix("a😀b", 2), "a");
    EXPECT_EQ(textPrefix("a😀b", 3), "a😀");
    EXPECT_EQ(textPrefix("abc", 9), "abc");
    EXPECT_TRUE(isAscii("plain text of more than eight"));
    EXPECT_FALSE(isAscii("plain text, ä among it"));
    EXPECT_FALSE(isAscii("ä"));
}

TEST(OwnedValue, keepsItsCapacityAndMayBeGivenItself)
{
    Value v(ValueView::text(std::string(100, 'x')));
    const char* place = v.view().asText().data();
    v.assign(ValueView::text("short"));
    EXPECT_EQ(v.view().asText().data(), place);
    v.assign(ValueView::text(v.view().asText().substr(2)));
    EXPECT_EQ(v.view().asText(), "ort");
    v.assign(ValueView::integer(5));
    EXPECT_EQ(v.view().asInteger(), 5);
    v.assign(ValueView::text({}));
    EXPECT_EQ(v.view().kind(), ValueKind::Text);
    const Value copy(v);
    EXPECT_EQ(copy.view().asText(), "");
}

}  // namespace
}  // namespace velnor
