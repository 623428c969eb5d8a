// core/settings.h - the settings files of the application folder: Options.INI, Colors.INI and the
// working folders, FoldFile.INI.
//
// In spite of their extension none has sections: values stand in a fixed order and are known by
// their place (core/positional_text.h). What was read before a failure stays; the rest keeps its
// default. A file is written whole under another name and then takes its place, so that the old one
// stays until the new one is complete.
#pragma once

#include <array>

#include <QString>
#include <QStringList>

class QWidget;

namespace velnor {

/// Addresses that the main window keeps for its mail: MAIL_FAVORITES.
using MailFavorites = std::array<QString, 10>;

/// Options.INI into the shared state. A missing or damaged file is told, over `parent`.
void LoadOptions(MailFavorites& favorites, QWidget* parent = nullptr);
void SaveOptions(const MailFavorites& favorites, QWidget* parent = nullptr);

/// Colors.INI into the shared state, likewise. Six colours are not in it and keep their defaults.
void LoadColors(QWidget* parent = nullptr);
void SaveColors(QWidget* parent = nullptr);

/// FoldFile.INI into FOLDER_LIST from entry 1 on, and its lines but the blank ones into List1.
/// Tells nothing; false when the file is missing or was not read to its end.
bool LoadFolderList(QStringList& List1);
/// The lines into FoldFile.INI and FOLDER_LIST. The 202nd line is error 9; those before it are
/// written all the same.
void SaveFolderList(const QStringList& List1);

/// Where a working folder line leads: "C:\Data\ - 5" is folder "C:\Data" and filter 5.
struct WorkingFolder {
    QString folder;  ///< empty when the line names none to go to
    int filter = 0;
};
/// Text behind the last "\" of the folder is cut off, so that a folder without a closing one leads
/// to its parent: required. A line without " - " loses its last character and has filter 0.
WorkingFolder workingFolder(const QString& line);

}  // namespace velnor
