// core/date_text.h - dates and times as the catalogue and the logs keep them. Texts are sorted, so
// dates are digits of fixed width.
#pragma once

#include <QString>

#include "platform/clock.h"

namespace velnor {

/// Sets STAMP_DATE, STAMP_TIME, STAMP_KEY and STAMP_DISPLAY from the clock.
void RefreshDateStamps();
/// A file's date and time, "m/d/yy h:mm:ss"; empty on any failure.
QString FileDateText(const QString& path);
/// "1/2/03 9:05:00" becomes "20030102 9:05:00".
QString DateKeyFromText(const QString& text);
/// "20041118130810" becomes "11/18/2004 13:08:10".
QString StampToDisplay(const QString& stamp);

/// The date as the program shows it, "mm-dd-yyyy".
QString dateText(const LocalTime& time);

}  // namespace velnor
