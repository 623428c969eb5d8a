// access/routing.h - from a path to what opens it.
//
// A path becomes three texts: CONNECT_STRING says which driver, DATABASE_NAME and RECORD_SOURCE
// what to open. For DBF and DB the database is the folder and the record source the file; for MDB,
// XLS and WK4 the database is the file and the record source its first table. The extension alone
// decides.
#pragma once

#include <functional>

#include <QString>

namespace velnor {

/// The text behind the last "." in upper case, empty without one. A dot in a folder's name counts,
/// too: required, "C:\a.b\file" gives "B\FILE".
QString GetFileExtension(const QString& path);

/// The driver's plain word for a path, no password and no FoxPro; empty for any other kind of file.
QString SetDatabaseType(const QString& path);

/// Sets FILE_EXT, TABLE_COUNT, CONNECT_STRING, DATABASE_NAME and RECORD_SOURCE. False when the path
/// has no "\" past its first character: the three texts are then as they were, as they are for
/// other extensions. A password that is asked for on the way is in DATABASE_PASSWORD, not yet in
/// CONNECT_STRING.
bool SetFileConnection(const QString& path);

/// Sets DATA_FILE_FLG or TEXT_FILE_FLG by the extension, or none. "ZIP" is a text here.
void ClassifyFile(const QString& path);

/// True for a text that begins with "http" or "www.".
bool isWebAddress(const QString& path);

/// What the gate to the viewing windows does with a path.
enum class DisplayRoute {
    Nothing,          ///< no extension: SELECTED_FILE has been emptied
    AskOtherProgram,  ///< an extension that nobody knows
    NotFound,
    Show,
};
/// Sets TEXT_FILE_FLG and FILE_EXT and says what comes next. "ZIP" is known here, and no text.
/// `fileExists` is asked last, and never for a web address.
DisplayRoute routeForDisplay(const QString& path, const std::function<bool()>& fileExists);

/// A password database's connect: ";pwd=" and the password; `plain` when there is none.
QString accessConnect(const QString& password, const QString& plain);

}  // namespace velnor
