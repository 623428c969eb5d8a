// access/schema.h - the structure of a data file, read into the shared arrays of Globals.
//
// The arrays hold the names of one file and the structure of one table at a time; each call
// overwrites the last. A password that is wrong or missing is asked for by ListTableNames, through
// Login.
#pragma once

#include <QString>

#include "access/field_type_names.h"

namespace velnor {

/// Fills TABLE_NAMES and TABLE_COUNT with the tables or sheets of a database, without its system
/// tables, and returns the first name. Empty when there is none, when the login was cancelled, or
/// on an error: TABLE_COUNT is then as it was. No message.
QString ListTableNames(const QString& databaseName, const QString& connect);

/// How a listing ended: an empty database is listed, a file that doesn't open is not.
struct TableListing {
    bool listed = false;
    QString first;
};
TableListing listTableNames(const QString& databaseName, const QString& connect);

/// Reads the fields and indexes of a table into the FIELD_ and INDEX_ arrays. A dBASE table without
/// indexes is looked at again as FoxPro; FOXPRO_FLG tells that this look found some. For the folder
/// kinds `tableName` is the file's name with its extension. False when the table could not be read;
/// the arrays keep what they got.
bool LoadTableStructure(const QString& databaseName, const QString& connect,
                        const QString& tableName);

}  // namespace velnor
