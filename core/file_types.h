// core/file_types.h - what a file is, by its extension alone: the table of types, the nine filters
// of the file list, and the filter texts of every file dialog.
#pragma once

#include <array>

#include <QString>
#include <QStringList>

namespace velnor {

// A slot of EXT_TABLE has a meaning: classes are ranges of slots.
inline constexpr int kFirstSlot = 1;
inline constexpr int kLastDatabaseSlot = 5;  ///< DBF, DB, MDB, XLS, WK4
inline constexpr int kLastViewerSlot = 26;   ///< the last that DisplayFile shows as text
inline constexpr int kLastTextSlot = 27;     ///< the last that ClassifyFile calls text: ZIP
inline constexpr int kLastSlot = 27;         ///< 28 to 43 are free

/// Fills slots 1 to 27 of EXT_TABLE.
void FillExtensionTable();
/// The slot that holds an extension (any case, no dot); 0 when none does.
int extensionSlot(const QString& extension);

/// A filter of the main window's file list. The captions and patterns differ in what they name
/// (PNP, PDF, ASP): required.
struct ListFilter {
    const char* caption;
    const char* pattern;   ///< "*.DBF;*.DB"
    const char* tool;      ///< on the main toolbar; empty for the last
    const char* menuTool;  ///< in the "ID_mnu" form
};
extern const std::array<ListFilter, 9> kListFilters;
inline constexpr short kAllDataFilter = 5;
inline constexpr short kTextFilter = 6;
inline constexpr short kAllFilesFilter = 7;

/// The pattern for an index 0 to 10; 9 and 10 are empty. Any other index: error 9.
QString filterPattern(int index);

/// True when a file name passes a pattern "*.DBF;*.DB"; an empty pattern passes nothing.
bool passesFilter(const QString& fileName, const QString& pattern);

// Filters of dialogs: captions and patterns in turn, "|" between.
/// Main window, copy tab, attachments, distribution, DatBMaint1, CopyTabl1.
extern const char* const kOpenFilter;
/// The document shell.
extern const char* const kShellOpenFilter;
inline constexpr const char* kMailListFilter = "E-Mail Address List|*.MLS";
inline constexpr const char* kSavedQueryFilter = "*.QRD";
inline constexpr const char* kZipFilter = "Zip File|*.Zip";
inline constexpr const char* kTextOutputFilter = "Text Files|*.Txt";
inline constexpr const char* kQueryFilePattern = "*.DBF;*.MDB;*.DB;*.XLS;*.WK4";
/// The text pattern of the working folder window: shorter than that of the list.
inline constexpr const char* kWorkingFolderTextPattern =
    "*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;"
    "*.URL;*.MSG";
/// Groupings of the find files window.
inline constexpr const char* kFindDocumentsPattern =
    "*.TXT;*.RTF;*.HTM;*.HTML;*.SHTM;*.SHTML;*.ASP;*.PDF;*.PHP";
inline constexpr const char* kFindSystemPattern = "*.SYS;*.BAT;*.BAK;*.DOS";
inline constexpr const char* kFindSettingsPattern = "*.INI;*.URL;*.MSG;*.LOG";
inline constexpr const char* kFindWordsPattern = "*.DOC;*.WRI;*.WPS";
inline constexpr const char* kFindPagesPattern = "*.HTM;*.HTML;*.SHTM;*.SHTML;*.ASP;*.PDF";
inline constexpr const char* kFindSheetsPattern = "*.XLS;*.WK4";
inline constexpr const char* kFindDatabasesPattern = "*.DBF;*.DB;*.MDB";

/// A dialog filter as Qt wants it, "DBase and FoxPro (*.DBF *.dbf)", in order. A pattern without a
/// caption stands for itself.
QStringList dialogFilters(const QString& filter);

}  // namespace velnor
