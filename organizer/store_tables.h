// organizer/store_tables.h - the tables of the catalogue, DataTabl.MDB, as it is delivered.
//
// The file also holds the log of copied fields and the field dictionaries. Every column is reached
// by its name. Widths: 255 for paths, descriptions and file names, 100 for names of databases and
// groups, so that a key of name and path fits an index entry.
#pragma once

#include <string_view>

#include "platform/file_system.h"

namespace velnor {

/// Makes the store at a path where nothing stands (3204), with all tables and indexes, and the
/// groups that it is delivered with.
void makeOrganizerStore(FileSystem& files, std::string_view path);

}  // namespace velnor
