// access/formats/xbase/moments.h - dates and times of the table kinds to engine dates and back.
#pragma once

#include <cstdint>
#include <optional>

namespace velnor::xbase {

/// Days since 1899-12-30 and milliseconds of that day.
struct Moment {
    std::int64_t day = 0;
    std::int64_t millisecond = 0;
};

inline constexpr std::int64_t kDayMilliseconds = 86400000;
inline constexpr std::int64_t kFirstDay = -693593;  ///< 0001-01-01
inline constexpr std::int64_t kLastDay = 2958465;   ///< 9999-12-31
inline constexpr std::int64_t kJulianOfDayZero = 2415019;

inline constexpr bool isLeapYear(unsigned y)
{
    return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0);
}

/// Days since 1899-12-30 of a day of the calendar, years 1 to 9999.
inline constexpr std::int32_t dayOfCalendar(unsigned year, unsigned month, unsigned day)
{
    const unsigned y = year - (month <= 2);
    const unsigned m = month <= 2 ? month + 9 : month - 3;
    const unsigned dayOfYear = (153 * m + 2) / 5 + day - 1;
    const unsigned days = y * 365 + y / 4 - y / 100 + y / 400 + dayOfYear;
    return static_cast<std::int32_t>(days) - 693899;
}
static_assert(dayOfCalendar(1899, 12, 30) == 0 && dayOfCalendar(1, 1, 1) == kFirstDay &&
              dayOfCalendar(9999, 12, 31) == kLastDay);

/// The day in eight bytes YYYYMMDD; nothing when they are none.
std::optional<std::int32_t> readDay(const std::uint8_t* eight);
/// Writes YYYYMMDD; false outside the years 1 to 9999.
bool writeDay(std::int64_t day, std::uint8_t* eight);

/// An engine date from its parts; milliseconds beyond the day count on. Nothing outside the years 1
/// to 9999.
std::optional<double> dateOf(Moment moment);
/// An engine date taken apart, rounded to the millisecond; nothing outside the years 1 to 9999.
std::optional<Moment> momentOf(double date);

}  // namespace velnor::xbase
