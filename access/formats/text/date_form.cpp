// Dates by the form that schema.ini tells.
#include <array>
#include <cstdio>

#include "access/formats/text/text_value.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::text {
namespace {

constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// One part of a form: a run of one letter ("yyyy"), "AM/PM" as 'p', or a separator (letter 0).
struct Part {
    char letter = 0;
    std::size_t length = 0;
    char separator = 0;
};

/// Steps through the parts of a form. "m" behind an hour is 'n', minutes.
class FormReader {
public:
    explicit FormReader(std::string_view form) : form_(form) {}

    bool next(Part& part)
    {
        if (at_ == form_.size())
            return false;
        part = {};
        const char c = lower(form_[at_]);
        if (!isLetter(c)) {
            part.separator = form_[at_++];
            return true;
        }
        if (c == 'a') {
            at_ = std::min(form_.size(), form_.find_first_not_of("AaMmPp/", at_));
            part.letter = 'p';
            return true;
        }
        while (at_ < form_.size() && lower(form_[at_]) == c) {
            ++at_;
            ++part.length;
        }
        part.letter = c == 'm' && hourSeen_ ? 'n' : c;
        hourSeen_ = hourSeen_ || c == 'h';
        return true;
    }

private:
    std::string_view form_;
    std::size_t at_ = 0;
    bool hourSeen_ = false;
};

int takeNumber(std::string_view& text, std::size_t most)
{
    int number = 0;
    std::size_t n = 0;
    for (; n < text.size() && n < most && isDigit(text[n]); ++n)
        number = number * 10 + (text[n] - '0');
    text.remove_prefix(n);
    return n ? number : -1;
}

int takeMonth(std::string_view& text)
{
    std::size_t n = 0;
    while (n < text.size() && isLetter(text[n]))
        ++n;
    const std::string_view name = text.substr(0, n);
    text.remove_prefix(n);
    for (std::size_t i = 0; i < kMonths.size() && n >= 3; ++i)
        if (n <= kMonths[i].size() && paths::sameName(kMonths[i].substr(0, n), name))
            return static_cast<int>(i) + 1;
    return -1;
}

/// Two digits of a year: 00 to 29 are 2000 to 2029.
int wholeYear(int year, std::size_t digits)
{
    return digits > 2 ? year : year < 30 ? 2000 + year : 1900 + year;
}

bool takeHalf(std::string_view& text, CivilTime& t)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    if (text.size() < 2 || lower(text[1]) != 'm' || t.hour < 1 || t.hour > 12)
        return false;
    const char half = lower(text[0]);
    t.hour = t.hour % 12 + (half == 'p' ? 12 : 0);
    text.remove_prefix(2);
    return half == 'a' || half == 'p';
}

bool takePart(const Part& part, std::string_view& text, CivilTime& t)
{
    switch (part.letter) {
    case 0:
        if (text.empty() || text.front() != part.separator)
            return false;
        text.remove_prefix(1);
        return true;
    case 'y': {
        const std::size_t before = text.size();
        const int year = takeNumber(text, 4);
        t.year = wholeYear(year, before - text.size());
        return year >= 0;
    }
    case 'm':
        t.month = part.length > 2 ? takeMonth(text) : takeNumber(text, 2);
        return t.month > 0;
    case 'd':
        t.day = takeNumber(text, 2);
        return t.day > 0;
    case 'h':
        t.hour = takeNumber(text, 2);
        return t.hour >= 0 && t.hour < 24;
    case 'n':
        t.minute = takeNumber(text, 2);
        return t.minute >= 0 && t.minute < 60;
    case 's':
        t.second = takeNumber(text, 2);
        return t.second >= 0 && t.second < 60;
    case 'p':
        return takeHalf(text, t);
    default:
        return false;
    }
}

void appendNumber(std::string& out, int number, std::size_t digits)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%0*d", static_cast<int>(digits), number);
    out += buffer;
}

void appendPart(std::string& out, const Part& part, const CivilTime& t, bool halves)
{
    const std::size_t digits = std::min<std::size_t>(part.length, 2);
    switch (part.letter) {
    case 0:
        out += part.separator;
        return;
    case 'y':
        return part.length > 2 ? appendNumber(out, t.year, 4) : appendNumber(out, t.year % 100, 2);
    case 'm':
        if (part.length > 2)
            out += kMonths[static_cast<std::size_t>(t.month - 1)].substr(
                0, part.length == 3 ? 3 : std::string_view::npos);
        else
            appendNumber(out, t.month, digits);
        return;
    case 'd':
        return appendNumber(out, t.day, digits);
    case 'h':
        return appendNumber(out, !halves ? t.hour : t.hour % 12 ? t.hour % 12 : 12, digits);
    case 'n':
        return appendNumber(out, t.minute, digits);
    case 's':
        return appendNumber(out, t.second, digits);
    case 'p':
        out += t.hour < 12 ? "AM" : "PM";
        return;
    default:
        return;
    }
}

}  // namespace

bool parseDateAs(std::string_view form, std::string_view text, double& date)
{
    CivilTime t{1899, 12, 30, 0, 0, 0, 0};
    FormReader reader(form);
    bool any = false;
    for (Part part; reader.next(part); any = true) {
        const bool time = part.separator == ' ' || part.letter == 'h';
        if (text.empty() && any && time)  // a day without its time
            break;
        if (!takePart(part, text, t))
            return false;
    }
    if (!any || !text.empty() || !validDay(t.year, t.month, t.day))
        return false;
    date = dateFromCivil(t);
    return true;
}

void appendDateAs(std::string& out, std::string_view form, double date)
{
    const CivilTime t = civilTime(date);
    bool halves = false;
    Part part;
    for (FormReader look(form); look.next(part);)
        halves = halves || part.letter == 'p';
    for (FormReader reader(form); reader.next(part);)
        appendPart(out, part, t, halves);
}

}  // namespace velnor::text
