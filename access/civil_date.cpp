// access/civil_date.cpp - the date part of value_text.h: civil days, and texts of dates.

#include "access/value_text.h"

#include <cmath>

namespace velnor {
namespace {

constexpr std::int64_t kMsPerDay = 86'400'000;
constexpr std::int64_t kDayOfUnixEpoch = 25569;  // 1970-01-01
constexpr double kFarthestDay = 3.6e8;           // keeps years within an int

bool isLeap(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// The calendar day of a day number: eras of 400 years that begin on 1 March.
CivilTime civilDay(std::int64_t day)
{
    const std::int64_t z = day - kDayOfUnixEpoch + 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const auto dayOfEra = static_cast<unsigned>(z - era * 146097);
    const unsigned yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned m = (5 * dayOfYear + 2) / 153;
    CivilTime t;
    t.day = static_cast<int>(dayOfYear - (153 * m + 2) / 5 + 1);
    t.month = static_cast<int>(m < 10 ? m + 3 : m - 9);
    t.year = static_cast<int>(static_cast<std::int64_t>(yearOfEra) + era * 400 + (t.month <= 2));
    return t;
}

/// Rounded to units of `unitMs`; a time that rounds up to midnight is the next day's.
CivilTime civilRounded(double date, std::int64_t unitMs)
{
    if (!std::isfinite(date))
        date = 0;
    if (std::fabs(date) > kFarthestDay)
        date = std::copysign(kFarthestDay, date);
    const double whole = std::trunc(date);
    const std::int64_t unitsPerDay = kMsPerDay / unitMs;
    std::int64_t units = std::llround(std::fabs(date - whole) * static_cast<double>(unitsPerDay));
    auto day = static_cast<std::int64_t>(whole);
    if (units >= unitsPerDay) {
        units = 0;
        ++day;
    }
    const std::int64_t ms = units * unitMs;
    CivilTime t = civilDay(day);
    t.hour = static_cast<int>(ms / 3'600'000);
    t.minute = static_cast<int>(ms / 60'000 % 60);
    t.second = static_cast<int>(ms / 1000 % 60);
    t.millisecond = static_cast<int>(ms % 1000);
    return t;
}

char* putDigits(char* p, unsigned value, int width)
{
    for (int i = width; i-- > 0; value /= 10)
        p[i] = static_cast<char>('0' + value % 10);
    return p + width;
}

void putPair(char* p, unsigned below100)
{
    p[0] = static_cast<char>('0' + below100 / 10);
    p[1] = static_cast<char>('0' + below100 % 10);
}

/// "YYYY-MM-DD" of a day between 0001-01-01 and 9999-12-31, by 32-bit arithmetic: years begin on 1
/// March, and multiplications stand for the divisions by 365.25 and 30.6.
char* putOrdinaryDay(char* p, std::int32_t day)
{
    const auto inCenturies = static_cast<std::uint32_t>(day - kDayOfUnixEpoch + 719468) * 4 + 3;
    const std::uint32_t century = inCenturies / 146097;
    const std::uint32_t inYears = inCenturies % 146097 | 3;
    const std::uint64_t years = std::uint64_t{2939745} * inYears;
    const std::uint32_t dayOfYear = static_cast<std::uint32_t>(years) / 2939745 / 4;
    const std::uint32_t months = 2141 * dayOfYear + 197913;
    const bool nextYear = dayOfYear >= 306;  // January and February
    const auto yearOfCentury = static_cast<std::uint32_t>(years >> 32) + nextYear;
    const bool nextCentury = yearOfCentury == 100;
    putPair(p, century + nextCentury);
    putPair(p + 2, nextCentury ? 0 : yearOfCentury);
    p[4] = '-';
    putPair(p + 5, (months >> 16) - (nextYear ? 12 : 0));
    p[7] = '-';
    putPair(p + 8, (months & 0xFFFF) / 2141 + 1);
    return p + 10;
}

/// At least `width` digits, more when the number has them.
char* putNumber(char* p, int value, int width)
{
    unsigned rest = static_cast<unsigned>(value < 0 ? -value : value);
    if (value < 0)
        *p++ = '-';
    int digits = 1;
    for (unsigned v = rest; v >= 10; v /= 10)
        ++digits;
    return putDigits(p, rest, digits > width ? digits : width);
}

bool isMidnight(const CivilTime& t)
{
    return t.hour == 0 && t.minute == 0 && t.second == 0;
}

/// Reads a text from its front; every step fails for good once one has failed.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) { skipBlanks(); }

    void skipBlanks()
    {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t'))
            ++at_;
    }
    bool atEnd() const { return at_ == text_.size(); }
    bool take(char c)
    {
        if (at_ >= text_.size() || text_[at_] != c)
            return false;
        ++at_;
        return true;
    }
    /// A letter in either case.
    bool takeLetter(char upper)
    {
        return take(upper) || take(static_cast<char>(upper - 'A' + 'a'));
    }
    /// A number of 1 to `most` digits; -1 when there is none or it goes on.
    int number(int most)
    {
        int value = 0, digits = 0;
        while (at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9' && digits < most) {
            value = value * 10 + (text_[at_++] - '0');
            ++digits;
        }
        const bool goesOn = at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9';
        digits_ = digits;
        return digits == 0 || goesOn ? -1 : value;
    }
    int digits() const { return digits_; }

private:
    std::string_view text_;
    std::size_t at_ = 0;
    int digits_ = 0;
};

/// What stands behind the hour: ":MM[:SS]", then perhaps AM or PM.
bool readTimeBehindHour(Scanner& in, int hour, CivilTime& t)
{
    t.hour = hour;
    bool colon = false;
    if (in.take(':')) {
        colon = true;
        t.minute = in.number(2);
        if (in.take(':'))
            t.second = in.number(2);
    }
    in.skipBlanks();
    const bool pm = in.takeLetter('P');
    const bool half = pm || in.takeLetter('A');
    if (half) {
        if (!in.takeLetter('M') || t.hour < 1 || t.hour > 12)
            return false;
        t.hour = t.hour % 12 + (pm ? 12 : 0);
        in.skipBlanks();
    }
    return in.atEnd() && (colon || half) && t.hour >= 0 && t.hour < 24 && t.minute >= 0 &&
           t.minute < 60 && t.second >= 0 && t.second < 60;
}

/// What stands behind the first number of a date and its separator.
bool readDateBehindFirst(Scanner& in, int first, int firstDigits, char separator, CivilTime& t)
{
    const int second = in.number(2);
    if (second < 0 || !in.take(separator))
        return false;
    const int third = in.number(4);
    const int thirdDigits = in.digits();
    if (separator == '-') {
        t.year = first;
        t.month = second;
        t.day = third;
        return firstDigits == 4 && validDay(t.year, t.month, t.day);
    }
    t.year = third;
    t.month = first;
    t.day = second;
    return thirdDigits == 4 && validDay(t.year, t.month, t.day);
}

}  // namespace

std::int64_t dayNumber(int year, int month, int day)
{
    const std::int64_t y = static_cast<std::int64_t>(year) - (month <= 2);
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468 + kDayOfUnixEpoch;
}

bool validDay(int year, int month, int day)
{
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12 || day < 1)
        return false;
    return day <= kDays[month - 1] + (month == 2 && isLeap(year));
}

CivilTime civilTime(double date)
{
    return civilRounded(date, 1);
}

double dateFromCivil(const CivilTime& t)
{
    const std::int64_t ms = ((t.hour * 60LL + t.minute) * 60LL + t.second) * 1000LL + t.millisecond;
    const auto day = static_cast<double>(dayNumber(t.year, t.month, t.day));
    const double time = static_cast<double>(ms) / static_cast<double>(kMsPerDay);
    return day < 0 ? day - time : day + time;
}

char* putIsoDate(char* p, double date)
{
    constexpr double kFirst = -693593, kLast = 2958465;  // 0001-01-01, 9999-12-31
    if (date >= kFirst && date <= kLast) {
        const auto day = static_cast<std::int32_t>(date);
        if (day == date)  // no time: what most dates are
            return putOrdinaryDay(p, day);
    }
    const CivilTime t = civilRounded(date, 1000);
    p = putNumber(p, t.year, 4);
    *p++ = '-';
    p = putDigits(p, static_cast<unsigned>(t.month), 2);
    *p++ = '-';
    p = putDigits(p, static_cast<unsigned>(t.day), 2);
    if (isMidnight(t))
        return p;
    *p++ = ' ';
    p = putDigits(p, static_cast<unsigned>(t.hour), 2);
    *p++ = ':';
    p = putDigits(p, static_cast<unsigned>(t.minute), 2);
    *p++ = ':';
    return putDigits(p, static_cast<unsigned>(t.second), 2);
}

void appendIsoDate(std::string& out, double date)
{
    char buffer[48];
    out.append(buffer, static_cast<std::size_t>(putIsoDate(buffer, date) - buffer));
}

void appendDateText(std::string& out, double date)
{
    const CivilTime t = civilRounded(date, 1000);
    char buffer[64];
    char* p = putNumber(buffer, t.month, 1);
    *p++ = '/';
    p = putNumber(p, t.day, 1);
    *p++ = '/';
    p = putNumber(p, t.year, 4);
    if (!isMidnight(t)) {
        *p++ = ' ';
        p = putNumber(p, t.hour % 12 == 0 ? 12 : t.hour % 12, 1);
        *p++ = ':';
        p = putDigits(p, static_cast<unsigned>(t.minute), 2);
        *p++ = ':';
        p = putDigits(p, static_cast<unsigned>(t.second), 2);
        *p++ = ' ';
        *p++ = t.hour < 12 ? 'A' : 'P';
        *p++ = 'M';
    }
    out.append(buffer, static_cast<std::size_t>(p - buffer));
}

std::optional<double> parseDate(std::string_view text)
{
    Scanner in(text);
    CivilTime t;
    const int first = in.number(4);
    const int firstDigits = in.digits();
    if (first < 0)
        return std::nullopt;
    const bool iso = in.take('-');
    if (!iso && !in.take('/')) {  // a time alone
        CivilTime time{1899, 12, 30, 0, 0, 0, 0};
        if (firstDigits > 2 || !readTimeBehindHour(in, first, time))
            return std::nullopt;
        return dateFromCivil(time);
    }
    if (!readDateBehindFirst(in, first, firstDigits, iso ? '-' : '/', t))
        return std::nullopt;
    in.skipBlanks();
    if (!in.atEnd()) {
        const int hour = in.number(2);
        if (hour < 0 || !readTimeBehindHour(in, hour, t))
            return std::nullopt;
    }
    return dateFromCivil(t);
}

}  // namespace velnor
