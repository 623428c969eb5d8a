// access/formats/xbase/index_check.h - walks every index of a table and compares it with a full
// scan of the records.
#pragma once

#include "access/formats/driver.h"
#include "access/formats/xbase/dbf_table.h"

namespace velnor::xbase {

void checkIndexes(DbfTable& table, const ProblemSink& report);

}  // namespace velnor::xbase
