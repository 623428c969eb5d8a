// access/formats/paradox/rewrite.h - a table written anew with other fields or another key; see
// structure.h for how the new files take the place of the old.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

/// `header`: of the new table, its fields, key and version set. `sources`: for each new field the
/// position of the old one, -1 for a field that is new. 3022 when two records get the same key.
void rewriteTable(DbTable& table, FileHeader header, const std::vector<int>& sources);

/// `make(path)` makes a table in the folder for new files; nothing is left there when it throws.
/// What is in the folder takes its place by moveInto().
void makeInNewFolder(FileSystem& files, const std::string& path,
                     const std::function<void(const std::string&)>& make);
void moveInto(FileSystem& files, const std::string& path);

}  // namespace velnor::paradox
