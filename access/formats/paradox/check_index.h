// access/formats/paradox/check_index.h - a secondary index against the records of its table.
#pragma once

#include "access/formats/paradox/check_file.h"
#include "access/formats/paradox/db_table.h"

namespace velnor::paradox {

void checkIndex(DbTable& table, SecondaryIndex& index, FileCheck& records, CheckReport& report);

}  // namespace velnor::paradox
