// copy/copy_log.h - the log of copies: which field went where, one row for each match line of each
// copy, in the table CopyLogFieldMap of the organizer's file.
//
// The log says what was asked for, not what succeeded. The store is opened for each operation and
// closed again. A failure is told as "Error - number - description"; rows already written stay.
#pragma once

#include <array>

#include <QString>
#include <QStringList>

class QWidget;

namespace velnor {

class KeyedTree;

/// What a row takes besides its match line.
struct CopyLogHead {
    QString fromPath;  ///< stands in ToTablePath, too: required, the log shows it
    QString fromRecord;
    QString toRecord;
};

/// Cuts a match line into name, type and size of either side. Pieces are not trimmed: that of a
/// size keeps a blank behind it, the second name one in front. A name that holds " - " shifts what
/// follows. Error 5 when the shift leaves less than nothing.
std::array<QString, 6> cutMatchLine(const QString& line);

/// One row a line, all with one DateCreated. True when all were written.
bool writeCopyLog(const CopyLogHead& head, const QStringList& matchLines,
                  QWidget* parent = nullptr);

/// Fills the tree: dates, copies, fields. False when the log is empty, or could not be read to its
/// end: the nodes so far stay.
bool ViewCopyLog(KeyedTree& SSTree1);

/// Asks, then deletes every row.
void clearCopyLog(QWidget* parent = nullptr);

}  // namespace velnor
