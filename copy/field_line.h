// copy/field_line.h - the texts in which fields and matches are shown, made and taken apart.
//
//     field line    CITY - Text - 30
//     match line    CITY - Text - 30  =  TOWN - Text - 40
//
// A match exists nowhere but in such a line: copying and the copy log read it back.
#pragma once

#include <QString>

namespace velnor {

QString fieldLine(const QString& name, int type, int size);

/// The name in a field line: what stands before the first "-" and its blank.
/// A hyphen inside the name cuts it there: required, "A-B - Text - 5" gives "". Error 5 when the
/// line begins with "-" or has none.
QString fieldLineName(const QString& line);

QString matchLine(const QString& fromLine, const QString& toLine);

struct MatchHalves {
    QString from, to;
};

/// Cuts a match line at its first "=". A name that holds "=" breaks the cut, so that the halves are
/// no field lines any more: required, such a match means the first field.
MatchHalves splitMatchLine(const QString& line);

}  // namespace velnor
