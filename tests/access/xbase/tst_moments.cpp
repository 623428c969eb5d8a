// Days and times of the table kinds.
#include <gtest/gtest.h>

#include <cstring>

#include "access/formats/xbase/moments.h"
#include "access/value_text.h"

using namespace velnor;
using namespace velnor::xbase;

namespace {

std::optional<std::int32_t> day(const char* text)
{
    std::uint8_t bytes[8];
    std::memcpy(bytes, text, 8);
    return readDay(bytes);
}

}  // namespace

TEST(Moments, eightDigitsAreADay)
{
    EXPECT_EQ(day("18991230"), 0);
    EXPECT_EQ(day("19000101"), 2);
    EXPECT_EQ(day("20240229"), 45351);
    EXPECT_EQ(day("00010101"), -693593);
    EXPECT_EQ(day("99991231"), 2958465);
}

TEST(Moments, whatIsNoDayOfTheCalendarIsNothing)
{
    for (const char* text :
         {"        ", "00000000", "20230229", "19000229", "20231301", "20230001", "20230100",
          "20230132", "2023/1/1", "NotAYear", "0000 101", "20230431", "2023010\x3A",
          "\xB2"
          "0230101"})
        EXPECT_EQ(day(text), std::nullopt) << text;
}

TEST(Moments, everyDayOfTheCalendarIsWrittenAsItIsRead)
{
    for (std::int64_t n = kFirstDay; n <= kLastDay; ++n) {
        std::uint8_t bytes[8];
        ASSERT_TRUE(writeDay(n, bytes));
        ASSERT_EQ(readDay(bytes), n);
    }
    std::uint8_t bytes[8];
    EXPECT_FALSE(writeDay(kFirstDay - 1, bytes));
    EXPECT_FALSE(writeDay(kLastDay + 1, bytes));
}

TEST(Moments, theTimeIsAPositivePartAlsoBeforeDayZero)
{
    EXPECT_EQ(dateOf({-1, 6 * 3600000}), -1.25);
    EXPECT_EQ(dateOf({1, 6 * 3600000}), 1.25);
    EXPECT_EQ(dateOf({1, kDayMilliseconds}), 2.0);
    const auto moment = momentOf(-1.25);
    ASSERT_TRUE(moment);
    EXPECT_EQ(moment->day, -1);
    EXPECT_EQ(moment->millisecond, 6 * 3600000);
}

TEST(Moments, aTimeThatRoundsUpToMidnightIsTheNextDay)
{
    const auto moment = momentOf(100.9999999999);
    ASSERT_TRUE(moment);
    EXPECT_EQ(moment->day, 101);
    EXPECT_EQ(moment->millisecond, 0);
}

TEST(Moments, outsideTheCalendarIsNothing)
{
    EXPECT_FALSE(momentOf(3e6));
    EXPECT_FALSE(momentOf(-1e6));
    EXPECT_FALSE(momentOf(0.0 / 0.0));
    EXPECT_FALSE(dateOf({kLastDay, kDayMilliseconds}));
}
