#include "access/sql/date_format.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "access/sql/plain_value.h"
#include "access/sql/text_order.h"
#include "access/value_text.h"

namespace velnor::sql {
namespace {

constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                    "Thursday", "Friday", "Saturday"};

void appendPadded(std::string& out, int number, std::size_t width)
{
    const std::string digits = std::to_string(number);
    out.append(digits.size() < width ? width - digits.size() : 0, '0').append(digits);
}

char smallLetter(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

struct DateWriter {
    std::string& out;
    CivilTime t;
    bool halfDays;
    bool afterHour = false;

    int hour() const { return !halfDays ? t.hour : t.hour % 12 == 0 ? 12 : t.hour % 12; }

    void put(char letter, std::size_t n)
    {
        const bool minute = letter == 'n' || (letter == 'm' && afterHour && n <= 2);
        afterHour = letter == 'h';
        if (minute)
            return appendPadded(out, t.minute, n);
        switch (letter) {
        case 'y':
            return n <= 2 ? appendPadded(out, t.year % 100, 2) : appendPadded(out, t.year, 4);
        case 'm':
            return n <= 2 ? appendPadded(out, t.month, n) : appendName(monthName(t.month), n);
        case 'd':
            if (n <= 2)
                return appendPadded(out, t.day, n);
            return appendName(weekdayName(weekday()), n);
        case 'q':
            return appendPadded(out, (t.month - 1) / 3 + 1, 1);
        case 'w':
            return appendPadded(out, weekday(), 1);
        case 'h':
            return appendPadded(out, hour(), n);
        default:
            return appendPadded(out, t.second, n);
        }
    }
    void appendName(std::string_view name, std::size_t n)
    {
        out += n == 3 ? name.substr(0, 3) : name;
    }
    int weekday() const
    {
        return static_cast<int>((dayNumber(t.year, t.month, t.day) % 7 + 13) % 7) + 1;
    }
};

std::string_view namedDateForm(std::string_view format)
{
    static constexpr std::pair<std::string_view, std::string_view> kForms[] = {
        {"Short Date", "m/d/yyyy"},
        {"Medium Date", "dd-mmm-yy"},
        {"Long Date", "dddd, mmmm d, yyyy"},
        {"Short Time", "hh:nn"},
        {"Medium Time", "hh:nn AM/PM"},
        {"Long Time", "h:nn:ss AM/PM"},
        {"General Date", "m/d/yyyy h:nn:ss AM/PM"},
    };
    for (const auto& [name, form] : kForms)
        if (equalText(name, format))
            return form;
    return format;
}

bool isDateForm(std::string_view format)
{
    return format.find_first_of("yYmMdDhHnNsS") != format.npos &&
           format.find_first_of("0#") == format.npos;
}

std::size_t halfDayMark(std::string_view format)
{
    for (std::size_t at = 0; at + 5 <= format.size(); ++at)
        if (equalText(format.substr(at, 5), "AM/PM"))
            return at;
    return format.npos;
}

void appendDateForm(std::string& out, double straight, std::string_view format)
{
    const std::size_t mark = halfDayMark(format);
    DateWriter write{out, civilTime(dateOfStraight(straight)), mark != format.npos};
    for (std::size_t at = 0; at < format.size();) {
        const char letter = smallLetter(format[at]);
        if (at == mark) {
            out += write.t.hour < 12 ? "AM" : "PM";
            at += 5;
        } else if (letter == '"') {
            const std::size_t close = std::min(format.find('"', at + 1), format.size());
            out += format.substr(at + 1, close - at - 1);
            at = close + 1;
        } else if (std::string_view("ymdhnsqw").find(letter) != std::string_view::npos) {
            std::size_t n = 1;
            while (at + n < format.size() && smallLetter(format[at + n]) == letter)
                ++n;
            write.put(letter, n);
            at += n;
        } else {
            if (letter == '\\' && at + 1 < format.size())
                ++at;
            out += format[at++];
        }
    }
}

std::string withThousands(std::string digits)
{
    for (std::size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, ",");
    }
    return digits;
}

/// 0 and #: digits that must and may stand; the rest of the form stands around them.
void appendNumberForm(std::string& out, double number, std::string_view format)
{
    const std::size_t first = format.find_first_of("0#.,");
    if (first == format.npos) {
        out += format;
        return;
    }
    const std::size_t last = format.find_last_of("0#.,");
    const std::string_view form = format.substr(first, last - first + 1);
    const std::size_t point = form.find('.');
    const std::string_view whole = form.substr(0, point);
    const std::string_view part = point == form.npos ? "" : form.substr(point + 1);
    if (format.find('%') != format.npos)
        number *= 100;
    char text[512];
    std::snprintf(text, sizeof text, "%.*f",
                  static_cast<int>(std::min<std::size_t>(part.size(), 20)), std::fabs(number));
    std::string digits = text;
    const std::size_t at = digits.find('.');
    std::string fraction = at == digits.npos ? "" : digits.substr(at + 1);
    digits.resize(at == digits.npos ? digits.size() : at);
    for (std::size_t i = fraction.size(); i-- > 0 && fraction[i] == '0' && part[i] == '#';)
        fraction.pop_back();
    std::size_t least = 0;
    for (const char c : whole)
        least += c == '0';
    if (digits == "0" && least == 0)
        digits.clear();
    digits.insert(0, digits.size() < least ? least - digits.size() : 0, '0');
    if (whole.find(',') != whole.npos)
        digits = withThousands(digits);
    const bool zero = digits.find_first_of("123456789") == digits.npos &&
                      fraction.find_first_of("123456789") == fraction.npos;
    out += number < 0 && !zero ? "-" : "";
    out += format.substr(0, first);
    out += digits;
    if (point != form.npos)
        out += "." + fraction;
    out += format.substr(last + 1);
}

std::string_view namedNumberForm(std::string_view format)
{
    static constexpr std::pair<std::string_view, std::string_view> kForms[] = {
        {"Fixed", "0.00"},
        {"Standard", "#,##0.00"},
        {"Currency", "$#,##0.00"},
        {"Percent", "0.00%"},
    };
    for (const auto& [name, form] : kForms)
        if (equalText(name, format))
            return form;
    return format;
}

}  // namespace

std::string_view monthName(int month)
{
    return kMonths[static_cast<std::size_t>(month - 1) % kMonths.size()];
}

std::string_view weekdayName(int weekday)
{
    return kWeekdays[static_cast<std::size_t>(weekday - 1) % kWeekdays.size()];
}

void appendFormatted(std::string& out, ValueView plain, std::string_view format)
{
    if (plain.kind() != ValueKind::Integer && plain.kind() != ValueKind::Real)
        return appendText(out, plain);
    const double number =
        plain.kind() == ValueKind::Real ? plain.asReal() : static_cast<double>(plain.asInteger());
    const std::string_view numbers = namedNumberForm(format), dates = namedDateForm(format);
    const bool date = numbers == format && isDateForm(dates);
    if (date && number >= -657434 && number < 2958466)
        return appendDateForm(out, number, dates);
    if (format.empty() || equalText(format, "General Number"))
        return appendText(out, plain);
    appendNumberForm(out, number, numbers);
}

}  // namespace velnor::sql
