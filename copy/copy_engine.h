// copy/copy_engine.h - from match lines to a finished copy: positions, questions, connects. No
// widget.
#pragma once

#include <functional>

#include <QString>
#include <QStringList>

#include "copy/field_list.h"
#include "copy/record_loop.h"
#include "core/bounded_array.h"

namespace velnor {

/// What the match lines say, as positions from 0 in the fields of the two sides.
struct MatchArrays {
    BoundedArray<short, 302> MatchFrom;
    BoundedArray<short, 302> MatchTo;
};

/// Reads the match lines back into positions. A line that finds no field keeps 0, the first field.
/// Elements 0 to 300 are cleared first; error 9 at the 303rd line.
void buildFieldMatches(const QStringList& matchLines, const QStringList& fromLines,
                       const QStringList& toLines, MatchArrays& matches);

/// The matches as the record loop takes them.
std::vector<FieldPair> fieldPairs(const MatchArrays& matches, int count);

/// Asks about each match of two types; false when one was refused. Types are compared by the number
/// of the line, so that those of the lines above decide (see FieldList). `ask` gets the number of
/// the match line and the question.
bool checkFieldTypes(const MatchArrays& matches, int count, const FieldList& from,
                     const FieldList& to,
                     const std::function<bool(int line, const QString& question)>& ask);

/// The connect of the From side at the start of a copy: "Access 2000;" becomes ";pwd=" and the
/// password, which may be empty.
QString copyFromConnect(const QString& connect, const QString& password);
/// The connect of the To side: "Access 2000;" becomes empty, and ";pwd=" and the side's password
/// when any password is in hand. Required: the two sides differ in what they ask.
QString copyToConnect(const QString& connect, const QString& password,
                      const QString& passwordInHand);

}  // namespace velnor
