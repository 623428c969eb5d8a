// access/formats/paradox/new_table.h - the headers of new files, and the files of a new table.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/paradox/file_header.h"

namespace velnor::paradox {

/// What a connect word makes.
struct NewTableForm {
    std::string_view connectWord;
    std::uint8_t version;
};
/// Null for a word that is not ours.
const NewTableForm* formOfConnectWord(std::string_view word);

/// The header of an empty tree over a table or X file: PX, Ynn, YGn.
FileHeader newTreeHeader(const FileHeader& data, FileKind kind, std::string_view fileName);
/// The header of an empty kept index of a table. `fields`: positions in the table. 3018 for a field
/// that cannot be indexed, 3047 when an entry would be too long.
FileHeader newIndexHeader(const FileHeader& table, const std::vector<std::size_t>& fields,
                          std::uint8_t options, std::string_view label, std::string_view fileName);

/// The header of a new, empty table without indexes. Sort order and code page: "DBWINUS0" and 1252,
/// or those of `codePage`. Errors: 3251, 3001, 3008 for a name, 3047.
FileHeader newTableHeader(const TableLayout& layout, std::uint8_t version,
                          std::string_view fileName, const std::string& codePage);
/// The first `count` fields become the primary key. 3018 when one of them cannot.
void makeKeyed(FileHeader& table, std::size_t count);

/// How many fields from the first on an index names, in their order; 0 when it names others.
std::size_t leadingFields(const TableLayout& layout, const IndexDef& index);

/// The name of the field in the table's code page; 3008 when it cannot be stored.
void setFieldName(StoredField& field, const std::string& name, const CodePage& page);

/// Writes a new file, safe on the disk.
void makeFile(FileSystem& files, const std::string& path, const std::vector<std::uint8_t>& bytes);
/// Makes the files of an empty table: companions first, the DB file last.
void createTableFiles(FileSystem& files, const std::string& path, const FileHeader& table);

}  // namespace velnor::paradox
