// Functions of dates: days on a straight line, see plain_value.h.
#include <array>
#include <cmath>

#include "access/sql/date_format.h"
#include "access/sql/function_support.h"
#include "access/sql/functions.h"
#include "access/sql/text_order.h"
#include "access/value_text.h"
#include "platform/host.h"

namespace velnor::sql {
namespace {

constexpr double kFirstDay = -657434;     // 0100-01-01
constexpr double kPastLastDay = 2958466;  // behind 9999-12-31

[[noreturn]] void badDate()
{
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      "A date in the statement is out of its range.");
}

CivilTime civilOf(sqlite3_value* v)
{
    const double days = sqlite3_value_double(v);
    if (!(days >= kFirstDay && days < kPastLastDay))
        badDate();
    return civilTime(dateOfStraight(days));
}

void giveDate(Call call, double straight)
{
    if (!(straight >= kFirstDay && straight < kPastLastDay))
        badDate();
    sqlite3_result_double(call, straight);
}

int wholeOf(sqlite3_value* v)
{
    const double d = std::nearbyint(sqlite3_value_double(v));
    if (!(std::fabs(d) < 1e9))
        badDate();
    return static_cast<int>(d);
}

int weekdayOf(const CivilTime& t)
{
    const std::int64_t day = dayNumber(t.year, t.month, t.day);
    return static_cast<int>((day % 7 + 13) % 7) + 1;  // Sunday is 1; day 0 was a Saturday
}

template <int CivilTime::*part> void partOf(Call call, int, Given given)
{
    sqlite3_result_int(call, civilOf(given[0]).*part);
}

void weekday(Call call, int, Given given)
{
    sqlite3_result_int(call, weekdayOf(civilOf(given[0])));
}

enum class Interval { Year, Quarter, Month, DayOfYear, Day, Weekday, Week, Hour, Minute, Second };

Interval intervalOf(sqlite3_value* v)
{
    static constexpr std::pair<std::string_view, Interval> kWords[] = {
        {"yyyy", Interval::Year},   {"q", Interval::Quarter}, {"m", Interval::Month},
        {"y", Interval::DayOfYear}, {"d", Interval::Day},     {"w", Interval::Weekday},
        {"ww", Interval::Week},     {"h", Interval::Hour},    {"n", Interval::Minute},
        {"s", Interval::Second},
    };
    const std::string_view text = textOf(v);
    for (const auto& [word, interval] : kWords)
        if (equalText(word, text))
            return interval;
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      "'" + std::string(text) + "' is no interval of dates.");
}

int daysOf(int year, int month)
{
    for (int day = 31; day > 28; --day)
        if (validDay(year, month, day))
            return day;
    return 28;
}

/// So many months on; the last day of the month when it has no such day.
double monthsOn(CivilTime t, std::int64_t months)
{
    const std::int64_t all = std::int64_t{t.year} * 12 + t.month - 1 + months;
    if (all < 100 * 12 || all > 9999 * 12 + 11)
        badDate();
    t.year = static_cast<int>(all / 12);
    t.month = static_cast<int>(all % 12) + 1;
    t.day = std::min(t.day, daysOf(t.year, t.month));
    return straightDate(dateFromCivil(t));
}

void dateAdd(Call call, int, Given given)
{
    const Interval interval = intervalOf(given[0]);
    const int n = wholeOf(given[1]);
    const CivilTime t = civilOf(given[2]);
    const double days = sqlite3_value_double(given[2]);
    switch (interval) {
    case Interval::Year:
        return giveDate(call, monthsOn(t, std::int64_t{n} * 12));
    case Interval::Quarter:
        return giveDate(call, monthsOn(t, std::int64_t{n} * 3));
    case Interval::Month:
        return giveDate(call, monthsOn(t, n));
    case Interval::Week:
        return giveDate(call, days + 7.0 * n);
    case Interval::Hour:
        return giveDate(call, days + n / 24.0);
    case Interval::Minute:
        return giveDate(call, days + n / 1440.0);
    case Interval::Second:
        return giveDate(call, days + n / 86400.0);
    default:
        return giveDate(call, days + n);
    }
}

/// How many borders of the interval lie between two dates.
std::int64_t bordersUpTo(Interval interval, double days)
{
    const CivilTime t = civilTime(dateOfStraight(days));
    const std::int64_t day = dayNumber(t.year, t.month, t.day);
    switch (interval) {
    case Interval::Year:
        return t.year;
    case Interval::Quarter:
        return std::int64_t{t.year} * 4 + (t.month - 1) / 3;
    case Interval::Month:
        return std::int64_t{t.year} * 12 + t.month;
    case Interval::Week:
        return (day + 6 + 700000) / 7;  // weeks begin on Sunday
    case Interval::Hour:
        return day * 24 + t.hour;
    case Interval::Minute:
        return (day * 24 + t.hour) * 60 + t.minute;
    case Interval::Second:
        return ((day * 24 + t.hour) * 60 + t.minute) * 60 + t.second;
    default:
        return day;
    }
}

void dateDiff(Call call, int, Given given)
{
    const Interval interval = intervalOf(given[0]);
    civilOf(given[1]);
    civilOf(given[2]);
    const double from = sqlite3_value_double(given[1]), to = sqlite3_value_double(given[2]);
    if (interval == Interval::Weekday) {  // whole weeks
        const auto days = bordersUpTo(Interval::Day, to) - bordersUpTo(Interval::Day, from);
        return sqlite3_result_int64(call, days / 7);
    }
    sqlite3_result_int64(call, bordersUpTo(interval, to) - bordersUpTo(interval, from));
}

void datePart(Call call, int, Given given)
{
    const Interval interval = intervalOf(given[0]);
    const CivilTime t = civilOf(given[1]);
    const int dayOfYear =
        static_cast<int>(dayNumber(t.year, t.month, t.day) - dayNumber(t.year, 1, 1)) + 1;
    CivilTime newYear = t;
    newYear.month = newYear.day = 1;
    const auto part = [&] {
        switch (interval) {
        case Interval::Year:
            return t.year;
        case Interval::Quarter:
            return (t.month - 1) / 3 + 1;
        case Interval::Month:
            return t.month;
        case Interval::DayOfYear:
            return dayOfYear;
        case Interval::Weekday:
            return weekdayOf(t);
        case Interval::Week:
            return (dayOfYear + weekdayOf(newYear) - 2) / 7 + 1;
        case Interval::Hour:
            return t.hour;
        case Interval::Minute:
            return t.minute;
        case Interval::Second:
            return t.second;
        default:
            return t.day;
        }
    };
    sqlite3_result_int(call, part());
}

/// Months and days beyond their range count on into the next or the last one.
void dateSerial(Call call, int, Given given)
{
    const std::int64_t year = wholeOf(given[0]), month = wholeOf(given[1]);
    const std::int64_t all = year * 12 + month - 1;
    if (all < 100 * 12 || all > 9999 * 12 + 11)
        badDate();
    const auto first = dayNumber(static_cast<int>(all / 12), static_cast<int>(all % 12) + 1, 1);
    giveDate(call, static_cast<double>(first + wholeOf(given[2]) - 1));
}

void timeSerial(Call call, int, Given given)
{
    const double seconds =
        (wholeOf(given[0]) * 60.0 + wholeOf(given[1])) * 60.0 + wholeOf(given[2]);
    giveDate(call, straightDate(seconds / 86400));
}

void dateOfText(Call call, int, Given given)
{
    if (sqlite3_value_type(given[0]) != SQLITE_TEXT)
        return giveDate(call, sqlite3_value_double(given[0]));
    const auto date = parseDate(textOf(given[0]));
    if (!date)
        throw EngineError(EngineErrorNumber::TypeMismatch,
                          "The text '" + std::string(textOf(given[0])) + "' is no date.");
    giveDate(call, straightDate(*date));
}

void asDate(Call call, int, Given given)
{
    giveDate(call, straightDate(sqlite3_value_double(given[0])));
}

void timeOfDay(Call call, int, Given given)
{
    const double days = sqlite3_value_double(given[0]);
    giveDate(call, straightDate(days - std::floor(days)));
}

void dateText(Call call, int, Given given)
{
    std::string made;
    appendDateText(made, dateOfStraight(sqlite3_value_double(given[0])));
    giveText(call, made);
}

void isDate(Call call, int, Given given)
{
    const int type = sqlite3_value_type(given[0]);
    const bool date = type == SQLITE_FLOAT || (type == SQLITE_TEXT && parseDate(textOf(given[0])));
    sqlite3_result_int(call, date ? -1 : 0);
}

template <bool day, bool time> void clock(Call call, int, Given)
{
    const Clock& source = host().clock ? *host().clock : systemClock();
    const LocalTime now = source.now();
    const double days = day ? static_cast<double>(dayNumber(now.year, now.month, now.day)) : 0;
    const int seconds = (now.hour * 60 + now.minute) * 60 + now.second;
    sqlite3_result_double(call, straightDate(days + (time ? seconds / 86400.0 : 0)));
}

template <bool month> void nameOf(Call call, int count, Given given)
{
    const int n = wholeOf(given[0]);
    if (n < 1 || n > (month ? 12 : 7))
        badDate();
    const std::string_view name = month ? monthName(n) : weekdayName(n);
    giveText(call, count > 1 && sqlite3_value_double(given[1]) != 0 ? name.substr(0, 3) : name);
}

void formatted(Call call, int count, Given given)
{
    std::string made;
    if (count < 2)
        appendText(made, plainOf(given[0]));
    else
        appendFormatted(made, plainOf(given[0]), textOf(given[1]));
    giveText(call, made);
}

}  // namespace

void addDateFunctions(sqlite3* db)
{
    static constexpr Function kAll[] = {
        {"v_year", 1, unlessNull<partOf<&CivilTime::year>>},
        {"v_month", 1, unlessNull<partOf<&CivilTime::month>>},
        {"v_day", 1, unlessNull<partOf<&CivilTime::day>>},
        {"v_hour", 1, unlessNull<partOf<&CivilTime::hour>>},
        {"v_minute", 1, unlessNull<partOf<&CivilTime::minute>>},
        {"v_second", 1, unlessNull<partOf<&CivilTime::second>>},
        {"v_weekday", 1, unlessNull<weekday>},
        {"v_dateadd", 3, unlessNull<dateAdd>},
        {"v_datediff", 3, unlessNull<dateDiff>},
        {"v_datepart", 2, unlessNull<datePart>},
        {"v_dateserial", 3, unlessNull<dateSerial>},
        {"v_timeserial", 3, unlessNull<timeSerial>},
        {"v_datevalue", 1, unlessNull<dateOfText>},
        {"v_cdate", 1, unlessNull<asDate>},
        {"v_timevalue", 1, unlessNull<timeOfDay>},
        {"v_datetext", 1, unlessNull<dateText>},
        {"v_isdate", 1, isDate},
        {"v_date", 0, unlessNull<clock<true, false>>, true},
        {"v_now", 0, unlessNull<clock<true, true>>, true},
        {"v_time", 0, unlessNull<clock<false, true>>, true},
        {"v_monthname", -1, unlessNull<nameOf<true>>},
        {"v_weekdayname", -1, unlessNull<nameOf<false>>},
        {"v_format", -1, unlessNull<formatted>},
    };
    addAll(db, kAll);
}

}  // namespace velnor::sql
