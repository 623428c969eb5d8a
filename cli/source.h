// cli/source.h - what a person names on the command line, turned into something the engine opens.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/engine.h"
#include "cli/command.h"

namespace velnor::cli {

enum class FileKind { None, Xbase, Paradox, Access, Excel, Lotus, Text, Folder };

/// True for files that are one table of their folder.
constexpr bool isTableFile(FileKind kind)
{
    return kind == FileKind::Xbase || kind == FileKind::Paradox || kind == FileKind::Text;
}

/// True for workbooks: tables are sheets, their records cannot be deleted, they have no indexes.
constexpr bool isSheetFile(FileKind kind)
{
    return kind == FileKind::Excel || kind == FileKind::Lotus;
}

/// What stands behind the name of a sheet in the list of tables; people may leave it out.
constexpr const char* sheetMark(FileKind kind)
{
    return kind == FileKind::Lotus ? ":" : "$";
}

struct Source {
    FileKind kind = FileKind::None;
    std::string path;      ///< "C:\..." form
    std::string database;  ///< what OpenDatabase takes: the folder of a table file, else the file
    std::string connect;   ///< "dBASE 5.0;", "Access 2000;", with pwd= and codepage= when given
    std::string
        table;  ///< of a DBF its bare name, of a text its file name; empty when not chosen yet
    std::string tail;  ///< the parts of the connect string behind the driver's word
};

/// By the extension alone, blind to case.
FileKind kindOfPath(std::string_view path);
bool namesDataFile(std::string_view word);

/// Reads --password and --codepage. Errors: 3170 for a kind of file that is not served, 53 when it
/// is not there (unless `mayBeNew`).
Source sourceOf(Context& context, const std::string& word, const Arguments& arguments,
                bool mayBeNew = false);

/// Opens it. A DBF that is no dBASE file is opened as FoxPro; `source.connect` is then changed.
Database openSource(Context& context, Source& source, bool readOnly);

/// The tables that people see, without system tables.
std::vector<std::string> userTables(Database& database);
/// Whether a table is a link: its records are in another file.
bool isLink(Database& database, const std::string& table);
/// source.table, or the only (first) table of the file that is no link; 3078 when there is none.
std::string chosenTable(Database& database, const Source& source);

/// A file and perhaps a table behind it, twice: FROM [TABLE] TO [TABLE].
struct FromTo {
    std::string from, fromTable, to, toTable;
};
FromTo splitFromTo(const std::vector<std::string>& words);

}  // namespace velnor::cli
