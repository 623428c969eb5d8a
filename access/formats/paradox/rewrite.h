// access/formats/paradox/rewrite.h - a table written anew with other fields or another key; see
// structure.h for how the new files take the place of the old.
#pragma once

#include <vector>

#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

/// `header`: of the new table, its fields, key and version set. `sources`: for each new field the
/// position of the old one, -1 for a field that is new. 3022 when two records get the same key.
void rewriteTable(DbTable& table, FileHeader header, const std::vector<int>& sources);

/// Frees the long values of a field and makes it Null in all records.
void clearLongField(DbTable& table, std::size_t field);

}  // namespace velnor::paradox
