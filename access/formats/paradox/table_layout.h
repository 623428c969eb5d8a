// access/formats/paradox/table_layout.h - what callers see of a table: fields, indexes, facts.
#pragma once

#include "access/formats/driver.h"
#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

TableLayout layoutOf(DbTable& table);
/// Facts for people.
std::vector<std::pair<std::string, std::string>> tableInfo(DbTable& table);

}  // namespace velnor::paradox
