// access/formats/paradox/structure.h - changes of a table's fields and indexes.
//
// A change of the fields or of the primary key writes the whole table anew, and a new table is made
// likewise.
// 1. The new files are made, under their own names, in a folder "NAME.DB-new" beside the table; a
//    file "complete" there tells that they are whole.
// 2. The DB file is moved out of it first: that is the moment of the change. Then the others
//    follow.
// 3. A folder that a crash left behind is looked at when the table is opened: when the files were
//    whole and the DB file is gone, what is left is moved, else it is thrown away.
// 4. The MB file stays where it is: the values keep their places. Only when a field of long values
//    goes, a new one is made of those that stay, and moved like the other files.
// 5. The files of a new index are made by the commit that fills them.
#pragma once

#include <string>
#include <string_view>

#include "access/formats/driver.h"
#include "access/formats/paradox/db_table.h"
#include "access/formats/paradox/new_table.h"

namespace velnor::paradox {

/// A new table with its indexes, whole or not at all. 3018 for indexes that it cannot have: the
/// first must be the primary one, on the first fields.
void createTableWithIndexes(FileSystem& files, const std::string& path, const TableLayout& layout,
                            const NewTableForm& form, const std::string& codePage);

void addTableField(DbTable& table, const FieldDef& field);
/// 3018 when an index has the field, 3265 when there is none.
void dropTableField(DbTable& table, std::string_view field);
/// A primary index sorts the table: 3022 when two records have the same key.
void addTableIndex(DbTable& table, const IndexDef& index);
void dropTableIndex(DbTable& table, std::string_view index);

/// 3. For a reader as well: the table needs the files that are not moved yet. What it cannot move,
/// it leaves, and it throws nothing away.
void finishStructureChange(FileSystem& files, const std::string& path, bool readOnly);

}  // namespace velnor::paradox
