#include <cstdlib>
#include <ctime>

#include <gmock/gmock.h>

#include "platform/clock.h"

using namespace velnor;

TEST(SystemClock, GivesLocalTimeOfTheZoneInForce)
{
    setenv("TZ", "CET-1", 1);
    tzset();
    const LocalTime time = systemClock().local(1100783290);  // 2004-11-18 13:08:10 UTC
    EXPECT_EQ(time.year, 2004);
    EXPECT_EQ(time.month, 11);
    EXPECT_EQ(time.day, 18);
    EXPECT_EQ(time.hour, 14);
    EXPECT_EQ(time.minute, 8);
    EXPECT_EQ(time.second, 10);
}

TEST(SystemClock, NowIsNotBeforeThisProgramWasWritten)
{
    EXPECT_GE(systemClock().now().year, 2024);
}
