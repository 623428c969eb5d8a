#include "access/formats/xbase/moments.h"

#include <cmath>
#include <cstring>

namespace velnor::xbase {

std::optional<std::int32_t> readDay(const std::uint8_t* eight)
{
    std::uint64_t word;
    std::memcpy(&word, eight, sizeof word);
    const std::uint64_t values = word ^ 0x3030303030303030u;
    if (((values + 0x0606060606060606u) | values) & 0xF0F0F0F0F0F0F0F0u)
        return std::nullopt;
    const auto digit = [values](int n) { return static_cast<unsigned>(values >> (8 * n) & 15); };
    const unsigned year = digit(0) * 1000 + digit(1) * 100 + digit(2) * 10 + digit(3);
    const unsigned month = digit(4) * 10 + digit(5), day = digit(6) * 10 + digit(7);
    static constexpr std::uint8_t kDays[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year == 0 || month - 1 > 11 || day == 0)
        return std::nullopt;
    if (day > kDays[month] && !(month == 2 && day == 29 && isLeapYear(year)))
        return std::nullopt;
    return dayOfCalendar(year, month, day);
}

bool writeDay(std::int64_t day, std::uint8_t* eight)
{
    if (day < kFirstDay || day > kLastDay)
        return false;
    // Counted from 0000-03-01, so that the day of February 29 ends its year.
    const auto days = static_cast<unsigned>(day + 693899);
    const unsigned era = days / 146097, dayOfEra = days % 146097;
    const unsigned yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned m = (5 * dayOfYear + 2) / 153;
    const unsigned month = m < 10 ? m + 3 : m - 9;
    const unsigned year = yearOfEra + era * 400 + (month <= 2);
    unsigned number = (year * 100 + month) * 100 + dayOfYear - (153 * m + 2) / 5 + 1;
    for (int i = 7; i >= 0; --i, number /= 10)
        eight[i] = static_cast<std::uint8_t>('0' + number % 10);
    return true;
}

std::optional<double> dateOf(Moment moment)
{
    std::int64_t carry = moment.millisecond / kDayMilliseconds;
    std::int64_t rest = moment.millisecond % kDayMilliseconds;
    if (rest < 0) {
        rest += kDayMilliseconds;
        --carry;
    }
    const std::int64_t day = moment.day + carry;
    if (day < kFirstDay || day > kLastDay)
        return std::nullopt;
    const double fraction = static_cast<double>(rest) / kDayMilliseconds;
    const auto whole = static_cast<double>(day);
    return day < 0 ? whole - fraction : whole + fraction;
}

std::optional<Moment> momentOf(double date)
{
    if (!(date > kFirstDay - 1.0 && date < kLastDay + 1.0))
        return std::nullopt;
    const double whole = std::trunc(date);
    Moment moment{static_cast<std::int64_t>(whole), 0};
    if (whole != date)
        moment.millisecond = std::llround(std::fabs(date - whole) * kDayMilliseconds);
    if (moment.millisecond == kDayMilliseconds)
        moment = {moment.day + 1, 0};
    if (moment.day < kFirstDay || moment.day > kLastDay)
        return std::nullopt;
    return moment;
}

}  // namespace velnor::xbase
