// access/formats/paradox/table_check.h - a look at every structure of a table and its companions.
#pragma once

#include "access/formats/driver.h"
#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

void checkTable(DbTable& table, const ProblemSink& report);

}  // namespace velnor::paradox
