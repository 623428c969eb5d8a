// access/formats/paradox/check_mb.h - the long values of a table: every block of the MB file, every
// pointer in the records.
#pragma once

#include "access/formats/paradox/check_file.h"
#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

void checkLongValues(DbTable& table, FileCheck& records, CheckReport& report);

}  // namespace velnor::paradox
