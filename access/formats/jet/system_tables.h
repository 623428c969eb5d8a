// access/formats/jet/system_tables.h - the four system tables of a new database, as data.
#pragma once

#include <vector>

#include "access/formats/jet/new_table.h"
#include "access/formats/jet/table_def.h"

namespace velnor::jet {

/// MSysObjects, MSysACEs, MSysQueries and MSysRelationships, without pages, maps and roots.
/// Long-value lists have their columns only, in the order of ids.
std::vector<TableDef> systemTableDefs(const ColumnDefaults& defaults);

}  // namespace velnor::jet
