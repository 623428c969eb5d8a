#include "core/date_text.h"

#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/text.h"
#include "platform/host.h"

namespace velnor {
namespace {

QString twoDigits(const QString& number)
{
    return number.size() == 1 ? "0" + number : number;
}

QString twoDigits(int number)
{
    return twoDigits(QString::number(number));
}

/// "20" in front of years of two digits below 81, "19" of the others; nothing for any other length.
QString century(const QString& year)
{
    if (year.size() != 2)
        return {};
    return text::val(year) < 81 ? "20" : "19";
}

QString dateKey(const QString& source)
{
    using namespace text;
    int blank = instr(source, " ");
    QString time;
    if (blank > 0)
        time = mid(source, blank + 1);
    else
        blank = static_cast<int>(source.size()) - 1;  // cuts a date without a time short: required
    const QString date = left(source, blank - 1);

    const int first = instr(date, "/");
    const int second = instr(date, "/", first + 1);
    const QString month = left(date, first - 1);
    const QString day = mid(date, first + 1, second - first - 1);
    const QString year = mid(date, instrRev(date, "/") + 1);
    return century(year) + year + twoDigits(month) + twoDigits(day) + " " + time;
}

}  // namespace

QString dateText(const LocalTime& time)
{
    return twoDigits(time.month) + "-" + twoDigits(time.day) + "-" + QString::number(time.year);
}

void RefreshDateStamps()
{
    auto& G = globals();
    const LocalTime now = host().clock->now();
    const QString minute = twoDigits(now.minute);
    const QString second = twoDigits(now.second);
    G.STAMP_TIME = twoDigits(now.hour) + minute + second;

    // The noon and midnight hours show as 0: required.
    const bool afternoon = now.hour >= 12;
    const int hour = afternoon ? now.hour - 12 : now.hour;
    G.STAMP_DISPLAY = dateText(now) + " " + QString::number(hour) + ":" + minute + ":" + second +
                      (afternoon ? " PM" : " AM");

    G.STAMP_DATE = QString::number(now.year) + twoDigits(now.month) + twoDigits(now.day);
    G.STAMP_KEY = G.STAMP_DATE + G.STAMP_TIME;
}

QString FileDateText(const QString& path)
{
    QString result;
    attempt([&] { result = fileDateTime(path); });
    return result;
}

QString DateKeyFromText(const QString& source)
{
    QString key;
    if (!source.isEmpty())
        attempt([&] { key = dateKey(source); });
    return key;
}

QString StampToDisplay(const QString& stamp)
{
    const auto part = [&](int start, int length) { return text::mid(stamp, start, length); };
    return part(5, 2) + "/" + part(7, 2) + "/" + part(1, 4) + " " + part(9, 2) + ":" + part(11, 2) +
           ":" + part(13, 2);
}

}  // namespace velnor
