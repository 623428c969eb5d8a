// copy/copy_side.h - one side of the copy tab: From or To.
#pragma once

#include <QString>

#include "access/engine.h"
#include "copy/field_list.h"

namespace velnor {

/// `From.FilePath` and so on; they stay after the side is closed, except the fields.
struct CopySide {
    QString FilePath;  ///< the full path that was picked
    QString Database;  ///< the folder for DBF and DB, else the file itself
    QString Record;    ///< the table or sheet; for DBF and DB the file's name without its extension
    QString FileType;  ///< "DBF", "DB", "MDB", "XLS" or "WK4"
    QString Connect;   ///< with the password joined on for a protected file
    QString Password;
    FieldList Fields;

    /// A folder is the database, a file in it the record source.
    bool inFolder() const { return FileType == "DBF" || FileType == "DB"; }
    /// The file holds several record sources.
    bool hasRecordSources() const
    {
        return FileType == "MDB" || FileType == "XLS" || FileType == "WK4";
    }
    /// Opens the record source and lists its fields. What fails is an EngineError; the fields as
    /// far as they came stay.
    void readFields(Workspace& workspace);
};

}  // namespace velnor
