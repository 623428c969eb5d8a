// copy/query_members.h - what copying reads of the query window.
#pragma once

#include <QString>

namespace velnor {

/// The query window keeps these up to date; whether it is open says QUERYWINDOW_FLG.
struct QueryMembers {
    QString QueryFile;  ///< the file that the query reads
    QString QuerySQL;   ///< the statement as it runs
};

QueryMembers& queryMembers();

}  // namespace velnor
